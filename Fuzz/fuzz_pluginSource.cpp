// What a plugin's file holds and what is made of it, beside a model. The input is the file.

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

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    const std::string_view file(reinterpret_cast<const char *>(bytes), size);
    const QByteArray source(file.data(), int(file.size()));

    const QString text = pluginText(source);
    const std::string_view beforeZero = file.substr(0, file.find('\0'));
    if (text != QString::fromUtf8(beforeZero.data(), int(beforeZero.size())))
        qFatal("the text is another one");

    const oxPluginBindings bindings = detectBindings(source);
    const oxPluginBindings expected = expectedBindings(file);
    if (bindings.usesPythonQt != expected.usesPythonQt || bindings.usesPySide2 != expected.usesPySide2)
        qFatal("PythonQt %d, PySide2 %d", bindings.usesPythonQt, bindings.usesPySide2);

    if (rewriteForPySide2(text) != expectedRewrite(text))
        qFatal("the text is rewritten to another one");
    return 0;
}
