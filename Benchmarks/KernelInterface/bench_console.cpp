#include <PythonQt.h>

#include <benchmark/benchmark.h>

#include <QObject>
#include <QVector>

#include <cstdio>

#include "CpuTime.h"
#include "SilentOutput.h"
#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"

// What Python prints, as lines of the console: beside the same signals to a receiver that does
// nothing, and printf() of the same lines.

class EmptyReceiver : public QObject
{
    Q_OBJECT

public:
    void take(const QString &) {}

Q_SIGNALS:
    void text(const QString &text);
};

namespace {

struct Lines
{
    QVector<QByteArray> encoded;
    QVector<QString> texts;
    QString all;
};

const Lines &lines()
{
    static const Lines lines = [] {
        Lines made;
        for (int i = 0; i < 1'000'000; ++i) {
            const QByteArray line = "step " + QByteArray::number(i) + " of 1000000, residual 0.00031";
            made.encoded.append(line);
            made.texts.append(QString::fromUtf8(line + '\n'));
        }
        for (const QString &text : qAsConst(made.texts))
            made.all += text;
        return made;
    }();
    return lines;
}

const QVector<QString> &writes(bool inOne)
{
    static const QVector<QString> one{lines().all};
    return inOne ? one : lines().texts;
}

void printBare(const QVector<QString> &texts)
{
    static EmptyReceiver receiver;
    static const auto connection = QObject::connect(&receiver, &EmptyReceiver::text, &receiver, &EmptyReceiver::take);
    Q_UNUSED(connection)
    for (const QString &text : texts)
        Q_EMIT receiver.text(text);
    for (const QByteArray &line : lines().encoded)
        std::printf("python info: '%s'\n", line.constData());
}

void printOurs(const QVector<QString> &texts)
{
    for (const QString &text : texts)
        Q_EMIT PythonQt::self()->pythonStdOut(text);
}

void console(benchmark::State &state, void (*print)(const QVector<QString> &), bool inOne)
{
    static oxQRPCClient client;
    const SilentOutput silent;
    if (!oxKernelInterface::the()->getPythonEngine())
        oxKernelInterface::the()->init(&client, false);
    const QVector<QString> &texts = writes(inOne);
    for (auto _ : state)
        timeIteration(state, [print, &texts] { print(texts); });
}

void millionLines(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(1'000'000)->UseManualTime();
}

BENCHMARK_CAPTURE(console, oneBare, printBare, true)->Name("echo of one write/bare")->Apply(millionLines);
BENCHMARK_CAPTURE(console, oneOurs, printOurs, true)->Name("echo of one write/ours")->Apply(millionLines);
BENCHMARK_CAPTURE(console, manyBare, printBare, false)->Name("echo line by line/bare")->Apply(millionLines);
BENCHMARK_CAPTURE(console, manyOurs, printOurs, false)->Name("echo line by line/ours")->Apply(millionLines);

} // namespace

#include "bench_console.moc"
