#include "PreferencesService.h"

PreferencesService::PreferencesService(QObject *parent)
    : oxPreferencesService(parent)
{}

PreferencesService::~PreferencesService() = default;

void PreferencesService::showPreferences() {}
