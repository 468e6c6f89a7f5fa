#pragma once

#include <QDataStream>
#include <QMetaMethod>
#include <QVariantList>

#include "oxStreamedTypes.h"

/// What a packet of the type Invoke says after the name of the object.
struct oxCallPacket
{
    oxCallPacket() = default;
    explicit oxCallPacket(QDataStream &packet) { packet >> operation >> index >> arguments >> serial >> property; }

    /// From a process that has not registered the type @p valueless.
    oxCallPacket(QDataStream &packet, const QByteArray &valueless)
    {
        quint32 count = 0;
        packet >> operation >> index >> count;
        for (; count > 0 && packet.status() == QDataStream::Ok; --count)
            arguments.append(oxStreamedTypes::readVariant(packet, valueless));
        packet >> serial >> property;
    }

    /// Whether it calls @p method, with the arguments that this takes. Variants come as variants in a
    /// variant, or as they are where @p hasBareVariants, which a signal of a property of any type has.
    bool isCallOf(const QMetaMethod &method, bool hasBareVariants = false) const
    {
        if (operation != QMetaObject::InvokeMetaMethod || arguments.size() != method.parameterCount())
            return false;
        for (int i = 0; i < arguments.size(); ++i) {
            const int type = method.parameterType(i);
            const bool isRight = arguments.at(i).userType() == type || (hasBareVariants && type == QMetaType::QVariant);
            if (!isRight || type == QMetaType::UnknownType)
                return false;
        }
        return true;
    }

    /// The type of an argument of @p method that is not registered here; empty where all are.
    static QByteArray typeUnknownHere(const QMetaMethod &method)
    {
        for (int i = 0; i < method.parameterCount(); ++i) {
            if (!oxStreamedTypes::isStreamable(method.parameterType(i)))
                return copyOf(method.parameterTypes().at(i));
        }
        return QByteArray();
    }

    /// The type of an argument of the signal @p method that the sender of @p packet has not registered: without its
    /// values, the packet is right from @p start on. Empty where there is none.
    static QByteArray typeUnknownThere(const QMetaMethod &method, QDataStream &packet, qint64 start)
    {
        const QList<QByteArray> types = method.parameterTypes();
        for (const QByteArray &type : types) {
            if (QMetaType::type(type) < QMetaType::User)
                continue;
            packet.resetStatus();
            packet.device()->seek(start);
            const oxCallPacket call(packet, type);
            if (call.isCallOf(method, true) && packet.status() == QDataStream::Ok && packet.atEnd())
                return copyOf(type);
        }
        return QByteArray();
    }

    /// A meta-object hands out its own strings without a copy, and that of a replica goes with the connection.
    static QByteArray copyOf(const QByteArray &name) { return QByteArray(name.constData(), name.size()); }

    qint32 operation = 0;
    qint32 index = 0;
    QVariantList arguments;
    qint32 serial = 0;
    qint32 property = 0;
};
