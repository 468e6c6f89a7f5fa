#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

#include <functional>

/// Stands between a socket and Qt Remote Objects, which believes whatever it reads: lets packets
/// through one by one, when they are whole and a check agrees, or has them taken by others. Anything
/// else ends the connection, and so does another side that leaves 256 MB unread.
class oxPacketGate : public QIODevice
{
    Q_OBJECT

public:
    /// What Qt Remote Objects calls the packets.
    enum Type : quint16 {
        Handshake = 1,
        InitDynamic = 3,
        AddObject,
        RemoveObject,
        Invoke,
        InvokeReply,
        PropertyChange,
        ObjectList,
        Ping,
        Pong
    };

    enum class Verdict { Refuse, Pass, Take };

    /// What is done with a packet: its type, and a stream of the rest.
    using Check = std::function<Verdict(quint16 type, QDataStream &packet)>;

    static constexpr QDataStream::Version version = QDataStream::Qt_5_12; // that of Qt Remote Objects

    /// Takes @p socket, a connected QLocalSocket or QTcpSocket, over.
    oxPacketGate(QIODevice *socket, Check check, QObject *parent);

    /// Whether it was ended here, by something that is no packet.
    bool hasRefused() const { return m_hasRefused; }
    /// Whether it was ended here, because too much is unread.
    bool hasOverflowed() const { return m_hasOverflowed; }

    /// Lets through what came so far. The reader calls it when it is ready.
    void start();

    /// Sends a packet of our own; nothing, when the connection is over.
    template<class... Parts>
    void send(Type type, const Parts &...parts)
    {
        m_sent.resize(0);
        QDataStream stream(&m_sent, WriteOnly);
        stream.setVersion(version);
        stream << quint32(0) << quint16(type);
        static_cast<void>((stream << ... << parts));
        sendPacket();
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;

Q_SIGNALS:
    /// The check has taken a packet. Nobody else gets it, and the next one waits meanwhile.
    void taken();
    /// The connection is over. Emitted by the event loop, never while a packet is worked on.
    void ended();

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *data, qint64 size) override;

private Q_SLOTS:
    void readSocket();
    void endConnection();

private:
    void sendPacket();
    bool readPacket();
    Verdict verdict() const;
    bool refuse();
    void announceEnd();

    QIODevice *m_socket;
    Check m_check;
    QByteArray m_packet; // with its length in front
    QByteArray m_sent;   // the same; its memory is used again
    int m_position = 0;
    bool m_isTaken = false;
    bool m_isBusy = false;
    bool m_isOverread = false;
    bool m_hasRefused = false;
    bool m_hasOverflowed = false;
    bool m_hasEnded = false;
};
