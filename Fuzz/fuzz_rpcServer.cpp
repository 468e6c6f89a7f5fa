// What a secondary process sends to the main process: as it is when the first byte of the input is
// 255, and else as Peer.h says.

#include <QCoreApplication>
#include <QLocalSocket>

#include "Peer.h"
#include "Service.h"
#include "oxQRPCServer.h"

namespace {

QString listenedName(oxQRPCServer *server)
{
    const QUrl address(QStringLiteral("local:ox-fuzz-server-%1").arg(QCoreApplication::applicationPid()));
    if (!server->listen(address))
        qFatal("%s", qPrintable(server->errorString()));
    return address.path();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    static Service service;
    static oxQRPCServer server;
    static const QString name = listenedName(&server);
    static const bool isOffered = server.registerService(&service);
    if (!isOffered)
        qFatal("the service is not offered");

    QLocalSocket peer;
    peer.connectToServer(name);
    if (!peer.waitForConnected())
        qFatal("%s", qPrintable(peer.errorString()));
    settle();
    if (size > 0 && bytes[0] == 255)
        peer.write(reinterpret_cast<const char *>(bytes + 1), qint64(size - 1));
    else
        peer.write(packetsOf(bytes, size));
    settle();
    Q_EMIT service.changed(1);
    settle();
    peer.abort();
    settle();
    return 0;
}
