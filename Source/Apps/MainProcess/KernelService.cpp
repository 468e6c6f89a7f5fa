#include "KernelService.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

KernelService::KernelService(QObject *parent)
    : oxKernelService(parent)
{}

KernelService::~KernelService() = default;

bool KernelService::initialize(bool)
{
    return true;
}

bool KernelService::terminate(bool force)
{
    if (force)
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    return force;
}

QString KernelService::salt()
{
    return {};
}

bool KernelService::authenticate(const QString &)
{
    return true;
}

void KernelService::consoleLog(const QString &text)
{
    printf("%s", text.toUtf8().constData());
    fflush(stdout);
}
