#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "XServer.h"

namespace {

const QColor mixedColor(0x3d, 0x8b, 0xd4); // the colour that the mixer mixes; it is nowhere else

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

/// The demo process as its users start it, on an X server of its own.
class tst_SecondaryProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void savesAPictureOfWindowAndPanels();
    void tourSavesAPictureOfEachStop();
    void tourReportsPicturesThatCannotBeWritten();
    void reportsAnUnknownPanelAndEndsWithOne();
    void reportsAPictureThatCannotBeWritten();
    void prints_data();
    void prints();

private:
    void start(const QStringList &arguments);
    QImage picture(const char *name) const;

    XServer m_xServer{XServer::WithoutWindowManager}; // whose frames would be in the pictures
    QTemporaryDir m_folder;
    QProcess m_process;
};

void tst_SecondaryProcess::init()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("OX_BASE_DIR"));
    environment.remove(QStringLiteral("OX_PLUGINS_DIR"));
    m_process.setProcessEnvironment(environment);
}

void tst_SecondaryProcess::start(const QStringList &arguments)
{
    m_process.start(QStringLiteral(SECONDARY_PROCESS), arguments);
    QVERIFY(m_process.waitForFinished(60000));
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
}

QImage tst_SecondaryProcess::picture(const char *name) const
{
    return QImage(m_folder.filePath(QString::fromLatin1(name) + QStringLiteral(".png")));
}

void tst_SecondaryProcess::savesAPictureOfWindowAndPanels()
{
    const QString file = m_folder.filePath(QStringLiteral("picture.png"));
    start({QStringLiteral("--base"), QStringLiteral(SOURCE_DIR "/Share"), QStringLiteral("--plugins"),
           QStringLiteral(SOURCE_DIR "/Examples"), QStringLiteral("--open"), QStringLiteral("Stopwatch"),
           QStringLiteral("--open"), QStringLiteral("ColorMixer"), QStringLiteral("--screenshot"), file});

    QCOMPARE(m_process.exitCode(), 0);
    QCOMPARE(m_process.readAllStandardError(), QByteArray());
    const QByteArray output = m_process.readAllStandardOutput();
    QVERIFY(output.startsWith("python binding: oxMessageService\n"));
    for (const char *name : {"ColorMixer", "Hello", "Messages", "Spirograph", "Stopwatch", "UnitConverter"})
        QCOMPARE(output.count(QByteArray("Loaded '") + name + "' python plugin.\n"), 1);

    const QImage picture(file);
    QCOMPARE(picture.size(), QSize(1100, 700));
    const int mixed = pixels(picture, picture.rect(), mixedColor);
    QVERIFY2(mixed > 5000, qPrintable(QString::number(mixed)));
}

void tst_SecondaryProcess::tourSavesAPictureOfEachStop()
{
    start({QStringLiteral("--base"), QStringLiteral(SOURCE_DIR "/Share"), QStringLiteral("--plugins"),
           QStringLiteral(SOURCE_DIR "/Examples"), QStringLiteral("--open"), QStringLiteral("Stopwatch"),
           QStringLiteral("--open"), QStringLiteral("ColorMixer"), QStringLiteral("--tour"), m_folder.path()});
    QCOMPARE(m_process.exitCode(), 0);
    QCOMPARE(m_process.readAllStandardError(), QByteArray());

    // The mixer's colour fills its tab in the overlay, which is at the left edge.
    const QRect strip(0, 100, 20, 500);
    const QRect panel(0, 100, 260, 500);
    const QImage peeking = picture("overlay-peeking");
    const QImage shown = picture("overlay-shown");
    const QImage loading = picture("loading");
    QVERIFY(pixels(peeking, strip, mixedColor) > 3000);
    QCOMPARE(pixels(peeking, peeking.rect().adjusted(strip.width(), 0, 0, 0), mixedColor), 0);
    QVERIFY(pixels(shown, panel, mixedColor) > 50000);
    QCOMPARE(pixels(loading, loading.rect(), mixedColor), 0);

    // The dialogs are over the middle of the window.
    const QRect middle(440, 270, 200, 80);
    const QImage uploading = picture("uploading");
    const QImage preferences = picture("preferences");
    for (const QImage *dialog : {&loading, &uploading, &preferences})
        QVERIFY(dialog->copy(middle) != shown.copy(middle));
    QVERIFY(loading.copy(middle) != uploading.copy(middle));
    QCOMPARE(preferences.size(), QSize(1100, 700));
}

void tst_SecondaryProcess::tourReportsPicturesThatCannotBeWritten()
{
    start({QStringLiteral("--plugins"), m_folder.path(), QStringLiteral("--tour"), QStringLiteral("/nowhere")});
    QCOMPARE(m_process.exitCode(), 1);
    QByteArray lines;
    for (const char *name : {"overlay-peeking", "overlay-shown", "loading", "uploading", "preferences"})
        lines += QByteArray("oxSecondaryProcess: cannot write '/nowhere/") + name + ".png'\n";
    QCOMPARE(m_process.readAllStandardError(), lines);
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
