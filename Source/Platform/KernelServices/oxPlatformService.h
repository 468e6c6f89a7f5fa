#pragma once

#include "oxBaseService.h"

/// The main process's service for the machine that the main process runs on. This implementation has no operations of
/// its own.
class OXKERNELSERVICES_EXPORT oxPlatformService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
