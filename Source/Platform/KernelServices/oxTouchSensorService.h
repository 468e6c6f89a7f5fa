#pragma once

#include "oxBaseService.h"

/// The main process's service for touch sensors in the scene. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxTouchSensorService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
