#include <QImage>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cerrno>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include "Patience.h"
#include "SignalTo.h"
#include "XServer.h"
#include "oxCameraService.h"
#include "oxFileIOService.h"
#include "oxFrameReader.h"
#include "oxKernelService.h"
#include "oxMaterialService.h"
#include "oxMessageService.h"
#include "oxNodeService.h"
#include "oxPreferencesService.h"
#include "oxQRPCAddress.h"
#include "oxQRPCClient.h"
#include "oxRenderService.h"
#include "oxUndoService.h"
#include "oxdDataObjects.h"
#include "oxdObjectManager.h"

namespace {

constexpr int limit = 60000;

// What a secondary process has of a main process: in this one, as often as wanted.
struct Secondary
{
    explicit Secondary(const QUrl &address)
    {
        for (oxBaseService *service : std::initializer_list<oxBaseService *>{
                 &render, &files, &materials, &cameras, &nodes, &undo, &messages, &preferences, &kernel}) {
            service->setClient(&client);
            client.registerService(service);
        }
        client.setCallTimeout(limit);
        client.connectToHost(address);
    }

    bool waitForConnected() { return client.waitForConnected(limit); }

    oxQRPCClient client;
    oxRenderService render;
    oxFileIOService files;
    oxMaterialService materials;
    oxCameraService cameras;
    oxNodeService nodes;
    oxUndoService undo;
    oxMessageService messages;
    oxPreferencesService preferences;
    oxKernelService kernel;
};

// Pixels in which a colour's hue prevails, as a colour does that is lit.
int pixelsOf(const QImage &picture, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            const int distance = std::abs(pixel.hue() - color.hue());
            count += pixel.saturation() > 110 && pixel.value() > 40 && std::min(distance, 360 - distance) < 20;
        }
    }
    return count;
}

// The part of the pixels that are clearly others.
double difference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return 1;
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y);
            const QColor q = b.pixelColor(x, y);
            count += std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) + std::abs(p.blue() - q.blue()) > 60;
        }
    }
    return double(count) / (a.width() * a.height());
}

const QColor copper(0xd0, 0x6a, 0x2e);
const QColor green(0x10, 0xc0, 0x20);

// Rows of little squares, some hundred thousand: long to read.
QByteArray largeModel()
{
    QByteArray text("o Field\n");
    constexpr int side = 350;
    for (int z = 0; z <= side; ++z) {
        for (int x = 0; x <= side; ++x)
            text += "v " + QByteArray::number(x) + ' ' + QByteArray::number((x * z) % 17) + ' ' + QByteArray::number(z)
                + '\n';
    }
    for (int z = 0; z < side; ++z) {
        for (int x = 1; x <= side; ++x) {
            const int a = z * (side + 1) + x;
            text += "f " + QByteArray::number(a) + ' ' + QByteArray::number(a + 1) + ' '
                + QByteArray::number(a + side + 2) + ' ' + QByteArray::number(a + side + 1) + '\n';
        }
    }
    return text;
}

} // namespace

/// The main process as its users start it, seen by secondary processes.
class tst_MainProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void tellsWhenItIsReady();
    void meshTurnsUntilTheUserTakesTheMouse();
    void rendersOnlyWhatChanged();
    void rendersAtMostSixtyFramesInASecond();
    void pictureThatIsStillHasSmoothEdges();
    void mouseTurnsTheCamera();
    void eachMoveOfADragCountsOnce();
    void wheelZooms();
    void doubleClickGoesBackToTheStart();
    void keysMoveTheCamera();
    void resizeChangesThePicture();
    void frameBufferHoldsThePicture();
    void compressedFrameBufferIsAPictureFile();
    void valuesOfThePictureAreKeptWithinTheirRange();

    void materialsHaveNamesTypesAndColors();
    void colorChangesThePictureAndIsUndone();
    void glossIsKeptWithinItsRange();
    void nodesAreHiddenAndShown();
    void nodeGetsAnotherMaterial();
    void metalShowsTheSky();
    void changeOfSeveralNodesIsOneStep();
    void camerasAreChosen();
    void viewIsSetInNumbers();
    void changesAreSignalled();

    void modelIsLoadedWithProgressAndUpload();
    void loadedModelStandsOnAFloor();
    void framesGoOnWhileAModelIsLoaded();
    void otherLoadMeanwhileIsRefused();
    void answersOthersWhileAModelIsLoaded();
    void fileThatCannotBeReadIsReported_data();
    void fileThatCannotBeReadIsReported();
    void sceneIsSavedAndLoadedAgain();
    void saveThatFailsIsReported();
    void opensAFileAtStart();
    void foldersAndFiltersAreKnown();
    void foldersAreUnknownWithoutABase();

    void messageReachesAllProcesses();
    void preferencesOutliveTheProcess();
    void defaultsLeaveWhatIsKeptWithoutIt();
    void kernelLogsAndEnds();
    void overlaysAreNotItsOwn();

    void signalsEndIt_data();
    void signalsEndIt();
    void secondSignalEndsItAtOnce();
    void signalEndsALoad();
    void secondProcessOfTheSameSessionIsRefused();
    void processAfterAKilledOneGoesOn();
    void sessionHasADefault();
    void sessionsShareNoFrames();
    void framesThatCannotBeSharedAreReported();
    void listensOnTcp();
    void reportsThatThereIsNoOpenGL();
    void wrongUseIsReported_data();
    void wrongUseIsReported();
    void tellsItsUse_data();
    void tellsItsUse();

private:
    void start(const QStringList &further = {});
    void startAndConnect(const QStringList &further = {});
    void stopTurning();
    QImage frameWith(const std::function<bool(const QImage &)> &isExpected);
    QImage nextFrame();
    QImage newestFrame(QImage *frame);
    QImage lastFrame();
    QByteArray line(QProcess::ProcessChannel channel);
    QString writeFile(const char *name, const QByteArray &content);

    XServer m_xServer{XServer::WithoutWindowManager};
    QTemporaryDir m_folder;
    QString m_session = QStringLiteral("test-%1").arg(QCoreApplication::applicationPid());
    std::unique_ptr<QProcess> m_process;
    std::unique_ptr<Secondary> m_secondary;
    oxFrameReader m_frames;
};

void tst_MainProcess::initTestCase()
{
#define OX_REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(OX_REGISTER)
#undef OX_REGISTER
}

void tst_MainProcess::init()
{
    m_process = std::make_unique<QProcess>();
}

void tst_MainProcess::cleanup()
{
    m_frames.detach();
    m_secondary.reset();
    m_process->terminate();
    if (!m_process->waitForFinished())
        m_process->kill();
    if (QTest::currentTestFailed())
        qWarning("the process's errors: %s", m_process->readAllStandardError().constData());
    m_process.reset();
}

void tst_MainProcess::start(const QStringList &further)
{
    m_process->start(
        QStringLiteral(MAIN_PROCESS),
        QStringList{QStringLiteral("--session"), m_session, QStringLiteral("--size"), QStringLiteral("480x270")}
            + further);
    QVERIFY(line(QProcess::StandardOutput).startsWith("oxMainProcess: ready at "));
}

