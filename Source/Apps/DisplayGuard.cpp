#include "DisplayGuard.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/// What the platform plugins have said.
struct Message
{
    QtMsgType type;
    QByteArray category;
    QString text;
};

const char *programName = nullptr;
const char *whatToDo = nullptr;
QtMessageHandler otherHandler = nullptr;
QVector<Message> messages;

// The later ones follow from the first, which names the display.
QString reason(const QString &fatalText)
{
    return messages.isEmpty() ? fatalText.section(QLatin1Char('\n'), 0, 0) : messages.first().text.trimmed();
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtFatalMsg) {
        fprintf(stderr, "%s: there is no display (%s): %s\n", programName, qPrintable(reason(text)), whatToDo);
        std::_Exit(1); // without destructors, as the application object is half made
    }
    if (context.category && std::strncmp(context.category, "qt.qpa.", 7) == 0)
        messages.append({type, context.category, text});
    else
        otherHandler(type, context, text);
}

} // namespace

DisplayGuard::DisplayGuard(const char *program, const char *advice)
{
    programName = program;
    whatToDo = advice;
    otherHandler = qInstallMessageHandler(handleMessage);
}

DisplayGuard::~DisplayGuard()
{
    qInstallMessageHandler(otherHandler);
    for (const Message &message : qAsConst(messages))
        otherHandler(message.type, {nullptr, 0, nullptr, message.category.constData()}, message.text);
    messages.clear();
}

void allowTextWithoutDisplay(int argc, char **argv)
{
    const auto asksForText = [](const char *argument) {
        const auto texts = {"-h", "--help", "--help-all", "-v", "--version"};
        return std::any_of(texts.begin(), texts.end(), [=](const char *text) { return !std::strcmp(argument, text); });
    };
    if (std::any_of(argv, argv + argc, asksForText))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}
