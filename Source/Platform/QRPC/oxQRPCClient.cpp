#include "oxQRPCClient.h"

#include <QEventLoop>
#include <QLocalSocket>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QRemoteObjectDynamicReplica>
#include <QRemoteObjectNode>
#include <QScopedValueRollback>
#include <QTcpSocket>
#include <QThread>
#include <QVarLengthArray>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

#include "ObjectDescription.h"
#include "oxCallPacket.h"
#include "oxPacketGate.h"
#include "oxServiceLink.h"
#include "oxServiceList.h"

namespace {

constexpr int maximumDeliveryDepth = 16;
constexpr int retryInterval = 250;

bool isAddress(const QUrl &address)
{
    if (address.scheme() == QLatin1String("local"))
        return !address.path().isEmpty();
    return address.scheme() == QLatin1String("tcp") && address.port() > 0;
}

QByteArray fullName(const QMetaMethod &method)
{
    return method.enclosingMetaObject()->className() + QByteArrayLiteral("::") + method.methodSignature();
}

void reportUnsent(const QMetaMethod &method, const char *reason)
{
    fprintf(stderr, "oxQRPCClient: %s, %s does nothing\n", reason, fullName(method).constData());
}

void reportUnanswered(const QMetaMethod &method, const QByteArray &what)
{
    fprintf(stderr, "oxQRPCClient: %s from %s\n", what.constData(), fullName(method).constData());
}

bool isObjectList(QDataStream &packet)
{
    quint32 count = 0;
    packet >> count;
    for (; count > 0 && packet.status() == QDataStream::Ok; --count) {
        QString name;
        QString interface;
        QByteArray signature;
        packet >> name >> interface >> signature;
    }
    return true;
}

bool isProperty(const QMetaObject *object, int index)
{
    return index >= 0 && index < object->propertyCount() - object->propertyOffset();
}

bool isMethod(const QMetaObject *object, int index)
{
    return index >= 0 && index < object->methodCount() - object->methodOffset();
}

bool isSignal(QDataStream &packet, const QObject *replica, QByteArray *unknownHere, QByteArray *unknownThere)
{
    const qint64 start = packet.device()->pos();
    const oxCallPacket call(packet);
    if (!replica)
        return true;
    const QMetaObject *object = replica->metaObject();
    if (!isMethod(object, call.index))
        return false;
    const QMetaMethod method = object->method(object->methodOffset() + call.index);
    if (method.methodType() != QMetaMethod::Signal)
        return false;
    const bool isWhole = packet.status() == QDataStream::Ok && packet.atEnd();
    if (isWhole && (call.property == -1 || isProperty(object, call.property)) && call.isCallOf(method, true))
        return true;
    *unknownHere = oxCallPacket::typeUnknownHere(method);
    if (unknownHere->isEmpty())
        *unknownThere = oxCallPacket::typeUnknownThere(method, packet, start);
    return false;
}

bool isPropertyChange(QDataStream &packet, const QObject *replica)
{
    qint32 index = 0;
    QVariant value;
    packet >> index >> value;
    if (!replica)
        return true;
    const QMetaObject *object = replica->metaObject();
    if (!isProperty(object, index))
        return false;
    const int type = object->property(object->propertyOffset() + index).userType();
    return type == QMetaType::QVariant || value.userType() == type;
}

bool assignResult(int type, void *target, const QVariant &value)
{
    if (type == QMetaType::QVariant) {
        *static_cast<QVariant *>(target) = value.userType() == type ? qvariant_cast<QVariant>(value) : value;
        return true;
    }
    if (value.userType() != type)
        return false;
    QMetaType::destruct(type, target);
    QMetaType::construct(type, target, value.constData());
    return true;
}

} // namespace

oxQRPCClient::oxQRPCClient(QObject *parent)
    : QObject(parent)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &oxQRPCClient::openConnection);
}

oxQRPCClient::~oxQRPCClient()
{
    disconnectFromHost();
}

bool oxQRPCClient::connectToHost(const QUrl &address)
{
    disconnectFromHost();
    if (!isAddress(address))
        return false;
    m_address = address;
    openConnection();
    return true;
}

void oxQRPCClient::disconnectFromHost()
{
    m_address.clear();
    m_hasComplained = false;
    m_retry.stop();
    loseConnection();
}

