// A secondary process: an ordinary Qt program that loads the library and its script plugins.

#include <QApplication>
#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QDir>
#include <QDockWidget>
#include <QTimer>

#include <csignal>
#include <cstdio>

#include "Appearance.h"
#include "DisplayGuard.h"
#include "MainProcess.h"
#include "MainWindow.h"
#include "RenderView.h"
#include "Screenshot.h"
#include "Scripting.h"
#include "Tour.h"
#include "ViewPage.h"
#include "oxKernelInterface.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxPreferencesService.h"
#include "oxQRPCAddress.h"
#include "oxQRPCClient.h"

namespace {

// In milliseconds, for a main process that was started at the same time; for pictures it matters less when they are
// taken than what they show.
constexpr int startTime = 2000;
constexpr int picturesStartTime = 10000;
constexpr int firstFrameTime = 20000;

struct Target
{
    QUrl address;
    QString command; ///< that starts a main process there
};

Target targetOf(const QString &name)
{
    if (name.startsWith(QLatin1String("local:")) || name.contains(QLatin1String("://")))
        return {QUrl(name), QStringLiteral("oxMainProcess --listen ") + name};
    const QString command = QStringLiteral("oxMainProcess");
    return {oxQRPCAddress::ofSession(name), name.isEmpty() ? command : command + QStringLiteral(" --session ") + name};
}

int failed(const QString &reason)
{
    fprintf(stderr, "oxSecondaryProcess: %s\n", qPrintable(reason));
    return 1;
}

bool openModule(const QString &name)
{
    auto *mainWindow = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    if (!mainWindow->getModule(name)) {
        fprintf(stderr, "oxSecondaryProcess: there is no panel '%s'; look at the menu Scripts\n", qPrintable(name));
        return false;
    }
    mainWindow->showModule(name);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    allowTextWithoutDisplay(argc, argv);
    const auto application = makeApplication<QApplication>(
        argc, argv, "oxSecondaryProcess",
        "set DISPLAY to a running X server's, start the process by xvfb-run, or set QT_QPA_PLATFORM=offscreen");
    QApplication::setApplicationName(QStringLiteral("oxSecondaryProcess"));
    QApplication::setApplicationVersion(QStringLiteral(OX_VERSION));
    setvbuf(stdout, nullptr, _IOLBF, 0); // a console that is a pipe shows each line at once, too

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows what the main process renders, and script plugins as panels over it."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption connectTo(
        QStringLiteral("connect"),
        QStringLiteral("Main process to use, now or as soon as it is there: its session, "
                       "or its address (local:name or tcp://host:port)."),
        QStringLiteral("session"));
    const QCommandLineOption callTimeout(QStringLiteral("call-timeout"),
                                         QStringLiteral("How long a call waits for a silent main process."),
                                         QStringLiteral("milliseconds"), QStringLiteral("30000"));
    const QCommandLineOption base(QStringLiteral("base"), QStringLiteral("Installation folder, with lib/python in it."),
                                  QStringLiteral("folder"));
    const QCommandLineOption plugins(QStringLiteral("plugins"), QStringLiteral("Plugins folder, with Scripts in it."),
                                     QStringLiteral("folder"));
    const QCommandLineOption open(QStringLiteral("open"), QStringLiteral("Open this panel; may be repeated."),
                                  QStringLiteral("panel"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save a picture of the window to this file, then end."),
                                        QStringLiteral("file"));
    const QCommandLineOption tour(QStringLiteral("tour"),
                                  QStringLiteral("Click the open panels, load a model, show the overlay and the "
                                                 "preferences, save pictures of that to this folder, then end."),
                                  QStringLiteral("folder"));
    parser.addOptions({connectTo, callTimeout, base, plugins, open, screenshot, tour});
    parser.process(*application);
    // Absolute, as each plugin runs in its own folder.
    if (parser.isSet(base))
        qputenv("OX_BASE_DIR", QDir::current().absoluteFilePath(parser.value(base)).toUtf8());
    if (parser.isSet(plugins))
        qputenv("OX_PLUGINS_DIR", parser.value(plugins).toUtf8());
    const Target target = targetOf(parser.value(connectTo));
    const bool takesPictures = parser.isSet(screenshot) || parser.isSet(tour);

    applyAppearance(application.get());
    oxQRPCClient client;
    client.setCallTimeout(parser.value(callTimeout).toInt());
    if (client.callTimeout() <= 0)
        return failed(QStringLiteral("'%1' is no time in milliseconds").arg(parser.value(callTimeout)));
    oxKernelInterface *kernel = oxKernelInterface::the();
    kernel->init(&client, false);
    std::signal(SIGINT, SIG_DFL); // Python's handler would keep Ctrl+C from ending the process

    if (!client.connectToHost(target.address))
        return failed(QStringLiteral("'%1' is no main process: give a session, local:name or tcp://host:port")
                          .arg(parser.value(connectTo)));
    MainProcess mainProcess(&client);
    bindServicesForScripts(&mainProcess);

    MainWindow window(&mainProcess);
    window.setMainProcessHint(target.address.toString(), target.command);
    auto *factory = oxKernelServiceFactory::the();
    auto *preferences = factory->getService<oxPreferencesService>();
    preferences->setWidget(&window);
    preferences->addToPreferences(QStringLiteral("View"), QString(),
                                  new ViewPage(preferences, window.renderView(), &window));
    QObject::connect(&window, &MainWindow::preferencesRequested, preferences, &oxPreferencesService::showPreferences);
    QObject::connect(&window, &MainWindow::reloadRequested, kernel, &oxKernelInterface::loadScriptPlugins);
    window.show();
    if (parser.isSet(connectTo))
        client.waitForConnected(takesPictures ? picturesStartTime : startTime); // so that plugins find it
    kernel->loadScriptPlugins();

    if (parser.isSet(tour) && !mainProcess.isConnected())
        return failed(QStringLiteral("the tour needs a main process: ") + target.command);

    bool allOpened = true;
    const QStringList modules = parser.values(open);
    for (const QString &name : modules)
        allOpened &= openModule(name);
    if (!allOpened)
        return 1;

    const auto exit = [](bool allSaved) { QApplication::exit(allSaved ? 0 : 1); };
    Tour pictures(&window, parser.value(tour));
    QObject::connect(&pictures, &Tour::finished, exit);
    QTimer pictureTime;
    if (takesPictures) {
        // Long enough for the windows to be painted and for the panels' timers to tick.
        pictureTime.start(1500);
        const QDeadlineTimer firstFrameLimit(firstFrameTime);
        QObject::connect(&pictureTime, &QTimer::timeout, &window, [&, firstFrameLimit] {
            if (mainProcess.isConnected() && !window.renderView()->hasFrame() && !firstFrameLimit.hasExpired())
                return;
            pictureTime.stop();
            const bool isSaved = !parser.isSet(screenshot) || saveScreenshot(&window, parser.value(screenshot));
            if (isSaved && parser.isSet(tour))
                pictures.start();
            else
                exit(isSaved);
        });
    }
    return QApplication::exec();
}
