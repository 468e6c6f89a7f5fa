#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// The demo process as its users start it, on an X server of its own.
class tst_SecondaryProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void savesAPictureOfWindowAndPanels();
    void reportsAnUnknownPanelAndEndsWithOne();
    void reportsAPictureThatCannotBeWritten();
    void prints_data();
    void prints();

private:
    void start(const QStringList &arguments);

    QTemporaryDir m_folder;
    QProcess m_process;
};

void tst_SecondaryProcess::init()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_folder.path());
    environment.remove(QStringLiteral("OX_BASE_DIR"));
    environment.remove(QStringLiteral("OX_PLUGINS_DIR"));
    m_process.setProcessEnvironment(environment);
}

void tst_SecondaryProcess::start(const QStringList &arguments)
{
    QStringList all = {QStringLiteral("--auto-servernum"), QStringLiteral("--server-args"),
                       QStringLiteral("-screen 0 1280x800x24"), QStringLiteral(SECONDARY_PROCESS)};
    m_process.start(QStringLiteral("xvfb-run"), all + arguments);
    QVERIFY(m_process.waitForFinished(60000));
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
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
    // The colour that the mixer mixes is nowhere else.
    int mixed = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            mixed += picture.pixelColor(x, y) == QColor(0x3d, 0x8b, 0xd4);
    }
    QVERIFY2(mixed > 5000, qPrintable(QString::number(mixed)));
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
    QCOMPARE(m_process.readAllStandardError(),
             QByteArray("oxSecondaryProcess: cannot write '/nowhere/picture.png'\n"));
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
