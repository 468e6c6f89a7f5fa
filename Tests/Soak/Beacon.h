#pragma once

#include <QObject>

/// An object that outlives all plugins, and that they connect to.
class Beacon : public QObject
{
    Q_OBJECT

public:
    int connectionCount() const { return receivers(SIGNAL(flash(int))); }

Q_SIGNALS:
    void flash(int count);
};
