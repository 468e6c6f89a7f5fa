#pragma once

#include <QString>
#include <QStringList>
#include <QTextCharFormat>
#include <QTimer>
#include <QVector>
#include <QWidget>

class QPlainTextEdit;

/// A panel with the lines that Python prints, as the process's standard output and standard error
/// have them: "python info: '…'" and, in a colour of its own, "python error: '…'".
///
/// Takes the text from Python itself. To catch the process's output on its way instead would put
/// a pipe into it: lines would come late, the last ones of a crash not at all, and a process that
/// has no time to read would stand still once the pipe is full.
class Console : public QWidget
{
    Q_OBJECT

public:
    explicit Console(QWidget *parent = nullptr);

    static constexpr int maximumLines = 2000;      ///< older ones go
    static constexpr int maximumLineLength = 2000; ///< the rest of a longer one is left out

    QSize sizeHint() const override { return {560, 220}; }

public Q_SLOTS:
    /// Text in pieces, as it comes; a line is shown when its line feed is there.
    void addOutput(const QString &text);
    void addError(const QString &text);
    void clear();

private:
    struct Stream
    {
        QString tag;
        QTextCharFormat format;
        QString line; // that has no line feed yet
    };
    struct Line
    {
        QString text;
        const Stream *stream;
    };

    void add(Stream *stream, const QString &text);
    void showLines();

    QPlainTextEdit *m_view;
    Stream m_output;
    Stream m_error;
    QVector<Line> m_lines; // not shown yet
    QTimer m_showing;
};
