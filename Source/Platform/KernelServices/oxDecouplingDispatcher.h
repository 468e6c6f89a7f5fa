#pragma once

#include "oxkernelservices_export.h"

struct QMetaObject;

/// What every service and data object can do: call a method of its counterpart in the main process.
class OXKERNELSERVICES_EXPORT oxDecouplingDispatcher
{
public:
    /// @param metaObject the class that declares the method
    /// @param index      the method's index in @p metaObject
    /// @param arguments  as for Qt's meta-call: the place for the result, or null, then one
    ///                   pointer for each argument
    virtual void invokeMethod(const QMetaObject *metaObject, int index, void **arguments) = 0;

protected:
    // Never deleted through this type, and so without a virtual destructor in the table.
    ~oxDecouplingDispatcher() = default;
};
