#include "SoakFolder.h"

#include <QFile>

#include <type_traits>

#include "PluginHost.h"

namespace {

constexpr const char *kinds[] = {"beacon", "button",      "fail_bindings", "table",       "fail_exit",
                                 "timer",  "fail_midway", "subclass",      "fail_syntax", "helper"};
constexpr int kindCount = std::extent_v<decltype(kinds)>;

// One more than are ever there.
constexpr int fileCount = SoakFolder::pluginCount + 1;

QString title(int plugin)
{
    return QStringLiteral("Soak%1").arg(plugin);
}

} // namespace

SoakFolder::SoakFolder(const PluginHost &host)
    : m_host(host)
{
    for (const char *kind : kinds) {
        QFile file(QStringLiteral(FIXTURES "/%1.py").arg(QLatin1String(kind)));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(file.fileName()));
        m_texts.append(file.readAll());
    }
    for (int plugin = 1; plugin < fileCount; ++plugin)
        write(plugin, 0);
}

void SoakFolder::change(int number)
{
    write(m_absent, number);
    m_absent = number % pluginCount;
    QFile::remove(path(m_absent));
    changeText(number);
}

void SoakFolder::changeText(int number)
{
    const int plugin = (number + pluginCount / 2) % pluginCount;
    if (plugin != m_absent)
        write(plugin, number);
}

QString SoakFolder::remainingTitle(int number, int which)
{
    return title((number + 2 + which) % pluginCount);
}

int SoakFolder::beaconCount() const
{
    const int inAllFiles = (fileCount + kindCount - 1) / kindCount;
    return inAllFiles - (m_absent % kindCount == 0 ? 1 : 0);
}

void SoakFolder::write(int plugin, int version) const
{
    m_host.write(title(plugin) + QLatin1String(".py"),
                 "version = " + QByteArray::number(version) + '\n' + m_texts.at(plugin % kindCount));
}

QString SoakFolder::path(int plugin) const
{
    return m_host.scripts() + QLatin1Char('/') + title(plugin) + QLatin1String(".py");
}
