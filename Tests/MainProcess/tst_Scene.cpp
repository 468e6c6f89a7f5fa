#include "Scene.h"

#include <QSet>
#include <QSignalSpy>
#include <QtTest>

#include <limits>

namespace {

Scene::Model modelOf(const std::vector<Mesh::Vertex> &vertices)
{
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = vertices;
    mesh->indices = {0, 1, 2};
    Scene::Model model;
    model.materials.append({0, "oxdPhongMaterial", QStringLiteral("Only"), Qt::red, 0.5});
    model.nodes.append({0, QStringLiteral("Triangle"), 0, mesh, {}});
    return model;
}

QSet<Scene::Id> idsOf(const Scene &scene)
{
    QSet<Scene::Id> ids;
    for (const auto &material : scene.materials())
        ids.insert(material.id);
    for (const auto &node : scene.nodes())
        ids.insert(node.id);
    for (const auto &camera : scene.cameras())
        ids.insert(camera.id);
    return ids;
}

} // namespace

class tst_Scene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsWithAMeshOnAFloor();
    void everythingHasItsOwnIdForEver();
    void modelTakesThePlaceOfTheScene();
    void partsOfAModelKeepTheirMaterialsAndPlaces();
    void modelOfAnySizeStandsOnTheFloor_data();
    void modelOfAnySizeStandsOnTheFloor();
    void changeIsUndoneAndRedone();
    void thousandChangesAreUndone();
    void changeOfNothingIsNotUndone();
    void whatWasBeforeANewSceneIsNotUndone();
    void cameraTellsOfEachChange();
    void zoomByNoFactorDoesNothing();
    void cameraIsAboveWhereItsElevationIs();
    void highPictureHasAsMuchInView();
    void eachCameraKeepsItsView();
    void turntableTurnsByTime();
    void turntableGoesOnFromWhereItRested();
    void everyMeshIsSound();
};

void tst_Scene::startsWithAMeshOnAFloor()
{
    const Scene scene;
    QCOMPARE(scene.nodes().size(), 3);
    QCOMPARE(scene.materials().size(), 3);
    QVERIFY(scene.nodes().last().isFloor);
    for (const Scene::Node &node : scene.nodes())
        QVERIFY(scene.material(node.material));
    QVERIFY(!scene.material(0));
    QVERIFY(!scene.node(scene.materials().first().id));
}

void tst_Scene::everythingHasItsOwnIdForEver()
{
    Scene scene;
    const QSet<Scene::Id> before = idsOf(scene);
    QCOMPARE(before.size(), 9);
    QVERIFY(!before.contains(0));
    QSignalSpy materials(&scene, &Scene::materialsChanged);
    QSignalSpy nodes(&scene, &Scene::nodesChanged);
    scene.clear();
    QCOMPARE(materials.count(), 1);
    QCOMPARE(nodes.count(), 1);
    const QSet<Scene::Id> after = idsOf(scene);
    QCOMPARE(QSet<Scene::Id>(before & after).size(), 3); // the cameras stay
}

void tst_Scene::modelTakesThePlaceOfTheScene()
{
    Scene scene;
    QSignalSpy materials(&scene, &Scene::materialsChanged);
    QSignalSpy nodes(&scene, &Scene::nodesChanged);
    scene.show(modelOf({{{0, 0, 0}, {}}, {{1, 0, 0}, {}}, {{0, 1, 0}, {}}}));
    QCOMPARE(scene.nodes().size(), 2);
    QCOMPARE(scene.nodes().first().name, QStringLiteral("Triangle"));
    QCOMPARE(scene.material(scene.nodes().first().material)->name, QStringLiteral("Only"));
    QVERIFY(scene.nodes().last().isFloor);
    QCOMPARE(materials.count(), 1);
    QCOMPARE(nodes.count(), 1);
}

