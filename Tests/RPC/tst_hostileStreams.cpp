#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

#include <random>

#include <unistd.h>

#include "EchoService.h"
#include "MainProcess.h"
#include "OutputCapture.h"
#include "oxQRPCClient.h"

namespace {

QUrl sessionAddress()
{
    return QUrl(QStringLiteral("local:tst_hostileStreams-%1").arg(getpid()));
}

QByteArray randomBytes(int size)
{
    std::mt19937 random(42);
    QByteArray bytes(size, Qt::Uninitialized);
    std::generate(bytes.begin(), bytes.end(), [&] { return char(random()); });
    return bytes;
}

QByteArray withLength(const QByteArray &packet)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << quint32(packet.size());
    return bytes + packet;
}

template<class... Parts>
QByteArray packet(quint16 type, const Parts &...parts)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_12);
    stream << type;
    static_cast<void>((stream << ... << parts));
    return withLength(bytes);
}

const auto echo = QStringLiteral("EchoService");
constexpr quint16 addObject = 4;
constexpr quint16 invoke = 6;
constexpr quint16 propertyChange = 8;

QByteArray callPacket(int operation, int index, const QVariantList &arguments)
{
    return packet(invoke, echo, operation, index, arguments, 1, -1);
}

} // namespace

/// Bytes that are no conversation of Qt Remote Objects, sent to either side.
class tst_hostileStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mainProcessGoesOn_data();
    void mainProcessGoesOn();
    void mainProcessEndsAConnectionThatIsNoCall_data();
    void mainProcessEndsAConnectionThatIsNoCall();
    void mainProcessGoesOnAfterManyKindsAtOnce();
    void secondaryProcessGoesOn_data();
    void secondaryProcessGoesOn();

private:
    static void addStreams();
};

void tst_hostileStreams::addStreams()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << QByteArray("x");
    QTest::newRow("random") << randomBytes(5000);
    QTest::newRow("text") << QByteArray("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n");
    QTest::newRow("zeros") << QByteArray(100000, '\0');
    QTest::newRow("ones") << QByteArray(100000, '\xff');
    QTest::newRow("100 MB") << randomBytes(1 << 20).repeated(100);
    QTest::newRow("huge length") << QByteArray("\xff\xff\xff\xf0", 4) + randomBytes(1000);
    QTest::newRow("length, then junk") << withLength(randomBytes(100)) + randomBytes(1000);
    QTest::newRow("type, then junk") << packet(invoke) + randomBytes(100);
    QTest::newRow("unknown type") << packet(77, echo);
    QTest::newRow("no name") << packet(invoke);
    QTest::newRow("huge name") << packet(invoke, quint32(0xfffffff0), 0);
    QTest::newRow("half a packet") << callPacket(0, 0, {1, 2}).chopped(7);
    QTest::newRow("packet and a half") << packet(addObject, echo, true) + callPacket(0, 0, {1, 2}).chopped(7);
    QTest::newRow("more than said") << packet(addObject, echo, true, randomBytes(20));
}

void tst_hostileStreams::mainProcessGoesOn_data()
{
    addStreams();
}

void tst_hostileStreams::mainProcessGoesOn()
{
    QFETCH(QByteArray, bytes);
    MainProcess main(sessionAddress());
    EchoService service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);
    QVERIFY(client.connectToHost(main.address()));
    QVERIFY(client.waitForConnected(30000));

    QLocalSocket socket;
    socket.connectToServer(main.address().path());
    QVERIFY(socket.waitForConnected());
    socket.write(bytes);
    QTRY_VERIFY_WITH_TIMEOUT(socket.bytesToWrite() == 0 || socket.state() != QLocalSocket::ConnectedState, 60000);

    QCOMPARE(service.sum(1, 2), 3); // while it waits for the rest
    socket.abort();
    QCOMPARE(service.count(5), 5);
    QVERIFY(main.isRunning());
    QVERIFY(client.isConnected());
}

void tst_hostileStreams::mainProcessEndsAConnectionThatIsNoCall_data()
{
    QTest::addColumn<QByteArray>("bytes");
    constexpr int call = QMetaObject::InvokeMetaMethod;
    QTest::newRow("random") << randomBytes(5000);
    QTest::newRow("huge length") << QByteArray("\xff\xff\xff\xf0", 4);
    QTest::newRow("no type") << QByteArray(4, '\0');
    QTest::newRow("answer") << packet(7, echo, 1, QVariant(1));
    QTest::newRow("no arguments") << callPacket(call, 0, {});
    QTest::newRow("too few arguments") << callPacket(call, 0, {1});
    QTest::newRow("too many arguments") << callPacket(call, 0, {1, 2, 3});
    QTest::newRow("argument of another type") << callPacket(call, 1, {42});
    QTest::newRow("argument of no type") << callPacket(call, 1, {QVariant()});
    QTest::newRow("negative index") << callPacket(call, -1, {1, 2});
    QTest::newRow("index of none") << callPacket(call, 1000000, {1, 2});
    QTest::newRow("write of a property") << callPacket(QMetaObject::WriteProperty, 0, {1});
    QTest::newRow("other operation") << callPacket(QMetaObject::CreateInstance, 0, {1, 2});
    QTest::newRow("endless list") << packet(invoke, echo, call, 0, quint32(0x0fffffff));
    QTest::newRow("endless list as argument")
        << packet(invoke, echo, call, 3, quint32(1), quint32(QMetaType::QVariantList), false, quint32(0x0fffffff));
    QTest::newRow("argument that is cut")
        << withLength(callPacket(call, 1, {QStringLiteral("text")}).mid(4).chopped(10));
    QTest::newRow("type of an argument that nobody knows")
        << packet(invoke, echo, call, 3, quint32(1), quint32(QMetaType::User), false, QByteArray("Nobody"), 1, 1, -1);
}

