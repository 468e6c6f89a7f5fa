#pragma once

#include <QProcess>

#include <csignal>

/// Sends a signal to a process that a test started.
inline void signalTo(const QProcess &process, int signal)
{
    if (process.state() != QProcess::Running) // its number is 0 then, which stands for the whole group of ours
        qFatal("no process to send signal %d to", signal);
    ::kill(static_cast<pid_t>(process.processId()), signal);
}
