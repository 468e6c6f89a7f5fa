#pragma once

#include <QHash>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QRemoteObjectHost>
#include <QVector>

#include "CallPacket.h"
#include "PacketGate.h"

class ServiceList;

/// One secondary process's connection to the main process's services.
///
/// Its host describes the services and sends what they signal. Calls are answered here: they have
/// been read for the check.
class ServerConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes @p socket over.
    ServerConnection(QIODevice *socket, ServiceList *list, const QList<QObject *> &services, QObject *parent);

    void offer(QObject *service);

private:
    /// What is offered, with its methods as the host numbers them.
    struct Service
    {
        QPointer<QObject> object;
        QVector<QMetaMethod> methods;
    };

    PacketGate::Verdict verdict(quint16 type, QDataStream &packet);
    bool isCall() const;
    void answer();

    PacketGate m_gate;
    QRemoteObjectHost m_host;
    QHash<QString, Service> m_services;
    QString m_calledName; // of the call that was taken
    CallPacket m_call;
};
