#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "SignalTo.h"
#include "XServer.h"

namespace {

const QColor mixedColor(0x3d, 0x8b, 0xd4);   // the colour that the mixer mixes; it is nowhere else
const QColor clickedColor(0x47, 0x8b, 0xd4); // and after a click into its first slider

constexpr int limit = 120000; // milliseconds

int pixels(const QImage &picture, const QRect &area, const QColor &color)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += picture.pixelColor(x, y) == color;
    }
    return count;
}

} // namespace

/// The secondary process as its users start it, alone and with a main process, on an X server of its own.
class tst_SecondaryProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void savesAPictureOfWindowAndPanels();
    void showsWhatTheMainProcessRenders();
    void mainProcessMayComeLaterAndComeBack();
    void mouseTurnsTheCameraOfTheMainProcess();
    void callsOfAStoppedMainProcessEndInTime();
    void interruptEndsIt();
    void tourSavesAPictureOfEachStop();
    void tourReportsPicturesThatCannotBeWritten();
    void tourNeedsAMainProcess_data();
    void tourNeedsAMainProcess();
    void reportsAnUnknownPanelAndEndsWithOne();
    void reportsAPictureThatCannotBeWritten();
    void prints_data();
    void prints();
    void wrongOptionsAreReported_data();
    void wrongOptionsAreReported();
    void cleanup();

private:
    void start(const QStringList &arguments);
    void startMain();
    void endMain();
    // Starts it with a plugin of that text and leaves it running.
    void startWithPlugin(const QByteArray &text, const QStringList &options = {});
    bool hasPrinted(const QByteArray &line);
    // Without PySide2, the examples for it say that it is missing.
    QByteArray errors();
    QImage picture(const char *name) const;

    XServer m_xServer{XServer::WithoutWindowManager}; // whose frames would be in the pictures
    QTemporaryDir m_folder;
    QProcess m_process;
    QProcess m_mainProcess;
    QByteArray m_output;
};

void tst_SecondaryProcess::init()
{
    m_output.clear();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("OX_BASE_DIR"));
    environment.remove(QStringLiteral("OX_PLUGINS_DIR"));
    environment.insert(QStringLiteral("TMPDIR"), m_folder.path()); // sessions are no one else's
    m_process.setProcessEnvironment(environment);
    m_process.setWorkingDirectory(QStringLiteral(SOURCE_DIR));
    environment.insert(QStringLiteral("OX_BASE_DIR"), QStringLiteral(SOURCE_DIR "/Share"));
    m_mainProcess.setProcessEnvironment(environment);
    m_mainProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

void tst_SecondaryProcess::cleanup()
{
    for (QProcess *process : {&m_process, &m_mainProcess}) {
        process->kill();
        process->waitForFinished();
    }
    QDir(m_folder.filePath(QStringLiteral("Scripts"))).removeRecursively();
}

void tst_SecondaryProcess::startMain()
{
    m_mainProcess.start(QStringLiteral(MAIN_PROCESS), {QStringLiteral("--session"), QStringLiteral("test")});
    QVERIFY(m_mainProcess.waitForReadyRead(limit));
    QVERIFY(m_mainProcess.readLine().startsWith("oxMainProcess: ready"));
}

void tst_SecondaryProcess::endMain()
{
    m_mainProcess.kill();
    QVERIFY(m_mainProcess.waitForFinished());
}

void tst_SecondaryProcess::startWithPlugin(const QByteArray &text, const QStringList &options)
{
    QDir(m_folder.path()).mkdir(QStringLiteral("Scripts"));
    QFile plugin(m_folder.filePath(QStringLiteral("Scripts/plugin.py")));
    QVERIFY(plugin.open(QIODevice::WriteOnly));
    plugin.write("from __main__ import *\n" + text);
    plugin.close();
    const QStringList arguments{QStringLiteral("--connect"), QStringLiteral("test"), QStringLiteral("--plugins"),
                                m_folder.path()};
    m_process.start(QStringLiteral(SECONDARY_PROCESS), arguments + options);
    QTRY_VERIFY_WITH_TIMEOUT(hasPrinted("Loaded 'plugin' python plugin."), limit);
}

