#pragma once

#include "oxBaseService.h"

/// The main process's service for overlays drawn over the rendered picture. This implementation has no operations of
/// its own.
class OXKERNELSERVICES_EXPORT oxOverlayService : public oxBaseService
{
    Q_OBJECT

public:
    using oxBaseService::oxBaseService;
};
