#include "OutputCapture.h"

#include <QString>

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace {

void printMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support ")))
        fprintf(stderr, "%s\n", qPrintable(text));
}

} // namespace

OutputCapture::Redirection::Redirection(int descriptor)
    : m_descriptor(descriptor)
    , m_original(dup(descriptor))
    , m_file(memfd_create("output", MFD_CLOEXEC))
{
    fflush(nullptr);
    if (m_original < 0 || m_file < 0 || dup2(m_file, descriptor) < 0)
        abort();
}

OutputCapture::Redirection::~Redirection()
{
    fflush(nullptr);
    dup2(m_original, m_descriptor);
    close(m_original);
    close(m_file);
}

QByteArray OutputCapture::Redirection::bytes() const
{
    fflush(nullptr);
    QByteArray bytes(static_cast<int>(lseek(m_file, 0, SEEK_CUR)), Qt::Uninitialized);
    if (pread(m_file, bytes.data(), static_cast<size_t>(bytes.size()), 0) != bytes.size())
        abort();
    return bytes;
}

OutputCapture::OutputCapture()
    : m_output(STDOUT_FILENO)
    , m_error(STDERR_FILENO)
    , m_messageHandler(qInstallMessageHandler(printMessage))
{}

OutputCapture::~OutputCapture()
{
    qInstallMessageHandler(m_messageHandler);
}

QByteArray OutputCapture::standardOutput() const
{
    return m_output.bytes();
}

QByteArray OutputCapture::standardError() const
{
    return m_error.bytes();
}
