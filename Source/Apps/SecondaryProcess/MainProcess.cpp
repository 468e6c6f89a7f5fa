#include "MainProcess.h"

#include "oxQRPCClient.h"

MainProcess::MainProcess(oxQRPCClient *client, QObject *parent)
    : QObject(parent)
    , m_client(client)
{
    connect(client, &oxQRPCClient::connected, this, &MainProcess::connected);
    connect(client, &oxQRPCClient::disconnected, this, &MainProcess::disconnected);
}

bool MainProcess::isConnected() const
{
    return m_client->isConnected();
}
