// What a plugin's file holds and what is made of it, beside a model. The input is the file.

#include <QBuffer>
#include <QTextCodec>

#include <algorithm>
#include <string_view>

#include "oxPluginSource.h"

namespace {

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool contains(std::string_view text, std::string_view word)
{
    return text.find(word) != std::string_view::npos;
}

// A text stream takes one for what it is, and the bytes of the file are not its characters then.
bool hasWideByteOrderMark(std::string_view file)
{
    return startsWith(file, "\xff\xfe") || startsWith(file, "\xfe\xff")
        || startsWith(file, std::string_view("\0\0\xfe\xff", 4));
}

oxPluginBindings expectedBindings(std::string_view file)
{
    if (startsWith(file, "\xef\xbb\xbf"))
        file.remove_prefix(3);
    oxPluginBindings bindings;
    while (!file.empty()) {
        const std::string_view line = file.substr(0, file.find('\n'));
        file.remove_prefix(std::min(line.size() + 1, file.size()));
        if (startsWith(line, "#") || !contains(line, "import"))
            continue;
        bindings.usesPythonQt |= contains(line, "PythonQt");
        bindings.usesPySide2 |= contains(line, "PySide2");
    }
    return bindings;
}

QString replaced(const QString &text, QLatin1String before, QLatin1String after)
{
    QString result;
    for (int i = 0; i < text.size();) {
        if (text.midRef(i, before.size()) == before) {
            result += after;
            i += before.size();
        } else {
            result += text.at(i++);
        }
    }
    return result;
}

QString expectedRewrite(const QString &text)
{
    return replaced(replaced(text, QLatin1String("uiTools.loadUiType"), QLatin1String("uiTools.loadUiTypePySide")),
                    QLatin1String("TARNPluginWidget"), QLatin1String("uiTools.getWidget(TARNPluginWidgetId)"));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    const std::string_view file(reinterpret_cast<const char *>(bytes), size);
    QByteArray content(file.data(), int(file.size()));
    QBuffer device(&content);
    device.open(QIODevice::ReadOnly);

    const QString text = readPluginText(&device);
    const std::string_view beforeZero = file.substr(0, file.find('\0'));
    if (text != QString::fromUtf8(beforeZero.data(), int(beforeZero.size())))
        qFatal("the text is another one");

    device.seek(0);
    const oxPluginBindings bindings = detectBindings(&device);
    const oxPluginBindings expected = expectedBindings(file);
    if (!hasWideByteOrderMark(file)
        && (bindings.usesPythonQt != expected.usesPythonQt || bindings.usesPySide2 != expected.usesPySide2))
        qFatal("PythonQt %d, PySide2 %d", bindings.usesPythonQt, bindings.usesPySide2);

    if (rewriteForPySide2(text) != expectedRewrite(text))
        qFatal("the text is rewritten to another one");
    return 0;
}
