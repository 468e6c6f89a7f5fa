#include <PythonQt.h>

#include <benchmark/benchmark.h>

#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QMainWindow>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QVector>

#include "CpuTime.h"
#include "SilentOutput.h"
#include "oxKernelInterfaceRemote.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxQRPCClient.h"

// The scan of a folder of small plugins, the first time and again: beside a loop that reads the
// same files, makes a module, a widget and a dock for each and runs its text; the second time it
// deletes the earlier ones as it goes.

namespace {

class Host
{
public:
    static Host *the();

    /// A plugins folder with that many plugins; written on the first call.
    QString folderOf(int pluginCount);

    QMainWindow *const window = new QMainWindow; // not deleted: the application is gone before

private:
    Host();

    oxQRPCClient m_client;
    QTemporaryDir m_folder;
};

Host *Host::the()
{
    static Host host;
    return &host;
}

Host::Host()
{
    window->menuBar()->addMenu(QStringLiteral("&Help"));
    oxKernelInterface::the()->init(&m_client, false);
    oxKernelServiceFactory::the()->getService<oxMainWindowService>()->setWidget(window);
    window->show();
}

QString Host::folderOf(int pluginCount)
{
    const QDir folder(m_folder.filePath(QString::number(pluginCount)));
    if (folder.exists())
        return folder.path();
    folder.mkpath(QStringLiteral("Scripts"));
    for (int i = 0; i < pluginCount; ++i) {
        QFile file(folder.filePath(QStringLiteral("Scripts/Plugin%1.py").arg(i)));
        file.open(QIODevice::WriteOnly);
        file.write("limit = " + QByteArray::number(i)
                   + "\n"
                     "\n"
                     "def scaled(value):\n"
                     "    return value * limit\n"
                     "\n"
                     "values = [scaled(i) for i in range(10)]\n");
    }
    return folder.path();
}

struct Loaded
{
    PythonQtObjectPtr module;
    QDockWidget *dock;
};

Loaded loadBare(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QString text = QString::fromUtf8(file.readAll());
    Loaded plugin{PythonQtObjectPtr(PythonQt::self()->createUniqueModule()),
                  new QDockWidget(path, Host::the()->window)};
    plugin.dock->setWidget(new QWidget);
    plugin.module.evalScript(text, Py_file_input);
    return plugin;
}

void scanBare(benchmark::State &state, bool again)
{
    const int pluginCount = int(state.range(0));
    const SilentOutput silent;
    const QDir folder(Host::the()->folderOf(pluginCount) + QStringLiteral("/Scripts"));
    QStringList paths;
    for (const QString &name : folder.entryList(QDir::Files, QDir::Unsorted))
        paths.append(folder.filePath(name));

    const PyGILState_STATE lock = PyGILState_Ensure();
    for (auto _ : state) {
        QVector<Loaded> plugins(pluginCount);
        const auto load = [&paths, &plugins] {
            for (int i = 0; i < paths.size(); ++i) {
                delete plugins.at(i).dock;
                plugins[i] = loadBare(paths.at(i));
            }
        };
        if (again)
            load();
        timeIteration(state, load);
        for (const Loaded &plugin : qAsConst(plugins))
            delete plugin.dock;
    }
    PyGILState_Release(lock);
}

void scanFolder(const QString &folder)
{
    qputenv("OX_PLUGINS_DIR", folder.toUtf8());
    oxKernelInterface::the()->loadScriptPlugins();
}

void scanOurs(benchmark::State &state, bool again)
{
    const SilentOutput silent;
    const QString folder = Host::the()->folderOf(int(state.range(0)));
    const QString emptyFolder = Host::the()->folderOf(0);
    for (auto _ : state) {
        if (again)
            scanFolder(folder);
        timeIteration(state, [&folder] { scanFolder(folder); });
        scanFolder(emptyFolder);
    }
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(10)->Arg(100)->Arg(1000)->Arg(3000)->UseManualTime();
}

BENCHMARK_CAPTURE(scanBare, first, false)->Name("scan/bare")->Apply(sizes);
BENCHMARK_CAPTURE(scanOurs, first, false)->Name("scan/ours")->Apply(sizes);
BENCHMARK_CAPTURE(scanBare, again, true)->Name("rescan/bare")->Apply(sizes);
BENCHMARK_CAPTURE(scanOurs, again, true)->Name("rescan/ours")->Apply(sizes);

} // namespace
