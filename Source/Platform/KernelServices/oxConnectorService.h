#pragma once

#include "oxBaseService.h"

/// The main process's service for connections between attributes. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxConnectorService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
