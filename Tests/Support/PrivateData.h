#pragma once

#include "oxKernelInterfaceRemote.h"
#include "oxKernelInterfaceRemote_p.h"

/// The private data of the interface, for tests that look at its records.
oxKernelInterfaceP *privateData(oxKernelInterface *interface);

namespace PrivateDataAccess {

// Naming a private member is allowed in an explicit instantiation.
template<oxKernelInterfaceP *oxKernelInterface::*Member>
struct Of
{
    friend oxKernelInterfaceP *(::privateData)(oxKernelInterface *interface) { return interface->*Member; }
};

} // namespace PrivateDataAccess