bool oxQRPCClient::waitForConnected(int milliseconds) // NOLINT(readability-make-member-function-const): it connects
{
    if (m_isConnected)
        return true;
    QEventLoop loop;
    connect(this, &oxQRPCClient::connected, &loop, &QEventLoop::quit);
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return m_isConnected;
}

void oxQRPCClient::registerService(QObject *service)
{
    m_services.append(service);
    if (m_links.contains(service))
        return;
    m_links.insert(service,
                   new oxServiceLink(
                       service, [this](const oxEmission &emission) { receive(emission); }, this));
    connect(service, &QObject::destroyed, this, [this, service] { forget(service); });
    if (m_serviceList && m_serviceList->isReplicaValid())
        acquireServices();
}

// The link itself stays: a call may be waiting.
void oxQRPCClient::forget(QObject *service)
{
    m_services.removeAll(service);
    m_links.take(service)->release();
    const auto isOfService = [service](const oxEmission &emission) { return emission.service == service; };
    m_emissions.erase(std::remove_if(m_emissions.begin(), m_emissions.end(), isOfService), m_emissions.end());
    updateConnected();
}

void oxQRPCClient::callMethod(QObject *service, const QMetaObject *metaObject, int index, void **arguments)
{
    const QMetaMethod method = metaObject->method(index);
    oxServiceLink *link = m_links.value(service);
    if (!m_isConnected)
        return reportUnsent(method, "not connected");
    const int slotNumber = link && link->isReady() ? link->slotNumber(method.methodSignature()) : -1;
    if (slotNumber < 0)
        return reportUnsent(method, "not offered by the main process");
    const bool hasResult = method.returnType() != QMetaType::Void;
    if (hasResult && m_isSilent)
        return reportUnsent(method, "the main process does not answer");

    const qint32 serial = send(link, slotNumber, method, arguments);
    if (!hasResult)
        return;
    QVariant result;
    const QByteArray failure = waitFor(serial, link, &result);
    if (!failure.isEmpty())
        return reportUnanswered(method, failure);
    if (arguments[0] && !assignResult(method.returnType(), arguments[0], result))
        reportUnanswered(
            method, QByteArray(result.isValid() ? result.typeName() : "nothing") + " instead of " + method.typeName());
}

// Returns the number that comes back with the answer, or -1 where none is asked for.
qint32 oxQRPCClient::send(const oxServiceLink *link, int slotNumber, const QMetaMethod &method, void **arguments)
{
    QVariantList copies;
    for (int i = 0; i < method.parameterCount(); ++i)
        copies.append(QVariant(method.parameterType(i), arguments[i + 1]));
    qint32 serial = -1;
    if (method.returnType() != QMetaType::Void)
        serial = m_lastSerial = (m_lastSerial + 1) & std::numeric_limits<qint32>::max();
    m_gate->send(oxPacketGate::Invoke, link->interfaceName(), qint32(QMetaObject::InvokeMetaMethod), qint32(slotNumber),
                 copies, serial, qint32(-1));
    return serial;
}

void oxQRPCClient::openConnection()
{
    if (m_address.scheme() == QLatin1String("local")) {
        auto *socket = new QLocalSocket(this);
        acceptFrom(socket);
        socket->connectToServer(m_address.path());
    } else {
        auto *socket = new QTcpSocket(this);
        acceptFrom(socket);
        socket->connectToHost(m_address.host().isEmpty() ? QStringLiteral("127.0.0.1") : m_address.host(),
                              quint16(m_address.port()));
    }
}

template<class Socket>
void oxQRPCClient::acceptFrom(Socket *socket)
{
    m_socket = socket;
    connect(socket, &Socket::connected, this, &oxQRPCClient::startSession);
    connect(socket, &Socket::errorOccurred, this, &oxQRPCClient::retry);
}

// The node believes what the main process says.
bool oxQRPCClient::isPermitted(quint16 type, QDataStream &packet)
{
    const bool isRight = type == oxPacketGate::ObjectList ? isObjectList(packet) : isPermittedForObject(type, packet);
    return isRight && packet.status() == QDataStream::Ok && packet.atEnd();
}

