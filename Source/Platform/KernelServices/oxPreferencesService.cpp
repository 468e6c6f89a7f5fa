#include "oxPreferencesService.h"

#include <QCoreApplication>
#include <QSettings>

#include <algorithm>
#include <cstdio>

#include "oxPreferencesDialog.h"

namespace {

QString title(const QString &name, const QString &group)
{
    return group.isEmpty() ? name : QStringLiteral("%1: %2").arg(group, name);
}

void tell(QWidget *page, const char *method)
{
    if (page->metaObject()->indexOfMethod(QByteArray(method) + "()") >= 0)
        QMetaObject::invokeMethod(page, method, Qt::DirectConnection);
}

std::unique_ptr<QSettings> openSettings()
{
    const QString application = QCoreApplication::applicationName();
    const QString organization = QCoreApplication::organizationName();
    return std::make_unique<QSettings>(organization.isEmpty() ? application : organization, application);
}

} // namespace

oxPreferencesService::oxPreferencesService(QObject *parent)
    : oxBaseService(parent)
{}

oxPreferencesService::~oxPreferencesService()
{
    oxPreferencesDialog *dialog = m_dialog;
    if (!dialog)
        return;
    dialog->reject(); // gives the pages back
    delete dialog;
}

void oxPreferencesService::preferencesAdd(const QString &name, const QString &group, QWidget *page)
{
    if (!page)
        return;
    forget(page);
    m_pages.append({name, group, page});
    if (m_dialog) {
        tell(page, "readValues");
        m_dialog->addPage(title(name, group), page);
    }
}

void oxPreferencesService::preferencesSub(QWidget *page)
{
    forget(page);
}

void oxPreferencesService::setDefault(const QString &page)
{
    if (isConnected())
        call(staticMetaObject, "setDefault(QString)", page);
    else if (!page.isEmpty()) // or else QSettings takes it for all
        settings()->remove(page);
    tellPages("setDefault", &page);
}

void oxPreferencesService::setDefault()
{
    if (isConnected())
        call(staticMetaObject, "setDefault()");
    else
        settings()->remove(QString());
    tellPages("setDefault", nullptr);
}

void oxPreferencesService::saveChanges()
{
    if (isConnected())
        return call(staticMetaObject, "saveChanges()");
    // One of its own, as the status of a QSettings does not recover: both share what is to be written.
    const std::unique_ptr<QSettings> writer = openSettings();
    writer->sync();
    if (writer->status() != QSettings::NoError)
        fprintf(stderr, "oxPreferencesService: couldn't save the preferences in '%s'!\n",
                writer->fileName().toUtf8().constData());
}

void oxPreferencesService::applyChanges(const QString &page)
{
    tellPages("applyChanges", &page);
}

void oxPreferencesService::applyChanges()
{
    tellPages("applyChanges", nullptr);
}

void oxPreferencesService::showPreferences()
{
    if (!m_dialog) {
        m_dialog = new oxPreferencesDialog(getWidget());
        connect(m_dialog, &QDialog::finished, this, [this] { m_dialog.clear(); });
        connect(m_dialog, &oxPreferencesDialog::applyRequested, this, [this] {
            applyChanges();
            saveChanges();
        });
        connect(m_dialog, &oxPreferencesDialog::defaultRequested, this, &oxPreferencesService::restoreDefaultsOf);
        tellPages("readValues", nullptr);
        for (const Page &page : qAsConst(m_pages)) {
            if (page.widget)
                m_dialog->addPage(title(page.name, page.group), page.widget);
        }
    }
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void oxPreferencesService::addToPreferences(const QString &name, const QString &group, QWidget *page)
{
    preferencesAdd(name, group, page);
}

void oxPreferencesService::subFromPreferences(QWidget *page)
{
    preferencesSub(page);
}

void oxPreferencesService::setWidget(QMainWindow *) {}

QMainWindow *oxPreferencesService::getWidget()
{
    return nullptr;
}

QString oxPreferencesService::getStringValue(const QString &key)
{
    if (isConnected())
        return call<QString>(staticMetaObject, "getStringValue(QString)", key);
    return value(key).toString();
}

int oxPreferencesService::getIntValue(const QString &key)
{
    if (isConnected())
        return call<int>(staticMetaObject, "getIntValue(QString)", key);
    return value(key).toInt();
}

double oxPreferencesService::getDoubleValue(const QString &key)
{
    if (isConnected())
        return call<double>(staticMetaObject, "getDoubleValue(QString)", key);
    return value(key).toDouble();
}

float oxPreferencesService::getFloatValue(const QString &key)
{
    if (isConnected())
        return call<float>(staticMetaObject, "getFloatValue(QString)", key);
    return value(key).toFloat();
}

bool oxPreferencesService::getBoolValue(const QString &key)
{
    if (isConnected())
        return call<bool>(staticMetaObject, "getBoolValue(QString)", key);
    return value(key).toBool();
}

void oxPreferencesService::setStringValue(const QString &key, const QString &value)
{
    if (isConnected())
        return call(staticMetaObject, "setStringValue(QString,QString)", key, value);
    setValue(key, value);
}

void oxPreferencesService::setIntValue(const QString &key, int value)
{
    if (isConnected())
        return call(staticMetaObject, "setIntValue(QString,int)", key, value);
    setValue(key, value);
}

void oxPreferencesService::setDoubleValue(const QString &key, double value)
{
    if (isConnected())
        return call(staticMetaObject, "setDoubleValue(QString,double)", key, value);
    setValue(key, value);
}

void oxPreferencesService::setFloatValue(const QString &key, float value)
{
    if (isConnected())
        return call(staticMetaObject, "setFloatValue(QString,float)", key, value);
    setValue(key, static_cast<double>(value)); // a float would be written as bytes nobody can read
}

void oxPreferencesService::setBoolValue(const QString &key, bool value)
{
    if (isConnected())
        return call(staticMetaObject, "setBoolValue(QString,bool)", key, value);
    setValue(key, value);
}

// Made when it is first needed: the application may get its name after the service was created.
QSettings *oxPreferencesService::settings()
{
    if (!m_settings) {
        m_settings = openSettings();
        m_settings->setFallbacksEnabled(false); // what is forgotten here must not shine through from elsewhere
        m_settings->beginGroup(QStringLiteral("Preferences"));
    }
    return m_settings.get();
}

QVariant oxPreferencesService::value(const QString &key)
{
    return key.isEmpty() ? QVariant() : settings()->value(key);
}

void oxPreferencesService::setValue(const QString &key, const QVariant &value)
{
    if (!key.isEmpty())
        settings()->setValue(key, value);
}

void oxPreferencesService::forget(QWidget *page)
{
    const auto isGone = [page](const Page &p) { return !p.widget || p.widget == page; };
    m_pages.erase(std::remove_if(m_pages.begin(), m_pages.end(), isGone), m_pages.end());
    if (m_dialog)
        m_dialog->removePage(page);
}

// A page may take itself, or another one, out of the preferences while it is told.
void oxPreferencesService::tellPages(const char *method, const QString *name)
{
    const QList<Page> pages = m_pages;
    for (const Page &page : pages) {
        if (page.widget && (!name || page.name == *name))
            tell(page.widget, method);
    }
}

void oxPreferencesService::restoreDefaultsOf(QWidget *page)
{
    const auto found =
        std::find_if(m_pages.cbegin(), m_pages.cend(), [page](const Page &p) { return p.widget == page; });
    if (found != m_pages.cend())
        setDefault(QString(found->name));
}
