// What the main process sends to a secondary process after it has described its services: Peer.h says
// how the input is made up. It is trusted to keep to that description.

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QUrl>

#include "Peer.h"
#include "Service.h"
#include "oxQRPCClient.h"
#include "oxQRPCServer.h"

namespace {

const QLatin1String serviceName("Service");
const QLatin1String serviceListName("oxQRPCServiceList");

constexpr quint32 largestObjectList = 100; // Qt makes room for what it says

QString socketName(const char *of)
{
    return QStringLiteral("ox-fuzz-%1-%2").arg(QLatin1String(of)).arg(QCoreApplication::applicationPid());
}

/// What a real server sends to a peer that asks for its objects.
QVector<QByteArray> receiveDescriptions()
{
    Service service;
    oxQRPCServer server;
    server.registerService(&service);
    server.listen(QUrl(QStringLiteral("local:") + socketName("server")));
    QLocalSocket peer;
    peer.connectToServer(socketName("server"));
    peer.waitForConnected();
    QDataStream stream(&peer);
    for (const QLatin1String object : {serviceListName, serviceName}) {
        QByteArray packet;
        QDataStream(&packet, QIODevice::WriteOnly) << quint16(AddObject) << QString(object) << true;
        stream << packet;
    }
    settle();
    QVector<QByteArray> packets;
    while (!stream.atEnd()) {
        packets.append(QByteArray());
        stream >> packets.last();
    }
    if (packets.size() != 4)
        qFatal("%d packets from the server", packets.size());
    return packets;
}

const QVector<QByteArray> &descriptions()
{
    static const auto packets = receiveDescriptions();
    return packets;
}

bool isSafe(const QByteArray &packet)
{
    static const auto signalsOfService = methodsOf(&Service::staticMetaObject, QMetaMethod::Signal);
    QDataStream stream(packet);
    quint16 kind = 0;
    QString object;
    qint32 call = 0;
    qint32 index = 0;
    stream >> kind;
    if (kind == ObjectList) {
        quint32 count = 0;
        stream >> count;
        return count <= largestObjectList;
    }
    stream >> object;
    const bool isOfService = object == serviceName;
    switch (kind) {
    case InitObject:
    case InitDynamicObject:
        return descriptions().contains(packet);
    case Call:
        stream >> call >> index;
        if (call != QMetaObject::InvokeMetaMethod || index < 0)
            return false;
        if (!isOfService)
            return index == 0 && areArgumentsOfTypes(&stream, {QMetaType::QStringList});
        return index < signalsOfService.size()
            && areArgumentsOfTypes(&stream, parameterTypes(signalsOfService.at(index)));
    case Answer:
        stream >> call;
        return readValue(&stream).isValid();
    case PropertyChange:
        stream >> index;
        return index == 0
            && readValue(&stream).userType() == (isOfService ? QMetaType::QString : QMetaType::QStringList);
    default:
        return true;
    }
}

} // namespace

// Qt Remote Objects does not free the descriptions that it gets.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:QMetaObjectBuilder::toMetaObject";
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    static QLocalServer server;
    if (!server.isListening() && !server.listen(socketName("client")))
        qFatal("%s", qPrintable(server.errorString()));
    const QByteArray packets = packetsOf(descriptions(), bytes, size, isSafe);

    Service service;
    oxQRPCClient client;
    client.registerService(&service);
    client.setCallTimeout(0);
    client.connectToHost(QUrl(QStringLiteral("local:") + socketName("client")));
    settle();
    QLocalSocket *peer = server.nextPendingConnection();
    if (!peer)
        qFatal("the client does not connect");
    peer->write(packets);
    settle();
    if (client.isConnected()) {
        const QMetaObject *metaObject = service.metaObject();
        const QString text = QStringLiteral("a");
        QString result;
        void *arguments[] = {&result, const_cast<QString *>(&text)};
        client.callMethod(&service, metaObject, metaObject->indexOfSlot("text(QString)"), arguments);
    }
    peer->close();
    settle();
    delete peer;
    return 0;
}
