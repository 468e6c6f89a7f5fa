#pragma once

#include "oxUndoService.h"

class QUndoStack;

/// The undo stack of the scene.
class UndoService : public oxUndoService
{
    Q_OBJECT

public:
    /// @param stack not owned
    explicit UndoService(QUndoStack *stack, QObject *parent = nullptr);
    ~UndoService() override;

public Q_SLOTS:
    void undo() override;
    void redo() override;
    bool canUndo() override;
    bool canRedo() override;
    QString undoText() override;
    QString redoText() override;

private:
    QUndoStack *m_stack;
};
