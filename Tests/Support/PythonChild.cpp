#include "PythonChild.h"

#include <QProcess>

#include <cstdio>

#include "PluginHost.h"
#include "oxKernelInterfaceRemote.h"

namespace {

constexpr QLatin1String separateOption("--python-child");
constexpr QLatin1String mergedOption("--merged-python-child");
constexpr int limit = 120000;

PythonChildResult runChild(const PythonChild &child, const QString &option, const QString &statements)
{
    QProcess process;
    process.setProcessEnvironment(child.environment);
    process.setWorkingDirectory(child.workingFolder);
    if (option == mergedOption)
        process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QCoreApplication::applicationFilePath(), {option, statements});
    process.waitForFinished(limit);
    const bool ended = process.exitStatus() == QProcess::NormalExit && process.state() == QProcess::NotRunning;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

PythonChild::PythonChild()
    : environment(QProcessEnvironment::systemEnvironment())
{
    const QStringList variables = environment.keys();
    for (const QString &variable : variables) {
        if (variable.startsWith(QLatin1String("OX_")) || variable.startsWith(QLatin1String("PYTHON")))
            environment.remove(variable);
    }
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtimeFolder.path());
}

PythonChildResult PythonChild::run(const QString &statements) const
{
    return runChild(*this, separateOption, statements);
}

PythonChildResult PythonChild::runMerged(const QString &statements) const
{
    return runChild(*this, mergedOption, statements);
}

bool PythonChild::isOne(const QStringList &arguments)
{
    return arguments.value(1) == separateOption || arguments.value(1) == mergedOption;
}

int PythonChild::main(const QStringList &arguments)
{
    if (arguments.value(1) == mergedOption)
        setvbuf(stdout, nullptr, _IONBF, 0);
    oxQRPCClient client;
    oxKernelInterface::the()->init(&client, false);
    PluginHost::run(arguments.value(2));
    return 0;
}
