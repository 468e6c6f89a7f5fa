#include "oxPreferencesService.h"

oxPreferencesService::oxPreferencesService(QObject *parent)
    : oxBaseService(parent)
{
}

oxPreferencesService::~oxPreferencesService() = default;

void oxPreferencesService::preferencesAdd(const QString &, const QString &, QWidget *) {}

void oxPreferencesService::preferencesSub(QWidget *) {}

void oxPreferencesService::setDefault(const QString &page)
{
    call(staticMetaObject, "setDefault(QString)", page);
}

void oxPreferencesService::setDefault()
{
    call(staticMetaObject, "setDefault()");
}

void oxPreferencesService::saveChanges()
{
    call(staticMetaObject, "saveChanges()");
}

void oxPreferencesService::applyChanges(const QString &page)
{
    call(staticMetaObject, "applyChanges(QString)", page);
}

void oxPreferencesService::applyChanges()
{
    call(staticMetaObject, "applyChanges()");
}

void oxPreferencesService::showPreferences()
{
    call(staticMetaObject, "showPreferences()");
}

void oxPreferencesService::addToPreferences(const QString &, const QString &, QWidget *) {}

void oxPreferencesService::subFromPreferences(QWidget *) {}

void oxPreferencesService::setWidget(QMainWindow *) {}

QMainWindow *oxPreferencesService::getWidget()
{
    return nullptr;
}

QString oxPreferencesService::getStringValue(const QString &key)
{
    return call<QString>(staticMetaObject, "getStringValue(QString)", key);
}

int oxPreferencesService::getIntValue(const QString &key)
{
    return call<int>(staticMetaObject, "getIntValue(QString)", key);
}

double oxPreferencesService::getDoubleValue(const QString &key)
{
    return call<double>(staticMetaObject, "getDoubleValue(QString)", key);
}

float oxPreferencesService::getFloatValue(const QString &key)
{
    return call<float>(staticMetaObject, "getFloatValue(QString)", key);
}

bool oxPreferencesService::getBoolValue(const QString &key)
{
    return call<bool>(staticMetaObject, "getBoolValue(QString)", key);
}

void oxPreferencesService::setStringValue(const QString &key, const QString &value)
{
    call(staticMetaObject, "setStringValue(QString,QString)", key, value);
}

void oxPreferencesService::setIntValue(const QString &key, int value)
{
    call(staticMetaObject, "setIntValue(QString,int)", key, value);
}

void oxPreferencesService::setDoubleValue(const QString &key, double value)
{
    call(staticMetaObject, "setDoubleValue(QString,double)", key, value);
}

void oxPreferencesService::setFloatValue(const QString &key, float value)
{
    call(staticMetaObject, "setFloatValue(QString,float)", key, value);
}

void oxPreferencesService::setBoolValue(const QString &key, bool value)
{
    call(staticMetaObject, "setBoolValue(QString,bool)", key, value);
}
