#pragma once

#include <QLatin1String>
#include <QMetaClassInfo>
#include <QString>

/// The name under which an object of @p metaObject is offered: that of the first class, from its
/// own upwards, which declares one. Empty where none does.
inline QString interfaceName(const QMetaObject *metaObject)
{
    const int index = metaObject->indexOfClassInfo("RemoteObject Type");
    return index < 0 ? QString() : QString::fromLatin1(metaObject->classInfo(index).value());
}

/// The class of that name; null where there is none.
inline const QMetaObject *interfaceClass(const QMetaObject *metaObject)
{
    const QString name = interfaceName(metaObject);
    while (metaObject && QLatin1String(metaObject->className()) != name)
        metaObject = metaObject->superClass();
    return metaObject;
}
