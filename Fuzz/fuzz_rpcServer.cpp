// What a secondary process sends to the main process: Peer.h says how the input is made up. Peers are
// trusted to call an operation with arguments of its types.

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

bool isSafe(const QByteArray &packet)
{
    static const auto slotsOfService = methodsOf(&Service::staticMetaObject, QMetaMethod::Slot);
    QDataStream stream(packet);
    quint16 kind = 0;
    QString object;
    qint32 call = 0;
    qint32 index = 0;
    stream >> kind >> object >> call >> index;
    if (kind != Call)
        return true;
    return object == QLatin1String("Service") && call == QMetaObject::InvokeMetaMethod && index >= 0
        && index < slotsOfService.size() && areArgumentsOfTypes(&stream, parameterTypes(slotsOfService.at(index)));
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
    peer.write(packetsOf({}, bytes, size, isSafe));
    settle();
    Q_EMIT service.changed(1);
    settle();
    peer.abort();
    settle();
    return 0;
}
