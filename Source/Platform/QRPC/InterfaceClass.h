#pragma once

#include <QLatin1String>
#include <QMetaClassInfo>
#include <QString>

#include <cstring>

/// The name under which an object of @p metaObject is offered: that of the first class, from its
/// own upwards, which declares one. Empty where none does.
inline QString interfaceClass(const QMetaObject *metaObject)
{
    const int index = metaObject->indexOfClassInfo("RemoteObject Type");
    return index < 0 ? QString() : QString::fromLatin1(metaObject->classInfo(index).value());
}
