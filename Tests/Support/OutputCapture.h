#pragma once

#include <QByteArray>
#include <QtGlobal>

/// Takes what the process writes to its standard output and standard error, by whatever way, from
/// construction to destruction.
///
/// Qt's own messages go to standard error meanwhile, as they do in a process that is no test, but
/// for what the platform plugin without a display has to say.
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
    QtMessageHandler m_messageHandler;
};

struct Output
{
    QByteArray standardOutput;
    QByteArray standardError;
};

/// What the process writes while @p action runs. Compare afterwards: a failure that is reported
/// during the capture goes into it.
template<class Action>
Output outputOf(const Action &action)
{
    const OutputCapture capture;
    action();
    return {capture.standardOutput(), capture.standardError()};
}
