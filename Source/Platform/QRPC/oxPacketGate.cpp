#include "oxPacketGate.h"

#include <QLocalSocket>
#include <QTcpSocket>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr int lengthSize = sizeof(quint32);
constexpr quint32 minimumLength = sizeof(quint16); // the type
constexpr quint32 maximumLength = 1 << 28;
constexpr qint64 maximumUnread = 1 << 28;

} // namespace

oxPacketGate::oxPacketGate(QIODevice *socket, Check check, QObject *parent)
    : QIODevice(parent)
    , m_socket(socket)
    , m_check(std::move(check))
{
    socket->setParent(this);
    if (auto *tcpSocket = qobject_cast<QTcpSocket *>(socket))
        tcpSocket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QIODevice::readyRead, this, &oxPacketGate::readSocket);
    connect(socket, SIGNAL(disconnected()), this, SLOT(endConnection()));
    connect(this, &QIODevice::aboutToClose, this, &oxPacketGate::endConnection);
    open(ReadWrite | Unbuffered);
    m_packet.reserve(1); // so that they keep their memory
    m_sent.reserve(1);
}

void oxPacketGate::start()
{
    readSocket();
}

qint64 oxPacketGate::bytesAvailable() const
{
    return m_packet.size() - m_position;
}

qint64 oxPacketGate::readData(char *data, qint64 size)
{
    const int count = int(std::min(size, bytesAvailable()));
    m_isOverread |= count < size;
    memcpy(data, m_packet.constData() + m_position, size_t(count));
    m_position += count;
    return count;
}

// Ends the connection later: the host goes through its connections while it writes to one.
qint64 oxPacketGate::writeData(const char *data, qint64 size)
{
    if (m_hasOverflowed)
        return size;
    const qint64 count = m_socket->write(data, size);
    // At once: a slot may signal for long before it returns to the event loop.
    if (auto *localSocket = qobject_cast<QLocalSocket *>(m_socket))
        localSocket->flush();
    else if (auto *tcpSocket = qobject_cast<QTcpSocket *>(m_socket))
        tcpSocket->flush();
    m_hasOverflowed = m_socket->bytesToWrite() > maximumUnread;
    if (m_hasOverflowed)
        QMetaObject::invokeMethod(this, &oxPacketGate::endConnection, Qt::QueuedConnection);
    return count;
}

void oxPacketGate::sendPacket()
{
    qToBigEndian(quint32(m_sent.size() - lengthSize), m_sent.data());
    if (isOpen())
        write(m_sent);
}

// The reader may run an event loop, by a slot that it calls: then this comes back when it has returned.
void oxPacketGate::readSocket()
{
    if (m_isBusy || m_hasEnded)
        return;
    m_isBusy = true;
    while (!m_hasEnded && readPacket()) {
        if (m_isTaken) {
            Q_EMIT taken();
        } else {
            Q_EMIT readyRead();
            if (m_isOverread || bytesAvailable() > 0)
                refuse();
        }
        m_packet.resize(0);
        m_position = 0;
    }
    m_isBusy = false;
    announceEnd();
}

bool oxPacketGate::readPacket()
{
    char start[lengthSize];
    if (m_socket->peek(start, lengthSize) < lengthSize)
        return false;
    const auto length = qFromBigEndian<quint32>(start);
    if (length < minimumLength || length > maximumLength)
        return refuse();
    if (m_socket->bytesAvailable() < lengthSize + qint64(length))
        return false;
    m_packet.resize(lengthSize + int(length));
    m_socket->read(m_packet.data(), m_packet.size());
    m_position = 0;
    const Verdict result = verdict();
    m_isTaken = result == Verdict::Take;
    return result != Verdict::Refuse || refuse();
}

oxPacketGate::Verdict oxPacketGate::verdict() const
{
    QDataStream packet(QByteArray::fromRawData(m_packet.constData() + lengthSize, m_packet.size() - lengthSize));
    packet.setVersion(version);
    quint16 type = 0;
    packet >> type;
    try {
        return m_check(type, packet);
    } catch (const std::bad_alloc &) { // the size of a container, which nobody else doubts
        return Verdict::Refuse;
    }
}

bool oxPacketGate::refuse()
{
    m_hasRefused = true;
    endConnection();
    return false;
}

void oxPacketGate::endConnection()
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    close();
    m_socket->disconnect(this);
    m_socket->close();
    announceEnd();
}

// Later: whoever writes must not be deleted meanwhile either.
void oxPacketGate::announceEnd()
{
    if (m_hasEnded && !m_isBusy)
        QMetaObject::invokeMethod(this, &oxPacketGate::ended, Qt::QueuedConnection);
}
