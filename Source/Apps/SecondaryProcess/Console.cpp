#include "Console.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

QTextCharFormat colored(const QColor &color)
{
    QTextCharFormat format;
    format.setForeground(color);
    return format;
}

// A paragraph separator or a carriage return would begin a line of its own.
QString inOneLine(QString text)
{
    for (const QChar breaking : {QChar(QChar::ParagraphSeparator), QChar(QChar::CarriageReturn)})
        text.replace(breaking, QLatin1Char(' '));
    return text;
}

} // namespace

Console::Console(QWidget *parent)
    : QWidget(parent)
    , m_view(new QPlainTextEdit)
    , m_output{QStringLiteral("python info: '%1'"), colored(QColor(0xb9, 0xc1, 0xcc)), QString()}
    , m_error{QStringLiteral("python error: '%1'"), colored(QColor(0xff, 0x8a, 0x7a)), QString()}
{
    m_view->setReadOnly(true);
    m_view->setUndoRedoEnabled(false);
    m_view->setMaximumBlockCount(maximumLines);
    m_view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_view->setPlaceholderText(tr("What Python prints appears here."));

    auto *clearButton = new QPushButton(tr("Clear"));
    clearButton->setAutoDefault(false);
    connect(clearButton, &QPushButton::clicked, this, &Console::clear);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_view);
    layout->addWidget(clearButton, 0, Qt::AlignRight);

    m_showing.setSingleShot(true);
    connect(&m_showing, &QTimer::timeout, this, &Console::showLines);
}

void Console::addOutput(const QString &text)
{
    add(&m_output, text);
}

void Console::addError(const QString &text)
{
    add(&m_error, text);
}

void Console::clear()
{
    m_lines.clear();
    m_view->clear();
}

void Console::add(Stream *stream, const QString &text)
{
    int start = 0;
    while (start < text.size()) {
        const int lineFeed = text.indexOf(QLatin1Char('\n'), start);
        const int end = lineFeed < 0 ? text.size() : lineFeed;
        const int room = maximumLineLength + 1 - stream->line.size(); // one more says that there was more
        stream->line += text.midRef(start, std::min(end - start, room));
        if (lineFeed < 0)
            break;
        if (stream->line.size() > maximumLineLength) {
            stream->line.truncate(maximumLineLength);
            stream->line += QChar(0x2026);
        }
        m_lines.append({std::exchange(stream->line, QString()), stream});
        start = lineFeed + 1;
    }
    // A script that prints for minutes comes back to no event loop meanwhile.
    if (m_lines.size() > 2 * maximumLines)
        m_lines.remove(0, m_lines.size() - maximumLines);
    if (!m_lines.isEmpty() && !m_showing.isActive())
        m_showing.start(0);
}

void Console::showLines()
{
    const bool follows = m_view->verticalScrollBar()->value() == m_view->verticalScrollBar()->maximum();
    QTextCursor cursor(m_view->document());
    cursor.beginEditBlock();
    for (const Line &line : qAsConst(m_lines)) {
        cursor.movePosition(QTextCursor::End);
        if (!m_view->document()->isEmpty())
            cursor.insertBlock();
        cursor.insertText(line.stream->tag.arg(inOneLine(line.text)), line.stream->format);
    }
    cursor.endEditBlock();
    m_lines.clear();
    if (follows)
        m_view->verticalScrollBar()->setValue(m_view->verticalScrollBar()->maximum());
}
