#include "ModelFile.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

#include <sys/stat.h>

namespace {

const QByteArray twoTriangles = "mtllib colours.mtl\n"
                                "v 0 0 0\nv 2 0 0\nv 0 4 0\nv 0 0 2\n"
                                "o First\nusemtl Red\nf 1 2 3\n"
                                "o Second\nusemtl Blue\nf 1 3 4\n";
const QByteArray colours = "newmtl Red\nKd 1 0 0\nNs 1023\nnewmtl Blue\nKd 0 0 0.5\nNs 0\n";

bool goOn(int)
{
    return true;
}

QStringList namesOf(const QVector<Scene::Material> &materials)
{
    QStringList names;
    for (const Scene::Material &material : materials)
        names.append(material.name);
    return names;
}

} // namespace

/// Model files, read and written in this process.
class tst_ModelFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsNodesAndMaterials();
    void surfacesHaveNormals();
    void squaresBecomeTriangles();
    void tellsTheProgress();
    void endsWhenTold();
    void unnamedNodeHasTheNameOfItsFile();
    void otherFormatIsReadToo();
    void partOfAPartIsWhereBothPutIt();
    void missingMaterialsDoNotMatter();
    void materialsOfNothingAreLeftOut();
    void placesThatAreNoNumbersAreInTheMiddle();
    void fileIsNeitherAPipeNorADevice_data();
    void fileIsNeitherAPipeNorADevice();
    void pipeThatAFileNamesIsNotOpened();
    void fileThatIsTooLargeIsRefused();
    void survivesDamagedFiles_data();
    void survivesDamagedFiles();
    void writesWhatItReads();
    void suffixMayBeInCapitals();
    void exampleIsWorthALook();

private:
    QString write(const char *name, const QByteArray &content) const;
    Scene::Model read(const QString &file) const;

    QTemporaryDir m_folder;
};

