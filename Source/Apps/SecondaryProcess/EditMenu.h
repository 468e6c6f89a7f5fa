#pragma once

#include <QMenu>

class MainProcess;
class oxUndoService;

/// The menu "Edit": takes changes of the scene back and makes them again.
class EditMenu : public QMenu
{
    Q_OBJECT

public:
    EditMenu(MainProcess *mainProcess, oxUndoService *service, QWidget *parent);

private:
    void updateEntries();
    void updateOnce();

    MainProcess *m_mainProcess;
    oxUndoService *m_service;
    QAction *m_undo;
    QAction *m_redo;
    bool m_isUpdating = false;
    bool m_isUpdateDue = false;
};
