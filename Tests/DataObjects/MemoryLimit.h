#pragma once

#include <QFile>

#include <sys/resource.h>
#include <unistd.h>

/// Keeps the process, for a while, from taking more than a number of bytes beside what it has.
class MemoryLimit
{
public:
    explicit MemoryLimit(qint64 bytes)
    {
        if (!isPossible())
            return;
        QFile file(QStringLiteral("/proc/self/statm"));
        if (!file.open(QIODevice::ReadOnly) || getrlimit(RLIMIT_AS, &m_original) != 0)
            qFatal("the process cannot tell how much memory it has");
        const qint64 pages = file.readAll().split(' ').first().toLongLong();
        rlimit limited = m_original;
        limited.rlim_cur = qMin<rlim_t>(m_original.rlim_max, quint64(pages * sysconf(_SC_PAGE_SIZE) + bytes));
        if (setrlimit(RLIMIT_AS, &limited) != 0)
            qFatal("the process cannot limit its memory");
    }
    ~MemoryLimit()
    {
        if (isPossible())
            setrlimit(RLIMIT_AS, &m_original);
    }
    MemoryLimit(const MemoryLimit &) = delete;
    MemoryLimit &operator=(const MemoryLimit &) = delete;

    /// Not with a sanitizer, which takes memory of its own: then this does nothing.
    static constexpr bool isPossible()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        return false;
#else
        return true;
#endif
    }

private:
    rlimit m_original{};
};