void tst_Scene::partsOfAModelKeepTheirMaterialsAndPlaces()
{
    Scene::Model model = modelOf({{{0, 0, 0}, {}}, {{1, 0, 0}, {}}, {{0, 1, 0}, {}}});
    model.materials.append({0, "oxdPhongMaterial", QStringLiteral("Other"), Qt::blue, 0.5});
    Scene::Node other = model.nodes.first();
    other.material = 1;
    other.transform.translate(0, 0, 10); // which makes it deeper than wide
    model.nodes.append(other);
    Scene scene;
    scene.show(model);

    QCOMPARE(scene.materials().size(), 3); // with the floor's
    const Scene::Node &first = scene.nodes().at(0);
    const Scene::Node &second = scene.nodes().at(1);
    QCOMPARE(scene.material(first.material)->name, QStringLiteral("Only"));
    QCOMPARE(scene.material(second.material)->name, QStringLiteral("Other"));
    QCOMPARE(first.transform, Scene::fitting(model));
    QCOMPARE(second.transform, Scene::fitting(model) * other.transform);
    const QVector3D way = second.transform * QVector3D() - first.transform * QVector3D();
    QVERIFY((way - QVector3D(0, 0, 1.7f)).length() < 1e-3f);
}

void tst_Scene::modelOfAnySizeStandsOnTheFloor_data()
{
    QTest::addColumn<float>("size");
    QTest::addColumn<QVector3D>("place");
    QTest::newRow("small") << 1e-6f << QVector3D();
    QTest::newRow("one") << 1.0f << QVector3D(5, -7, 9);
    QTest::newRow("large") << 1e6f << QVector3D(-1e6f, 1e6f, 0);
}

void tst_Scene::modelOfAnySizeStandsOnTheFloor()
{
    QFETCH(float, size);
    QFETCH(QVector3D, place);
    const std::vector<Mesh::Vertex> vertices{
        {place, {}}, {place + size * QVector3D(1, 0, 0), {}}, {place + size * QVector3D(0, 0.5f, 0.5f), {}}};
    const QMatrix4x4 matrix = Scene::fitting(modelOf(vertices));
    const QVector3D first = matrix * vertices[0].position;
    const QVector3D second = matrix * vertices[1].position;
    const QVector3D third = matrix * vertices[2].position;
    QVERIFY(std::abs(first.y()) < 1e-3f);
    QVERIFY(std::abs((second - first).x() - 1.7f) < 1e-3f);
    QVERIFY(std::abs(first.x() + second.x()) < 1e-3f);
    QVERIFY(std::abs(third.y() - 0.85f) < 1e-3f);
    QVERIFY(std::abs(first.z() + third.z()) < 1e-3f);

    // What has no size stays as it is.
    QVERIFY(Scene::fitting(modelOf({{place, {}}, {place, {}}, {place, {}}})).isIdentity());
    const float huge = std::numeric_limits<float>::max();
    QVERIFY(Scene::fitting(modelOf({{{huge, 0, 0}, {}}, {{-huge, 0, 0}, {}}, {{0, 1, 0}, {}}})).isIdentity());
}

void tst_Scene::changeIsUndoneAndRedone()
{
    Scene scene;
    QSignalSpy signal(&scene, &Scene::materialsChanged);
    QVector<Scene::Material> materials = scene.materials();
    const QColor before = materials.at(1).color;
    materials[0].color = Qt::green;
    materials[1].color = Qt::green;
    scene.change(materials.mid(0, 2), QStringLiteral("Green"));
    QCOMPARE(scene.materials().at(1).color, QColor(Qt::green));
    scene.undoStack()->undo();
    QCOMPARE(scene.materials().at(1).color, before);
    QVERIFY(scene.materials().at(0).color != QColor(Qt::green));
    scene.undoStack()->redo();
    QCOMPARE(scene.materials().at(0).color, QColor(Qt::green));
    QCOMPARE(signal.count(), 3);
    QCOMPARE(scene.undoStack()->undoText(), QStringLiteral("Green"));

    QSignalSpy nodesSignal(&scene, &Scene::nodesChanged);
    QVector<Scene::Node> nodes = scene.nodes().mid(1);
    nodes[0].isVisible = false;
    scene.change(nodes, QStringLiteral("Hide"));
    QVERIFY(!scene.nodes().at(1).isVisible);
    scene.undoStack()->undo();
    QVERIFY(scene.nodes().at(1).isVisible);
    QCOMPARE(nodesSignal.count(), 2);
    QCOMPARE(signal.count(), 3);
}