void tst_hostileStreams::mainProcessEndsAConnectionThatIsNoCall()
{
    QFETCH(QByteArray, bytes);
    MainProcess main(sessionAddress());
    QLocalSocket socket;
    socket.connectToServer(main.address().path());
    QVERIFY(socket.waitForConnected());
    socket.write(bytes);
    QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
    QVERIFY(main.isRunning());

    socket.connectToServer(main.address().path());
    QTRY_VERIFY(socket.bytesAvailable() > 0);
}

void tst_hostileStreams::mainProcessGoesOnAfterManyKindsAtOnce()
{
    MainProcess main(sessionAddress());
    std::mt19937 random(7);
    const QByteArray good = packet(addObject, echo, true) + callPacket(0, 0, {1, 2})
        + callPacket(0, 1, {QStringLiteral("text")}) + callPacket(0, 3, {QVariantList{1, QStringLiteral("two")}});
    for (int i = 0; i < 500; ++i) {
        QByteArray bytes = good;
        for (int changes = 1 + int(random() % 3); changes > 0; --changes)
            bytes[int(random() % unsigned(bytes.size()))] = char(random());
        QLocalSocket socket;
        socket.connectToServer(main.address().path());
        QVERIFY2(socket.waitForConnected(), qPrintable(QString::number(i)));
        socket.write(bytes);
        QVERIFY(socket.waitForBytesWritten());
        QTRY_VERIFY(socket.bytesAvailable() > 0 || socket.state() != QLocalSocket::ConnectedState);
        socket.abort();
    }
    EchoService service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);
    QVERIFY(client.connectToHost(main.address()));
    QVERIFY(client.waitForConnected(30000));
    QCOMPARE(service.sum(1, 2), 3);
}

void tst_hostileStreams::secondaryProcessGoesOn_data()
{
    addStreams();
    constexpr quint16 handshake = 1;
    const QByteArray greeting = packet(handshake, QStringLiteral("QtRO 1.3"));
    const auto list = QStringLiteral("oxQRPCServiceList");
    QTest::newRow("greeting of another version") << packet(handshake, QStringLiteral("QtRO 99"));
    QTest::newRow("greeting, then junk") << greeting + withLength(randomBytes(100));
    QTest::newRow("signal of nobody") << greeting + packet(invoke, list, 0, 1000, QVariantList{1}, 1, -1);
    QTest::newRow("property of nobody") << greeting + packet(propertyChange, list, 1000, QVariant(1));
    QTest::newRow("endless list of nobody")
        << greeting + packet(invoke, QStringLiteral("Nobody"), 0, 0, quint32(0x7fffffff), randomBytes(100));
    QTest::newRow("endless property of nobody") << greeting
            + packet(propertyChange, QStringLiteral("Nobody"), 0, quint32(QMetaType::QVariantList), false,
                     quint32(0x7fffffff), randomBytes(100));
    QTest::newRow("answer to nothing") << greeting + packet(7, list, 1000, QVariant(1));
}

void tst_hostileStreams::secondaryProcessGoesOn()
{
    QFETCH(QByteArray, bytes);
    EchoService service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);

    // A main process that sends nonsense to each that connects.
    auto impostor = std::make_unique<QLocalServer>();
    QLocalServer::removeServer(sessionAddress().path()); // of a main process that was killed
    QVERIFY(impostor->listen(sessionAddress().path()));
    int count = 0;
    connect(impostor.get(), &QLocalServer::newConnection, this, [&] {
        ++count;
        impostor->nextPendingConnection()->write(bytes);
    });
    const QByteArray lines = outputOf([&] {
                                 QVERIFY(client.connectToHost(sessionAddress()));
                                 QTRY_VERIFY(count > 0);
                                 QTest::qWait(0);
                                 service.sum(1, 2);
                             }).standardError;
    QVERIFY2(lines.contains("oxQRPCClient: not connected, EchoService::sum(int,int) does nothing\n"), lines);
    QVERIFY(!client.isConnected());
    impostor.reset();

    MainProcess main(sessionAddress());
    outputOf([&] { client.waitForConnected(30000); }); // a line may still come
    QVERIFY(client.isConnected());
    QCOMPARE(service.sum(1, 2), 3);
}

QTEST_GUILESS_MAIN(tst_hostileStreams)
#include "tst_hostileStreams.moc"
