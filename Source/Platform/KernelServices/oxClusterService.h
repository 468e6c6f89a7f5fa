#pragma once

#include "oxBaseService.h"

/// The main process's service for rendering on several machines. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxClusterService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