void tst_Scene::thousandChangesAreUndone()
{
    Scene scene;
    for (int i = 0; i < 1001; ++i)
        scene.change(scene.nodes(), QStringLiteral("Something"));
    int undone = 0;
    for (; scene.undoStack()->canUndo(); ++undone)
        scene.undoStack()->undo();
    QCOMPARE(undone, 1000);
}

void tst_Scene::changeOfNothingIsNotUndone()
{
    Scene scene;
    scene.change(QVector<Scene::Material>(), QStringLiteral("Nothing"));
    scene.change(QVector<Scene::Node>(), QStringLiteral("Nothing"));
    QVERIFY(!scene.undoStack()->canUndo());
}

void tst_Scene::whatWasBeforeANewSceneIsNotUndone()
{
    Scene scene;
    scene.change(scene.nodes(), QStringLiteral("Something"));
    QVERIFY(scene.undoStack()->canUndo());
    scene.clear();
    QVERIFY(!scene.undoStack()->canUndo());
    scene.change(scene.nodes(), QStringLiteral("Something"));
    scene.show(modelOf({{{0, 0, 0}, {}}, {{1, 0, 0}, {}}, {{0, 1, 0}, {}}}));
    QVERIFY(!scene.undoStack()->canUndo());
}

void tst_Scene::cameraTellsOfEachChange()
{
    Scene scene;
    QSignalSpy signal(&scene, &Scene::cameraChanged);
    const auto changes = [&signal](const auto &operation) {
        signal.clear();
        operation();
        return signal.count();
    };
    for (const int expected : {1, 0}) { // the second time, nothing does
        QCOMPARE(changes([&scene] { scene.setActiveCamera(2); }), expected);
        QCOMPARE(changes([&scene] { scene.setTurning(false); }), expected);
    }
    QCOMPARE(changes([&scene] { scene.setActiveCamera(-1); }), 0);
    QCOMPARE(changes([&scene] { scene.setActiveCamera(3); }), 0);
    QCOMPARE(scene.activeCamera(), 2);
    for (const int expected : {1, 0})
        QCOMPARE(changes([&scene] { scene.setView(10, 20, 1); }), expected);
    QCOMPARE(changes([&scene] { scene.orbit(0, 0); }), 0);
    QCOMPARE(changes([&scene] { scene.orbit(0, 1); }), 1);
    QCOMPARE(changes([&scene] { scene.zoom(1); }), 0);
    QCOMPARE(changes([&scene] { scene.zoom(2); }), 1);
    for (const int expected : {1, 0})
        QCOMPARE(changes([&scene] { scene.resetCamera(); }), expected);
    QVERIFY(scene.isTurning());

    // Where the camera is at its start already, the turntable alone goes on.
    scene.setTurning(false);
    QCOMPARE(changes([&scene] { scene.resetCamera(); }), 1);
}

void tst_Scene::zoomByNoFactorDoesNothing()
{
    Scene scene;
    QSignalSpy signal(&scene, &Scene::cameraChanged);
    for (const double factor : {0.0, -1.0, -0.5, qQNaN()})
        scene.zoom(factor);
    QCOMPARE(scene.camera().distance(), 1.0);
    QCOMPARE(signal.count(), 0);
}

void tst_Scene::cameraIsAboveWhereItsElevationIs()
{
    Camera camera(0, 0);
    const QVector3D level = camera.eye();
    QVERIFY(level.z() > 0);
    QVERIFY(std::abs(level.x()) < 1e-3f);
    camera.setView(90, 30, 1);
    QVERIFY(camera.eye().y() > level.y() + 1);
    QVERIFY(camera.eye().x() > 1);
    const QVector3D middle(0, level.y(), 0);
    QVERIFY(std::abs((camera.eye() - middle).length() - (level - middle).length()) < 1e-3f);
    camera.setView(90, 30, 2);
    QVERIFY(std::abs((camera.eye() - middle).length() - 2 * (level - middle).length()) < 1e-3f);
}