void tst_MainProcess::startAndConnect(const QStringList &further)
{
    start(further);
    m_secondary = std::make_unique<Secondary>(oxQRPCAddress::ofSession(m_session));
    QVERIFY(m_secondary->waitForConnected());
    QVERIFY2(m_frames.attach(m_secondary->render.getSharedMemoryName()), qPrintable(m_frames.errorString()));
}

// The start of most tests: pictures can be compared when nothing moves by itself.
void tst_MainProcess::stopTurning()
{
    m_secondary->cameras.setTurning(false);
    QVERIFY(!m_secondary->cameras.isTurning());
    nextFrame();
}

// The shared picture, as soon as it is as expected; null when that does not happen.
QImage tst_MainProcess::frameWith(const std::function<bool(const QImage &)> &isExpected)
{
    QImage frame;
    const bool isThere = QTest::qWaitFor([&] { return m_frames.read(&frame) && isExpected(frame); }, limit / 2);
    return isThere ? frame.copy() : QImage();
}

// All that was asked for before is in it.
QImage tst_MainProcess::nextFrame()
{
    QImage frame;
    while (m_frames.read(&frame)) {}
    m_secondary->render.resize(480, m_secondary->render.getHeight() == 270 ? 271 : 270);
    const int height = m_secondary->render.getHeight();
    return frameWith([height](const QImage &picture) { return picture.height() == height; });
}

// The last of them that came, or what it was before. One with smooth edges may follow yet.
QImage tst_MainProcess::newestFrame(QImage *frame)
{
    while (m_frames.read(frame)) {}
    return *frame;
}

// The one after which no other comes.
QImage tst_MainProcess::lastFrame()
{
    QImage frame = nextFrame();
    QSignalSpy frames(&m_secondary->render, &oxRenderService::frameRendered);
    while (frames.wait(2000)) {}
    m_frames.read(&frame);
    return frame;
}

QByteArray tst_MainProcess::line(QProcess::ProcessChannel channel)
{
    m_process->setReadChannel(channel);
    const bool isThere =
        QTest::qWaitFor([&] { return m_process->canReadLine() || m_process->state() == QProcess::NotRunning; }, limit);
    return isThere ? m_process->readLine() : QByteArray();
}

