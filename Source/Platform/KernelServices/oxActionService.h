#pragma once

#include "oxBaseService.h"

/// The main process's service for action graphs. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxActionService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
