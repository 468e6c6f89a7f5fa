#include "Scene.h"

#include <QUndoCommand>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Shapes.h"

namespace {

constexpr double degreesPerSecond = 24;

template<class T>
const T *find(const QVector<T> &all, Scene::Id id)
{
    const auto *const found = std::find_if(all.cbegin(), all.cend(), [id](const T &one) { return one.id == id; });
    return found == all.cend() ? nullptr : &*found;
}

// Puts materials or nodes in the place of what they were.
template<class T>
class Change : public QUndoCommand
{
public:
    Change(Scene *scene, QVector<T> before, QVector<T> after, const QString &text)
        : QUndoCommand(text)
        , m_scene(scene)
        , m_before(std::move(before))
        , m_after(std::move(after))
    {}

    void undo() override { m_scene->replace(m_before); }
    void redo() override { m_scene->replace(m_after); }

private:
    Scene *m_scene;
    QVector<T> m_before;
    QVector<T> m_after;
};

template<class T>
QVector<T> present(const QVector<T> &all, const QVector<T> &some)
{
    QVector<T> result;
    for (const T &one : some) {
        if (const T *old = find(all, one.id))
            result.append(*old);
    }
    return result;
}

} // namespace

Scene::Scene(QObject *parent)
    : QObject(parent)
{
    m_cameras = {{newId(), QStringLiteral("Perspective"), Camera(30, 18)},
                 {newId(), QStringLiteral("Front"), Camera(0, 5)},
                 {newId(), QStringLiteral("Top"), Camera(0, 85)}};
    m_undoStack.setUndoLimit(1000);
    clear();
}

void Scene::clear()
{
    m_undoStack.clear();
    m_materials.clear();
    m_nodes.clear();
    const Id paint =
        addMaterial({0, "oxdMetallicPaintMaterial", QStringLiteral("Copper"), QColor(0xd0, 0x6a, 0x2e), 0.8});
    const Id plastic = addMaterial({0, "oxdPlasticMaterial", QStringLiteral("Slate"), QColor(0x3a, 0x46, 0x57), 0.6});
    addNode({0, QStringLiteral("Knot"), paint, makeTorusKnot(), {}});
    addNode({0, QStringLiteral("Pedestal"), plastic, makePedestal(), {}});
    addFloor();
    Q_EMIT materialsChanged();
    Q_EMIT nodesChanged();
}

void Scene::show(const Model &model)
{
    m_undoStack.clear();
    m_materials.clear();
    m_nodes.clear();
    QVector<Id> ids;
    for (const Material &material : model.materials)
        ids.append(addMaterial(material));
    const QMatrix4x4 place = fitting(model);
    for (Node node : model.nodes) {
        node.material = ids.value(static_cast<int>(node.material));
        node.transform = place * node.transform;
        addNode(node);
    }
    addFloor();
    Q_EMIT materialsChanged();
    Q_EMIT nodesChanged();
}

QMatrix4x4 Scene::fitting(const Model &model)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    QVector3D low(infinity, infinity, infinity);
    QVector3D high = -low;
    for (const Node &node : model.nodes) {
        for (const Mesh::Vertex &vertex : node.mesh->vertices) {
            const QVector3D place = node.transform * vertex.position;
            for (int i = 0; i < 3; ++i) {
                low[i] = std::min(low[i], place[i]);
                high[i] = std::max(high[i], place[i]);
            }
        }
    }
    const QVector3D size = high - low;
    const float largest = std::max({size.x(), size.y(), size.z()});
    QMatrix4x4 result;
    if (!std::isfinite(largest) || largest <= 0)
        return result;
    result.scale(1.7f / largest);
    result.translate(-(low.x() + size.x() / 2), -low.y(), -(low.z() + size.z() / 2));
    return result;
}

const Scene::Material *Scene::material(Id id) const
{
    return find(m_materials, id);
}

const Scene::Node *Scene::node(Id id) const
{
    return find(m_nodes, id);
}

void Scene::replace(const QVector<Material> &materials)
{
    replaceIn(&m_materials, materials);
    Q_EMIT materialsChanged();
}

void Scene::replace(const QVector<Node> &nodes)
{
    replaceIn(&m_nodes, nodes);
    Q_EMIT nodesChanged();
}

void Scene::change(const QVector<Material> &materials, const QString &text)
{
    if (!materials.isEmpty())
        m_undoStack.push(new Change<Material>(this, present(m_materials, materials), materials, text));
}

void Scene::change(const QVector<Node> &nodes, const QString &text)
{
    if (!nodes.isEmpty())
        m_undoStack.push(new Change<Node>(this, present(m_nodes, nodes), nodes, text));
}

void Scene::setActiveCamera(int index)
{
    if (index == m_activeCamera || index < 0 || index >= m_cameras.size())
        return;
    m_activeCamera = index;
    Q_EMIT cameraChanged();
}

void Scene::setView(double azimuth, double elevation, double distance)
{
    if (m_cameras[m_activeCamera].camera.setView(azimuth, elevation, distance))
        Q_EMIT cameraChanged();
}

void Scene::orbit(double azimuth, double elevation)
{
    if (m_cameras[m_activeCamera].camera.orbit(azimuth, elevation))
        Q_EMIT cameraChanged();
}

void Scene::zoom(double factor)
{
    if (m_cameras[m_activeCamera].camera.zoom(factor))
        Q_EMIT cameraChanged();
}

void Scene::resetCamera()
{
    const bool wasTurning = std::exchange(m_isTurning, true);
    if (m_cameras[m_activeCamera].camera.reset() || !wasTurning)
        Q_EMIT cameraChanged();
}

void Scene::setTurning(bool on)
{
    if (on == m_isTurning)
        return;
    m_isTurning = on;
    Q_EMIT cameraChanged();
}

void Scene::advanceTo(double seconds)
{
    if (m_isTurning && m_wasTurning)
        m_turnAngle = std::fmod(m_turnAngle + degreesPerSecond * (seconds - m_time), 360);
    m_wasTurning = m_isTurning;
    m_time = seconds;
}

Scene::Id Scene::addMaterial(Material material)
{
    material.id = newId();
    m_materials.append(material);
    return material.id;
}

void Scene::addNode(Node node)
{
    node.id = newId();
    m_nodes.append(node);
}

void Scene::addFloor()
{
    const Id material = addMaterial({0, "oxdPhongMaterial", QStringLiteral("Floor"), QColor(0x8c, 0x96, 0xa2), 0.3});
    Node floor{0, QStringLiteral("Floor"), material, makeFloor(), {}};
    floor.isFloor = true;
    addNode(floor);
}

template<class T>
void Scene::replaceIn(QVector<T> *all, const QVector<T> &some)
{
    for (const T &one : some) {
        auto *const found = std::find_if(all->begin(), all->end(), [&one](const T &old) { return old.id == one.id; });
        if (found != all->end())
            *found = one;
    }
}
