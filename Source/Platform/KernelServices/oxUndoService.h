#pragma once

#include <QString>

#include "oxBaseService.h"

/// Takes changes of the scene in the main process back, and makes them again.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxUndoService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxUndoService")

public:
    explicit oxUndoService(QObject *parent = nullptr);
    ~oxUndoService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.

    /// Each does nothing where there is nothing to undo or redo.
    virtual void undo();
    virtual void redo();
    virtual bool canUndo();
    virtual bool canRedo();
    /// What the next step would change, for a menu; "" where there is none.
    virtual QString undoText();
    virtual QString redoText();

Q_SIGNALS:
    /// One of the answers above is another one now.
    void changed();
};
