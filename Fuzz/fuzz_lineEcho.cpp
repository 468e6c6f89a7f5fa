// The echo of what Python prints, beside a model. The input is a row of pieces: a byte with the
// stream (its lowest bit) and the length, then as many characters. From 0x80 on they stand for halves
// of surrogate pairs.

#include <QString>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "oxKernelInterfaceRemote.h"

namespace {

/// Takes what is printed to one of C's streams.
class Capture
{
public:
    explicit Capture(FILE **stream)
        : m_stream(stream)
        , m_original(*stream)
    {
        *stream = open_memstream(&m_bytes, &m_size);
    }
    ~Capture() { free(m_bytes); }

    QByteArray finish()
    {
        fclose(*m_stream);
        *m_stream = m_original;
        return QByteArray(m_bytes, int(m_size));
    }

private:
    Q_DISABLE_COPY(Capture)

    FILE **m_stream;
    FILE *m_original;
    char *m_bytes = nullptr;
    size_t m_size = 0;
};

QString textOf(const quint8 *bytes, size_t size)
{
    QString text;
    for (size_t i = 0; i < size; ++i)
        text.append(QChar(bytes[i] < 0x80 ? bytes[i] : 0xd800 + (bytes[i] - 0x80) * 0x10));
    return text;
}

QByteArray expectedEcho(const QByteArray &tag, const QString &text)
{
    QByteArray echo;
    QStringList lines = text.split(QLatin1Char('\n'));
    lines.removeLast();
    for (const QString &line : qAsConst(lines))
        echo += tag + ": '" + line.section(QChar(0), 0, 0).toUtf8() + "'\n";
    return echo;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    oxKernelInterface *interface = oxKernelInterface::the();
    QString output;
    QString error;
    Capture outputCapture(&stdout);
    Capture errorCapture(&stderr);
    for (size_t position = 0; position < size;) {
        const bool isError = bytes[position] & 1;
        const size_t length = std::min<size_t>(bytes[position] >> 1, size - position - 1);
        const QString piece = textOf(bytes + position + 1, length);
        position += 1 + length;
        (isError ? error : output).append(piece);
        if (isError)
            interface->pythonStdErr(piece);
        else
            interface->pythonStdOut(piece);
    }
    interface->pythonStdOut(QStringLiteral("\n")); // so that nothing is left for the next input
    interface->pythonStdErr(QStringLiteral("\n"));
    const QByteArray echoedError = errorCapture.finish();
    const QByteArray echoedOutput = outputCapture.finish();

    if (echoedOutput != expectedEcho("python info", output + QLatin1Char('\n')))
        qFatal("standard output: %s", echoedOutput.constData());
    if (echoedError != expectedEcho("python error", error + QLatin1Char('\n')))
        qFatal("standard error: %s", echoedError.constData());
    return 0;
}
