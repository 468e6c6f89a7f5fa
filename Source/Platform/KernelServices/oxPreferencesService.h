#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <memory>

#include "oxBaseService.h"

class oxPreferencesDialog;
class QSettings;

/// The preferences: their pages, in this process, and their values.
///
/// The values are the main process's, so that all processes share them; without a connection, and in
/// the main process itself, they are kept here.
///
/// A page is a widget of its owner's. It takes part in what the operations do by the methods
/// (slots or Q_INVOKABLE) that its class offers: readValues() fills its fields, whenever the dialog
/// opens; applyChanges() puts into effect what the user entered; setDefault() shows the defaults
/// again. Each of them may be missing.
///
/// Values are kept in the settings file of the application (QSettings with its organisation and
/// name), in the group "Preferences". The key of a value is "Page/Value", so that a page's values
/// are found by its name; an empty key names nothing. What is read as another type than what was
/// written is converted as QVariant does. GUI thread only.
class OXKERNELSERVICES_EXPORT oxPreferencesService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxPreferencesService")

public:
    explicit oxPreferencesService(QObject *parent = nullptr);
    ~oxPreferencesService() override;

    /// Adds @p page to the preferences under @p name, in @p group, which may be empty. A dialog
    /// that is open shows it at once. A null page is ignored, a page that is there already gets
    /// the new name and the last place.
    ///
    /// The page stays the caller's: the dialog borrows it while it is open, then it has its parent
    /// again and is hidden. A page that is deleted is forgotten.
    void preferencesAdd(const QString &name, const QString &group, QWidget *page);
    /// Takes @p page out of the preferences again, also out of an open dialog. A page that is not
    /// there is ignored.
    void preferencesSub(QWidget *page);

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.

    /// Forgets the values of the page named @p page, so that they read as defaults again, and
    /// tells the pages of that name.
    virtual void setDefault(const QString &page);
    /// The same for all values and all pages.
    virtual void setDefault();

    /// Writes what was set or forgotten to the settings file. Without it that happens at the
    /// latest with the end of the service.
    ///
    /// When the file cannot be written, standard error gets the line
    /// "oxPreferencesService: couldn't save the preferences in '/path'!".
    virtual void saveChanges();

    /// Tells the pages named @p page to put into effect what the user entered.
    virtual void applyChanges(const QString &page);
    /// The same for all pages.
    virtual void applyChanges();

    /// Opens the dialog with the pages over getWidget(), or raises the one that is open. Returns
    /// at once. "OK" and "Apply" apply and save all changes, "Restore Defaults" is setDefault()
    /// for the page in view.
    virtual void showPreferences();

    /// The same as preferencesAdd().
    virtual void addToPreferences(const QString &name, const QString &group, QWidget *page);
    /// The same as preferencesSub().
    virtual void subFromPreferences(QWidget *page);

    /// This implementation keeps no window.
    virtual void setWidget(QMainWindow *window);
    virtual QMainWindow *getWidget();

    // A value that was never set, or cannot be converted, reads as "", 0 or false.
    virtual QString getStringValue(const QString &key);
    virtual int getIntValue(const QString &key);
    virtual double getDoubleValue(const QString &key);
    virtual float getFloatValue(const QString &key);
    virtual bool getBoolValue(const QString &key);
    virtual void setStringValue(const QString &key, const QString &value);
    virtual void setIntValue(const QString &key, int value);
    virtual void setDoubleValue(const QString &key, double value);
    virtual void setFloatValue(const QString &key, float value);
    virtual void setBoolValue(const QString &key, bool value);

private:
    struct Page
    {
        QString name;
        QString group;
        QPointer<QWidget> widget;
    };

    QSettings *settings();
    QVariant value(const QString &key);
    void setValue(const QString &key, const QVariant &value);
    void forget(QWidget *page);
    void tellPages(const char *method, const QString *name);
    void restoreDefaultsOf(QWidget *page);

    QList<Page> m_pages;
    QPointer<oxPreferencesDialog> m_dialog;
    std::unique_ptr<QSettings> m_settings;
};
