#include "oxServerConnection.h"

#include <QUrl>
#include <QVarLengthArray>

#include <cstdio>

#include "InterfaceClass.h"
#include "oxServiceList.h"

// Qt's own listeners are open to other users: so the host has none, and gets its connection from us.
oxServerConnection::oxServerConnection(QIODevice *socket, oxServiceList *list, const QList<QObject *> &services,
                                       QObject *parent)
    : QObject(parent)
    , m_gate(
          socket, [this](quint16 type, QDataStream &packet) { return verdict(type, packet); }, this)
    , m_host(QUrl(QStringLiteral("ox:")), QUrl(), QRemoteObjectHost::AllowExternalRegistration)
{
    m_host.enableRemoting(list);
    for (QObject *service : services)
        offer(service);
    connect(&m_gate, &oxPacketGate::taken, this, &oxServerConnection::answer);
    connect(&m_gate, &oxPacketGate::ended, this, [this] {
        if (m_gate.hasRefused())
            fprintf(stderr, "oxQRPCServer: %s\n", reasonOfRefusal().constData());
        if (m_gate.hasOverflowed())
            fprintf(stderr, "oxQRPCServer: a connection does not read what it is sent, it was ended\n");
        deleteLater();
    });
    m_host.addHostSideConnection(&m_gate);
    m_gate.start();
}

void oxServerConnection::offer(QObject *service)
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

oxPacketGate::Verdict oxServerConnection::verdict(quint16 type, QDataStream &packet)
{
    QString name;
    packet >> name;
    switch (type) {
    case oxPacketGate::AddObject: {
        bool isDynamic = false;
        packet >> isDynamic;
        break;
    }
    case oxPacketGate::RemoveObject:
    case oxPacketGate::Ping:
        break;
    case oxPacketGate::Invoke:
        m_calledName = name;
        m_call = oxCallPacket(packet);
        break;
    default:
        return oxPacketGate::Verdict::Refuse;
    }
    if (packet.status() != QDataStream::Ok || !packet.atEnd() || (type == oxPacketGate::Invoke && !isCall()))
        return oxPacketGate::Verdict::Refuse;
    return type == oxPacketGate::Invoke ? oxPacketGate::Verdict::Take : oxPacketGate::Verdict::Pass;
}

bool oxServerConnection::isCall() const
{
    const QVector<QMetaMethod> methods = m_services.value(m_calledName).methods;
    if (m_call.index < 0 || m_call.index >= methods.size())
        return false;
    const QMetaMethod &method = methods.at(m_call.index);
    return method.access() == QMetaMethod::Public && m_call.isCallOf(method);
}

QByteArray oxServerConnection::reasonOfRefusal() const
{
    const QMetaMethod method = m_services.value(m_calledName).methods.value(m_call.index);
    const QByteArray unknownType = oxCallPacket::typeUnknownHere(method);
    if (unknownType.isEmpty())
        return "what a connection sent is no call, it was ended";
    return "a connection called " + m_calledName.toUtf8() + "::" + method.methodSignature()
        + ", it was ended: register the type '" + unknownType + "' here";
}

void oxServerConnection::answer()
{
    oxCallPacket call = std::move(m_call);
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
    // Without a value the caller is told which one is missing; the name of its type alone would end the connection.
    if (hasResult && !oxStreamedTypes::isStreamable(method.returnType()))
        result.clear();
    if (call.serial >= 0)
        m_gate.send(oxPacketGate::InvokeReply, name, call.serial, result);
}
