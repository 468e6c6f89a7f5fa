#include "XServer.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcessEnvironment>
#include <QTest>
#include <QWidget>

#include <csignal>

#include <sys/prctl.h>

namespace {

constexpr int limit = 60000;

bool isWindowManagerReady()
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")});
    return process.waitForFinished(limit) && process.exitCode() == 0;
}

QStringList moveSteps(const QPoint &place)
{
    return {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
}

} // namespace

XServer::XServer(WindowManager windowManager)
    : XServer(windowManager == WithWindowManager ? QStringLiteral("openbox") : QString())
{}

XServer::XServer(const QString &windowManager)
{
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, m_folder.path().toUtf8());
    qunsetenv("XAUTHORITY");

    // It chooses its number itself and tells it as soon as it listens.
    m_server.startAndAwaitOutput(QStringLiteral("Xvfb"),
                                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                                  QStringLiteral("0"), QStringLiteral("1280x900x24"), QStringLiteral("-nolisten"),
                                  QStringLiteral("tcp")});
    qputenv("DISPLAY", ":" + m_server.readLine().trimmed());
    qputenv("QT_QPA_PLATFORM", "xcb");
    if (!windowManager.isEmpty())
        startWindowManager(windowManager);
}

XServer::~XServer()
{
    for (Child *process : {&m_windowManager, &m_server}) {
        process->terminate();
        process->waitForFinished();
    }
}

void XServer::startWindowManager(const QString &program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_folder.path());
    environment.remove(QStringLiteral("SESSION_MANAGER"));
    m_windowManager.setProcessEnvironment(environment);
    m_windowManager.setStandardOutputFile(QProcess::nullDevice());
    m_windowManager.start(program, {});
    const QDeadlineTimer deadline(limit);
    while (!isWindowManagerReady()) {
        if (deadline.hasExpired() || m_windowManager.waitForFinished(50))
            qFatal("%s does not start: %s", qPrintable(program), m_windowManager.readAllStandardError().constData());
    }
}

void XServer::Child::startAndAwaitOutput(const QString &program, const QStringList &arguments)
{
    start(program, arguments);
    if (!waitForReadyRead(limit))
        qFatal("%s does not start: %s", qPrintable(program), readAllStandardError().constData());
}

void XServer::Child::setupChildProcess()
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
}

void Hand::perform(const QStringList &steps)
{
    QProcess process;
    QEventLoop loop;
    QObject::connect(&process, &QProcess::stateChanged, &loop, [&loop](QProcess::ProcessState state) {
        if (state == QProcess::NotRunning)
            loop.quit();
    });
    process.start(QStringLiteral("xdotool"), steps);
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("xdotool %s: %s", qPrintable(steps.join(QLatin1Char(' '))), process.readAllStandardError().constData());
}

void Hand::moveTo(const QPoint &place)
{
    perform(moveSteps(place));
}

void Hand::click(QWidget *widget, const QPoint &place)
{
    QWidget *window = widget->window();
    if (!QTest::qWaitForWindowExposed(window, limit))
        qFatal("the window is not on the screen");
    const QPoint inWindow = widget->mapTo(window, place);
    perform({QStringLiteral("mousemove"), QStringLiteral("--window"), QString::number(window->winId()),
             QString::number(inWindow.x()), QString::number(inWindow.y()), QStringLiteral("click"),
             QStringLiteral("1")});
}

void Hand::doubleClick(const QPoint &place)
{
    perform(moveSteps(place)
            + QStringList({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                           QStringLiteral("--delay"), QStringLiteral("50"), QStringLiteral("1")}));
}

void Hand::drag(const QPoint &from, const QPoint &to)
{
    const QPoint onTheWay = (from + to) / 2;
    perform(moveSteps(from) + QStringList({QStringLiteral("mousedown"), QStringLiteral("1")}) + moveSteps(onTheWay)
            + moveSteps(to) + QStringList({QStringLiteral("mouseup"), QStringLiteral("1")}));
}

void Hand::moveToAndOn(const QPoint &place, int milliseconds, const QPoint &next)
{
    perform(moveSteps(place) + QStringList({QStringLiteral("sleep"), QString::number(milliseconds / 1000.0)})
            + moveSteps(next));
}
