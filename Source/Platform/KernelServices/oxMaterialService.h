#pragma once

#include "oxBaseService.h"

/// The main process's service for materials. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxMaterialService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
