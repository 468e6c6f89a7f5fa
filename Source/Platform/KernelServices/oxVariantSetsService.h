#pragma once

#include "oxBaseService.h"

/// The main process's service for variant sets of the scene. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxVariantSetsService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