QString tst_MainProcess::writeFile(const char *name, const QByteArray &content)
{
    QFile file(m_folder.filePath(QString::fromLatin1(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", name);
    return file.fileName();
}

void tst_MainProcess::tellsWhenItIsReady()
{
    m_process->start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--session"), m_session});
    QCOMPARE(line(QProcess::StandardOutput),
             QStringLiteral("oxMainProcess: ready at local:ox-%1-%2\n").arg(getuid()).arg(m_session).toUtf8());
    Secondary secondary(oxQRPCAddress::ofSession(m_session));
    QVERIFY(secondary.waitForConnected());
    QCOMPARE(secondary.render.getWidth(), 1280);
    QCOMPARE(secondary.render.getHeight(), 720);
    QVERIFY(secondary.render.initialize(true));
    QVERIFY(!secondary.render.terminate(true));
}

void tst_MainProcess::meshTurnsUntilTheUserTakesTheMouse()
{
    startAndConnect();
    QVERIFY(m_secondary->cameras.isTurning());
    const QImage first = frameWith([](const QImage &picture) { return pixelsOf(picture, copper) > 1000; });
    QCOMPARE(first.size(), QSize(480, 270));
    QVERIFY(!frameWith([&](const QImage &picture) { return difference(picture, first) > 0.02; }).isNull());

    m_secondary->render.mousePress(100, 100, Qt::LeftButton, 0);
    QVERIFY(!m_secondary->cameras.isTurning());
}

void tst_MainProcess::rendersOnlyWhatChanged()
{
    startAndConnect();
    QSignalSpy frames(&m_secondary->render, &oxRenderService::frameRendered);
    QTRY_VERIFY(frames.count() > 5);
    for (int i = 1; i < frames.count(); ++i)
        QCOMPARE(frames.at(i).first().toInt(), frames.at(i - 1).first().toInt() + 1);

    stopTurning();
    while (frames.wait(2000)) {}
    frames.clear();
    m_secondary->render.resize(480, m_secondary->render.getHeight());
    QVERIFY(!frames.wait(300));
    m_secondary->cameras.orbit(10, 0);
    QTRY_COMPARE(frames.count(), 2); // with rough, then with smooth edges
    QVERIFY(!frames.wait(300));
    m_secondary->nodes.setVisible(m_secondary->nodes.getNodes(), false);
    QTRY_COMPARE(frames.count(), 4);
    m_secondary->materials.setColor(m_secondary->materials.getMaterials(), green);
    QTRY_COMPARE(frames.count(), 6);
    m_secondary->cameras.setTurning(true);
    QTRY_VERIFY(frames.count() > 10);
}

void tst_MainProcess::rendersAtMostSixtyFramesInASecond()
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    startAndConnect({QStringLiteral("--size"), QStringLiteral("32x32")}); // quick to render
    QSignalSpy frames(&m_secondary->render, &oxRenderService::frameRendered);
    QTRY_VERIFY(frames.count() > 100);
    const qint64 milliseconds = sinceStart.elapsed();
    const int count = frames.last().first().toInt(); // with those before the connection
    QVERIFY2(count <= milliseconds * 60 / 1000 + 2,
             qPrintable(QStringLiteral("%1 in %2 ms").arg(count).arg(milliseconds)));
}

// Only there have pixels colours between those of the knot and of what is behind it.
void tst_MainProcess::pictureThatIsStillHasSmoothEdges()
{
    startAndConnect();
    stopTurning();
    m_secondary->nodes.setVisible(m_secondary->nodes.getNodes().mid(1), false);
    QImage rough;
    QImage smooth;
    for (int i = 0; i < 20 && rough == smooth; ++i) { // this process may be too slow to see the rough one
        rough = nextFrame();
        nextFrame();
        smooth = lastFrame();
        QCOMPARE(rough.size(), smooth.size());
    }
    const auto colors = [](const QImage &picture) {
        QSet<QRgb> result;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                result.insert(picture.pixel(x, y));
        }
        return result.size();
    };
    QVERIFY2(colors(smooth) > colors(rough) + 200,
             qPrintable(QStringLiteral("%1, %2").arg(colors(rough)).arg(colors(smooth))));
}

void tst_MainProcess::mouseTurnsTheCamera()
{
    startAndConnect();
    stopTurning();
    const QImage before = nextFrame();
    const double azimuth = m_secondary->cameras.getAzimuth();
    const double elevation = m_secondary->cameras.getElevation();

    m_secondary->render.mousePress(200, 100, Qt::LeftButton, 0);
    m_secondary->render.mouseMove(100, 140, Qt::LeftButton, 0);
    m_secondary->render.mouseRelease(100, 140, Qt::LeftButton, 0);
    QVERIFY(m_secondary->cameras.getAzimuth() > azimuth + 10);
    QVERIFY(m_secondary->cameras.getElevation() > elevation + 5);
    nextFrame();
    QVERIFY(difference(nextFrame(), before) > 0.02);

    // Without a button the mouse only passes by.
    const double turned = m_secondary->cameras.getAzimuth();
    m_secondary->render.mouseMove(300, 140, Qt::NoButton, 0);
    QCOMPARE(m_secondary->cameras.getAzimuth(), turned);
    m_secondary->render.mouseMove(300, 40, Qt::RightButton, 0);
    QCOMPARE(m_secondary->cameras.getAzimuth(), turned);
    const double near = m_secondary->cameras.getDistance();
    QVERIFY(near < 0.9);
    m_secondary->render.mouseMove(300, 140, Qt::MiddleButton, 0);
    QVERIFY(m_secondary->cameras.getDistance() > near + 0.1);
    QCOMPARE(m_secondary->cameras.getAzimuth(), turned);
}

void tst_MainProcess::eachMoveOfADragCountsOnce()
{
    startAndConnect();
    oxCameraService &cameras = m_secondary->cameras;
    const double azimuth = cameras.getAzimuth();
    const double elevation = cameras.getElevation();
    m_secondary->render.mousePress(200, 100, Qt::LeftButton, 0);
    for (const QPoint &place : {QPoint(190, 104), QPoint(180, 108), QPoint(170, 112), QPoint(200, 100)})
        m_secondary->render.mouseMove(place.x(), place.y(), Qt::LeftButton, 0);
    QVERIFY(std::abs(cameras.getAzimuth() - azimuth) < 1e-6); // the mouse is where it was
    QVERIFY(std::abs(cameras.getElevation() - elevation) < 1e-6);
}

void tst_MainProcess::wheelZooms()
{
    startAndConnect();
    stopTurning();
    const int before = pixelsOf(nextFrame(), copper);
    m_secondary->render.mouseWheel(10, 10, 120, 0);
    m_secondary->render.mouseWheel(10, 10, 120, 0);
    QVERIFY(m_secondary->cameras.getDistance() < 0.8);
    const int near = pixelsOf(nextFrame(), copper);
    QVERIFY2(near > before * 1.3, qPrintable(QStringLiteral("%1, %2").arg(before).arg(near)));
    for (int i = 0; i < 4; ++i)
        m_secondary->render.mouseWheel(10, 10, -120, 0);
    QVERIFY(pixelsOf(nextFrame(), copper) < before / 1.3);
}

void tst_MainProcess::doubleClickGoesBackToTheStart()
{
    startAndConnect();
    stopTurning();
    oxCameraService &cameras = m_secondary->cameras;
    const double azimuth = cameras.getAzimuth();
    const double elevation = cameras.getElevation();
    cameras.orbit(50, 20);
    cameras.zoom(2);
    QCOMPARE(cameras.getDistance(), 0.5);

    m_secondary->render.mouseDoubleClick(100, 100, Qt::LeftButton, 0);
    QCOMPARE(cameras.getAzimuth(), azimuth);
    QCOMPARE(cameras.getElevation(), elevation);
    QCOMPARE(cameras.getDistance(), 1.0);
    QVERIFY(cameras.isTurning());
}

void tst_MainProcess::keysMoveTheCamera()
{
    startAndConnect();
    stopTurning();
    oxCameraService &cameras = m_secondary->cameras;
    const double azimuth = cameras.getAzimuth();
    const double elevation = cameras.getElevation();
    const auto press = [this](int key) { m_secondary->render.keyPress(key, 0, 0, 0); };
    press(Qt::Key_Right);
    QCOMPARE(cameras.getAzimuth(), azimuth + 5);
    press(Qt::Key_Left);
    QCOMPARE(cameras.getAzimuth(), azimuth);
    press(Qt::Key_Up);
    QCOMPARE(cameras.getElevation(), elevation + 5);
    press(Qt::Key_Down);
    QCOMPARE(cameras.getElevation(), elevation);
    press(Qt::Key_Plus);
    QVERIFY(cameras.getDistance() < 1);
    press(Qt::Key_Minus);
    QCOMPARE(cameras.getDistance(), 1.0);
    press(Qt::Key_Space);
    QVERIFY(cameras.isTurning());
    press(Qt::Key_Space);
    QVERIFY(!cameras.isTurning());
    press(Qt::Key_Home);
    QVERIFY(cameras.isTurning());
}

void tst_MainProcess::resizeChangesThePicture()
{
    startAndConnect();
    m_secondary->render.resize(640, 300);
    QCOMPARE(m_secondary->render.getWidth(), 640);
    QCOMPARE(m_secondary->render.getHeight(), 300);
    QVERIFY(!frameWith([](const QImage &picture) { return picture.size() == QSize(640, 300); }).isNull());
    m_secondary->render.resize(-5, 0);
    QVERIFY(!frameWith([](const QImage &picture) { return picture.size() == QSize(1, 1); }).isNull());
    m_secondary->render.resize(1000000, 1000000);
    QCOMPARE(m_secondary->render.getWidth(), 3840);
    QCOMPARE(m_secondary->render.getHeight(), 2160);
    m_secondary->render.resize(400, 200);
    const QImage picture = frameWith([](const QImage &p) { return p.size() == QSize(400, 200); });
    QVERIFY(pixelsOf(picture, copper) > 500);
}

void tst_MainProcess::frameBufferHoldsThePicture()
{
    startAndConnect();
    stopTurning();
    QImage shared = nextFrame();
    const auto picture = [this, &shared] {
        const QByteArray pixels = m_secondary->render.getFrameBuffer();
        return QImage(reinterpret_cast<const uchar *>(pixels.constData()), shared.width(), shared.height(),
                      pixels.size() / shared.height(), QImage::Format_RGB32)
            .copy();
    };
    // Not QTRY_COMPARE, which looks again: rough edges may have become smooth by then.
    QVERIFY(QTest::qWaitFor([&] { return picture() == newestFrame(&shared); }, limit));
    QCOMPARE(m_secondary->render.getFrameBuffer().size(), 4 * shared.width() * shared.height());
    // The right way up, in the right colours: the pedestal is below the knot, and the knot is copper.
    QVERIFY(pixelsOf(shared.copy(0, 0, shared.width(), shared.height() / 2), copper)
            > 2 * pixelsOf(shared.copy(0, shared.height() / 2, shared.width(), shared.height() / 2), copper));
    QCOMPARE(qAlpha(shared.pixel(5, 5)), 255);
}

void tst_MainProcess::compressedFrameBufferIsAPictureFile()
{
    startAndConnect();
    stopTurning();
    oxRenderService &render = m_secondary->render;
    QImage shared = nextFrame();
    QCOMPARE(render.getCodec(), 0);
    render.setQuality(95);
    QCOMPARE(render.getQuality(), 95);
    QByteArray good;
    const auto isGoodPicture = [&] {
        good = render.getCompressedFrameBuffer();
        return difference(QImage::fromData(good, "JPG"), newestFrame(&shared)) < 0.01;
    };
    QVERIFY(QTest::qWaitFor(isGoodPicture, limit));
    render.setQuality(-1);
    QCOMPARE(render.getQuality(), 0);
    const QByteArray bad = render.getCompressedFrameBuffer();
    QCOMPARE(QImage::fromData(bad, "JPG").size(), shared.size());
    QVERIFY(bad.size() < good.size() / 2);
    render.setCodec(1);
    QCOMPARE(render.getCodec(), 1);
    const auto isPicture = [&] {
        return QImage::fromData(render.getCompressedFrameBuffer(), "PNG") == newestFrame(&shared);
    };
    QVERIFY(QTest::qWaitFor(isPicture, limit));
    render.setBitrate(1000);
    QCOMPARE(render.getBitrate(), 1000);
}

void tst_MainProcess::valuesOfThePictureAreKeptWithinTheirRange()
{
    startAndConnect();
    oxRenderService &render = m_secondary->render;
    render.setQuality(101);
    QCOMPARE(render.getQuality(), 100);
    render.setBitrate(-1);
    QCOMPARE(render.getBitrate(), 0);
    render.setCodec(1);
    render.setCodec(2);
    QCOMPARE(render.getCodec(), 0);
}

void tst_MainProcess::materialsHaveNamesTypesAndColors()
{
    startAndConnect();
    oxMaterialService &service = m_secondary->materials;
    const QList<oxdMaterial> materials = service.getMaterials();
    QCOMPARE(service.getNames(materials), QStringList({"Copper", "Slate", "Floor"}));
    QCOMPARE(service.getTypes(materials),
             QStringList({"oxdMetallicPaintMaterial", "oxdPlasticMaterial", "oxdPhongMaterial"}));
    QCOMPARE(service.getColors(materials).first().value<QColor>(), copper);
    QCOMPARE(service.getGloss(materials).first().toDouble(), 0.8);

    const QList<oxdMaterial> strangers{oxdMaterial(), oxdMaterial(12345678)};
    QCOMPARE(service.getNames(strangers), QStringList({QString(), QString()}));
    QCOMPARE(service.getTypes(strangers), QStringList({QString(), QString()}));
    QVERIFY(!service.getColors(strangers).at(1).value<QColor>().isValid());
    service.setColor(strangers, green);
    service.setColor(materials, QColor());
    QVERIFY(!m_secondary->undo.canUndo());
}

void tst_MainProcess::colorChangesThePictureAndIsUndone()
{
    startAndConnect();
    stopTurning();
    oxMaterialService &service = m_secondary->materials;
    oxUndoService &undo = m_secondary->undo;
    const QImage before = nextFrame();
    QCOMPARE(pixelsOf(before, green), 0);
    QVERIFY(!undo.canUndo());
    QVERIFY(!undo.canRedo());
    QCOMPARE(undo.undoText(), QString());

    const QList<oxdMaterial> knot = service.getMaterials().mid(0, 1);
    service.setColor(knot, green);
    QCOMPARE(service.getColors(knot).first().value<QColor>(), green);
    const QImage changed = nextFrame();
    QVERIFY(pixelsOf(changed, green) > 1000);
    QCOMPARE(pixelsOf(changed, copper), 0);
    QVERIFY(undo.canUndo());
    QCOMPARE(undo.undoText(), QStringLiteral("Colour"));

    undo.undo();
    QCOMPARE(service.getColors(knot).first().value<QColor>(), copper);
    QCOMPARE(pixelsOf(nextFrame(), green), 0);
    QVERIFY(!undo.canUndo());
    QVERIFY(undo.canRedo());
    QCOMPARE(undo.redoText(), QStringLiteral("Colour"));

    undo.redo();
    QVERIFY(pixelsOf(nextFrame(), green) > 1000);
    undo.redo();
    QVERIFY(!undo.canRedo());
}

void tst_MainProcess::glossIsKeptWithinItsRange()
{
    startAndConnect();
    oxMaterialService &service = m_secondary->materials;
    const QList<oxdMaterial> all = service.getMaterials();
    service.setGloss(all, 7);
    QCOMPARE(service.getGloss(all), QVariantList({1.0, 1.0, 1.0}));
    service.setGloss(all.mid(1, 1), -7);
    QCOMPARE(service.getGloss(all), QVariantList({1.0, 0.0, 1.0}));
    service.setGloss(all, qQNaN());
    QCOMPARE(service.getGloss(all), QVariantList({1.0, 0.0, 1.0}));
    QCOMPARE(m_secondary->undo.undoText(), QStringLiteral("Gloss"));
    m_secondary->undo.undo();
    m_secondary->undo.undo();
    QCOMPARE(service.getGloss(all), QVariantList({0.8, 0.6, 0.3}));
}

void tst_MainProcess::nodesAreHiddenAndShown()
{
    startAndConnect();
    stopTurning();
    oxNodeService &service = m_secondary->nodes;
    const QVector<oxdNode> nodes = service.getNodes();
    QCOMPARE(service.getNames(nodes), QStringList({"Knot", "Pedestal", "Floor"}));
    QCOMPARE(service.getVisible(nodes), QVariantList({true, true, true}));
    QVERIFY(pixelsOf(nextFrame(), copper) > 1000);

    service.setVisible(nodes.mid(0, 1), false);
    QCOMPARE(service.getVisible(nodes), QVariantList({false, true, true}));
    QCOMPARE(pixelsOf(nextFrame(), copper), 0);
    QCOMPARE(m_secondary->undo.undoText(), QStringLiteral("Hide"));
    m_secondary->undo.undo();
    QVERIFY(pixelsOf(nextFrame(), copper) > 1000);

    const QVector<oxdNode> strangers{oxdNode(), oxdNode(9999)};
    QCOMPARE(service.getNames(strangers), QStringList({QString(), QString()}));
    QCOMPARE(service.getVisible(strangers), QVariantList({false, false}));
    service.setVisible(strangers, true);
    QVERIFY(!m_secondary->undo.canUndo());
}

void tst_MainProcess::nodeGetsAnotherMaterial()
{
    startAndConnect();
    stopTurning();
    oxNodeService &service = m_secondary->nodes;
    const QVector<oxdNode> nodes = service.getNodes();
    const QList<oxdMaterial> materials = m_secondary->materials.getMaterials();
    QCOMPARE(service.getMaterials(nodes.mid(0, 1)).first().objectId(), materials.first().objectId());

    service.setMaterial(nodes.mid(0, 1), {});
    service.setMaterial(nodes.mid(0, 1), {oxdMaterial(9999)});
    QVERIFY(!m_secondary->undo.canUndo());
    service.setMaterial(nodes.mid(0, 1), materials.mid(1));
    QCOMPARE(service.getMaterials(nodes.mid(0, 1)).first().objectId(), materials.at(1).objectId());
    QCOMPARE(pixelsOf(nextFrame(), copper), 0);
    QCOMPARE(m_secondary->undo.undoText(), QStringLiteral("Material"));
    m_secondary->undo.undo();
    QVERIFY(pixelsOf(nextFrame(), copper) > 1000);
}

// Other materials do so less, in the same colour and with the same gloss.
void tst_MainProcess::metalShowsTheSky()
{
    startAndConnect();
    stopTurning();
    oxMaterialService &materials = m_secondary->materials;
    const QList<oxdMaterial> all = materials.getMaterials();
    QCOMPARE(materials.getTypes(all.mid(0, 2)), QStringList({"oxdMetallicPaintMaterial", "oxdPlasticMaterial"}));
    materials.setColor(all, copper);
    materials.setGloss(all, 0.8);
    nextFrame();
    const QImage metal = nextFrame();
    m_secondary->nodes.setMaterial(m_secondary->nodes.getNodes().mid(0, 1), all.mid(1, 1));
    nextFrame();
    const QImage plastic = nextFrame();
    QCOMPARE(metal.size(), plastic.size());
    QVERIFY2(difference(metal, plastic) > 0.02, qPrintable(QString::number(difference(metal, plastic))));
}

void tst_MainProcess::changeOfSeveralNodesIsOneStep()
{
    startAndConnect();
    oxNodeService &service = m_secondary->nodes;
    const QVector<oxdNode> nodes = service.getNodes();
    const QList<oxdMaterial> materials = m_secondary->materials.getMaterials();
    service.setVisible(nodes, false);
    QCOMPARE(service.getVisible(nodes), QVariantList({false, false, false}));
    m_secondary->undo.undo();
    QCOMPARE(service.getVisible(nodes), QVariantList({true, true, true}));
    QVERIFY(!m_secondary->undo.canUndo());
    service.setVisible(nodes, true);
    QCOMPARE(m_secondary->undo.undoText(), QStringLiteral("Show"));
    m_secondary->undo.undo();

    const auto idsOf = [&service, &nodes] {
        QVector<unsigned long long> ids;
        const QList<oxdMaterial> all = service.getMaterials(nodes);
        for (const oxdMaterial &material : all)
            ids.append(material.objectId());
        return ids;
    };
    const auto before = idsOf();
    QCOMPARE(QSet<unsigned long long>(before.begin(), before.end()).size(), 3);
    service.setMaterial(nodes, materials.mid(1));
    QCOMPARE(idsOf(), QVector<unsigned long long>(3, materials.at(1).objectId()));
    m_secondary->undo.undo();
    QCOMPARE(idsOf(), before);
    QVERIFY(!m_secondary->undo.canUndo());

    QCOMPARE(service.getMaterials({oxdNode(9999)}).first().objectId(), 0ULL);
}

void tst_MainProcess::camerasAreChosen()
{
    startAndConnect();
    stopTurning();
    oxCameraService &service = m_secondary->cameras;
    const QList<oxdSceneObject> cameras = service.getCameras();
    QCOMPARE(service.getNames(cameras), QStringList({"Perspective", "Front", "Top"}));
    QCOMPARE(service.getActiveCamera().first().objectId(), cameras.first().objectId());
    const QImage before = nextFrame();
    service.orbit(0, 7);

    service.setActiveCamera(cameras.mid(2));
    QCOMPARE(service.getActiveCamera().first().objectId(), cameras.at(2).objectId());
    QCOMPARE(service.getElevation(), 85.0);
    nextFrame();
    QVERIFY(difference(nextFrame(), before) > 0.05);

    service.setActiveCamera({});
    service.setActiveCamera({oxdSceneObject(9999)});
    QCOMPARE(service.getActiveCamera().first().objectId(), cameras.at(2).objectId());
    service.setActiveCamera(cameras); // each keeps its view
    QCOMPARE(service.getElevation(), 25.0);
    service.setActiveCamera(cameras.mid(1));
    QCOMPARE(service.getAzimuth(), 0.0);
    QCOMPARE(service.getElevation(), 5.0);
    QCOMPARE(service.getNames({oxdSceneObject(9999)}), QStringList({QString()}));
}

void tst_MainProcess::viewIsSetInNumbers()
{
    startAndConnect();
    oxCameraService &cameras = m_secondary->cameras;
    cameras.setView(100, 40, 2);
    QCOMPARE(cameras.getAzimuth(), 100.0);
    QCOMPARE(cameras.getElevation(), 40.0);
    QCOMPARE(cameras.getDistance(), 2.0);
    cameras.setView(370, 200, 99);
    QCOMPARE(cameras.getAzimuth(), 10.0);
    QCOMPARE(cameras.getElevation(), 89.0);
    QCOMPARE(cameras.getDistance(), 5.0);
    cameras.setView(10, -200, 0);
    QCOMPARE(cameras.getElevation(), -5.0);
    QCOMPARE(cameras.getDistance(), 0.2);
    cameras.setView(qQNaN(), qInf(), 1);
    cameras.zoom(0);
    cameras.zoom(-1);
    cameras.zoom(qQNaN());
    QCOMPARE(cameras.getAzimuth(), 10.0);
    QCOMPARE(cameras.getElevation(), -5.0);
    QCOMPARE(cameras.getDistance(), 0.2);
}

void tst_MainProcess::changesAreSignalled()
{
    startAndConnect();
    Secondary other(oxQRPCAddress::ofSession(m_session));
    QVERIFY(other.waitForConnected());
    QSignalSpy materials(&other.materials, &oxMaterialService::materialsChanged);
    QSignalSpy nodes(&other.nodes, &oxNodeService::nodesChanged);
    QSignalSpy cameras(&other.cameras, &oxCameraService::cameraChanged);
    QSignalSpy undo(&other.undo, &oxUndoService::changed);

    m_secondary->materials.setColor(m_secondary->materials.getMaterials(), green);
    QTRY_COMPARE(materials.count(), 1);
    QTRY_COMPARE(undo.count(), 1);
    m_secondary->undo.undo();
    QTRY_COMPARE(materials.count(), 2);
    QTRY_COMPARE(undo.count(), 2);
    QCOMPARE(nodes.count(), 0);
    m_secondary->nodes.setVisible(m_secondary->nodes.getNodes(), false);
    QTRY_COMPARE(nodes.count(), 1);
    QCOMPARE(cameras.count(), 0);
    m_secondary->cameras.orbit(1, 1);
    QTRY_COMPARE(cameras.count(), 1);
    m_secondary->cameras.orbit(0, 0);
    m_secondary->cameras.setTurning(false);
    QTRY_COMPARE(cameras.count(), 2);
    QCOMPARE(materials.count(), 2);
}

void tst_MainProcess::modelIsLoadedWithProgressAndUpload()
{
    startAndConnect();
    stopTurning();
    const QString file = writeFile("field.obj", largeModel());
    QVERIFY(m_secondary->undo.canUndo() == false);
    m_secondary->materials.setColor(m_secondary->materials.getMaterials(), green);
    QSignalSpy progress(&m_secondary->files, &oxFileIOService::progress);
    QVERIFY(m_secondary->files.loadFile(file));

    QVector<int> values;
    for (const QList<QVariant> &arguments : progress)
        values.append(arguments.first().toInt());
    const auto firstOfUpload = std::find(values.cbegin(), values.cend(), 100);
    QCOMPARE(values.first(), 0);
    QVERIFY(firstOfUpload - values.cbegin() > 10);
    QVERIFY(std::is_sorted(values.cbegin(), values.cend()));
    QVERIFY(values.cend() - firstOfUpload > 20);
    QCOMPARE(std::count(firstOfUpload, values.cend(), 100), values.cend() - firstOfUpload);

    QCOMPARE(m_secondary->nodes.getNames(m_secondary->nodes.getNodes()), QStringList({"Field", "Floor"}));
    QVERIFY(!m_secondary->undo.canUndo());
    const QImage loaded = nextFrame();
    QCOMPARE(pixelsOf(loaded, copper), 0);
    QVERIFY(m_secondary->files.newFile());
    QCOMPARE(m_secondary->nodes.getNames(m_secondary->nodes.getNodes()), QStringList({"Knot", "Pedestal", "Floor"}));
    QVERIFY(pixelsOf(nextFrame(), copper) > 1000);
}

void tst_MainProcess::loadedModelStandsOnAFloor()
{
    startAndConnect();
    QVERIFY(m_secondary->files.loadFile(writeFile("triangle.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")));
    stopTurning();
    nextFrame();
    const QImage withFloor = nextFrame();
    m_secondary->nodes.setVisible(m_secondary->nodes.getNodes().mid(1), false);
    nextFrame();
    const QImage without = nextFrame();
    QCOMPARE(withFloor.size(), without.size());
    QVERIFY2(difference(withFloor, without) > 0.02, qPrintable(QString::number(difference(withFloor, without))));
}

void tst_MainProcess::framesGoOnWhileAModelIsLoaded()
{
    startAndConnect();
    const QString file = writeFile("field.obj", largeModel());
    int framesWhileReading = 0;
    int percent = -1;
    connect(&m_secondary->files, &oxFileIOService::progress, this, [&percent](int value) { percent = value; });
    connect(&m_secondary->render, &oxRenderService::frameRendered, this,
            [&] { framesWhileReading += percent >= 0 && percent < 100; });
    QVERIFY(m_secondary->files.loadFile(file));
    QVERIFY2(framesWhileReading > 3, qPrintable(QString::number(framesWhileReading)));
}

void tst_MainProcess::otherLoadMeanwhileIsRefused()
{
    startAndConnect();
    const QString file = writeFile("field.obj", largeModel());
    Secondary other(oxQRPCAddress::ofSession(m_session));
    QVERIFY(other.waitForConnected());
    QVector<bool> answers;
    connect(&m_secondary->files, &oxFileIOService::progress, this, [&](int percent) {
        if (percent > 0 && answers.isEmpty())
            answers = {other.files.loadFile(file), other.files.newFile()};
    });
    QVERIFY(m_secondary->files.loadFile(file));
    QCOMPARE(answers, QVector<bool>({false, false}));
    QCOMPARE(line(QProcess::StandardError),
             QStringLiteral("oxFileIOService: couldn't read '%1': another file is being loaded\n").arg(file).toUtf8());
    QVERIFY(other.files.loadFile(file));
}

void tst_MainProcess::answersOthersWhileAModelIsLoaded()
{
    startAndConnect();
    const QString file = writeFile("field.obj", largeModel());
    Secondary other(oxQRPCAddress::ofSession(m_session));
    QVERIFY(other.waitForConnected());
    int answers = 0;
    connect(&m_secondary->files, &oxFileIOService::progress, this, [&] { answers += other.render.getWidth() == 480; });
    QVERIFY(m_secondary->files.loadFile(file));
    QVERIFY(answers > 10);
}

void tst_MainProcess::fileThatCannotBeReadIsReported_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("missing") << "missing.obj" << QByteArray() << QByteArray("no such file");
    QTest::newRow("folder") << "." << QByteArray() << QByteArray("no such file");
    QTest::newRow("no model") << "notes.txt" << QByteArray("hello") << QByteArray();
    QTest::newRow("empty") << "empty.obj" << QByteArray() << QByteArray();
    QTest::newRow("no faces") << "points.obj" << QByteArray("v 0 0 0\nv 1 1 1\n") << QByteArray();
    QTest::newRow("bytes") << "bytes.obj" << QByteArray(100000, '\xfe') << QByteArray();
    QTest::newRow("zeros") << "zeros.obj" << QByteArray(100000, '\0') << QByteArray();
    QTest::newRow("wild index") << "index.obj" << QByteArray("v 0 0 0\nf 1 2000000000 -2000000000\n") << QByteArray();
}

