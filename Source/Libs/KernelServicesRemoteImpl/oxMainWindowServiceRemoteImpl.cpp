#include "oxMainWindowServiceRemoteImpl.h"

#include <QLayout>
#include <QMenuBar>

#include <cstdio>

#include "FirstDescendant.h"
#include "QOXDockWidget.h"

namespace {

void printLine(const char *line)
{
    printf("%s\n", line);
    fflush(stdout);
}

bool isDescendant(const QObject *object, const QObject *ancestor)
{
    while (object && object != ancestor)
        object = object->parent();
    return object != nullptr;
}

// Qt takes a widget out of its window's focus chain before it emits destroyed() and deletes the children.
bool isBeingDestroyed(const QWidget *widget)
{
    return !widget->nextInFocusChain();
}

void deleteContent(QDockWidget *dock)
{
    QWidget *content = dock->widget();
    if (isBeingDestroyed(content)) {
        dock->layout()->removeWidget(content);
        return;
    }
    content->setParent(nullptr); // whatever its deletion leads to does not find it any more
    delete content;
}

// What is called as the old content goes may give the dock another one, and may delete the dock.
void replaceContent(const QPointer<QOXDockWidget> &dock, QWidget *content)
{
    if (isDescendant(content, dock->widget()))
        content->setParent(nullptr);
    while (dock && dock->widget())
        deleteContent(dock);
    if (dock)
        dock->setWidget(content);
}

} // namespace

oxMainWindowServiceRemoteImpl::oxMainWindowServiceRemoteImpl() = default;

oxMainWindowServiceRemoteImpl::~oxMainWindowServiceRemoteImpl() = default;

void oxMainWindowServiceRemoteImpl::setWidget(QMainWindow *window)
{
    mainWindow = window;
    const QString help = tr("&Help");
    const QList<QAction *> actions = window->menuBar()->actions();
    for (QAction *action : actions) {
        if (action->menu() && action->menu()->title() == help) {
            helpAction = action;
            return;
        }
    }
}

QMainWindow *oxMainWindowServiceRemoteImpl::getWidget() const
{
    return mainWindow;
}

void oxMainWindowServiceRemoteImpl::addModule(const QString &name, const QString &menu, QWidget *widget,
                                              const QString &, const QIcon &icon, const QString &, Qt::DockWidgetArea)
{
    if (!widget || !mainWindow)
        return;
    QMenu *target = findOrCreateMenu(menu);
    auto *dock = new QOXDockWidget(name, menu, icon, mainWindow, Qt::WindowFlags());
    dock->setWidget(widget);
    dock->setToolWindow(true);
    dock->resize(0, 0);
    dock->hide();
    addEntry(target, icon, name, dock);
}

QDockWidget *oxMainWindowServiceRemoteImpl::getModule(const QString &name)
{
    return findDock(name);
}

void oxMainWindowServiceRemoteImpl::changeModule(const QString &name, const QString &menu, QWidget *widget)
{
    if (!widget || !mainWindow)
        return;
    QIcon icon;
    bool isChecked = false;
    if (QAction *entry = findEntry(name)) {
        icon = entry->icon();
        isChecked = entry->isChecked();
        delete entry;
    }

    const QPointer<QMenu> target = findOrCreateMenu(menu);
    const QPointer<QOXDockWidget> dock = findDock(name);
    if (dock && dock->widget() != widget)
        replaceContent(dock, widget);
    if (!mainWindow)
        return;
    addEntry(target ? target.data() : findOrCreateMenu(menu), icon, name, dock)->setChecked(isChecked);

    // Deliberate: one empty menu at most, whosever it is.
    delete firstDescendant<QMenu>(mainWindow->menuBar(), [](const QMenu *m) { return m->actions().isEmpty(); });
}

void oxMainWindowServiceRemoteImpl::subModule(const QString &name)
{
    if (!mainWindow)
        return;
    delete findEntry(name);
    delete findDock(name);
}

void oxMainWindowServiceRemoteImpl::showModule(const QString &name)
{
    if (QOXDockWidget *dock = findDock(name))
        dock->show();
}

void oxMainWindowServiceRemoteImpl::hideModule(const QString &name)
{
    if (QOXDockWidget *dock = findDock(name))
        dock->hide();
}

void oxMainWindowServiceRemoteImpl::addSeparator(const QString &)
{
    printLine("oxMainWindowService: addSeparator not implemented for Remote Service");
}

QMenu *oxMainWindowServiceRemoteImpl::getSceneMenu()
{
    printLine("oxMainWindowService: getSceneMenu not implemented for Remote Service");
    return nullptr;
}

QMenu *oxMainWindowServiceRemoteImpl::getSimpleSceneMenu()
{
    printLine("oxMainWindowService: getSimpleSceneMenu not implemented for Remote Service");
    return nullptr;
}

QMenu *oxMainWindowServiceRemoteImpl::getViewMenu()
{
    printLine("oxMainWindowService: getViewMenu not implemented for Remote Service");
    return nullptr;
}

QMenu *oxMainWindowServiceRemoteImpl::getImportMenu()
{
    printLine("oxMainWindowService: getImportMenu not implemented for Remote Service");
    return nullptr;
}

QMenu *oxMainWindowServiceRemoteImpl::getExportMenu()
{
    // Deliberate: "RemoteService" without the blank.
    printLine("oxMainWindowService: getExportMenu not implemented for RemoteService");
    return nullptr;
}

QToolBar *oxMainWindowServiceRemoteImpl::getSynchronisationToolBar()
{
    return nullptr;
}

void oxMainWindowServiceRemoteImpl::setModuleWidget(const char *, QWidget *)
{
    printLine("oxMainWindowService: setModuleWidget not implemented for Remote Service");
}

QOXDockWidget *oxMainWindowServiceRemoteImpl::findDock(const QString &name) const
{
    if (!mainWindow)
        return nullptr;
    return firstDescendant<QOXDockWidget>(mainWindow,
                                          [&name](const QOXDockWidget *dock) { return dock->windowTitle() == name; });
}

// A menu's own action has the menu's title for its text. It is no entry, and a menu does not
// survive its deletion: a module may be named like a menu.
QAction *oxMainWindowServiceRemoteImpl::findEntry(const QString &name) const
{
    return firstDescendant<QAction>(
        mainWindow->menuBar(), [&name](const QAction *action) { return action->text() == name && !action->menu(); });
}

QMenu *oxMainWindowServiceRemoteImpl::findOrCreateMenu(const QString &title)
{
    QMenuBar *menuBar = mainWindow->menuBar();
    auto *menu = firstDescendant<QMenu>(menuBar, [&title](const QMenu *m) { return m->title() == title; });
    if (menu)
        return menu;
    if (!helpAction)
        return menuBar->addMenu(title);
    menu = new QMenu(title, menuBar);
    menuBar->insertMenu(helpAction, menu);
    return menu;
}

// The entry drives the dock, and its check mark follows the dock however that is shown or closed.
QAction *oxMainWindowServiceRemoteImpl::addEntry(QMenu *menu, const QIcon &icon, const QString &name,
                                                 QOXDockWidget *dock)
{
    QAction *entry = menu->addAction(icon, name);
    entry->setCheckable(true);
    if (dock) {
        connect(entry, SIGNAL(triggered(bool)), dock, SLOT(setVisible(bool)));
        connect(dock, &QDockWidget::visibilityChanged, entry, &QAction::setChecked);
    }
    return entry;
}
