// Loads the script plugins of the folder OX_PLUGINS_DIR, twice, shows the module "Hello" and runs Python code of its
// own.

#include <PythonQt.h> // before any header of Qt, as Python's own headers ask for

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

#include <oxKernelInterface.h>
#include <oxKernelServiceFactory.h>
#include <oxMainWindowService.h>
#include <oxQRPCClient.h>

namespace {

// Whether Python computes, and reaches this process through PythonQt's wrappers.
bool pythonWorks(QMainWindow *window)
{
    PythonQtObjectPtr *python = oxKernelInterface::the()->getPythonEngine();
    const PyGILState_STATE state = PyGILState_Ensure();
    python->addObject(QStringLiteral("window"), window);
    python->evalScript(QStringLiteral("window.windowTitle = 'Answer: %d' % (6 * 7)"));
    const int answer = python->evalScript(QStringLiteral("6 * 7"), Py_eval_input).toInt();
    PyGILState_Release(state);
    return answer == 42 && window->windowTitle() == QLatin1String("Answer: 42");
}

} // namespace

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
    return module && module->isVisible() && pythonWorks(&window) ? 0 : 1;
}
