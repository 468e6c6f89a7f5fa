#pragma once

#include <QProcess>
#include <QUrl>

#include "SignalTo.h"

/// A main process of its own, which offers what echoMain.cpp does. Ends with the object.
class MainProcess
{
public:
    /// Returns when it listens.
    explicit MainProcess(const QUrl &address, const QStringList &options = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(ECHO_MAIN), QStringList(address.toString()) + options);
        if (!m_process.waitForReadyRead(60000))
            qFatal("%s does not listen", qPrintable(address.toString()));
        m_address = QUrl(QString::fromUtf8(m_process.readLine().trimmed()));
    }
    ~MainProcess() { kill(); }

    QUrl address() const { return m_address; }
    bool isRunning() const { return m_process.state() == QProcess::Running; }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    void stop() { signalTo(m_process, SIGSTOP); }
    void goOn() { signalTo(m_process, SIGCONT); }

private:
    QProcess m_process;
    QUrl m_address;
};
