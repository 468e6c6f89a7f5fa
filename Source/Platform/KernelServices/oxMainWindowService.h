#pragma once

#include <QDockWidget>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QString>
#include <QToolBar>

#include "oxBaseService.h"

/// The main window: its modules, menus and tool bars.
///
/// Widgets do not travel between processes: here each operation does nothing and answers with null,
/// and a process that has a window files a subclass.
class OXKERNELSERVICES_EXPORT oxMainWindowService : public oxBaseService
{
    Q_OBJECT

public:
    explicit oxMainWindowService(QObject *parent = nullptr);
    ~oxMainWindowService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual void setWidget(QMainWindow *window);
    virtual QMainWindow *getWidget() const;
    virtual void addModule(const QString &name, const QString &menu, QWidget *widget, const QString &shortcut,
                           const QIcon &icon, const QString &toolTip, Qt::DockWidgetArea area);
    virtual QDockWidget *getModule(const QString &name);
    virtual void changeModule(const QString &name, const QString &menu, QWidget *widget);
    virtual void subModule(const QString &name);
    virtual void showModule(const QString &name);
    virtual void hideModule(const QString &name);
    virtual void addSeparator(const QString &menu);
    virtual QMenu *getSceneMenu();
    virtual QMenu *getSimpleSceneMenu();
    virtual QMenu *getViewMenu();
    virtual QMenu *getImportMenu();
    virtual QMenu *getExportMenu();
    virtual QToolBar *getSynchronisationToolBar();
    virtual void setModuleWidget(const char *name, QWidget *widget);
};
