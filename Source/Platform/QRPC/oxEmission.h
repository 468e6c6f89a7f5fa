#pragma once

#include <QVariantList>

class QObject;

/// A signal of the main process, to be emitted by the local service.
struct oxEmission
{
    QObject *service;
    int method; ///< its index in the service's meta-object
    QVariantList arguments;
};
