#include "oxKernelServiceRemoteImpl.h"

#include <cstdio>

oxKernelServiceRemoteImpl::~oxKernelServiceRemoteImpl() = default;

void oxKernelServiceRemoteImpl::consoleLog(const QString &text)
{
    printf("%s", text.toUtf8().constData());
}
