// A secondary process: an ordinary Qt program that loads the library and its script plugins.

#include <QApplication>
#include <QCommandLineParser>
#include <QDockWidget>
#include <QTimer>

#include <csignal>
#include <cstdio>

#include "Appearance.h"
#include "MainWindow.h"
#include "Screenshot.h"
#include "Tour.h"
#include "ViewPage.h"
#include "oxKernelInterface.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"
#include "oxPreferencesService.h"
#include "oxQRPCClient.h"

namespace {

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
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("oxSecondaryProcess"));
    QApplication::setApplicationVersion(QStringLiteral(OX_VERSION));
    setvbuf(stdout, nullptr, _IOLBF, 0); // a console that is a pipe shows each line at once, too

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows script plugins as panels in a window."));
    parser.addHelpOption();
    parser.addVersionOption();
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
                                  QStringLiteral("Show the overlay, a file that loads and the preferences, save "
                                                 "pictures of them to this folder, then end."),
                                  QStringLiteral("folder"));
    parser.addOptions({base, plugins, open, screenshot, tour});
    parser.process(application);
    if (parser.isSet(base))
        qputenv("OX_BASE_DIR", parser.value(base).toUtf8());
    if (parser.isSet(plugins))
        qputenv("OX_PLUGINS_DIR", parser.value(plugins).toUtf8());

    applyAppearance(&application);
    oxQRPCClient client;
    oxKernelInterface *kernel = oxKernelInterface::the();
    kernel->init(&client, false);
    std::signal(SIGINT, SIG_DFL); // Python's handler would keep Ctrl+C from ending the process

    MainWindow window;
    auto *factory = oxKernelServiceFactory::the();
    factory->getService<oxMainWindowService>()->setWidget(&window);
    QObject::connect(factory->getService<oxMessageService>(), &oxMessageService::messageReceived, &window,
                     &MainWindow::showMessage);
    auto *preferences = factory->getService<oxPreferencesService>();
    preferences->setWidget(&window);
    preferences->addToPreferences(QStringLiteral("View"), QString(),
                                  new ViewPage(preferences, window.renderView(), &window));
    QObject::connect(&window, &MainWindow::preferencesRequested, preferences, &oxPreferencesService::showPreferences);
    QObject::connect(&window, &MainWindow::reloadRequested, kernel, &oxKernelInterface::loadScriptPlugins);
    window.show();
    kernel->loadScriptPlugins();

    bool allOpened = true;
    const QStringList modules = parser.values(open);
    for (const QString &name : modules)
        allOpened &= openModule(name);
    if (!allOpened)
        return 1;

    const auto exit = [](bool allSaved) { QApplication::exit(allSaved ? 0 : 1); };
    Tour pictures(&window, parser.value(tour));
    QObject::connect(&pictures, &Tour::finished, exit);
    if (parser.isSet(screenshot) || parser.isSet(tour)) {
        // Long enough for the windows to be painted and for the panels' timers to tick.
        QTimer::singleShot(1500, &window, [&] {
            const bool isSaved = !parser.isSet(screenshot) || saveScreenshot(&window, parser.value(screenshot));
            if (isSaved && parser.isSet(tour))
                pictures.start();
            else
                exit(isSaved);
        });
    }
    return QApplication::exec();
}
