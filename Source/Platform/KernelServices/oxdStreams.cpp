#include "oxdStreams.h"

#include <QDataStream>
#include <QIODevice>
#include <QList>
#include <QVector>

#include <algorithm>
#include <limits>
#include <new>

#include "oxdDataObjects.h"

namespace {

// How many elements the stream can hold at most: a count is a claim, and room is made for what is there.
qint64 elementsAhead(const QDataStream &stream)
{
    return stream.device() ? stream.device()->bytesAvailable() / qint64(sizeof(quint64)) : 0;
}

template<class T>
QDataStream &readList(QDataStream &stream, QList<T> &list)
{
    list.clear();
    quint32 count = 0;
    stream >> count;
    list.reserve(int(std::min<qint64>({count, elementsAhead(stream), std::numeric_limits<int>::max()})));
    if (count == 0)
        return stream;
    quint32 read = 0;
    do {
        T element;
        stream >> element;
        list.append(element);
    } while (++read != count && !stream.atEnd());
    return stream;
}

// Deliberate: unlike a list, a vector does not end with the stream.
template<class T>
QDataStream &readVector(QDataStream &stream, QVector<T> &vector)
{
    vector.clear();
    quint32 count = 0;
    stream >> count;
    try {
        if (count > quint32(std::numeric_limits<int>::max()))
            throw std::bad_alloc();
        vector.reserve(int(count));
        // One by one: a QVector loses all the elements of a resize() that fails.
        for (quint32 size = 1; size <= count; ++size)
            vector.resize(int(size));
        for (T &target : vector) {
            T element;
            stream >> element;
            target = element;
        }
    } catch (const std::bad_alloc &) {
        vector = QVector<T>();
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    return stream;
}

} // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): operator>> is a name here
#define OXD_DEFINE_STREAM_READERS(Class, Levels, Container, Python)                                                    \
    QDataStream &operator>>(QDataStream &stream, QList<Class> &list)                                                   \
    {                                                                                                                  \
        return readList(stream, list);                                                                                 \
    }                                                                                                                  \
    QDataStream &operator>>(QDataStream &stream, QVector<Class> &vector)                                               \
    {                                                                                                                  \
        return readVector(stream, vector);                                                                             \
    }
// NOLINTEND(bugprone-macro-parentheses)
OXD_CLASSES(OXD_DEFINE_STREAM_READERS)
