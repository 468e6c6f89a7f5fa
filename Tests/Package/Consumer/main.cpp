// Loads the script plugins of the folder OX_PLUGINS_DIR, twice, and shows the module "Hello".

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

#include <oxKernelInterface.h>
#include <oxKernelServiceFactory.h>
#include <oxMainWindowService.h>
#include <oxQRPCClient.h>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    QMenu *help = window.menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("About")); // an empty menu goes as soon as a plugin is reloaded

    oxQRPCClient client;
    oxKernelInterface::the()->init(&client, false);
    auto *mainWindow = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    mainWindow->setWidget(&window);
    oxKernelInterface::the()->loadScriptPlugins();
    oxKernelInterface::the()->loadScriptPlugins();
    if (window.menuBar()->actions().last()->text() != QLatin1String("&Help"))
        return 2;

    mainWindow->showModule(QStringLiteral("Hello"));
    const QWidget *module = mainWindow->getModule(QStringLiteral("Hello"));
    return module && module->isVisible() ? 0 : 1;
}
