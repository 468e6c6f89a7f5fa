// The readers of lists and vectors of data objects, beside a model of them. The first byte of the
// input says what is read and how, the rest is the stream.

#include <QDataStream>
#include <QVariant>
#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <limits>

#include "oxdDataObjects.h"
#include "oxdObjectManager.h"

namespace {

// A vector has the announced size, whatever it costs; more than this only costs time.
constexpr quint32 largestVector = 10000;

struct Input
{
    QByteArray stream;
    QDataStream::ByteOrder order;
    bool isInVariant;

    quint32 count() const
    {
        if (stream.size() < int(sizeof(quint32)))
            return 0;
        return order == QDataStream::BigEndian ? qFromBigEndian<quint32>(stream.constData())
                                               : qFromLittleEndian<quint32>(stream.constData());
    }

    quint64 id(qint64 index) const
    {
        const qint64 offset = qint64(sizeof(quint32)) + index * qint64(sizeof(quint64));
        if (offset + qint64(sizeof(quint64)) > stream.size())
            return 0;
        return order == QDataStream::BigEndian ? qFromBigEndian<quint64>(stream.constData() + offset)
                                               : qFromLittleEndian<quint64>(stream.constData() + offset);
    }

    // A part of an id is one, too, and one is read even where there is none.
    qint64 idsThere() const
    {
        const qint64 bytes = std::max<qint64>(0, stream.size() - qint64(sizeof(quint32)));
        return std::max<qint64>(1, (bytes + qint64(sizeof(quint64)) - 1) / qint64(sizeof(quint64)));
    }
};

template<class T>
qint64 expectedSize(const Input &input, const QList<T> *)
{
    return std::min<qint64>(input.count(), input.idsThere());
}

template<class T>
qint64 expectedSize(const Input &input, const QVector<T> *)
{
    return input.count() > quint32(std::numeric_limits<int>::max()) ? 0 : input.count();
}

template<class T>
bool isTooLarge(const Input &, const QList<T> *)
{
    return false;
}

template<class T>
bool isTooLarge(const Input &input, const QVector<T> *)
{
    return input.count() > largestVector && input.count() <= quint32(std::numeric_limits<int>::max());
}

template<class Container>
Container readVariant(QDataStream *stream)
{
    QVariant variant;
    *stream >> variant;
    if (variant.userType() != qMetaTypeId<Container>())
        qFatal("a variant of another type");
    return variant.value<Container>();
}

// What is written before the container itself in a variant.
template<class Container>
QByteArray variantHeader(QDataStream::ByteOrder order)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setByteOrder(order);
    stream << QVariant::fromValue(Container());
    data.chop(int(sizeof(quint32)));
    return data;
}

template<class Container>
void read(const Input &input)
{
    Container objects{typename Container::value_type()};
    if (isTooLarge(input, &objects))
        return;
    const QByteArray data = input.isInVariant ? variantHeader<Container>(input.order) + input.stream : input.stream;
    QDataStream stream(data);
    stream.setByteOrder(input.order);
    if (input.isInVariant)
        objects = readVariant<Container>(&stream);
    else
        stream >> objects;

    if (objects.size() != expectedSize(input, &objects))
        qFatal("%d objects", objects.size());
    for (int i = 0; i < objects.size(); ++i) {
        if (objects.at(i).objectId() != input.id(i))
            qFatal("object %d is %llu", i, objects.at(i).objectId());
    }
}

using Read = void (*)(const Input &);

template<class... T>
QVector<Read> readersOf()
{
    (oxdObjectManager::registerType<T>(0), ...);
    return {&read<QList<T>>..., &read<QVector<T>>...};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    static const auto readers = readersOf<oxdObject, oxdMaterial, oxdNode, oxdBRDFMaterial>();
    if (size == 0)
        return 0;
    const int choice = bytes[0] / 4 % readers.size();
    const auto order = bytes[0] & 1 ? QDataStream::LittleEndian : QDataStream::BigEndian;
    readers.at(choice)(
        {QByteArray(reinterpret_cast<const char *>(bytes + 1), int(size - 1)), order, (bytes[0] & 2) != 0});
    return 0;
}