bool oxQRPCClient::isPermittedForObject(quint16 type, QDataStream &packet)
{
    QString name;
    packet >> name;
    const QRemoteObjectReplica *replica =
        replicaOf(name); // null for a name that the node drops, after it read the rest
    switch (type) {
    case oxPacketGate::Handshake: // where the name is that of the protocol
    case oxPacketGate::RemoveObject:
    case oxPacketGate::Pong:
        return true;
    case oxPacketGate::InitDynamic: // a second one would change the object under those who are connected to it
        return !(replica && replica->isInitialized()) && isObjectDescription(packet, &m_unknownHere, &m_unknownThere);
    case oxPacketGate::Invoke:
        return isSignal(packet, replica, &m_unknownHere, &m_unknownThere);
    case oxPacketGate::InvokeReply:
        packet >> m_answerSerial >> m_answer;
        return true;
    case oxPacketGate::PropertyChange:
        return isPropertyChange(packet, replica);
    default:
        return false;
    }
}

const QRemoteObjectReplica *oxQRPCClient::replicaOf(const QString &name) const
{
    if (name == oxServiceList::remoteName())
        return m_serviceList.get();
    const auto link = std::find_if(m_links.cbegin(), m_links.cend(), [&name](const oxServiceLink *l) {
        return l->isAcquired() && l->interfaceName() == name;
    });
    return link == m_links.cend() ? nullptr : (*link)->replica();
}

// Descriptions of objects come from the main process, and after a restart they may be others: so
// each connection starts with a new node.
void oxQRPCClient::startSession()
{
    QIODevice *socket = m_socket;
    socket->disconnect(this);
    m_node = std::make_unique<QRemoteObjectNode>();
    m_unknownHere.clear();
    m_unknownThere.clear();
    const auto check = [this](quint16 type, QDataStream &packet) {
        if (!isPermitted(type, packet))
            return oxPacketGate::Verdict::Refuse;
        return type == oxPacketGate::InvokeReply ? oxPacketGate::Verdict::Take : oxPacketGate::Verdict::Pass;
    };
    m_gate = new oxPacketGate(socket, check, this);
    m_socket = m_gate;
    connect(m_gate, &oxPacketGate::taken, this, &oxQRPCClient::takeAnswer);
    connect(m_gate, &oxPacketGate::ended, this, &oxQRPCClient::retry);
    m_serviceList.reset(m_node->acquireDynamic(oxServiceList::remoteName()));
    connect(m_serviceList.get(), &QRemoteObjectReplica::initialized, this, [this] {
        connect(m_serviceList.get(), SIGNAL(namesChanged(QStringList)), this, SLOT(acquireServices()));
        acquireServices();
    });
    m_node->addClientSideConnection(m_gate);
    m_gate->start();
}

// The list's property is asked for by its index: by a name that it lacks, Qt takes the replica's
// meta-object for one that makes properties.
void oxQRPCClient::acquireServices()
{
    const QMetaObject *list = m_serviceList->metaObject();
    const QStringList offered = list->property(list->propertyOffset()).read(m_serviceList.get()).toStringList();
    for (oxServiceLink *link : qAsConst(m_links)) {
        if (!offered.contains(link->interfaceName()))
            link->release(); // another object of that name may come
        else if (!link->isAcquired())
            link->acquire(m_node.get(), [this] { updateConnected(); });
    }
    updateConnected();
}

// While the socket is read, which does not happen again before a receiver of connected() has
// returned: a call from there would wait in vain.
void oxQRPCClient::updateConnected()
{
    QMetaObject::invokeMethod(this, &oxQRPCClient::announceConnection, Qt::QueuedConnection);
}

void oxQRPCClient::announceConnection()
{
    const bool isComplete = std::all_of(m_links.cbegin(), m_links.cend(), [](const oxServiceLink *link) {
        return !link->isAcquired() || link->isReady();
    });
    if (m_isConnected || !isComplete || !m_serviceList || !m_serviceList->isReplicaValid())
        return;
    m_isConnected = true;
    Q_EMIT connected();
}

void oxQRPCClient::retry()
{
    if (m_gate && m_gate->hasRefused() && !m_hasComplained) {
        m_hasComplained = true;
        fprintf(stderr, "oxQRPCClient: what answers at %s %s\n", qPrintable(m_address.toString()),
                reasonOfRefusal().constData());
    }
    if (m_gate && m_gate->hasOverflowed())
        fprintf(stderr, "oxQRPCClient: the main process does not read what it is sent, the connection was ended\n");
    m_retry.start(retryInterval);
    loseConnection();
}

QByteArray oxQRPCClient::reasonOfRefusal() const
{
    if (!m_unknownHere.isEmpty())
        return "offers a service with the type '" + m_unknownHere + "': register it here";
    if (!m_unknownThere.isEmpty())
        return "offers a service with the type '" + m_unknownThere
            + "', which it has not registered: register it there";
    return "is no main process";
}

