#pragma once

#include <QMainWindow>
#include <QPointer>

#include "oxPreferencesService.h"
#include "oxkernelservicesremoteimpl_export.h"

/// The preferences service with the process's own main window and pages. GUI thread only.
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxPreferencesServiceRemoteImpl : public oxPreferencesService
{
    Q_OBJECT

public:
    /// @param parent not used: the service has no parent
    explicit oxPreferencesServiceRemoteImpl(QObject *parent);
    ~oxPreferencesServiceRemoteImpl() override;

    /// Adds @p page under @p name. @p second is dropped.
    void addToPreferences(const QString &name, const QString &second, QWidget *page) override;
    void subFromPreferences(QWidget *page) override;

    /// The window is not owned.
    void setWidget(QMainWindow *window) override;

    /// The window of the last setWidget(); null before it and once the window is gone.
    QMainWindow *getWidget() override;

private:
    QPointer<QMainWindow> mainWindow;
};
