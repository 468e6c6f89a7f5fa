#include "EditMenu.h"

#include <QScopedValueRollback>

#include "MainProcess.h"
#include "oxUndoService.h"

EditMenu::EditMenu(MainProcess *mainProcess, oxUndoService *service, QWidget *parent)
    : QMenu(tr("&Edit"), parent)
    , m_mainProcess(mainProcess)
    , m_service(service)
    , m_undo(addAction(QString(), service, &oxUndoService::undo, QKeySequence::Undo))
    , m_redo(addAction(QString(), service, &oxUndoService::redo, QKeySequence::Redo))
{
    connect(mainProcess, &MainProcess::connected, this, &EditMenu::updateEntries);
    connect(mainProcess, &MainProcess::disconnected, this, &EditMenu::updateEntries);
    connect(service, &oxUndoService::changed, this, &EditMenu::updateEntries);
    updateEntries();
}

// One at a time: further changes are announced while the calls wait for their answers.
void EditMenu::updateEntries()
{
    m_isUpdateDue = true;
    if (m_isUpdating)
        return;
    const QScopedValueRollback<bool> updating(m_isUpdating, true);
    while (m_isUpdateDue) {
        m_isUpdateDue = false;
        updateOnce();
    }
}

void EditMenu::updateOnce()
{
    const bool isConnected = m_mainProcess->isConnected();
    const auto show = [](QAction *entry, bool isPossible, const QString &verb, QString what) {
        entry->setEnabled(isPossible);
        what.replace(QLatin1Char('&'), QLatin1String("&&"));
        entry->setText(isPossible && !what.isEmpty() ? verb + QLatin1Char(' ') + what : verb);
    };
    const bool canUndo = isConnected && m_service->canUndo();
    show(m_undo, canUndo, tr("&Undo"), canUndo ? m_service->undoText() : QString());
    const bool canRedo = isConnected && m_service->canRedo();
    show(m_redo, canRedo, tr("&Redo"), canRedo ? m_service->redoText() : QString());
}
