#include "PrivateData.h"

namespace {

oxKernelInterfaceP *member(oxKernelInterface *interface);

// Naming a private member is allowed in an explicit instantiation.
template<oxKernelInterfaceP *oxKernelInterface::*Member>
struct Access
{
    friend oxKernelInterfaceP *member(oxKernelInterface *interface) { return interface->*Member; }
};
template struct Access<&oxKernelInterface::d>;

} // namespace

oxKernelInterfaceP *privateData(oxKernelInterface *interface)
{
    return member(interface);
}
