#pragma once

#include "oxBaseService.h"

/// The main process's service for the transformation of nodes. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxTransformService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
