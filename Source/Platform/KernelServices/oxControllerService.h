#pragma once

#include "oxBaseService.h"

/// The main process's service for input controllers. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxControllerService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
