#include "UndoService.h"

#include <QUndoStack>

UndoService::UndoService(QUndoStack *stack, QObject *parent)
    : oxUndoService(parent)
    , m_stack(stack)
{
    // Emitted for each change of the stack, whichever of the answers is another one.
    connect(m_stack, &QUndoStack::indexChanged, this, &UndoService::changed);
}

UndoService::~UndoService() = default;

void UndoService::undo()
{
    m_stack->undo();
}

void UndoService::redo()
{
    m_stack->redo();
}

bool UndoService::canUndo()
{
    return m_stack->canUndo();
}

bool UndoService::canRedo()
{
    return m_stack->canRedo();
}

QString UndoService::undoText()
{
    return m_stack->undoText();
}

QString UndoService::redoText()
{
    return m_stack->redoText();
}
