#pragma once

#include <QDataStream>
#include <QMetaMethod>
#include <QVariantList>

/// What a packet of the type Invoke says after the name of the object.
struct oxCallPacket
{
    oxCallPacket() = default;
    explicit oxCallPacket(QDataStream &packet) { packet >> operation >> index >> arguments >> serial >> property; }

    /// Whether it calls @p method, with the arguments that this takes. Variants come as variants in a
    /// variant, or as they are where @p hasBareVariants, which a signal of a property of any type has.
    bool isCallOf(const QMetaMethod &method, bool hasBareVariants = false) const
    {
        if (operation != QMetaObject::InvokeMetaMethod || arguments.size() != method.parameterCount())
            return false;
        for (int i = 0; i < arguments.size(); ++i) {
            const int type = method.parameterType(i);
            if (arguments.at(i).userType() != type && !(hasBareVariants && type == QMetaType::QVariant))
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
