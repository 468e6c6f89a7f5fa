#include "oxMainWindowService.h"

oxMainWindowService::oxMainWindowService(QObject *parent)
    : oxBaseService(parent)
{}

oxMainWindowService::~oxMainWindowService() = default;

void oxMainWindowService::setWidget(QMainWindow *) {}

QMainWindow *oxMainWindowService::getWidget() const
{
    return nullptr;
}

void oxMainWindowService::addModule(const QString &, const QString &, QWidget *, const QString &, const QIcon &,
                                    const QString &, Qt::DockWidgetArea)
{}

QDockWidget *oxMainWindowService::getModule(const QString &)
{
    return nullptr;
}

void oxMainWindowService::changeModule(const QString &, const QString &, QWidget *) {}

void oxMainWindowService::subModule(const QString &) {}

void oxMainWindowService::showModule(const QString &) {}

void oxMainWindowService::hideModule(const QString &) {}

void oxMainWindowService::addSeparator(const QString &) {}

QMenu *oxMainWindowService::getSceneMenu()
{
    return nullptr;
}

QMenu *oxMainWindowService::getSimpleSceneMenu()
{
    return nullptr;
}

QMenu *oxMainWindowService::getViewMenu()
{
    return nullptr;
}

QMenu *oxMainWindowService::getImportMenu()
{
    return nullptr;
}

QMenu *oxMainWindowService::getExportMenu()
{
    return nullptr;
}

QToolBar *oxMainWindowService::getSynchronisationToolBar()
{
    return nullptr;
}

void oxMainWindowService::setModuleWidget(const char *, QWidget *) {}