QByteArray tst_SecondaryProcess::errors()
{
    QByteArray text = m_process.readAllStandardError();
    if (QFile::exists(QStringLiteral(SOURCE_DIR "/Share/lib/python/site-packages/PySide2")))
        return text;
    QByteArray others;
    for (const QByteArray &line : text.split('\n')) {
        if (!line.isEmpty() && !line.startsWith("python error: "))
            others += line + '\n';
    }
    return others;
}

bool tst_SecondaryProcess::hasPrinted(const QByteArray &line)
{
    m_output += m_process.readAllStandardOutput();
    return m_output.contains(line + '\n');
}

void tst_SecondaryProcess::start(const QStringList &arguments)
{
    m_process.start(QStringLiteral(SECONDARY_PROCESS), arguments);
    QVERIFY(m_process.waitForFinished(limit));
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
}

QImage tst_SecondaryProcess::picture(const char *name) const
{
    return QImage(m_folder.filePath(QString::fromLatin1(name) + QStringLiteral(".png")));
}

void tst_SecondaryProcess::savesAPictureOfWindowAndPanels()
{
    const QString file = m_folder.filePath(QStringLiteral("picture.png"));
    start({QStringLiteral("--base"), QStringLiteral("Share"), QStringLiteral("--plugins"), QStringLiteral("Examples"),
           QStringLiteral("--open"), QStringLiteral("Stopwatch"), QStringLiteral("--open"),
           QStringLiteral("ColorMixer"), QStringLiteral("--screenshot"), file});

    QCOMPARE(m_process.exitCode(), 0);
    QCOMPARE(errors(), QByteArray());
    const QByteArray output = m_process.readAllStandardOutput();
    QVERIFY(output.startsWith("python binding: oxMessageService\n"));
    for (const char *name : {"ColorMixer", "Hello", "MaterialBrowser", "Messages", "Spirograph", "Stopwatch",
                             "Turntable", "UnitConverter"})
        QCOMPARE(output.count(QByteArray("Loaded '") + name + "' python plugin.\n"), 1);

    const QImage picture(file);
    QCOMPARE(picture.size(), QSize(1100, 700));
    const int mixed = pixels(picture, picture.rect(), mixedColor);
    QVERIFY2(mixed > 5000, qPrintable(QString::number(mixed)));
}

void tst_SecondaryProcess::showsWhatTheMainProcessRenders()
{
    start({QStringLiteral("--plugins"), m_folder.path(), QStringLiteral("--screenshot"),
           m_folder.filePath(QStringLiteral("alone.png"))});
    startMain();
    start({QStringLiteral("--connect"), QStringLiteral("test"), QStringLiteral("--plugins"), m_folder.path(),
           QStringLiteral("--screenshot"), m_folder.filePath(QStringLiteral("together.png"))});
    QCOMPARE(m_process.exitCode(), 0);
    QCOMPARE(m_process.readAllStandardError(), QByteArray());

    const QRect view(0, 40, 1100, 600); // without menu bar and status bar
    const QImage alone = picture("alone");
    const QImage together = picture("together");
    for (const QRect &part : {view, QRect(0, 40, 100, 600), QRect(1000, 40, 100, 600)})
        QVERIFY(together.copy(part) != alone.copy(part));
    QVERIFY(together.pixelColor(550, 300) != QColor(Qt::black));
}

void tst_SecondaryProcess::mainProcessMayComeLaterAndComeBack()
{
    startWithPlugin("def come(): print('there with %d materials' % len(oxMaterialService.getMaterials()))\n"
                    "def go(): print('gone %s' % oxMainProcess.isConnected())\n"
                    "oxMainProcess.connect('connected()', come)\n"
                    "oxMainProcess.connect('disconnected()', go)\n"
                    "print('first %s' % oxMainProcess.isConnected())\n");
    QVERIFY(hasPrinted("python info: 'first False'"));
    for (int i = 0; i < 2; ++i) {
        m_output.clear();
        startMain();
        QTRY_VERIFY_WITH_TIMEOUT(hasPrinted("python info: 'there with 3 materials'"), limit);
        endMain();
        QTRY_VERIFY_WITH_TIMEOUT(hasPrinted("python info: 'gone False'"), limit);
        QCOMPARE(m_output.count("there with"), 1);
    }
}

