#pragma once

#include "oxBaseService.h"

/// The main process's service for clipping planes. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxClippingService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
