#include "MainProcess.h"

#include "oxQRPCClient.h"

MainProcess::MainProcess(oxQRPCClient *client, QObject *parent)
    : QObject(parent)
    , m_client(client)
{
    // Queued: the client says it while it reads its socket, where a call would wait for its answer in vain.
    connect(
        client, &oxQRPCClient::connected, this,
        [this] {
            if (isConnected())
                Q_EMIT connected();
        },
        Qt::QueuedConnection);
    connect(client, &oxQRPCClient::disconnected, this, &MainProcess::disconnected);
}

bool MainProcess::isConnected() const
{
    return m_client->isConnected();
}