QString tst_ModelFile::write(const char *name, const QByteArray &content) const
{
    QFile file(m_folder.filePath(QString::fromLatin1(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", name);
    return file.fileName();
}

Scene::Model tst_ModelFile::read(const QString &file) const
{
    QString error;
    const Scene::Model model = ModelFile::read(file, goOn, &error);
    if (!error.isEmpty())
        qFatal("%s", qPrintable(error));
    return model;
}

void tst_ModelFile::readsNodesAndMaterials()
{
    write("colours.mtl", colours);
    const Scene::Model model = read(write("two.obj", twoTriangles));
    QCOMPARE(model.nodes.size(), 2);
    QCOMPARE(model.nodes.at(0).name, QStringLiteral("First"));
    QCOMPARE(model.nodes.at(1).name, QStringLiteral("Second"));
    const Scene::Material red = model.materials.value(int(model.nodes.at(0).material));
    const Scene::Material blue = model.materials.value(int(model.nodes.at(1).material));
    QCOMPARE(red.name, QStringLiteral("Red"));
    QCOMPARE(red.type, QByteArray("oxdPhongMaterial"));
    QCOMPARE(red.color, QColor::fromRgbF(1, 0, 0));
    QCOMPARE(red.gloss, 1.0);
    QCOMPARE(blue.color.blue(), 128);
    QCOMPARE(blue.gloss, 0.0);
    QCOMPARE(model.nodes.at(0).mesh->indices.size(), size_t(3));
    QCOMPARE(model.nodes.at(0).mesh->vertices.size(), size_t(3));
}

void tst_ModelFile::surfacesHaveNormals()
{
    const Scene::Model model = read(write("two.obj", twoTriangles));
    for (const Mesh::Vertex &vertex : model.nodes.at(0).mesh->vertices)
        QCOMPARE(vertex.normal, QVector3D(0, 0, 1));
}

void tst_ModelFile::squaresBecomeTriangles()
{
    const Scene::Model model = read(write("square.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n"));
    QCOMPARE(model.nodes.at(0).mesh->indices.size(), size_t(6));
}

void tst_ModelFile::tellsTheProgress()
{
    QVector<int> values;
    QString error;
    const auto note = [&values](int percent) {
        values.append(percent);
        return true;
    };
    ModelFile::read(QStringLiteral(SOURCE_DIR "/Share/examples/models/vase.obj"), note, &error);
    QCOMPARE(error, QString());
    QVERIFY2(values.size() > 5, qPrintable(QString::number(values.size())));
    QVERIFY(std::adjacent_find(values.cbegin(), values.cend(), std::greater_equal<>()) == values.cend());
    QVERIFY(values.first() >= 0);
    QVERIFY(values.last() <= 99);
}

void tst_ModelFile::endsWhenTold()
{
    int calls = 0;
    QString error;
    const auto stop = [&calls](int) {
        ++calls;
        return false;
    };
    const Scene::Model model =
        ModelFile::read(QStringLiteral(SOURCE_DIR "/Share/examples/models/vase.obj"), stop, &error);
    QVERIFY(model.nodes.isEmpty());
    QCOMPARE(error, QStringLiteral("cancelled"));
    QCOMPARE(calls, 1);
}

void tst_ModelFile::unnamedNodeHasTheNameOfItsFile()
{
    const Scene::Model model =
        read(write("some.thing.ply",
                   "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                   "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                   "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"));
    QCOMPARE(model.nodes.size(), 1);
    QCOMPARE(model.nodes.first().name, QStringLiteral("some.thing"));
}

void tst_ModelFile::otherFormatIsReadToo()
{
    const Scene::Model model = read(write("part.stl",
                                          "solid Part\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                          "vertex 0 1 0\nendloop\nendfacet\nendsolid Part\n"));
    QCOMPARE(model.nodes.size(), 1);
    QCOMPARE(model.nodes.first().mesh->vertices.size(), size_t(3));
}

void tst_ModelFile::partOfAPartIsWhereBothPutIt()
{
    const Scene::Model model =
        read(write("parts.ac",
                   "AC3Db\n"
                   "MATERIAL \"Red\" rgb 1 0 0  amb 1 1 1  emis 0 0 0  spec 0 0 0  shi 0  trans 0\n"
                   "OBJECT world\nkids 1\n"
                   "OBJECT group\nname \"Outer\"\nloc 1 0 0\nkids 1\n"
                   "OBJECT group\nname \"Inner\"\nloc 0 2 0\nkids 1\n"
                   "OBJECT poly\nname \"Triangle\"\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\n"
                   "numsurf 1\nSURF 0x20\nmat 0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\nkids 0\n"));
    QCOMPARE(model.nodes.size(), 1);
    QCOMPARE(model.nodes.first().transform * QVector3D(), QVector3D(1, 2, 0));
}

void tst_ModelFile::missingMaterialsDoNotMatter()
{
    QFile::remove(m_folder.filePath(QStringLiteral("colours.mtl")));
    const Scene::Model model = read(write("two.obj", twoTriangles));
    QCOMPARE(model.nodes.size(), 2);
    QVERIFY(model.materials.value(int(model.nodes.first().material)).color.isValid());
}

// A file has some that nothing is made of, and the reader of OBJ files adds one of its own.
void tst_ModelFile::materialsOfNothingAreLeftOut()
{
    write("colours.mtl", "newmtl Green\nKd 0 1 0\n" + colours);
    const Scene::Model model = read(write("two.obj", twoTriangles + "o Points\nusemtl Green\np 1 2 3\n"));
    QCOMPARE(namesOf(model.materials), QStringList({"Red", "Blue"}));
    QCOMPARE(model.nodes.at(0).material, Scene::Id(0));
    QCOMPARE(model.nodes.at(1).material, Scene::Id(1));
}

void tst_ModelFile::placesThatAreNoNumbersAreInTheMiddle()
{
    const Scene::Model model = read(write("nan.obj", "v nan 0 0\nv 1 inf 0\nv 0 1e300 0\nv 0 1 1\nf 1 2 3\nf 2 3 4\n"));
    for (const Scene::Node &node : model.nodes) {
        for (const Mesh::Vertex &vertex : node.mesh->vertices) {
            for (int i = 0; i < 3; ++i)
                QVERIFY(std::isfinite(vertex.position[i]) && std::isfinite(vertex.normal[i]));
        }
    }
}

void tst_ModelFile::fileIsNeitherAPipeNorADevice_data()
{
    QTest::addColumn<QString>("file");
    const QString pipe = m_folder.filePath(QStringLiteral("pipe.obj"));
    QVERIFY(mkfifo(QFile::encodeName(pipe).constData(), 0600) == 0);
    QTest::newRow("pipe") << pipe;
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("nothing") << QString();
}

void tst_ModelFile::fileIsNeitherAPipeNorADevice()
{
    QFETCH(QString, file);
    QString error;
    QVERIFY(ModelFile::read(file, goOn, &error).nodes.isEmpty());
    QCOMPARE(error, QStringLiteral("no such file"));
}

void tst_ModelFile::pipeThatAFileNamesIsNotOpened()
{
    QCOMPARE(mkfifo(QFile::encodeName(m_folder.filePath(QStringLiteral("pipe.mtl"))).constData(), 0600), 0);
    const Scene::Model model = read(write("piped.obj", "mtllib pipe.mtl\nmtllib /dev/zero\n" + twoTriangles.mid(19)));
    QCOMPARE(model.nodes.size(), 2);
}

void tst_ModelFile::fileThatIsTooLargeIsRefused()
{
    const QString name = write("large.obj", twoTriangles);
    QVERIFY(QFile::resize(name, (qint64(1) << 30) + 1)); // takes no room
    QString error;
    QVERIFY(ModelFile::read(name, goOn, &error).nodes.isEmpty());
    QCOMPARE(error, QStringLiteral("larger than a gibibyte"));
}

void tst_ModelFile::survivesDamagedFiles_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 0; seed < 10; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void tst_ModelFile::survivesDamagedFiles()
{
    QFETCH(quint32, seed);
    write("colours.mtl", colours);
    static const QVector<QByteArray> pieces{"f 1/2/3 4//5 -1\n",
                                            "-99999999999",
                                            "4294967297",
                                            "f",
                                            "\n",
                                            "\\\n",
                                            "vn 1\n",
                                            "usemtl\n",
                                            "o\n",
                                            "g a b c\n",
                                            "1e999",
                                            QByteArray(5000, '/'),
                                            QByteArray("\0\0", 2),
                                            "mtllib ../two.obj\n",
                                            "v 1 2 3 4 5 6 7\n",
                                            "vt\n"};
    QRandomGenerator random(seed);
    for (int i = 0; i < 50; ++i) {
        QByteArray text = twoTriangles + "vt 0 0\nvn 0 0 1\nf 1/1/1 2/1/1 3/1/1 4/1/1\n";
        for (int changes = random.bounded(1, 8); changes > 0; --changes) {
            const int place = random.bounded(text.size());
            switch (random.bounded(3)) {
            case 0:
                text[place] = static_cast<char>(random.bounded(256));
                break;
            case 1:
                text.insert(place, pieces.at(random.bounded(pieces.size())));
                break;
            default:
                text.remove(place, random.bounded(20));
                break;
            }
        }
        QString error;
        const Scene::Model model = ModelFile::read(write("damaged.obj", text), goOn, &error);
        QCOMPARE(model.nodes.isEmpty(), !error.isEmpty());
        for (const Scene::Node &node : model.nodes) {
            const size_t count = node.mesh->vertices.size();
            QVERIFY(std::all_of(node.mesh->indices.begin(), node.mesh->indices.end(),
                                [count](quint32 index) { return index < count; }));
        }
    }
}

void tst_ModelFile::writesWhatItReads()
{
    Scene scene;
    scene.show(read(QStringLiteral(SOURCE_DIR "/Share/examples/models/vase.obj")));
    const QString file = m_folder.filePath(QStringLiteral("written.obj"));
    QString error;
    QVERIFY2(ModelFile::write(scene, file, &error), qPrintable(error));

    const Scene::Model model = read(file);
    QCOMPARE(model.nodes.size(), scene.nodes().size() - 1); // but for the floor
    for (int i = 0; i < model.nodes.size(); ++i) {
        const Scene::Node &written = scene.nodes().at(i);
        const Scene::Node &again = model.nodes.at(i);
        QCOMPARE(again.name, written.name);
        QCOMPARE(again.mesh->indices.size(), written.mesh->indices.size());
        const Scene::Material material = model.materials.value(int(again.material));
        QCOMPARE(material.name, scene.material(written.material)->name);
        QVERIFY(std::abs(material.gloss - scene.material(written.material)->gloss) < 0.01);
        QVERIFY(std::abs(material.color.red() - scene.material(written.material)->color.red()) <= 1);
    }
    // It was placed on the floor: what is there already stays.
    const QMatrix4x4 place = Scene::fitting(model);
    QVERIFY((place * QVector3D(0, 1, 0) - QVector3D(0, 1, 0)).length() < 0.01f);
}

void tst_ModelFile::suffixMayBeInCapitals()
{
    const Scene scene;
    const QString file = m_folder.filePath(QStringLiteral("X.OBJ"));
    QString error;
    QVERIFY2(ModelFile::write(scene, file, &error), qPrintable(error));
    QCOMPARE(read(file).nodes.size(), 2); // the floor is no part of it
}

void tst_ModelFile::exampleIsWorthALook()
{
    const Scene::Model model = read(QStringLiteral(SOURCE_DIR "/Share/examples/models/vase.obj"));
    size_t triangles = 0;
    QStringList names;
    for (const Scene::Node &node : model.nodes) {
        triangles += node.mesh->indices.size() / 3;
        names.append(node.name);
    }
    QCOMPARE(triangles, size_t(20000));
    QCOMPARE(names, QStringList({"Vase", "Inside", "Rope"}));
    QCOMPARE(namesOf(model.materials), QStringList({"Glaze", "Clay", "Rope"}));
}

QTEST_GUILESS_MAIN(tst_ModelFile)
#include "tst_ModelFile.moc"
