// What the main process sends to a secondary process: Peer.h says how the input is made up.

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QUrl>

#include "Peer.h"
#include "Service.h"
#include "oxQRPCClient.h"

namespace {

QString socketName()
{
    return QStringLiteral("ox-fuzz-client-%1").arg(QCoreApplication::applicationPid());
}

} // namespace

// Qt Remote Objects does not free the descriptions that it gets.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:QMetaObjectBuilder::toMetaObject";
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    static QLocalServer server;
    if (!server.isListening() && !server.listen(socketName()))
        qFatal("%s", qPrintable(server.errorString()));
    const QByteArray packets = packetsOf(bytes, size);

    Service service;
    oxQRPCClient client;
    client.registerService(&service);
    client.setCallTimeout(0);
    client.connectToHost(QUrl(QStringLiteral("local:") + socketName()));
    settle();
    QLocalSocket *peer = server.nextPendingConnection();
    if (!peer)
        qFatal("the client does not connect");
    peer->write(packets);
    settle();
    if (client.isConnected()) {
        const QMetaObject *metaObject = service.metaObject();
        const QString text = QStringLiteral("a");
        QString result;
        void *arguments[] = {&result, const_cast<QString *>(&text)};
        client.callMethod(&service, metaObject, metaObject->indexOfSlot("text(QString)"), arguments);
    }
    peer->close();
    settle();
    delete peer;
    return 0;
}
