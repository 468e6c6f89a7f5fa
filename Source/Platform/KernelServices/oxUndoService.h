#pragma once

#include "oxBaseService.h"

/// The main process's service for undo and redo. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxUndoService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
