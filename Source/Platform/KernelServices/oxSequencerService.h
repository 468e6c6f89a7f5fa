#pragma once

#include "oxBaseService.h"

/// The main process's service for animation sequences. This implementation has no operations of its own.
class OXKERNELSERVICES_EXPORT oxSequencerService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
