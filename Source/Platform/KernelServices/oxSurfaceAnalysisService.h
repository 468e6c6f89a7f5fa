#pragma once

#include "oxBaseService.h"

/// The main process's service for surface analysis. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxSurfaceAnalysisService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
