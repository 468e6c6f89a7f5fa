#include <QLocalSocket>
#include <QProcess>
#include <QRemoteObjectDynamicReplica>
#include <QRemoteObjectNode>
#include <QRemoteObjectPendingCall>

#include <benchmark/benchmark.h>

#include <memory>

#include <unistd.h>

#include "EchoService.h"
#include "oxQRPCClient.h"
#include "oxdMaterials.h"
#include "oxdObjectManager.h"

// A call of another process and its answer, beside the same call of a bare replica, and beside a
// socket that sends as many bytes there and back ("... socket"). What counts is the time that passes.

namespace {

constexpr int megabyte = 1 << 20;
constexpr int objectCount = 10000;

/// The other process, and all three ways to it.
class Echo
{
public:
    static Echo &the()
    {
        static Echo echo;
        return echo;
    }

    EchoService ours;
    std::unique_ptr<QRemoteObjectDynamicReplica> bare;
    QLocalSocket socket;

private:
    Echo()
    {
        oxdObjectManager::registerType<oxdMaterial>(0);
        const QString name = QStringLiteral("bench_rpc-%1").arg(getpid());
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(ECHO_PROCESS), {name});
        m_process.waitForReadyRead();

        ours.setClient(&m_client);
        m_client.registerService(&ours);
        m_client.connectToHost(QUrl(QStringLiteral("local:") + name));
        m_client.waitForConnected(30000);
        m_node.connectToNode(QUrl(QStringLiteral("local:%1-replica").arg(name)));
        bare.reset(m_node.acquireDynamic(QStringLiteral("EchoService")));
        bare->waitForSource();
        socket.connectToServer(name + QStringLiteral("-socket"));
        socket.waitForConnected();
    }
    ~Echo()
    {
        bare.reset();
        m_client.disconnectFromHost();
        m_process.kill();
        m_process.waitForFinished();
    }

    oxQRPCClient m_client;
    QRemoteObjectNode m_node;
    QProcess m_process;
};

template<class... Arguments>
QVariant callBare(const char *method, const Arguments &...arguments)
{
    QRemoteObjectPendingCall answer;
    QMetaObject::invokeMethod(Echo::the().bare.get(), method, Qt::DirectConnection,
                              Q_RETURN_ARG(QRemoteObjectPendingCall, answer), arguments...);
    answer.waitForFinished();
    return answer.returnValue();
}

void socketRoundTrips(benchmark::State &state, int size)
{
    QLocalSocket &socket = Echo::the().socket;
    const QByteArray bytes(size, 'x');
    for (auto _ : state) {
        socket.write(bytes);
        socket.flush();
        int count = 0;
        while (count < size && (socket.bytesAvailable() > 0 || socket.waitForReadyRead()))
            count += socket.readAll().size();
        if (count != size)
            state.SkipWithError("came back otherwise");
    }
}

QList<oxdMaterial> materials()
{
    QList<oxdMaterial> objects;
    for (int i = 1; i <= objectCount; ++i)
        objects.append(oxdMaterial(quint64(i)));
    return objects;
}

void oursInt(benchmark::State &state)
{
    for (auto _ : state) {
        if (Echo::the().ours.sum(40, 2) != 42)
            state.SkipWithError("another sum");
    }
}

void bareInt(benchmark::State &state)
{
    for (auto _ : state) {
        if (callBare("sum", Q_ARG(int, 40), Q_ARG(int, 2)).toInt() != 42)
            state.SkipWithError("another sum");
    }
}

void socketInt(benchmark::State &state)
{
    socketRoundTrips(state, 70); // the packet of the call
}

void oursBytes(benchmark::State &state)
{
    const QByteArray bytes(megabyte, 'x');
    for (auto _ : state) {
        if (Echo::the().ours.bytes(bytes).size() != megabyte)
            state.SkipWithError("came back otherwise");
    }
}

void bareBytes(benchmark::State &state)
{
    const QByteArray bytes(megabyte, 'x');
    for (auto _ : state) {
        if (callBare("bytes", Q_ARG(QByteArray, bytes)).toByteArray().size() != megabyte)
            state.SkipWithError("came back otherwise");
    }
}

void socketBytes(benchmark::State &state)
{
    socketRoundTrips(state, megabyte);
}

void oursList(benchmark::State &state)
{
    const QList<oxdMaterial> objects = materials();
    for (auto _ : state) {
        if (Echo::the().ours.materialsBack(objects).size() != objectCount)
            state.SkipWithError("came back otherwise");
    }
}

void bareList(benchmark::State &state)
{
    const QList<oxdMaterial> objects = materials();
    for (auto _ : state) {
        if (callBare("materialsBack", Q_ARG(QList<oxdMaterial>, objects)).value<QList<oxdMaterial>>().size()
            != objectCount)
            state.SkipWithError("came back otherwise");
    }
}

void socketList(benchmark::State &state)
{
    socketRoundTrips(state, objectCount * int(sizeof(quint64)));
}

BENCHMARK(bareInt)->Name("int/bare")->UseRealTime();
BENCHMARK(oursInt)->Name("int/ours")->UseRealTime();
BENCHMARK(socketInt)->Name("int socket/bare")->UseRealTime();
BENCHMARK(bareBytes)->Name("1 MB/bare")->UseRealTime();
BENCHMARK(oursBytes)->Name("1 MB/ours")->UseRealTime();
BENCHMARK(socketBytes)->Name("1 MB socket/bare")->UseRealTime();
BENCHMARK(bareList)->Name("10,000 objects/bare")->UseRealTime();
BENCHMARK(oursList)->Name("10,000 objects/ours")->UseRealTime();
BENCHMARK(socketList)->Name("10,000 objects socket/bare")->UseRealTime();

} // namespace
