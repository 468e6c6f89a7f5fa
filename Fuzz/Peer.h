#pragma once

#include <QAbstractEventDispatcher>
#include <QByteArray>
#include <QDataStream>
#include <QtEndian>

extern "C" const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}

/// Runs the event loop until nothing is left to do at once. Both ends are in this thread, so that
/// whatever was sent has arrived then.
inline void settle()
{
    constexpr int limit = 200; // of a connection that never ends
    auto *dispatcher = QAbstractEventDispatcher::instance();
    for (int i = 0; i < limit && dispatcher->processEvents(QEventLoop::AllEvents); ++i) {}
}

/// What a peer sends: the input is a row of packets, each with its length in two bytes, after a byte
/// that says after how much of all this the connection ends.
inline QByteArray packetsOf(const quint8 *bytes, size_t size)
{
    if (size == 0)
        return {};
    const QByteArray input(reinterpret_cast<const char *>(bytes + 1), int(size - 1));
    QByteArray sent;
    QDataStream output(&sent, QIODevice::WriteOnly);
    for (int position = 0; position + 2 <= input.size();) {
        const int length = qFromBigEndian<quint16>(input.constData() + position);
        const QByteArray packet = input.mid(position + 2, length);
        position += 2 + packet.size();
        output.writeBytes(packet.constData(), uint(packet.size())); // its length in four bytes, as Qt has it
    }
    sent.chop(4 * bytes[0]);
    return sent;
}
