#pragma once

#include <QHash>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QRemoteObjectHost>
#include <QVector>

#include "oxCallPacket.h"
#include "oxPacketGate.h"

class oxServiceList;

/// One secondary process's connection to the main process's services.
///
/// Its host describes the services and sends what they signal. Calls are answered here: they have
/// been read for the check.
class oxServerConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes @p socket over.
    oxServerConnection(QIODevice *socket, oxServiceList *list, const QList<QObject *> &services, QObject *parent);

    void offer(QObject *service);

private:
    /// What is offered, with its methods as the host numbers them.
    struct Service
    {
        QPointer<QObject> object;
        QVector<QMetaMethod> methods;
    };

    oxPacketGate::Verdict verdict(quint16 type, QDataStream &packet);
    bool isCall() const;
    QByteArray reasonOfRefusal() const;
    void answer();

    oxPacketGate m_gate;
    QRemoteObjectHost m_host;
    QHash<QString, Service> m_services;
    QString m_calledName; // of the call that was taken
    oxCallPacket m_call;
};