void tst_MainProcess::fileThatCannotBeReadIsReported()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, reason);
    const bool exists = name != QLatin1String("missing.obj") && name != QLatin1String(".");
    const QString file = exists ? writeFile(name.toLatin1().constData(), content) : m_folder.filePath(name);
    startAndConnect();

    QVERIFY(!m_secondary->files.loadFile(file));
    const QByteArray start = "oxFileIOService: couldn't read '" + file.toUtf8() + "': ";
    const QByteArray error = line(QProcess::StandardError);
    QVERIFY2(error.startsWith(start + reason), error.constData());
    QVERIFY(error.size() > start.size() + 1);
    QCOMPARE(m_secondary->nodes.getNames(m_secondary->nodes.getNodes()), QStringList({"Knot", "Pedestal", "Floor"}));
}

void tst_MainProcess::sceneIsSavedAndLoadedAgain()
{
    startAndConnect();
    stopTurning();
    const QString file = m_folder.filePath(QStringLiteral("saved.obj"));
    m_secondary->materials.setColor(m_secondary->materials.getMaterials().mid(0, 1), green);
    QVERIFY(m_secondary->files.saveFile(file));
    QVERIFY(m_secondary->files.newFile());
    QVERIFY(m_secondary->files.loadFile(file));

    QCOMPARE(m_secondary->nodes.getNames(m_secondary->nodes.getNodes()), QStringList({"Knot", "Pedestal", "Floor"}));
    const QStringList names = m_secondary->materials.getNames(m_secondary->materials.getMaterials());
    QVERIFY2(names.contains(QStringLiteral("Copper")), qPrintable(names.join(QLatin1Char(' '))));
    QVERIFY(pixelsOf(nextFrame(), green) > 1000);
}