void oxQRPCClient::loseConnection()
{
    for (oxServiceLink *link : qAsConst(m_links))
        link->release();
    m_serviceList.reset();
    m_node.reset();
    m_gate = nullptr;
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->close();
        std::exchange(m_socket, nullptr)->deleteLater();
    }
    m_isSilent = false;
    if (!m_isConnected)
        return;
    m_isConnected = false;
    Q_EMIT disconnected();
}

// Signals arrive while the socket is read, which does not happen again before all of them have
// been taken: a receiver that calls the main process would wait for its answer in vain.
void oxQRPCClient::receive(const oxEmission &emission)
{
    m_isSilent = false;
    m_emissions.enqueue(emission);
    scheduleDelivery();
}

// A receiver may run an event loop, for a dialog or while it calls the main process, and signals go
// on meanwhile. But only so deep: a hundred thousand of them, each delivered within the one before,
// would end at the limit of the stack.
void oxQRPCClient::deliver()
{
    if (m_deliveryDepth == maximumDeliveryDepth)
        return;
    {
        const QScopedValueRollback<int> deeper(m_deliveryDepth, m_deliveryDepth + 1);
        const QScopedValueRollback<int> level(m_deliveryLevel, QThread::currentThread()->loopLevel());
        for (int count = m_emissions.size(); count > 0 && !m_emissions.isEmpty(); --count) {
            oxEmission emission = m_emissions.dequeue();
            scheduleDelivery();
            QVarLengthArray<void *> arguments{nullptr};
            for (QVariant &argument : emission.arguments)
                arguments.append(argument.data());
            QMetaObject::metacall(emission.service, QMetaObject::InvokeMetaMethod, emission.method, arguments.data());
        }
    }
    scheduleDelivery();
}

// Not to a receiver that only processes events: the receivers after it would get the next signal
// before this one.
void oxQRPCClient::deliverScheduled()
{
    m_isDeliveryScheduled = false;
    if (m_deliveryDepth == 0 || QThread::currentThread()->loopLevel() > m_deliveryLevel)
        deliver();
}

void oxQRPCClient::scheduleDelivery()
{
    if (m_isDeliveryScheduled || m_emissions.isEmpty())
        return;
    m_isDeliveryScheduled = true;
    QMetaObject::invokeMethod(this, &oxQRPCClient::deliverScheduled, Qt::QueuedConnection);
}

// Returns what kept the answer away, or nothing. The connections end with the loop, before what they
// capture: clazy:excludeall=lambda-in-connect
QByteArray oxQRPCClient::waitFor(qint32 serial, const oxServiceLink *link, QVariant *result)
{
    QByteArray failure = QByteArrayLiteral("this process ends before the answer");
    bool isAnswered = false;
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    connect(this, &oxQRPCClient::answered, &loop, [&](qint32 number, const QVariant &value) {
        if (number != serial || isAnswered)
            return;
        isAnswered = true;
        *result = value;
        limit.stop();
        loop.quit();
    });
    connect(link->replica(), &QObject::destroyed, &loop, [&] {
        failure = QByteArrayLiteral("service withdrawn before the answer");
        loop.quit();
    });
    connect(this, &oxQRPCClient::disconnected, &loop, [&] {
        failure = QByteArrayLiteral("connection lost before the answer");
        loop.quit();
    });
    connect(this, &oxQRPCClient::fellSilent, &loop, [&] {
        failure = "no answer within " + QByteArray::number(m_callTimeout) + " ms";
        loop.quit();
    });

    QElapsedTimer sinceCall;
    sinceCall.start();
    connect(&limit, &QTimer::timeout, this, [&] {
        const qint64 silence = std::min(sinceCall.elapsed(), link->silence());
        if (silence < m_callTimeout)
            return limit.start(int(m_callTimeout - silence));
        m_isSilent = true;
        Q_EMIT fellSilent({});
    });
    limit.start(m_callTimeout);

    loop.exec(QEventLoop::ExcludeUserInputEvents);
    deliver();
    return isAnswered ? QByteArray() : failure;
}

// Also one that comes too late says that the main process is back.
void oxQRPCClient::takeAnswer()
{
    m_isSilent = false;
    Q_EMIT answered(m_answerSerial, std::exchange(m_answer, {}), {});
}
