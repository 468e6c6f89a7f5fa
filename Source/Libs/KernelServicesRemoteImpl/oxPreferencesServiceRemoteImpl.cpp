#include "oxPreferencesServiceRemoteImpl.h"

oxPreferencesServiceRemoteImpl::oxPreferencesServiceRemoteImpl(QObject *) {}

oxPreferencesServiceRemoteImpl::~oxPreferencesServiceRemoteImpl() = default;

void oxPreferencesServiceRemoteImpl::addToPreferences(const QString &name, const QString &, QWidget *page)
{
    preferencesAdd(name, QString(QLatin1String("")), page); // Deliberate: the second text is dropped
}

void oxPreferencesServiceRemoteImpl::subFromPreferences(QWidget *page)
{
    preferencesSub(page);
}

void oxPreferencesServiceRemoteImpl::setWidget(QMainWindow *window)
{
    mainWindow = window;
}

QMainWindow *oxPreferencesServiceRemoteImpl::getWidget()
{
    return mainWindow;
}
