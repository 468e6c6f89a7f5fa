#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QVector>

#include <functional>
#include <limits>
#include <memory>

#include "oxEmission.h"

class QRemoteObjectDynamicReplica;
class QRemoteObjectNode;

/// A service object of this process, bound to the main process's object of its interface class.
///
/// Takes the signals of that object by a qt_metacall() of its own, with one method for each signal:
/// so it has no meta-object of its own.
class oxServiceLink : public QObject
{
public:
    using Receiver = std::function<void(const oxEmission &)>;

    oxServiceLink(QObject *service, Receiver receiver, QObject *parent);
    ~oxServiceLink() override;

    /// Empty for a service without interface class, which is bound to nothing.
    QString interfaceName() const { return m_interfaceName; }

    /// Asks the main process for its object; @p ready is called when it is there. After the end of
    /// a connection its description may be another one, so it is asked anew.
    void acquire(QRemoteObjectNode *node, const std::function<void()> &ready);
    /// Gives the object back.
    void release();
    /// Whether there is an object, and whether it can be called.
    bool isAcquired() const { return m_replica != nullptr; }
    bool isReady() const;

    /// What stands for the object here, with its description; deleted when it is given back.
    const QRemoteObjectDynamicReplica *replica() const;

    /// The number by which calls name the slot of that signature of the main process's object; -1
    /// where that has none.
    int slotNumber(const QByteArray &signature) const;

    /// Milliseconds since the last signal.
    qint64 silence() const
    {
        return m_lastSignal.isValid() ? m_lastSignal.elapsed() : std::numeric_limits<qint64>::max();
    }

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    void connectSignals();

    QObject *m_service;
    QString m_interfaceName;
    Receiver m_receiver;
    std::unique_ptr<QRemoteObjectDynamicReplica> m_replica;
    QVector<int> m_signals; // the service's method for each of our methods
    QElapsedTimer m_lastSignal;
};
