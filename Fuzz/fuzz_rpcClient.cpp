// What the main process sends to a secondary process: Peer.h says how the input is made up. The main
// process is trusted to describe its services as they are, and with the sizes of lists: Qt Remote
// Objects follows the one and makes room for the other.

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QUrl>
#include <QVariant>
#include <QVector>

#include <new>

#include "Peer.h"
#include "Service.h"
#include "oxQRPCClient.h"
#include "oxQRPCServer.h"

namespace {

const QLatin1String serviceName("Service");
const QLatin1String serviceListName("oxQRPCServiceList");

/// The kinds of packets that the checks below have to know.
enum PacketKind : quint16 {
    InitObject = 2,
    InitDynamicObject = 3,
    AddObject = 4,
    Call = 6,
    Answer = 7,
    PropertyChange = 8,
    ObjectList = 9
};

constexpr quint32 largestObjectList = 100;

QString socketName(const char *of)
{
    return QStringLiteral("ox-fuzz-%1-%2").arg(QLatin1String(of)).arg(QCoreApplication::applicationPid());
}

/// What a real server sends to a peer that asks for its objects.
QVector<QByteArray> packetsOfServer()
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

template<class T>
bool isReadable(QDataStream *stream)
{
    try {
        T value;
        *stream >> value;
        return stream->status() == QDataStream::Ok;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

bool isTrusted(const QByteArray &packet)
{
    static const QVector<QByteArray> ofServer = packetsOfServer();
    QDataStream stream(packet);
    quint16 kind = 0;
    quint32 number = 0;
    QString object;
    stream >> kind;
    switch (kind) {
    case InitObject:
    case InitDynamicObject:
        return ofServer.contains(packet);
    case Call:
        stream >> object >> number >> number;
        return isReadable<QVariantList>(&stream);
    case Answer:
    case PropertyChange:
        stream >> object >> number;
        return isReadable<QVariant>(&stream);
    case ObjectList:
        stream >> number;
        return number <= largestObjectList;
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
    const QByteArray packets = packetsOf(bytes, size, isTrusted);

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
