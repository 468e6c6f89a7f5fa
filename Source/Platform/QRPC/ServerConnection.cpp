#include "ServerConnection.h"

#include <QUrl>
#include <QVarLengthArray>

#include <cstdio>

#include "InterfaceClass.h"
#include "ServiceList.h"

// Qt's own listeners are open to other users: so the host has none, and gets its connection from us.
ServerConnection::ServerConnection(QIODevice *socket, ServiceList *list, const QList<QObject *> &services,
                                   QObject *parent)
    : QObject(parent)
    , m_gate(
          socket, [this](quint16 type, QDataStream &packet) { return verdict(type, packet); }, this)
    , m_host(QUrl(QStringLiteral("ox:")), QUrl(), QRemoteObjectHost::AllowExternalRegistration)
{
    m_host.enableRemoting(list);
    for (QObject *service : services)
        offer(service);
    connect(&m_gate, &PacketGate::taken, this, &ServerConnection::answer);
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
    m_services.insert(interfaceName(interface), {service, methods});
    m_host.enableRemoting(service);
}

PacketGate::Verdict ServerConnection::verdict(quint16 type, QDataStream &packet)
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
        m_calledName = name;
        m_call = CallPacket(packet);
        break;
    default:
        return PacketGate::Verdict::Refuse;
    }
    if (packet.status() != QDataStream::Ok || !packet.atEnd() || (type == PacketGate::Invoke && !isCall()))
        return PacketGate::Verdict::Refuse;
    return type == PacketGate::Invoke ? PacketGate::Verdict::Take : PacketGate::Verdict::Pass;
}

bool ServerConnection::isCall() const
{
    const QVector<QMetaMethod> methods = m_services.value(m_calledName).methods;
    if (m_call.index < 0 || m_call.index >= methods.size())
        return false;
    const QMetaMethod &method = methods.at(m_call.index);
    return method.access() == QMetaMethod::Public && m_call.isCallOf(method);
}

void ServerConnection::answer()
{
    CallPacket call = std::move(m_call);
    const QString name = m_calledName;
    const Service service = m_services.value(name);
    if (!service.object)
        return;
    const QMetaMethod &method = service.methods.at(call.index);
    const bool hasResult = method.returnType() != QMetaType::Void;
    QVariant result = hasResult ? QVariant(method.returnType(), nullptr) : QVariant();
    QVarLengthArray<void *> arguments{result.isValid() ? result.data() : nullptr};
    for (QVariant &argument : call.arguments)
        arguments.append(argument.data());
    QMetaObject::metacall(service.object, QMetaObject::InvokeMetaMethod, method.methodIndex(), arguments.data());
    if (call.serial >= 0)
        m_gate.send(PacketGate::InvokeReply, name, call.serial, result);
}
