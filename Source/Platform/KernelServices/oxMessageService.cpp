#include "oxMessageService.h"

oxMessageService::oxMessageService(QObject *parent)
    : oxBaseService(parent)
{}

oxMessageService::~oxMessageService() = default;

void oxMessageService::information(const QString &text)
{
    send("information(QString)", Information, text);
}

void oxMessageService::warning(const QString &text)
{
    send("warning(QString)", Warning, text);
}

void oxMessageService::error(const QString &text)
{
    send("error(QString)", Error, text);
}

void oxMessageService::send(const char *signature, Severity severity, const QString &text)
{
    if (isConnected())
        call(staticMetaObject, signature, text);
    else
        Q_EMIT messageReceived(severity, text);
}