void tst_MainProcess::saveThatFailsIsReported()
{
    startAndConnect();
    QVERIFY(!m_secondary->files.saveFile(QStringLiteral("/nowhere/saved.obj")));
    QVERIFY(line(QProcess::StandardError).startsWith("oxFileIOService: couldn't write '/nowhere/saved.obj': "));
    QVERIFY(!m_secondary->files.saveFile(QStringLiteral("/tmp/saved.dog")));
    QCOMPARE(line(QProcess::StandardError),
             QByteArray("oxFileIOService: couldn't write '/tmp/saved.dog': only .obj files can be written\n"));
}

void tst_MainProcess::opensAFileAtStart()
{
    const QString file = writeFile("triangle.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    startAndConnect({QStringLiteral("--open"), file});
    QCOMPARE(m_secondary->nodes.getNodes().size(), 2);
    cleanup();
    init();
    m_process->start(
        QStringLiteral(MAIN_PROCESS),
        {QStringLiteral("--session"), m_session, QStringLiteral("--open"), QStringLiteral("/nowhere.obj")});
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitCode(), 1);
    QCOMPARE(m_process->readAllStandardError(),
             QByteArray("oxFileIOService: couldn't read '/nowhere.obj': no such file\n"));
}

void tst_MainProcess::foldersAndFiltersAreKnown()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OX_BASE_DIR"), QStringLiteral(SOURCE_DIR "/Share"));
    m_process->setProcessEnvironment(environment);
    startAndConnect();
    oxFileIOService &files = m_secondary->files;
    QCOMPARE(QDir(files.getTARNDir()).absolutePath(), QStringLiteral(SOURCE_DIR "/Share"));
    QCOMPARE(files.getTARNDataDir(), QStringLiteral(SOURCE_DIR "/Share/data"));
    QCOMPARE(files.getTARNExamplesDir(), QStringLiteral(SOURCE_DIR "/Share/examples"));
    QVERIFY(files.getImageReadFilter().startsWith(QStringLiteral("Images (*.")));
    QVERIFY(files.getImageReadFilter().contains(QStringLiteral(" *.png")));
    QVERIFY(files.getImageWriteFilter().contains(QStringLiteral(" *.png")));
}

