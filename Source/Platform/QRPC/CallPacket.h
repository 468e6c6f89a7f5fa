#pragma once

#include <QDataStream>
#include <QMetaMethod>
#include <QVariantList>

/// What a packet of the type Invoke says after the name of the object.
struct CallPacket
{
    explicit CallPacket(QDataStream &packet) { packet >> operation >> index >> arguments >> serial >> property; }

    /// Whether it calls @p method, with the arguments that this takes.
    bool isCallOf(const QMetaMethod &method) const
    {
        if (operation != QMetaObject::InvokeMetaMethod || arguments.size() != method.parameterCount())
            return false;
        for (int i = 0; i < arguments.size(); ++i) {
            if (arguments.at(i).userType() != method.parameterType(i))
                return false;
        }
        return true;
    }

    qint32 operation = 0;
    qint32 index = 0;
    QVariantList arguments;
    qint32 serial = 0;
    qint32 property = 0;
};
