#pragma once

#include <QVariantList>

class QObject;

/// A signal of the main process, to be emitted by the local service.
struct Emission
{
    QObject *service;
    int method; ///< its index in the service's meta-object
    QVariantList arguments;
};
