#pragma once

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

/// Sends the process's standard output nowhere as long as it lives.
class SilentOutput
{
public:
    SilentOutput()
        : m_original(dup(STDOUT_FILENO))
    {
        fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }

    ~SilentOutput()
    {
        fflush(stdout);
        dup2(m_original, STDOUT_FILENO);
        close(m_original);
    }

    SilentOutput(const SilentOutput &) = delete;
    SilentOutput &operator=(const SilentOutput &) = delete;

private:
    int m_original;
};
