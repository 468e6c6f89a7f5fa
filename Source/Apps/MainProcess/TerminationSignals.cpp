#include "TerminationSignals.h"

#include <QCoreApplication>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t signals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

} // namespace

TerminationSignals::TerminationSignals()
{
    const sigset_t set = signals();
    sigprocmask(SIG_BLOCK, &set, nullptr);
    m_descriptor = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
}

TerminationSignals::~TerminationSignals()
{
    m_notifier.reset();
    close(m_descriptor);
}

void TerminationSignals::connectToApplication()
{
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_notifier->setEnabled(false);
        signalfd_siginfo info{};
        if (read(m_descriptor, &info, sizeof info) != sizeof info)
            return;
        const sigset_t set = signals();
        sigprocmask(SIG_UNBLOCK, &set, nullptr); // for the second one
        QCoreApplication::quit();
    });
}
