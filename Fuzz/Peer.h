#pragma once

#include <QAbstractEventDispatcher>
#include <QByteArray>
#include <QDataStream>
#include <QMetaMethod>
#include <QVariant>
#include <QtEndian>

#include <algorithm>
#include <new>

extern "C" const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=256";
}

/// Runs the event loop until nothing is left to do at once. Both ends are in this thread, so that
/// whatever was sent has arrived then.
inline void settle()
{
    constexpr int limit = 200; // of a connection that never ends
    auto *dispatcher = QAbstractEventDispatcher::instance();
    for (int i = 0; i < limit && dispatcher->processEvents(QEventLoop::AllEvents); ++i) {}
}

/// The packets of Qt Remote Objects, as far as the fuzzers have to know them.
enum PacketKind : quint16 {
    InitObject = 2,
    InitDynamicObject = 3,
    AddObject = 4,
    Call = 6,
    Answer = 7,
    PropertyChange = 8,
    ObjectList = 9
};

/// A value from a packet; invalid where it cannot be read. A list in it that says that it is larger than
/// memory is none: Qt makes room for what it says.
inline QVariant readValue(QDataStream *stream)
{
    try {
        QVariant value;
        *stream >> value;
        return stream->status() == QDataStream::Ok ? value : QVariant();
    } catch (const std::bad_alloc &) {
        return {};
    }
}

/// Whether these are the arguments of a call, by their number and types: Qt passes on what it gets.
inline bool areArgumentsOfTypes(QDataStream *stream, const QVector<int> &types)
{
    quint32 count = 0;
    *stream >> count;
    return count == quint32(types.size()) && std::all_of(types.cbegin(), types.cend(), [stream](int type) {
               return readValue(stream).userType() == type;
           });
}

inline QVector<int> parameterTypes(const QMetaMethod &method)
{
    QVector<int> types;
    for (int i = 0; i < method.parameterCount(); ++i)
        types.append(method.parameterType(i));
    return types;
}

inline QVector<QMetaMethod> methodsOf(const QMetaObject *metaObject, QMetaMethod::MethodType type)
{
    QVector<QMetaMethod> methods;
    for (int i = metaObject->methodOffset(); i < metaObject->methodCount(); ++i) {
        if (metaObject->method(i).methodType() == type)
            methods.append(metaObject->method(i));
    }
    return methods;
}

/// What a peer sends: some packets first, and then those of the input, which has the length of each in
/// two bytes before it. Packets for which @p isSafe is false are left out. The first byte of the input
/// says after how much of all this the connection ends.
template<class IsSafe>
QByteArray packetsOf(const QVector<QByteArray> &first, const quint8 *bytes, size_t size, const IsSafe &isSafe)
{
    QByteArray sent;
    QDataStream output(&sent, QIODevice::WriteOnly);
    const auto send = [&output](const QByteArray &packet) {
        output.writeBytes(packet.constData(), uint(packet.size())); // its length in four bytes, as Qt has it
    };
    std::for_each(first.cbegin(), first.cend(), send);
    if (size == 0)
        return sent;
    const QByteArray input(reinterpret_cast<const char *>(bytes + 1), int(size - 1));
    for (int position = 0; position + 2 <= input.size();) {
        const int length = qFromBigEndian<quint16>(input.constData() + position);
        const QByteArray packet = input.mid(position + 2, length);
        position += 2 + packet.size();
        if (isSafe(packet))
            send(packet);
    }
    sent.chop(4 * bytes[0]);
    return sent;
}
