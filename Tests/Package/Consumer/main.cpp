// Loads the script plugins of the folder OX_PLUGINS_DIR and shows the module "Hello".

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
    window.menuBar()->addMenu(QStringLiteral("&Help"));

    oxQRPCClient client;
    oxKernelInterface::the()->init(&client, false);
    auto *mainWindow = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    mainWindow->setWidget(&window);
    oxKernelInterface::the()->loadScriptPlugins();

    mainWindow->showModule(QStringLiteral("Hello"));
    const QWidget *module = mainWindow->getModule(QStringLiteral("Hello"));
    return module && module->isVisible() ? 0 : 1;
}
