#include "NodeService.h"

NodeService::NodeService(Scene *scene, QObject *parent)
    : oxNodeService(parent)
    , m_scene(scene)
{
    connect(m_scene, &Scene::nodesChanged, this, &NodeService::nodesChanged);
}

NodeService::~NodeService() = default;

QVector<oxdNode> NodeService::getNodes()
{
    QVector<oxdNode> handles;
    for (const Scene::Node &node : m_scene->nodes())
        handles.append(oxdNode(node.id));
    return handles;
}

QStringList NodeService::getNames(const QVector<oxdNode> &nodes)
{
    QStringList names;
    for (const oxdNode &handle : nodes) {
        const Scene::Node *node = m_scene->node(handle.objectId());
        names.append(node ? node->name : QString());
    }
    return names;
}

QVariantList NodeService::getVisible(const QVector<oxdNode> &nodes)
{
    QVariantList values;
    for (const oxdNode &handle : nodes) {
        const Scene::Node *node = m_scene->node(handle.objectId());
        values.append(node && node->isVisible);
    }
    return values;
}

void NodeService::setVisible(const QVector<oxdNode> &nodes, bool visible)
{
    QVector<Scene::Node> changed = sceneNodes(nodes);
    for (Scene::Node &node : changed)
        node.isVisible = visible;
    m_scene->change(changed, visible ? tr("Show") : tr("Hide"));
}

QList<oxdMaterial> NodeService::getMaterials(const QVector<oxdNode> &nodes)
{
    QList<oxdMaterial> materials;
    for (const oxdNode &handle : nodes) {
        const Scene::Node *node = m_scene->node(handle.objectId());
        materials.append(oxdMaterial(node ? node->material : 0));
    }
    return materials;
}

void NodeService::setMaterial(const QVector<oxdNode> &nodes, const QList<oxdMaterial> &materials)
{
    const Scene::Material *material = m_scene->material(materials.value(0).objectId());
    if (!material)
        return;
    QVector<Scene::Node> changed = sceneNodes(nodes);
    for (Scene::Node &node : changed)
        node.material = material->id;
    m_scene->change(changed, tr("Material"));
}

QVector<Scene::Node> NodeService::sceneNodes(const QVector<oxdNode> &handles) const
{
    QVector<Scene::Node> result;
    for (const oxdNode &handle : handles) {
        if (const Scene::Node *found = m_scene->node(handle.objectId()))
            result.append(*found);
    }
    return result;
}
