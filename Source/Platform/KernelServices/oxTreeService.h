#pragma once

#include "oxBaseService.h"

/// The main process's service for the scene tree. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxTreeService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