void tst_SecondaryProcess::mouseTurnsTheCameraOfTheMainProcess()
{
    startMain();
    startWithPlugin("def tell():\n"
                    "    print('turns by itself: %s' % oxCameraService.isTurning())\n"
                    "    print('to the left: %s' % (oxCameraService.getAzimuth() < before))\n"
                    "before = oxCameraService.getAzimuth()\n"
                    "oxCameraService.connect('cameraChanged()', tell)\n");
    Hand::perform({QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                   QStringLiteral("--name"), QStringLiteral("^Secondary process$"), QStringLiteral("mousemove"),
                   QStringLiteral("400"), QStringLiteral("400"), QStringLiteral("mousedown"), QStringLiteral("1")});
    QTRY_VERIFY_WITH_TIMEOUT(hasPrinted("python info: 'turns by itself: False'"), limit);
    Hand::perform({QStringLiteral("mousemove"), QStringLiteral("500"), QStringLiteral("400"), QStringLiteral("mouseup"),
                   QStringLiteral("1")});
    QTRY_VERIFY_WITH_TIMEOUT(hasPrinted("python info: 'to the left: True'"), limit);
}

void tst_SecondaryProcess::callsOfAStoppedMainProcessEndInTime()
{
    startMain();
    const QByteArray answer("python info: 'answered: True'");
    startWithPlugin("from PythonQt.QtCore import QTimer\n"
                    "def ask(): print('answered: %s' % (oxCameraService.getDistance() > 0))\n"
                    "timer = QTimer()\n"
                    "timer.connect('timeout()', ask)\n"
                    "timer.start(100)\n",
                    {QStringLiteral("--call-timeout"), QStringLiteral("500")});
    QTRY_VERIFY_WITH_TIMEOUT(hasPrinted(answer), limit);
    signalTo(m_mainProcess, SIGSTOP);
    QByteArray errors;
    QTRY_VERIFY_WITH_TIMEOUT(
        (errors += m_process.readAllStandardError())
            .contains("oxQRPCClient: no answer within 500 ms from oxCameraService::getDistance()\n"),
        limit);
    signalTo(m_mainProcess, SIGCONT);
    m_output.clear();
    QTRY_VERIFY_WITH_TIMEOUT(hasPrinted(answer), limit);
}

// As Ctrl+C does in its console.
void tst_SecondaryProcess::interruptEndsIt()
{
    startWithPlugin("import time\n");
    signalTo(m_process, SIGINT);
    QVERIFY(m_process.waitForFinished(limit));
    QCOMPARE(m_process.exitStatus(), QProcess::CrashExit); // by the signal
    QCOMPARE(m_process.exitCode(), SIGINT);
}

void tst_SecondaryProcess::tourSavesAPictureOfEachStop()
{
    startMain();
    start({QStringLiteral("--connect"), QStringLiteral("test"), QStringLiteral("--base"),
           QStringLiteral(SOURCE_DIR "/Share"), QStringLiteral("--plugins"), QStringLiteral(SOURCE_DIR "/Examples"),
           QStringLiteral("--open"), QStringLiteral("Stopwatch"), QStringLiteral("--open"),
           QStringLiteral("ColorMixer"), QStringLiteral("--tour"), m_folder.path()});
    QCOMPARE(errors(), QByteArray());
    QCOMPARE(m_process.exitCode(), 0);

    // A click into the first slider changed the colour that is mixed.
    const QImage panels = picture("panels");
    QCOMPARE(pixels(panels, panels.rect(), mixedColor), 0);
    QVERIFY(pixels(panels, panels.rect(), clickedColor) > 5000);

    // It fills the mixer's tab in the overlay, which is at the left edge.
    const QRect strip(0, 100, 20, 500);
    const QRect panel(0, 100, 260, 500);
    const QImage peeking = picture("overlay-peeking");
    const QImage shown = picture("overlay-shown");
    QVERIFY(pixels(peeking, strip, clickedColor) > 3000);
    QCOMPARE(pixels(peeking, peeking.rect().adjusted(strip.width(), 0, 0, 0), clickedColor), 0);
    QVERIFY(pixels(shown, panel, clickedColor) > 50000);

    // The dialogs are over the middle of the window, all in the same grey.
    const QRect middle(440, 270, 200, 80);
    const QColor dialog(0x2b, 0x2f, 0x36);
    QVERIFY(pixels(picture("loaded"), middle, dialog) < 2000);
    QVERIFY(pixels(picture("loading"), middle, dialog) > 5000);
    QVERIFY(pixels(picture("uploading"), middle, dialog) > 5000);
    QVERIFY(picture("loading").copy(middle) != picture("uploading").copy(middle));
    QVERIFY(pixels(picture("preferences"), QRect(330, 230, 420, 160), dialog) > 5000);

    // Another model stands there after the load.
    const QRect right(700, 100, 150, 400);
    QVERIFY(picture("loaded").copy(right) != panels.copy(right));
}

