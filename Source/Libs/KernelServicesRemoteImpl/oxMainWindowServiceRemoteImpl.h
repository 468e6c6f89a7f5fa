#pragma once

#include <QAction>
#include <QPointer>

#include "oxMainWindowService.h"
#include "oxkernelservicesremoteimpl_export.h"

class QOXDockWidget;

/// The main window of this process and its modules.
///
/// A module is a widget in a QOXDockWidget that floats over the window, shown and hidden by a
/// checkable entry in a menu. The widgets are the only record: a dock is found by its window
/// title, an entry and a menu by their texts, each time, among all descendants, first match
/// first; renaming one breaks the tie. What the service makes is owned by Qt's tree of widgets.
///
/// GUI thread only. Without a window the operations on modules do nothing.
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxMainWindowServiceRemoteImpl : public oxMainWindowService
{
    Q_OBJECT

public:
    oxMainWindowServiceRemoteImpl();
    ~oxMainWindowServiceRemoteImpl() override;

    /// Works on @p window from now on; it is not owned and not null. New menus are put before the
    /// menu "&Help" (translated), if it is in the menu bar now.
    void setWidget(QMainWindow *window) override;

    /// The window of the last setWidget(); null before it and once the window is gone.
    QMainWindow *getWidget() const override;

    /// Adds a module, hidden, with an unchecked entry in the menu titled @p menu, which is made if
    /// need be. Does nothing with a null @p widget or without a window.
    ///
    /// @param name   the module's name: title of the dock, text of the entry
    /// @param widget the module's content; the dock takes it over
    /// @param icon   for the dock and the entry; may be empty
    ///
    /// The other arguments are accepted and not used: the dock is in no dock area.
    void addModule(const QString &name, const QString &menu, QWidget *widget, const QString &shortcut,
                   const QIcon &icon, const QString &toolTip, Qt::DockWidgetArea area) override;

    /// The module's QOXDockWidget; null without one.
    QDockWidget *getModule(const QString &name) override;

    /// Moves the module's entry into @p menu, with its icon and check mark, and puts @p widget in the
    /// place of the module's content, which is deleted; @p widget may be from within it. Then deletes
    /// the first menu without an entry, if there is one: one at most. Nothing with a null @p widget.
    ///
    /// An unknown module gets an entry without a dock, and @p widget stays the caller's.
    void changeModule(const QString &name, const QString &menu, QWidget *widget) override;

    /// Deletes the module's entry, its dock and its content. Its menu stays, even if it is empty.
    void subModule(const QString &name) override;

    void showModule(const QString &name) override;
    void hideModule(const QString &name) override;

    /// Not available in this process: each prints "oxMainWindowService: addSeparator not
    /// implemented for Remote Service" with its own name on standard output, flushed, and returns
    /// null. getExportMenu() prints "RemoteService", and getSynchronisationToolBar() nothing.
    void addSeparator(const QString &menu) override;
    QMenu *getSceneMenu() override;
    QMenu *getSimpleSceneMenu() override;
    QMenu *getViewMenu() override;
    QMenu *getImportMenu() override;
    QMenu *getExportMenu() override;
    QToolBar *getSynchronisationToolBar() override;
    void setModuleWidget(const char *name, QWidget *widget) override;

private:
    QOXDockWidget *findDock(const QString &name) const;
    QAction *findEntry(const QString &name) const;
    QMenu *findOrCreateMenu(const QString &title);
    QAction *addEntry(QMenu *menu, const QIcon &icon, const QString &name, QOXDockWidget *dock);

    QPointer<QMainWindow> mainWindow;
    QPointer<QAction> helpAction;
};
