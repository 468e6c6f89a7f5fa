#pragma once

#include <QHash>
#include <QMetaMethod>
#include <QObject>
#include <QRemoteObjectHost>
#include <QVector>

#include "PacketGate.h"

class ServiceList;

/// One secondary process's connection to the main process's services.
///
/// Has a host of its own: a host keeps the call that it works on where the call of another
/// connection, served while a slot runs an event loop, would overwrite it.
class ServerConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes @p socket over.
    ServerConnection(QIODevice *socket, ServiceList *list, const QList<QObject *> &services, QObject *parent);

    void offer(QObject *service);

private:
    bool isPermitted(quint16 type, QDataStream &packet) const;
    bool isCall(const QString &name, QDataStream &packet) const;

    PacketGate m_gate;
    QRemoteObjectHost m_host;
    QHash<QString, QVector<QMetaMethod>> m_methods; // as the host numbers them
};
