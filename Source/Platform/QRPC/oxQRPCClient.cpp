#include "oxQRPCClient.h"

#include <QMetaMethod>

#include <cstdio>

oxQRPCClient::oxQRPCClient(QObject *parent)
    : QObject(parent)
{}

oxQRPCClient::~oxQRPCClient() = default;

void oxQRPCClient::registerService(QObject *service)
{
    m_services.append(service);
}

QList<QObject *> oxQRPCClient::services() const
{
    return m_services;
}

void oxQRPCClient::callMethod(QObject *, const QMetaObject *metaObject, int index, void **)
{
    fprintf(stderr, "oxQRPCClient: not connected, %s::%s does nothing\n", metaObject->className(),
            metaObject->method(index).methodSignature().constData());
}