void tst_MainProcess::foldersAreUnknownWithoutABase()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("OX_BASE_DIR"));
    m_process->setProcessEnvironment(environment);
    startAndConnect();
    QCOMPARE(m_secondary->files.getTARNDir(), QString());
    QCOMPARE(m_secondary->files.getTARNExamplesDir(), QString());
}

void tst_MainProcess::messageReachesAllProcesses()
{
    startAndConnect();
    Secondary other(oxQRPCAddress::ofSession(m_session));
    QVERIFY(other.waitForConnected());
    QSignalSpy own(&m_secondary->messages, &oxMessageService::messageReceived);
    QSignalSpy others(&other.messages, &oxMessageService::messageReceived);
    const QString text = QStringLiteral("50 % größer");
    m_secondary->messages.information(text);
    m_secondary->messages.warning(text);
    m_secondary->messages.error(text);
    QTRY_COMPARE(own.count(), 3);
    QTRY_COMPARE(others.count(), 3);
    QCOMPARE(others.at(0), QVariantList({oxMessageService::Information, text}));
    QCOMPARE(others.at(1), QVariantList({oxMessageService::Warning, text}));
    QCOMPARE(others.at(2), QVariantList({oxMessageService::Error, text}));
    QCOMPARE(line(QProcess::StandardOutput), "oxMessageService: information '" + text.toUtf8() + "'\n");
    QCOMPARE(line(QProcess::StandardError), "oxMessageService: warning '" + text.toUtf8() + "'\n");
    QCOMPARE(line(QProcess::StandardError), "oxMessageService: error '" + text.toUtf8() + "'\n");
}

