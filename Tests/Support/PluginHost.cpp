#include "InterpreterLock.h"

#include "PluginHost.h"

#include <PythonQt.h>

#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileInfo>
#include <QMenuBar>

#include "PrivateData.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"

namespace {

QString writeFile(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QVariant evaluateInModule(PythonQtObjectPtr *module, const QString &text, int start)
{
    const InterpreterLock lock;
    return module->evalScript(text, start);
}

} // namespace

PluginHost::PluginHost()
{
    QDir(m_folder.path()).mkdir(QStringLiteral("Scripts"));
    qputenv("OX_PLUGINS_DIR", m_folder.path().toUtf8());
    QDir(m_folder.path()).mkpath(QStringLiteral("Base/lib/python"));
    qputenv("OX_BASE_DIR", m_folder.filePath(QStringLiteral("Base")).toUtf8());

    QMenu *help = window.menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("About"));
    oxKernelInterface::the()->init(&client, true);
    oxKernelServiceFactory::the()->getService<oxMainWindowService>()->setWidget(&window);
}

PluginHost::~PluginHost() = default;

QString PluginHost::scripts() const
{
    return m_folder.filePath(QStringLiteral("Scripts"));
}

QString PluginHost::write(const QString &relativePath, const QByteArray &text) const
{
    return writeFile(scripts() + QLatin1Char('/') + relativePath, text);
}

QString PluginHost::writeModule(const QString &relativePath, const QByteArray &text) const
{
    return writeFile(m_folder.filePath(QStringLiteral("Base/lib/python/")) + relativePath, text);
}

void PluginHost::clear()
{
    QDir(scripts()).removeRecursively();
    QDir(m_folder.path()).mkdir(QStringLiteral("Scripts"));
    scan();
}

void PluginHost::scan()
{
    oxKernelInterface::the()->loadScriptPlugins();
}

bool PluginHost::load(const QString &path)
{
    const InterpreterLock lock;
    return oxKernelInterface::the()->loadPythonPlugin(path);
}

QVariant PluginHost::evaluate(const QString &expression)
{
    return evaluateInModule(oxKernelInterface::the()->getPythonEngine(), expression, Py_eval_input);
}

QVariant PluginHost::evaluateIn(const QString &pluginKey, const QString &expression) const
{
    PythonQtObjectPtr *module = privateData(oxKernelInterface::the())->plugins.value(pluginKey).module;
    return evaluateInModule(module, expression, Py_eval_input);
}

void PluginHost::run(const QString &statements)
{
    evaluateInModule(oxKernelInterface::the()->getPythonEngine(), statements, Py_file_input);
}

void PluginHost::bind(const QString &name, QObject *object)
{
    const InterpreterLock lock;
    oxKernelInterface::the()->getPythonEngine()->addObject(name, object);
}

QMenu *PluginHost::menu(const QString &title) const
{
    const auto menus = window.menuBar()->findChildren<QMenu *>();
    for (QMenu *menu : menus) {
        if (menu->title() == title)
            return menu;
    }
    return nullptr;
}

QAction *PluginHost::entry(const QString &moduleName) const
{
    const auto actions = window.menuBar()->findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->text() == moduleName && !action->menu())
            return action;
    }
    return nullptr;
}

QDockWidget *PluginHost::dock(const QString &moduleName) const
{
    const auto docks = window.findChildren<QDockWidget *>();
    for (QDockWidget *dock : docks) {
        if (dock->windowTitle() == moduleName)
            return dock;
    }
    return nullptr;
}
