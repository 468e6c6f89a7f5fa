#pragma once

#include "oxBaseService.h"

/// The main process's service for tracking devices. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxVrpnTrackingService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