void tst_MainProcess::preferencesOutliveTheProcess()
{
    startAndConnect();
    m_secondary->preferences.setStringValue(QStringLiteral("Test/Name"), QStringLiteral("Grün"));
    m_secondary->preferences.setDoubleValue(QStringLiteral("Test/Number"), 2.5);
    QCOMPARE(m_secondary->preferences.getStringValue(QStringLiteral("Test/Name")), QStringLiteral("Grün"));
    cleanup();
    init();

    startAndConnect();
    QCOMPARE(m_secondary->preferences.getStringValue(QStringLiteral("Test/Name")), QStringLiteral("Grün"));
    QCOMPARE(m_secondary->preferences.getDoubleValue(QStringLiteral("Test/Number")), 2.5);
    m_secondary->preferences.setDefault(QStringLiteral("Test"));
    QCOMPARE(m_secondary->preferences.getStringValue(QStringLiteral("Test/Name")), QString());
}

// Values that were set while there was no main process are the secondary process's own.
void tst_MainProcess::defaultsLeaveWhatIsKeptWithoutIt()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_folder.filePath(QStringLiteral("of-the-main-process")));
    m_process->setProcessEnvironment(environment);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.filePath(QStringLiteral("own")));
    const QString key = QStringLiteral("Test/Number");
    Secondary secondary(oxQRPCAddress::ofSession(m_session)); // nobody is there yet
    secondary.preferences.setIntValue(key, 7);
    start();
    QVERIFY(secondary.waitForConnected());
    secondary.preferences.setIntValue(key, 8);
    secondary.preferences.setDefault(QStringLiteral("Test"));
    QCOMPARE(secondary.preferences.getIntValue(key), 0);
    secondary.preferences.setIntValue(key, 9);
    secondary.preferences.setDefault();
    QCOMPARE(secondary.preferences.getIntValue(key), 0);
    secondary.client.disconnectFromHost();
    QCOMPARE(secondary.preferences.getIntValue(key), 7);
}

void tst_MainProcess::kernelLogsAndEnds()
{
    startAndConnect();
    oxKernelService &kernel = m_secondary->kernel;
    QVERIFY(kernel.initialize(true));
    QCOMPARE(kernel.salt(), QString());
    QVERIFY(kernel.authenticate(QString()));
    kernel.consoleLog(QStringLiteral("100 %s\n"));
    QCOMPARE(line(QProcess::StandardOutput), QByteArray("100 %s\n"));
    kernel.consoleLog(QStringLiteral("in two "));
    kernel.consoleLog(QStringLiteral("parts\n"));
    QCOMPARE(line(QProcess::StandardOutput), QByteArray("in two parts\n"));
    QVERIFY(!kernel.terminate(false));
    QVERIFY(!m_process->waitForFinished(500));
    QVERIFY(kernel.terminate(true));
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);
}

// Nor are preference pages: the calls are accepted and do nothing.
void tst_MainProcess::overlaysAreNotItsOwn()
{
    startAndConnect();
    oxRenderService &render = m_secondary->render;
    render.indicateOverlay(true);
    render.showOverlay();
    render.hideOverlay();
    render.addOverlay(QStringLiteral("a"));
    render.subOverlay(QStringLiteral("a"));
    render.updateOverlay(QStringLiteral("a"));
    render.sendTouchEvent("touch");
    render.keyRelease(1, 2, 3, 4);
    const QMetaObject &preferences = oxPreferencesService::staticMetaObject;
    void *noArguments[] = {nullptr};
    m_secondary->preferences.invokeMethod(&preferences, preferences.indexOfMethod("showPreferences()"), noArguments);
    QCOMPARE(render.getWidth(), 480);
    m_secondary.reset();
    m_process->terminate();
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->readAllStandardError(), QByteArray());
}

void tst_MainProcess::signalsEndIt_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void tst_MainProcess::signalsEndIt()
{
    QFETCH(int, signal);
    startAndConnect();
    signalTo(*m_process, signal);
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);
    QTRY_VERIFY(!m_secondary->client.isConnected());
}

// Both are there when it looks, as where it hangs on the way to its end.
void tst_MainProcess::secondSignalEndsItAtOnce()
{
    start();
    for (const int signal : {SIGSTOP, SIGINT, SIGTERM, SIGCONT})
        signalTo(*m_process, signal);
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitStatus(), QProcess::CrashExit);
    QCOMPARE(m_process->exitCode(), SIGTERM);
}

