#pragma once

#include "oxBaseService.h"

/// The main process's service for data objects of any kind. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxObjectService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
