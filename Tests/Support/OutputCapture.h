#pragma once

#include <QByteArray>

/// Takes what the process writes to its standard output and standard error, by whatever way, from
/// construction to destruction.
class OutputCapture
{
public:
    OutputCapture();
    ~OutputCapture();

    /// All bytes so far; C's buffers are flushed first.
    QByteArray standardOutput() const;
    QByteArray standardError() const;

private:
    Q_DISABLE_COPY(OutputCapture)

    class Redirection
    {
    public:
        explicit Redirection(int descriptor);
        ~Redirection();
        QByteArray bytes() const;

    private:
        Q_DISABLE_COPY(Redirection)

        int m_descriptor;
        int m_original;
        int m_file;
    };

    Redirection m_output;
    Redirection m_error;
};
