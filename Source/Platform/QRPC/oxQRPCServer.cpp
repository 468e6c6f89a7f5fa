#include "oxQRPCServer.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QRemoteObjectHost>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <algorithm>

#include "InterfaceClass.h"
#include "ServiceList.h"

namespace {

// Qt's own listeners are open to other users: so the host gets connections one by one.
const QUrl noListener(QStringLiteral("ox:"));

constexpr int probeTime = 1000;
constexpr int cleanUpInterval = 200;

bool hasListener(const QString &name)
{
    QLocalSocket probe;
    probe.connectToServer(name);
    return probe.waitForConnected(probeTime);
}

// Qt describes them to the other side in a way that does not survive a second connection.
bool hasEnumerations(const QMetaObject *metaObject, const QString &interfaceName)
{
    while (QLatin1String(metaObject->className()) != interfaceName)
        metaObject = metaObject->superClass();
    return metaObject->enumeratorCount() > metaObject->enumeratorOffset();
}

} // namespace

oxQRPCServer::oxQRPCServer(QObject *parent)
    : QObject(parent)
    , m_services(new ServiceList(this))
{
    m_cleanUp.setInterval(cleanUpInterval);
    connect(&m_cleanUp, &QTimer::timeout, this, &oxQRPCServer::dropEndedConnections);
}

oxQRPCServer::~oxQRPCServer()
{
    qDeleteAll(findChildren<QRemoteObjectHost *>(QString(), Qt::FindDirectChildrenOnly)); // before the services
}

bool oxQRPCServer::listen(const QUrl &address)
{
    if (!m_address.isEmpty())
        return fail(tr("already listening at %1").arg(m_address.toString()));
    if (address.scheme() == QLatin1String("local") && !address.path().isEmpty())
        return listenLocally(address);
    if (address.scheme() == QLatin1String("tcp") && address.port() >= 0)
        return listenOnTcp(address);
    return fail(tr("'%1' is no address: use local:name or tcp://host:port").arg(address.toString()));
}

QUrl oxQRPCServer::address() const
{
    return m_address;
}

QString oxQRPCServer::errorString() const
{
    return m_errorString;
}

bool oxQRPCServer::registerService(QObject *service)
{
    const QString name = interfaceClass(service->metaObject());
    const bool isKnown = std::any_of(m_offered.cbegin(), m_offered.cend(), [&](const QObject *offered) {
        return interfaceClass(offered->metaObject()) == name;
    });
    if (name.isEmpty() || isKnown || hasEnumerations(service->metaObject(), name))
        return false;
    m_offered.append(service);
    connect(service, &QObject::destroyed, this, [this, service] {
        m_offered.removeOne(service);
        updateServiceList();
    });
    for (const Connection &connection : qAsConst(m_connections))
        connection.host->enableRemoting(service);
    updateServiceList();
    return true;
}

void oxQRPCServer::updateServiceList()
{
    QStringList names;
    for (const QObject *service : qAsConst(m_offered))
        names.append(interfaceClass(service->metaObject()));
    m_services->setNames(names);
}

// A local server takes the place of another that listens, without a word: so it is asked for first.
bool oxQRPCServer::listenLocally(const QUrl &address)
{
    if (hasListener(address.path()))
        return fail(tr("another process listens at %1").arg(address.toString()));
    auto *server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(address.path()))
        return fail(server->errorString());
    m_address = address;
    acceptFrom(server);
    return true;
}

bool oxQRPCServer::listenOnTcp(const QUrl &address)
{
    const bool isLoopback = address.host().isEmpty() || address.host() == QLatin1String("localhost");
    const QHostAddress host = isLoopback ? QHostAddress(QHostAddress::LocalHost) : QHostAddress(address.host());
    if (host.isNull())
        return fail(tr("'%1' is no IP address").arg(address.host()));
    auto *server = new QTcpServer(this);
    if (!server->listen(host, quint16(address.port())))
        return fail(server->errorString());
    m_address.setScheme(QStringLiteral("tcp"));
    m_address.setHost(server->serverAddress().toString());
    m_address.setPort(server->serverPort());
    acceptFrom(server);
    return true;
}

template<class Server>
void oxQRPCServer::acceptFrom(Server *server)
{
    connect(server, &Server::newConnection, this, [this, server] {
        while (auto *socket = server->nextPendingConnection()) {
            using Socket = std::remove_pointer_t<decltype(socket)>;
            if constexpr (std::is_same_v<Socket, QTcpSocket>)
                socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            m_connections.append({socket, makeHost(socket)});
            connect(socket, &Socket::disconnected, socket, &QIODevice::close);
            connect(socket, &Socket::disconnected, this, &oxQRPCServer::dropEndedConnections);
        }
    });
}

// A host remembers the call that it answers, but only one: so a slot that runs an event loop, in which
// others call, needs a host for each of them.
QRemoteObjectHost *oxQRPCServer::makeHost(QIODevice *socket)
{
    auto *host = new QRemoteObjectHost(noListener, QUrl(), QRemoteObjectHost::AllowExternalRegistration, this);
    host->enableRemoting(m_services);
    for (QObject *service : qAsConst(m_offered))
        host->enableRemoting(service);
    host->addHostSideConnection(socket);
    socket->setParent(host); // goes with it, last, as the host says farewell to it
    return host;
}

// Not while a slot runs an event loop: the slot was called by the host, which comes back to the
// connection that the call came from.
void oxQRPCServer::dropEndedConnections()
{
    if (QThread::currentThread()->loopLevel() > 1)
        return m_cleanUp.start();
    m_cleanUp.stop();
    const auto firstEnded = std::stable_partition(m_connections.begin(), m_connections.end(),
                                                  [](const Connection &c) { return c.socket->isOpen(); });
    for (auto ended = firstEnded; ended != m_connections.end(); ++ended)
        ended->host->deleteLater(); // it may be in the middle of a write to the socket
    m_connections.erase(firstEnded, m_connections.end());
}

bool oxQRPCServer::fail(const QString &reason)
{
    m_errorString = reason;
    return false;
}
