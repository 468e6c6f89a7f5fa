#include "ServerConnection.h"

#include <QUrl>

#include <cstdio>

#include "CallPacket.h"
#include "InterfaceClass.h"
#include "ServiceList.h"

namespace {

// Qt's own listeners are open to other users: so hosts get their connections from us.
const QUrl noListener(QStringLiteral("ox:"));

} // namespace

ServerConnection::ServerConnection(QIODevice *socket, ServiceList *list, const QList<QObject *> &services,
                                   QObject *parent)
    : QObject(parent)
    , m_gate(
          socket, [this](quint16 type, QDataStream &packet) { return isPermitted(type, packet); }, this)
    , m_host(noListener, QUrl(), QRemoteObjectHost::AllowExternalRegistration)
{
    m_host.enableRemoting(list);
    for (QObject *service : services)
        offer(service);
    connect(&m_gate, &PacketGate::ended, this, [this] {
        if (m_gate.hasRefused())
            fprintf(stderr, "oxQRPCServer: what a connection sent is no call, it was ended\n");
        if (m_gate.hasOverflowed())
            fprintf(stderr, "oxQRPCServer: a connection does not read what it is sent, it was ended\n");
        deleteLater();
    });
    m_host.addHostSideConnection(&m_gate);
    m_gate.start();
}

void ServerConnection::offer(QObject *service)
{
    const QMetaObject *interface = interfaceClass(service->metaObject());
    QVector<QMetaMethod> methods;
    for (int i = interface->methodOffset(); i < interface->methodCount(); ++i) {
        const QMetaMethod method = interface->method(i);
        if (method.methodType() != QMetaMethod::Signal)
            methods.append(method);
    }
    m_methods.insert(interfaceName(interface), methods);
    m_host.enableRemoting(service);
}

// The host calls whatever a packet says, with the arguments that it has.
bool ServerConnection::isPermitted(quint16 type, QDataStream &packet) const
{
    QString name;
    packet >> name;
    switch (type) {
    case PacketGate::AddObject: {
        bool isDynamic = false;
        packet >> isDynamic;
        break;
    }
    case PacketGate::RemoveObject:
    case PacketGate::Ping:
        break;
    case PacketGate::Invoke:
        if (!isCall(name, packet))
            return false;
        break;
    default:
        return false;
    }
    return packet.status() == QDataStream::Ok && packet.atEnd();
}

bool ServerConnection::isCall(const QString &name, QDataStream &packet) const
{
    const CallPacket call(packet);
    const QVector<QMetaMethod> methods = m_methods.value(name);
    if (call.index < 0 || call.index >= methods.size())
        return false;
    const QMetaMethod &method = methods.at(call.index);
    return method.access() == QMetaMethod::Public && call.isCallOf(method);
}
