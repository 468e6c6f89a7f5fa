#include "oxKernelService.h"

oxKernelService::oxKernelService(QObject *parent)
    : oxBaseService(parent)
{}

oxKernelService::~oxKernelService() = default;

bool oxKernelService::initialize(bool master)
{
    return call<bool>(staticMetaObject, "initialize(bool)", master);
}

bool oxKernelService::terminate(bool force)
{
    return call<bool>(staticMetaObject, "terminate(bool)", force);
}

QString oxKernelService::salt()
{
    return call<QString>(staticMetaObject, "salt()");
}

bool oxKernelService::authenticate(const QString &secret)
{
    return call<bool>(staticMetaObject, "authenticate(QString)", secret);
}

void oxKernelService::consoleLog(const QString &text)
{
    call(staticMetaObject, "consoleLog(QString)", text);
}
