#include "oxUndoService.h"

oxUndoService::oxUndoService(QObject *parent)
    : oxBaseService(parent)
{}

oxUndoService::~oxUndoService() = default;

void oxUndoService::undo()
{
    call(staticMetaObject, "undo()");
}

void oxUndoService::redo()
{
    call(staticMetaObject, "redo()");
}

bool oxUndoService::canUndo()
{
    return call<bool>(staticMetaObject, "canUndo()");
}

bool oxUndoService::canRedo()
{
    return call<bool>(staticMetaObject, "canRedo()");
}

QString oxUndoService::undoText()
{
    return call<QString>(staticMetaObject, "undoText()");
}

QString oxUndoService::redoText()
{
    return call<QString>(staticMetaObject, "redoText()");
}
