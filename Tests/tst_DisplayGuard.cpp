#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int limit = 120000; // milliseconds

const QByteArray mainAdvice(": set DISPLAY to a running X server's, or start the process by xvfb-run\n");
const QByteArray secondaryAdvice(": set DISPLAY to a running X server's, start the process by xvfb-run, or set "
                                 "QT_QPA_PLATFORM=offscreen\n");

} // namespace

/// The two programs, started where there is no display.
class tst_DisplayGuard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutDisplayTheProgramsSayWhatToDo_data();
    void withoutDisplayTheProgramsSayWhatToDo();
    void helpAndVersionNeedNoDisplay_data();
    void helpAndVersionNeedNoDisplay();
    void messagesOfOtherPlatformsArePrinted();

private:
    void run(const QString &program, const QStringList &options, const QProcessEnvironment &environment);
    QProcessEnvironment withoutDisplay() const;

    QTemporaryDir m_folder; // in place of the user's runtime folder, about which Qt would have a line to say
    QProcess m_process;
};

void tst_DisplayGuard::run(const QString &program, const QStringList &options, const QProcessEnvironment &environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.start(program, options);
    QVERIFY(m_process.waitForFinished(limit));
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
}

QProcessEnvironment tst_DisplayGuard::withoutDisplay() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable :
         {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "QT_QPA_PLATFORM", "OX_BASE_DIR", "OX_PLUGINS_DIR"})
        environment.remove(QString::fromLatin1(variable));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_folder.path());
    return environment;
}

void tst_DisplayGuard::withoutDisplayTheProgramsSayWhatToDo_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("line");

    const QByteArray none = " (could not connect to display)";
    const QByteArray bad = " (could not connect to display :9999)";
    const QByteArray unknown = " (Could not find the Qt platform plugin \"nobody\" in \"\")";
    const QString mainProcess(QStringLiteral(MAIN_PROCESS));
    const QString secondaryProcess(QStringLiteral(SECONDARY_PROCESS));
    const QByteArray main("oxMainProcess: there is no display");
    const QByteArray secondary("oxSecondaryProcess: there is no display");

    QTest::newRow("main, none") << mainProcess << ""
                                << "" << main + none + mainAdvice;
    QTest::newRow("main, bad") << mainProcess << "DISPLAY"
                               << ":9999" << main + bad + mainAdvice;
    QTest::newRow("main, xcb") << mainProcess << "QT_QPA_PLATFORM"
                               << "xcb" << main + none + mainAdvice;
    QTest::newRow("main, unknown") << mainProcess << "QT_QPA_PLATFORM"
                                   << "nobody" << main + unknown + mainAdvice;
    QTest::newRow("secondary, none") << secondaryProcess << ""
                                     << "" << secondary + none + secondaryAdvice;
    QTest::newRow("secondary, bad") << secondaryProcess << "DISPLAY"
                                    << ":9999" << secondary + bad + secondaryAdvice;
    QTest::newRow("secondary, xcb") << secondaryProcess << "QT_QPA_PLATFORM"
                                    << "xcb" << secondary + none + secondaryAdvice;
    QTest::newRow("secondary, unknown") << secondaryProcess << "QT_QPA_PLATFORM"
                                        << "nobody" << secondary + unknown + secondaryAdvice;
}

void tst_DisplayGuard::withoutDisplayTheProgramsSayWhatToDo()
{
    QFETCH(QString, program);
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QFETCH(QByteArray, line);
    QProcessEnvironment environment = withoutDisplay();
    if (!variable.isEmpty())
        environment.insert(variable, value);
    run(program, {}, environment);
    QCOMPARE(m_process.readAllStandardError(), line);
    QCOMPARE(m_process.readAllStandardOutput(), QByteArray());
    QCOMPARE(m_process.exitCode(), 1);
}

void tst_DisplayGuard::helpAndVersionNeedNoDisplay_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QByteArray>("text");
    for (const char *display : {"", ":9999"}) {
        for (const char *option : {"--help", "-h", "--help-all"}) {
            QTest::addRow("main %s, display '%s'", option, display)
                << QStringLiteral(MAIN_PROCESS) << option << display << QByteArray("--session <name>");
            QTest::addRow("secondary %s, display '%s'", option, display)
                << QStringLiteral(SECONDARY_PROCESS) << option << display << QByteArray("--plugins <folder>");
        }
        for (const char *option : {"--version", "-v"}) {
            QTest::addRow("main %s, display '%s'", option, display)
                << QStringLiteral(MAIN_PROCESS) << option << display << QByteArray("oxMainProcess 1.0.0\n");
            QTest::addRow("secondary %s, display '%s'", option, display)
                << QStringLiteral(SECONDARY_PROCESS) << option << display << QByteArray("oxSecondaryProcess 1.0.0\n");
        }
    }
}

void tst_DisplayGuard::helpAndVersionNeedNoDisplay()
{
    QFETCH(QString, program);
    QFETCH(QString, option);
    QFETCH(QString, display);
    QFETCH(QByteArray, text);
    QProcessEnvironment environment = withoutDisplay();
    if (!display.isEmpty())
        environment.insert(QStringLiteral("DISPLAY"), display);
    run(program, {option}, environment);
    QVERIFY2(m_process.readAllStandardOutput().contains(text), text);
    QCOMPARE(m_process.readAllStandardError(), QByteArray());
    QCOMPARE(m_process.exitCode(), 0);
}

// The first platform of the list has no display, the second one needs none.
void tst_DisplayGuard::messagesOfOtherPlatformsArePrinted()
{
    QProcessEnvironment environment = withoutDisplay();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb;offscreen"));
    run(QStringLiteral(SECONDARY_PROCESS), {QStringLiteral("--call-timeout"), QStringLiteral("soon")}, environment);
    const QByteArray errors = m_process.readAllStandardError();
    QVERIFY2(errors.contains("qt.qpa.xcb: could not connect to display"), errors);
    QVERIFY2(errors.endsWith("oxSecondaryProcess: 'soon' is no time in milliseconds\n"), errors);
    QCOMPARE(m_process.exitCode(), 1);
}

QTEST_GUILESS_MAIN(tst_DisplayGuard)
#include "tst_DisplayGuard.moc"
