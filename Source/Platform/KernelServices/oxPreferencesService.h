#pragma once

#include <QMainWindow>
#include <QString>

#include "oxBaseService.h"

/// The preferences: their pages and their values.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxPreferencesService : public oxBaseService
{
    Q_OBJECT

public:
    explicit oxPreferencesService(QObject *parent = nullptr);
    ~oxPreferencesService() override;

    /// Adds @p page to the preferences under @p name, in @p group. The page stays the caller's.
    /// This implementation has no window for them and shows nothing.
    void preferencesAdd(const QString &name, const QString &group, QWidget *page);
    /// Takes @p page out of the preferences again.
    void preferencesSub(QWidget *page);

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual void setDefault(const QString &page);
    virtual void setDefault();
    virtual void saveChanges();
    virtual void applyChanges(const QString &page);
    virtual void applyChanges();
    virtual void showPreferences();
    virtual void addToPreferences(const QString &name, const QString &group, QWidget *page);
    virtual void subFromPreferences(QWidget *page);
    virtual void setWidget(QMainWindow *window);
    virtual QMainWindow *getWidget();
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
};
