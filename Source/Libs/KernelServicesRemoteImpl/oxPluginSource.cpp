#include "oxPluginSource.h"

#include <QStringMatcher>
#include <QVector>

#include <algorithm>
#include <string_view>

namespace {

// Looks at each line with the name once, and at no other.
bool hasImportOf(std::string_view binding, std::string_view text)
{
    constexpr auto none = std::string_view::npos;
    for (size_t name = text.find(binding); name != none; name = text.find(binding, name)) {
        const size_t lineStart = text.rfind('\n', name) + 1;
        const size_t lineEnd = std::min(text.find('\n', name), text.size());
        const std::string_view line = text.substr(lineStart, lineEnd - lineStart);
        if (line.front() != '#' && line.find("import") != none)
            return true;
        name = lineEnd;
    }
    return false;
}

// By a longer text. Moves each part of the text once, to its place: QString::replace() moves all
// that follows once for each thousand replacements.
void replaceAll(QString *text, const QString &before, const QString &after)
{
    const QStringMatcher matcher(before);
    QVector<int> found;
    for (int at = matcher.indexIn(*text); at >= 0; at = matcher.indexIn(*text, at + before.size()))
        found.append(at);

    const int growth = after.size() - before.size();
    int end = text->size();
    text->resize(end + found.size() * growth);
    QChar *const data = text->data();
    for (int i = found.size() - 1; i >= 0; --i) {
        const int next = found.at(i) + before.size();
        const int shift = i * growth;
        std::copy_backward(data + next, data + end, data + end + shift + growth);
        end = found.at(i);
        std::copy(after.begin(), after.end(), data + end + shift);
    }
}

} // namespace

QString pluginText(const QByteArray &source)
{
    return QString::fromUtf8(source.constData());
}

oxPluginBindings detectBindings(const QByteArray &source)
{
    std::string_view text(source.constData(), size_t(source.size()));
    if (source.startsWith("\xef\xbb\xbf"))
        text.remove_prefix(3); // a byte order mark
    return {hasImportOf("PythonQt", text), hasImportOf("PySide2", text)};
}

QString rewriteForPySide2(QString text)
{
    // Deliberate: plain replacement, so "uiTools.loadUiTypePySide" ends up with its suffix
    // doubled and "TARNPluginWidgetId" as "uiTools.getWidget(TARNPluginWidgetId)Id".
    replaceAll(&text, QStringLiteral("uiTools.loadUiType"), QStringLiteral("uiTools.loadUiTypePySide"));
    replaceAll(&text, QStringLiteral("TARNPluginWidget"), QStringLiteral("uiTools.getWidget(TARNPluginWidgetId)"));
    return text;
}
