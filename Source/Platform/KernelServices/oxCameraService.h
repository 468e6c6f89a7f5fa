#pragma once

#include "oxBaseService.h"

/// The main process's service for cameras. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxCameraService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
