#include "oxServiceLink.h"

#include <QMetaMethod>
#include <QRemoteObjectDynamicReplica>
#include <QRemoteObjectNode>

#include "InterfaceClass.h"

oxServiceLink::oxServiceLink(QObject *service, Receiver receiver, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_interfaceName(::interfaceName(service->metaObject()))
    , m_receiver(std::move(receiver))
{}

oxServiceLink::~oxServiceLink() = default;

// Not when it is initialized: the replica then signals the values of its properties, which nobody
// changed, and whatever arguments their signals have.
void oxServiceLink::acquire(QRemoteObjectNode *node, const std::function<void()> &ready)
{
    m_replica.reset(node->acquireDynamic(m_interfaceName));
    const auto begin = [this, ready] {
        connectSignals();
        ready();
    };
    if (m_replica->isInitialized()) // for another service of the same interface
        begin();
    else
        connect(m_replica.get(), &QRemoteObjectReplica::notified, this, begin);
}

void oxServiceLink::release()
{
    m_replica.reset();
}

bool oxServiceLink::isReady() const
{
    return m_replica && m_replica->isReplicaValid();
}

const QRemoteObjectDynamicReplica *oxServiceLink::replica() const
{
    return m_replica.get();
}

int oxServiceLink::slotNumber(const QByteArray &signature) const
{
    const QMetaObject *object = m_replica->metaObject();
    int number = 0;
    for (int i = object->methodOffset(); i < object->methodCount(); ++i) {
        const QMetaMethod method = object->method(i);
        if (method.methodType() == QMetaMethod::Signal)
            continue;
        if (method.methodSignature() == signature)
            return number;
        ++number;
    }
    return -1;
}

int oxServiceLink::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    const int own = QObject::qt_metacall(call, id, arguments);
    if (own < 0 || call != QMetaObject::InvokeMetaMethod)
        return own;
    m_lastSignal.start();
    const int method = m_signals.at(own);
    const QMetaMethod signal = m_service->metaObject()->method(method);
    QVariantList copies;
    for (int i = 0; i < signal.parameterCount(); ++i)
        copies.append(QVariant(signal.parameterType(i), arguments[i + 1]));
    m_receiver({m_service, method, copies});
    return -1;
}

void oxServiceLink::connectSignals()
{
    m_signals.clear();
    const QMetaObject *theirs = m_replica->metaObject();
    const QMetaObject *ours = m_service->metaObject();
    for (int i = theirs->methodOffset(); i < theirs->methodCount(); ++i) {
        const QMetaMethod signal = theirs->method(i);
        const int method = ours->indexOfSignal(signal.methodSignature());
        if (signal.methodType() != QMetaMethod::Signal || method < 0)
            continue;
        QMetaObject::connect(m_replica.get(), i, this, QObject::staticMetaObject.methodCount() + m_signals.size(),
                             Qt::DirectConnection);
        m_signals.append(method);
    }
}
