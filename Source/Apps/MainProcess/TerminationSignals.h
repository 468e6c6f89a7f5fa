#pragma once

#include <QSocketNotifier>

#include <memory>

/// Lets SIGINT and SIGTERM end the application's event loop, instead of the process at once. A
/// second one ends the process at once.
///
/// Make it before any thread is started: they all are to leave the signals to it.
class TerminationSignals
{
public:
    TerminationSignals();
    ~TerminationSignals();

    /// Starts to listen; needs the application.
    void connectToApplication();

private:
    Q_DISABLE_COPY(TerminationSignals)

    int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
