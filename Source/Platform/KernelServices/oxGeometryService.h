#pragma once

#include "oxBaseService.h"

/// The main process's service for geometries. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxGeometryService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
