#include <benchmark/benchmark.h>

#include <QProcess>
#include <QStringList>

// The library's init() in a process of its own, each time: beside PythonQt's start alone.

namespace {

void init(benchmark::State &state, const QString &what)
{
    for (auto _ : state) {
        QProcess process;
        process.start(QStringLiteral(START_UP), {what});
        if (!process.waitForFinished() || process.exitCode() != 0) {
            state.SkipWithError("did not start");
            break;
        }
        const QByteArray lastLine = process.readAllStandardOutput().trimmed().split('\n').last();
        state.SetIterationTime(lastLine.toDouble() * 1e-9);
    }
}

BENCHMARK_CAPTURE(init, bare, QStringLiteral("bare"))->Name("init/bare")->UseManualTime();
BENCHMARK_CAPTURE(init, ours, QStringLiteral("ours"))->Name("init/ours")->UseManualTime();

} // namespace
