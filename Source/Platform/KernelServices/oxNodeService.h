#pragma once

#include "oxBaseService.h"

/// The main process's service for scene nodes. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxNodeService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
