#pragma once

#include "oxPreferencesService.h"

/// The values of the preferences, in this process's settings file, for all processes. Pages are
/// widgets, which the secondary processes have.
class PreferencesService : public oxPreferencesService
{
    Q_OBJECT

public:
    explicit PreferencesService(QObject *parent = nullptr);
    ~PreferencesService() override;

public Q_SLOTS:
    /// Does nothing.
    void showPreferences() override;
};
