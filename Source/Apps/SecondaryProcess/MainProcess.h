#pragma once

#include <QObject>

class oxQRPCClient;

/// Whether the main process is there: for the window, and for scripts, which know this object as
/// oxMainProcess.
class MainProcess : public QObject
{
    Q_OBJECT

public:
    /// @param client has to outlive this
    explicit MainProcess(oxQRPCClient *client, QObject *parent = nullptr);

public Q_SLOTS:
    /// Whether calls of services reach it.
    bool isConnected() const;

Q_SIGNALS:
    /// It is there, and again after a restart. Who hears this may call services right away.
    void connected();
    void disconnected();

private:
    oxQRPCClient *m_client;
};
