#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRemoteObjectHost>

#include <cstdio>

#include "EchoServiceMain.h"
#include "oxQRPCServer.h"
#include "oxdMaterials.h"
#include "oxdObjectManager.h"

/// The other process of bench_rpc: echoProcess name. Answers at local:name with a server of ours, at
/// local:name-replica with a bare host, and at the local socket name-socket with what it is sent.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QString name = QCoreApplication::arguments().value(1);
    oxdObjectManager::registerType<oxdMaterial>(0);

    EchoServiceMain ours;
    oxQRPCServer server;
    server.registerService(&ours);
    server.listen(QUrl(QStringLiteral("local:") + name));

    EchoServiceMain bare;
    QRemoteObjectHost host(QUrl(QStringLiteral("local:%1-replica").arg(name)));
    host.enableRemoting(&bare);

    QLocalServer sockets;
    sockets.listen(name + QStringLiteral("-socket"));
    QObject::connect(&sockets, &QLocalServer::newConnection, &sockets, [&sockets] {
        QLocalSocket *socket = sockets.nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead, socket, [socket] { socket->write(socket->readAll()); });
    });

    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
