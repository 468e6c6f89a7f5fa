#pragma once

#include "oxBaseService.h"

/// The main process's service for the computation of ambient occlusion. This implementation has no operations of its
/// own.
class OXKERNELSERVICES_EXPORT oxAmbientOcclusionService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