void tst_MainProcess::signalEndsALoad()
{
    startAndConnect();
    const QString file = writeFile("field.obj", largeModel());
    bool wasTold = false;
    connect(&m_secondary->files, &oxFileIOService::progress, this, [&](int percent) {
        if (percent > 0 && !std::exchange(wasTold, true))
            m_process->terminate();
    });
    QVERIFY(!m_secondary->files.loadFile(file));
    QTRY_COMPARE_WITH_TIMEOUT(m_process->state(), QProcess::NotRunning, limit);
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);
}

void tst_MainProcess::secondProcessOfTheSameSessionIsRefused()
{
    startAndConnect();
    QProcess second;
    second.start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--session"), m_session});
    QVERIFY(second.waitForFinished(limit));
    QCOMPARE(second.exitCode(), 1);
    QCOMPARE(second.readAllStandardOutput(), QByteArray());
    QCOMPARE(second.readAllStandardError(),
             QStringLiteral("oxMainProcess: another process listens at local:ox-%1-%2\n")
                 .arg(getuid())
                 .arg(m_session)
                 .toUtf8());
    QCOMPARE(m_secondary->render.getWidth(), 480);
}

void tst_MainProcess::processAfterAKilledOneGoesOn()
{
    startAndConnect();
    QVERIFY(!nextFrame().isNull());
    m_process->kill();
    QVERIFY(m_process->waitForFinished(limit));
    QTRY_VERIFY(!m_secondary->client.isConnected());

    start();
    QVERIFY(m_secondary->waitForConnected());
    QVERIFY(m_frames.attach(m_secondary->render.getSharedMemoryName()));
    const QImage frame = frameWith([](const QImage &picture) { return pixelsOf(picture, copper) > 1000; });
    QVERIFY(!frame.isNull());
    QVERIFY(!frameWith([&](const QImage &picture) { return difference(picture, frame) > 0.02; }).isNull());
}

void tst_MainProcess::sessionHasADefault()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), m_folder.path()); // where no one else's is
    m_process->setProcessEnvironment(environment);
    m_process->start(QStringLiteral(MAIN_PROCESS), QStringList());
    const QByteArray ready = line(QProcess::StandardOutput);
    QCOMPARE(ready, "oxMainProcess: ready at " + oxQRPCAddress::ofSession(QString()).toString().toUtf8() + '\n');
}

void tst_MainProcess::sessionsShareNoFrames()
{
    startAndConnect();
    QProcess other;
    const QString session = m_session + QStringLiteral("-other");
    other.start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--session"), session});
    Secondary secondary(oxQRPCAddress::ofSession(session));
    QVERIFY(secondary.waitForConnected());
    oxFrameReader frames;
    QVERIFY(frames.attach(secondary.render.getSharedMemoryName()));
    QImage frame;
    QVERIFY(QTest::qWaitFor([&] { return frames.read(&frame); }, limit));
    QCOMPARE(frame.size(), QSize(1280, 720));
    QCOMPARE(nextFrame().width(), 480);
    other.terminate();
    QVERIFY(other.waitForFinished(limit));
}

// The limit of a file's size, 51 MB here, is one of such a memory's too.
void tst_MainProcess::framesThatCannotBeSharedAreReported()
{
    m_process->start(QStringLiteral("/bin/sh"),
                     {QStringLiteral("-c"),
                      QStringLiteral("trap '' XFSZ && ulimit -f 100000 && exec \"$0\" --session \"$1\" --size 480x270"),
                      QStringLiteral(MAIN_PROCESS), m_session});
    QVERIFY(line(QProcess::StandardOutput).startsWith("oxMainProcess: ready at "));
    QCOMPARE(line(QProcess::StandardError),
             "oxMainProcess: frames are not shared: " + qt_error_string(EFBIG).toLocal8Bit() + '\n');

    Secondary secondary(oxQRPCAddress::ofSession(m_session));
    QVERIFY(secondary.waitForConnected());
    QCOMPARE(secondary.render.getSharedMemoryName(), QString());
    QCOMPARE(secondary.render.getFrameBuffer().size(), 4 * 480 * 270); // the way that is left
}

void tst_MainProcess::listensOnTcp()
{
    m_process->start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--listen"), QStringLiteral("tcp://127.0.0.1:0")});
    const QByteArray ready = line(QProcess::StandardOutput).trimmed();
    QVERIFY2(ready.startsWith("oxMainProcess: ready at tcp://127.0.0.1:"), ready.constData());
    Secondary secondary(QUrl(QString::fromUtf8(ready.mid(ready.indexOf("tcp:")))));
    QVERIFY(secondary.waitForConnected());
    QVERIFY(m_frames.attach(secondary.render.getSharedMemoryName()));
    QVERIFY(!frameWith([](const QImage &picture) { return picture.width() == 1280; }).isNull());
}

void tst_MainProcess::reportsThatThereIsNoOpenGL()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_process->setProcessEnvironment(environment);
    m_process->start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--session"), m_session});
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 1);
    const QList<QByteArray> lines = m_process->readAllStandardError().split('\n');
    QVERIFY(lines.contains("oxMainProcess: there is no OpenGL; a display is needed, such as an X server's"));
}

void tst_MainProcess::wrongUseIsReported_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("size") << QStringList{"--size", "0x100"}
                          << QByteArray("oxMainProcess: '0x100' is no size up to 3840x2160\n");
    QTest::newRow("large size") << QStringList{"--size", "4000x100"}
                                << QByteArray("oxMainProcess: '4000x100' is no size up to 3840x2160\n");
    QTest::newRow("half a size") << QStringList{"--size", "100"}
                                 << QByteArray("oxMainProcess: '100' is no size up to 3840x2160\n");
    QTest::newRow("three sizes") << QStringList{"--size", "100x100x100"}
                                 << QByteArray("oxMainProcess: '100x100x100' is no size up to 3840x2160\n");
    QTest::newRow("no number") << QStringList{"--size", "100xhigh"}
                               << QByteArray("oxMainProcess: '100xhigh' is no size up to 3840x2160\n");
    QTest::newRow("address") << QStringList{"--listen", "http://here"}
                             << QByteArray("oxMainProcess: 'http://here' is no address: use local:name or "
                                           "tcp://host:port\n");
    QTest::newRow("option") << QStringList{"--fast"} << QByteArray("oxMainProcess: Unknown option 'fast'.\n");
}

void tst_MainProcess::wrongUseIsReported()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    m_process->start(QStringLiteral(MAIN_PROCESS), arguments);
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitCode(), 1);
    QCOMPARE(m_process->readAllStandardError(), error);
}

void tst_MainProcess::tellsItsUse_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("help") << "--help" << QByteArray("--session <name>");
    QTest::newRow("version") << "--version" << QByteArray("oxMainProcess 1.");
}

void tst_MainProcess::tellsItsUse()
{
    QFETCH(QString, argument);
    QFETCH(QByteArray, expected);
    m_process->start(QStringLiteral(MAIN_PROCESS), {argument});
    QVERIFY(m_process->waitForFinished(limit));
    QCOMPARE(m_process->exitCode(), 0);
    QVERIFY(m_process->readAllStandardOutput().contains(expected));
}

QTEST_GUILESS_MAIN(tst_MainProcess)
#include "tst_MainProcess.moc"
