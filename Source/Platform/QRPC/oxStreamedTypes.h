#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QMetaType>
#include <QVariant>

/// Types that cannot travel, as one of the two processes has not registered them, or not with their stream operators.
namespace oxStreamedTypes {

/// Whether values of the type can be written to a stream here, and read.
inline bool isStreamable(int type)
{
    if (type < QMetaType::User)
        return type != QMetaType::UnknownType;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    return QMetaType::save(stream, type, QVariant(type, nullptr).constData());
}

/// Reads a variant of a process that has not registered the type @p valueless: of its values it sends nothing but the
/// type's name, or not even that. The other variants are read as Qt reads them.
inline QVariant readVariant(QDataStream &packet, const QByteArray &valueless)
{
    const qint64 start = packet.device()->pos();
    quint32 type = 0;
    qint8 isNull = 0;
    QByteArray name;
    packet >> type >> isNull;
    if (type == QMetaType::User)
        packet >> name;
    if (type == QMetaType::UnknownType || name == valueless + '\0')
        return QVariant(QMetaType::type(valueless), nullptr);
    packet.device()->seek(start);
    QVariant variant;
    packet >> variant;
    return variant;
}

} // namespace oxStreamedTypes
