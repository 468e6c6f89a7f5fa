#pragma once

#include <QSemaphore>
#include <QThread>
#include <QUrl>

#include <memory>

#include "oxQRPCServer.h"

/// The main process, as a thread of this one.
class MainThread : private QThread
{
public:
    explicit MainThread(const QUrl &address = QUrl(QStringLiteral("tcp://localhost:0")))
        : m_address(address)
    {
        m_context.moveToThread(this);
        start();
        m_isListening.acquire();
    }
    /// Also ends what its services wait for.
    ~MainThread() override
    {
        quit();
        wait();
    }

    QUrl address() const { return m_address; }

    /// The service lives in this thread from now on.
    void offer(QObject *service)
    {
        service->moveToThread(this);
        run([=] { m_server->registerService(service); });
    }

    template<class Action>
    void run(const Action &action)
    {
        QMetaObject::invokeMethod(&m_context, action, Qt::BlockingQueuedConnection);
    }

private:
    void run() override
    {
        oxQRPCServer server;
        server.listen(m_address);
        m_address = server.address();
        m_server = &server;
        m_isListening.release();
        exec();
    }

    QObject m_context;
    QSemaphore m_isListening;
    oxQRPCServer *m_server = nullptr;
    QUrl m_address;
};