void tst_SecondaryProcess::tourReportsPicturesThatCannotBeWritten()
{
    startMain();
    start({QStringLiteral("--connect"), QStringLiteral("test"), QStringLiteral("--plugins"), m_folder.path(),
           QStringLiteral("--tour"), QStringLiteral("/nowhere")});
    QCOMPARE(m_process.exitCode(), 1);
    QByteArray lines;
    for (const char *name :
         {"panels", "loading", "uploading", "loaded", "overlay-peeking", "overlay-shown", "preferences"})
        lines += QByteArray("oxSecondaryProcess: cannot write '/nowhere/") + name + ".png'\n";
    QCOMPARE(m_process.readAllStandardError(), lines);
}

void tst_SecondaryProcess::tourNeedsAMainProcess_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("options");
    QTest::newRow("of a session") << QStringLiteral("test") << QByteArray(" --session test");
    QTest::newRow("at an address") << QStringLiteral("local:test") << QByteArray(" --listen local:test");
}

void tst_SecondaryProcess::tourNeedsAMainProcess()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, options);
    start({QStringLiteral("--connect"), name, QStringLiteral("--plugins"), m_folder.path(), QStringLiteral("--tour"),
           m_folder.path()});
    QCOMPARE(m_process.exitCode(), 1);
    QCOMPARE(m_process.readAllStandardError(),
             "oxSecondaryProcess: the tour needs a main process: oxMainProcess" + options + '\n');
}

void tst_SecondaryProcess::wrongOptionsAreReported_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("address") << QStringList({QStringLiteral("--connect"), QStringLiteral("http://host")})
                             << QByteArray("oxSecondaryProcess: 'http://host' is no main process: give a session, "
                                           "local:name or tcp://host:port\n");
    QTest::newRow("no time") << QStringList({QStringLiteral("--call-timeout"), QStringLiteral("0")})
                             << QByteArray("oxSecondaryProcess: '0' is no time in milliseconds\n");
    QTest::newRow("time") << QStringList({QStringLiteral("--call-timeout"), QStringLiteral("soon")})
                          << QByteArray("oxSecondaryProcess: 'soon' is no time in milliseconds\n");
}

void tst_SecondaryProcess::wrongOptionsAreReported()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, line);
    start(options);
    QCOMPARE(m_process.exitCode(), 1);
    QCOMPARE(m_process.readAllStandardError(), line);
}

void tst_SecondaryProcess::reportsAnUnknownPanelAndEndsWithOne()
{
    start({QStringLiteral("--plugins"), m_folder.path(), QStringLiteral("--open"), QStringLiteral("Nobody")});
    QCOMPARE(m_process.exitCode(), 1);
    QCOMPARE(m_process.readAllStandardError(),
             QByteArray("oxSecondaryProcess: there is no panel 'Nobody'; look at the menu Scripts\n"));
}

void tst_SecondaryProcess::reportsAPictureThatCannotBeWritten()
{
    start({QStringLiteral("--plugins"), m_folder.path(), QStringLiteral("--screenshot"),
           QStringLiteral("/nowhere/picture.png")});
    QCOMPARE(m_process.exitCode(), 1);
    QCOMPARE(m_process.readAllStandardError(), QByteArray("oxSecondaryProcess: cannot write '/nowhere/picture.png'\n"));
}

void tst_SecondaryProcess::prints_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("--help") << QByteArray("--plugins <folder>");
    QTest::newRow("--version") << QByteArray("oxSecondaryProcess 1.0.0\n");
}

void tst_SecondaryProcess::prints()
{
    QFETCH(QByteArray, text);
    start({QString::fromLatin1(QTest::currentDataTag())});
    QCOMPARE(m_process.exitCode(), 0);
    QVERIFY(m_process.readAllStandardOutput().contains(text));
}

QTEST_GUILESS_MAIN(tst_SecondaryProcess)
#include "tst_SecondaryProcess.moc"