// A wide one shows more at its sides, a high one more above and below.
void tst_Scene::highPictureHasAsMuchInView()
{
    const Camera camera(0, 0);
    const auto place = [&camera](double aspectRatio) {
        return camera.projectionMatrix(aspectRatio) * camera.viewMatrix() * QVector3D(0.5f, 1.5f, 0);
    };
    const QVector3D square = place(1);
    QVERIFY(square.x() > 0.1f && square.y() > 0.1f);
    QVERIFY(std::abs(place(0.5).x() - square.x()) < 1e-3f);
    QVERIFY(std::abs(place(0.5).y() - square.y() / 2) < 1e-3f);
    QVERIFY(std::abs(place(2).x() - square.x() / 2) < 1e-3f);
    QVERIFY(std::abs(place(2).y() - square.y()) < 1e-3f);
}

void tst_Scene::eachCameraKeepsItsView()
{
    Scene scene;
    const auto view = [&scene] {
        const Camera &camera = scene.camera();
        return QVector<double>{camera.azimuth(), camera.elevation(), camera.distance()};
    };
    QCOMPARE(view(), QVector<double>({30, 18, 1}));
    scene.setActiveCamera(1);
    QCOMPARE(view(), QVector<double>({0, 5, 1}));
    scene.setView(10, 20, 2);
    scene.orbit(5, -5);
    scene.zoom(4);
    QCOMPARE(view(), QVector<double>({15, 15, 0.5}));
    scene.setActiveCamera(0);
    QCOMPARE(view(), QVector<double>({30, 18, 1}));
    scene.setActiveCamera(1);
    scene.resetCamera();
    QCOMPARE(view(), QVector<double>({0, 5, 1}));
}

void tst_Scene::turntableTurnsByTime()
{
    Scene scene;
    scene.advanceTo(10);
    QCOMPARE(scene.turnAngle(), 0.0);
    scene.advanceTo(12);
    const double angle = scene.turnAngle();
    QVERIFY(angle > 0);
    scene.advanceTo(12);
    QCOMPARE(scene.turnAngle(), angle);
    scene.advanceTo(13);
    QCOMPARE(scene.turnAngle(), 1.5 * angle);
    scene.advanceTo(1000000);
    QVERIFY(scene.turnAngle() < 360);
}

void tst_Scene::turntableGoesOnFromWhereItRested()
{
    Scene scene;
    scene.advanceTo(0);
    scene.advanceTo(1);
    const double angle = scene.turnAngle();
    scene.setTurning(false);
    scene.advanceTo(2);
    QCOMPARE(scene.turnAngle(), angle);
    scene.setTurning(true);
    scene.advanceTo(100); // the first frame after the rest
    QCOMPARE(scene.turnAngle(), angle);
    scene.advanceTo(101);
    QCOMPARE(scene.turnAngle(), 2 * angle);
}

void tst_Scene::everyMeshIsSound()
{
    const Scene scene;
    for (const Scene::Node &node : scene.nodes()) {
        QVERIFY(!node.mesh->indices.empty());
        QCOMPARE(node.mesh->indices.size() % 3, size_t(0));
        for (const quint32 index : node.mesh->indices)
            QVERIFY(index < node.mesh->vertices.size());
        for (const Mesh::Vertex &vertex : node.mesh->vertices) {
            QVERIFY(std::abs(vertex.normal.length() - 1) < 1e-3f);
            QVERIFY(vertex.position.y() >= 0);
        }
    }
    // The knot has no gaps.
    const Mesh &knot = *scene.nodes().first().mesh;
    for (size_t i = 0; i < knot.indices.size(); i += 3) {
        const auto corner = [&knot, i](size_t n) { return knot.vertices[knot.indices[i + n]].position; };
        QVERIFY(QVector3D::crossProduct(corner(1) - corner(0), corner(2) - corner(0)).length() > 0);
    }
}

QTEST_GUILESS_MAIN(tst_Scene)
#include "tst_Scene.moc"
