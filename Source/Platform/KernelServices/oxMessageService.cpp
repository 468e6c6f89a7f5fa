#include "oxMessageService.h"

oxMessageService::oxMessageService(QObject *parent)
    : oxBaseService(parent)
{}

oxMessageService::~oxMessageService() = default;

void oxMessageService::information(const QString &text)
{
    Q_EMIT messageReceived(Information, text);
}

void oxMessageService::warning(const QString &text)
{
    Q_EMIT messageReceived(Warning, text);
}

void oxMessageService::error(const QString &text)
{
    Q_EMIT messageReceived(Error, text);
}
