#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class PluginHost;

/// Fifty plugins of ten kinds, which change, come and go.
class SoakFolder
{
public:
    explicit SoakFolder(const PluginHost &host);

    static constexpr int pluginCount = 50;

    /// Before rescan @p number: one plugin goes, the one that went before comes back, another one
    /// has a new text. All are in turn, after @ref pluginCount rescans everything is as before.
    void change(int number);

    /// The same, but no plugin comes or goes.
    void changeText(int number);

    /// The title of a plugin that is there before and after the change for rescan @p number.
    static QString remainingTitle(int number, int which);

    /// How many plugins of the kind "beacon" are there.
    int beaconCount() const;

private:
    void write(int plugin, int version) const;
    QString path(int plugin) const;

    const PluginHost &m_host;
    QList<QByteArray> m_texts;
    int m_absent = 0;
};
