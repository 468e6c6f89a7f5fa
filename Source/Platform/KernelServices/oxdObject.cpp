#include "oxdObject.h"

#include <QDataStream>

oxdObject::oxdObject() = default;

oxdObject::oxdObject(const oxdObject &other)
    : oxdObject()
{
    m_objectId = other.m_objectId;
}

oxdObject &oxdObject::operator=(const oxdObject &other)
{
    m_objectId = other.m_objectId;
    return *this;
}

oxdObject::~oxdObject() = default;

void oxdObject::initialize(unsigned long long id)
{
    m_objectId = id;
}

void oxdObject::invokeMethod(const QMetaObject *, int, void **) {}

QDataStream &operator<<(QDataStream &stream, const oxdObject &object)
{
    return stream << quint64(object.objectId());
}

QDataStream &operator>>(QDataStream &stream, oxdObject &object)
{
    quint64 id = 0;
    stream >> id;
    object.initialize(id);
    return stream;
}
