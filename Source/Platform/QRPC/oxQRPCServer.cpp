#include "oxQRPCServer.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>

#include <sys/un.h>

#include "InterfaceClass.h"
#include "oxServerConnection.h"
#include "oxServiceList.h"

namespace {

constexpr int probeTime = 1000;

bool hasListener(const QString &name)
{
    QLocalSocket probe;
    probe.connectToServer(name);
    return probe.waitForConnected(probeTime);
}

} // namespace

oxQRPCServer::oxQRPCServer(QObject *parent)
    : QObject(parent)
    , m_list(new oxServiceList(this))
{}

oxQRPCServer::~oxQRPCServer()
{
    const QList<oxServerConnection *> connections = findChildren<oxServerConnection *>();
    qDeleteAll(connections);
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
    const QMetaObject *interface = interfaceClass(service->metaObject());
    const auto isSame = [interface](const QObject *other) {
        return interfaceName(other->metaObject()) == QLatin1String(interface->className());
    };
    // Qt describes enumerations to the other side in a way that does not survive a second connection.
    if (!interface || interface->enumeratorCount() > interface->enumeratorOffset()
        || std::any_of(m_services.cbegin(), m_services.cend(), isSame))
        return false;
    m_services.append(service);
    connect(service, &QObject::destroyed, this, [this, service] {
        m_services.removeOne(service);
        updateServiceList();
    });
    const QList<oxServerConnection *> connections = findChildren<oxServerConnection *>();
    for (oxServerConnection *connection : connections)
        connection->offer(service);
    updateServiceList();
    return true;
}

void oxQRPCServer::updateServiceList()
{
    QStringList names;
    for (const QObject *service : qAsConst(m_services))
        names.append(interfaceName(service->metaObject()));
    m_list->setNames(names);
}

// A local server takes the place of another that listens, without a word: so it is asked for first.
bool oxQRPCServer::listenLocally(const QUrl &address)
{
    const QString file = QDir::tempPath() + QLatin1Char('/') + address.path();
    if (size_t(QFile::encodeName(file).size()) >= sizeof(sockaddr_un::sun_path))
        return fail(tr("'%1' is too long for a local socket").arg(file));
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
        while (auto *socket = server->nextPendingConnection())
            new oxServerConnection(socket, m_list, m_services, this);
    });
}

bool oxQRPCServer::fail(const QString &reason)
{
    m_errorString = reason;
    return false;
}
