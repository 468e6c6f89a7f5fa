#pragma once

#include "oxKernelInterfaceRemote.h"
#include "oxKernelInterfaceRemote_p.h"

/// The private data of the interface, for tests that look at its records.
oxKernelInterfaceP *privateData(oxKernelInterface *interface);
