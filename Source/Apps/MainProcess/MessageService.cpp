#include "MessageService.h"

#include <cstdio>

MessageService::MessageService(QObject *parent)
    : oxMessageService(parent)
{}

MessageService::~MessageService() = default;

void MessageService::information(const QString &text)
{
    printf("oxMessageService: information '%s'\n", text.toUtf8().constData());
    Q_EMIT messageReceived(Information, text);
}

void MessageService::warning(const QString &text)
{
    fprintf(stderr, "oxMessageService: warning '%s'\n", text.toUtf8().constData());
    Q_EMIT messageReceived(Warning, text);
}

void MessageService::error(const QString &text)
{
    fprintf(stderr, "oxMessageService: error '%s'\n", text.toUtf8().constData());
    Q_EMIT messageReceived(Error, text);
}
