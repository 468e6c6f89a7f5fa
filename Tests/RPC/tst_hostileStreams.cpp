#include <QAbstractEventDispatcher>
#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

#include <memory>
#include <random>

#include <unistd.h>

#include "EchoServiceMain.h"
#include "MainProcess.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxQRPCClient.h"
#include "oxQRPCServer.h"
#include "oxdObjectManager.h"

namespace {

QUrl sessionAddress()
{
    return QUrl(QStringLiteral("local:tst_hostileStreams-%1").arg(getpid()));
}

/// Instead of a main process.
bool listenAtSession(QLocalServer *server)
{
    QLocalServer::removeServer(sessionAddress().path()); // of a main process that was killed
    return server->listen(sessionAddress().path());
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

/// The index by which a call names a slot of the echo service; behind the last one where there is none.
int slotNumber(const char *signature)
{
    const QMetaObject &interface = EchoService::staticMetaObject;
    int number = 0;
    for (int i = interface.methodOffset(); i < interface.methodCount(); ++i) {
        if (interface.method(i).methodSignature() == signature)
            break;
        number += interface.method(i).methodType() != QMetaMethod::Signal;
    }
    return number;
}

template<class... Parts>
QByteArray bytesOf(const Parts &...parts)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_12);
    static_cast<void>((stream << ... << parts));
    return bytes;
}

template<class... Parts>
QByteArray packet(quint16 type, const Parts &...parts)
{
    return withLength(bytesOf(type, parts...));
}

const auto echo = QStringLiteral("EchoService");
const auto serviceList = QStringLiteral("oxQRPCServiceList");
constexpr quint16 handshake = 1;
constexpr quint16 init = 2;
constexpr quint16 initDynamic = 3;
constexpr quint16 addObject = 4;
constexpr quint16 invoke = 6;
constexpr quint16 invokeReply = 7;
constexpr quint16 propertyChange = 8;
constexpr quint16 objectList = 9;
constexpr quint16 ping = 10;
constexpr quint16 pong = 11;
constexpr quint32 endless = 0x7fffffff;

QByteArray callPacket(int operation, int index, const QVariantList &arguments, int serial = 1)
{
    return packet(invoke, echo, operation, index, arguments, serial, -1);
}

QByteArray greeting()
{
    return packet(handshake, QStringLiteral("QtRO 1.3"));
}

QByteArray noItems()
{
    return bytesOf(0);
}

/// Of the list of services, part by part as Qt Remote Objects sends it.
struct Description
{
    QString name = serviceList;
    QByteArray enumerations = noItems() + noItems(); // its own, and those of arguments
    QByteArray gadgets = noItems();
    QByteArray signalList = bytesOf(2, QByteArray("namesChanged(QStringList)"), QList<QByteArray>{"names"}, //
                                    QByteArray("emptied()"), QList<QByteArray>());
    QByteArray methods = bytesOf(1, QByteArray("count()"), QByteArray("int"), QList<QByteArray>());
    QByteArray properties =
        bytesOf(1, QByteArray("names"), QByteArray("QStringList"), QByteArray("namesChanged(QStringList)"));
    QByteArray values = bytesOf(QVariantList{QStringList()});

    QByteArray packet() const
    {
        return withLength(bytesOf(initDynamic, name, name) + enumerations + gadgets + signalList + methods + properties
                          + values);
    }
};

QByteArray signatures(const QList<QByteArray> &signatures)
{
    QByteArray list = bytesOf(signatures.size());
    for (const QByteArray &signature : signatures)
        list += bytesOf(signature, QList<QByteArray>());
    return list;
}

QByteArray propertyOf(const char *type, int count = 1)
{
    return bytesOf(count) + bytesOf(QByteArray("names"), QByteArray(type), QByteArray()).repeated(count);
}

/// Runs the event loop until nothing is left to do at once.
void settle()
{
    auto *dispatcher = QAbstractEventDispatcher::instance();
    while (dispatcher->processEvents(QEventLoop::AllEvents)) {}
}

/// What a real main process sends to one that asks for its objects, and calls.
QByteArray conversation()
{
    EchoServiceMain service;
    oxQRPCServer server;
    server.registerService(&service);
    const QUrl address(sessionAddress().toString() + QStringLiteral("-conversation"));
    if (!server.listen(address))
        qFatal("%s", qPrintable(server.errorString()));
    QLocalSocket socket;
    socket.connectToServer(address.path());
    socket.write(packet(addObject, serviceList, true) + packet(addObject, echo, true));
    settle();
    Q_EMIT service.materialsChanged({oxdMaterial(1), oxdMaterial(2)});
    Q_EMIT service.variantChanged(QVariantList{1, QStringLiteral("two")});
    settle();
    socket.write(callPacket(QMetaObject::InvokeMetaMethod, 0, {1, 2}));
    settle();
    return socket.readAll();
}

/// The connection of a secondary process that sends what a test says, and a main process in this one.
struct BareConnection
{
    BareConnection()
    {
        server.registerService(&service);
        const QUrl address(sessionAddress().toString() + QStringLiteral("-bare"));
        if (!server.listen(address))
            qFatal("%s", qPrintable(server.errorString()));
        socket.connectToServer(address.path());
    }
    /// Until then it is not accepted.
    void greet()
    {
        settle();
        socket.readAll();
    }

    EchoServiceMain service;
    oxQRPCServer server;
    QLocalSocket socket;
};

} // namespace

/// Bytes that are no conversation of Qt Remote Objects, sent to either side.
class tst_hostileStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void mainProcessGoesOn_data();
    void mainProcessGoesOn();
    void mainProcessEndsAConnectionThatIsNoCall_data();
    void mainProcessEndsAConnectionThatIsNoCall();
    void mainProcessGoesOnAfterManyKindsAtOnce();
    void callMayComeInPieces();
    void nextCallWaitsForTheSlot_data();
    void nextCallWaitsForTheSlot();
    void callThatWantsNoAnswerGetsNone();
    void answerForOneWhoWentIsDropped();
    void pingIsAnswered();
    void secondaryProcessGoesOn_data();
    void secondaryProcessGoesOn();
    void secondaryProcessTakesARightDescription();
    void secondaryProcessEndsAConnectionThatIsNoMainProcess_data();
    void secondaryProcessEndsAConnectionThatIsNoMainProcess();
    void secondaryProcessNamesATypeThatItDoesNotKnow_data();
    void secondaryProcessNamesATypeThatItDoesNotKnow();
    void secondaryProcessIsNotGivenThePropertiesOfADescription();
    void answerOfAnotherCallIsNotTaken();
    void secondaryProcessGoesOnAfterDamageOfEveryKind();

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

void tst_hostileStreams::initTestCase()
{
#define REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(REGISTER)
#undef REGISTER
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
    QTest::newRow("index after the last one") << callPacket(call, slotNumber("none()"), {1, 2});
    QTest::newRow("index of none") << callPacket(call, 1000000, {1, 2});
    QTest::newRow("write of a property") << callPacket(QMetaObject::WriteProperty, 0, {1});
    QTest::newRow("other operation") << callPacket(QMetaObject::CreateInstance, 0, {1, 2});
    QTest::newRow("endless list") << packet(invoke, echo, call, 0, quint32(0x0fffffff));
    QTest::newRow("endless list as argument")
        << packet(invoke, echo, call, 3, quint32(1), quint32(QMetaType::QVariantList), false, quint32(0x0fffffff));
    QTest::newRow("more than a call") << withLength(callPacket(call, 0, {1, 2}).mid(4) + "more");
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

void tst_hostileStreams::callMayComeInPieces()
{
    BareConnection connection;
    connection.greet();
    const QByteArray call = callPacket(QMetaObject::InvokeMetaMethod, slotNumber("sum(int,int)"), {1, 2}, 42);
    for (const char byte : call) {
        QCOMPARE(connection.socket.bytesAvailable(), 0);
        connection.socket.write(&byte, 1);
        settle();
    }
    QCOMPARE(connection.socket.readAll(), packet(invokeReply, echo, 42, QVariant(3)));
}

void tst_hostileStreams::nextCallWaitsForTheSlot_data()
{
    QTest::addColumn<bool>("isAccepted");
    QTest::newRow("on an old connection") << true;
    QTest::newRow("on a new one") << false;
}

// Also where the slot processes events, and the call arrives meanwhile.
void tst_hostileStreams::nextCallWaitsForTheSlot()
{
    QFETCH(bool, isAccepted);
    BareConnection connection;
    if (isAccepted)
        connection.greet();
    const QString first = QStringLiteral("first");
    const QString second = QStringLiteral("second");
    constexpr int call = QMetaObject::InvokeMetaMethod;
    connect(&connection.service, &EchoService::noted, &connection.socket,
            [&] { connection.socket.write(callPacket(call, slotNumber("text(QString)"), {second}, 2)); });
    connection.socket.write(callPacket(call, slotNumber("textLater(QString,int)"), {first, 200}, 1));
    settle();
    const QByteArray answers =
        packet(invokeReply, echo, 1, QVariant(first)) + packet(invokeReply, echo, 2, QVariant(second));
    QCOMPARE(connection.socket.readAll().right(answers.size()), answers);
}

void tst_hostileStreams::callThatWantsNoAnswerGetsNone()
{
    BareConnection connection;
    connection.greet();
    QSignalSpy noted(&connection.service, &EchoService::noted);
    connection.socket.write(callPacket(QMetaObject::InvokeMetaMethod, slotNumber("note(QString)"), {QString()}, -1));
    settle();
    QCOMPARE(noted.count(), 1);
    QCOMPARE(connection.socket.readAll(), QByteArray());
}

void tst_hostileStreams::answerForOneWhoWentIsDropped()
{
    BareConnection connection;
    connection.greet();
    QSignalSpy progress(&connection.service, &EchoService::progress);
    connect(&connection.service, &EchoService::progress, &connection.socket, &QLocalSocket::abort);
    const int slot = slotNumber("takeTime(int,bool)");
    const Output output = outputOf([&] {
        connection.socket.write(callPacket(QMetaObject::InvokeMetaMethod, slot, {300, true}));
        settle();
    });
    QVERIFY(progress.count() > 0); // the slot ran when it went
    QCOMPARE(output.standardError, QByteArray());
}

void tst_hostileStreams::pingIsAnswered()
{
    BareConnection connection;
    connection.greet();
    connection.socket.write(packet(ping, echo));
    settle();
    QCOMPARE(connection.socket.readAll(), packet(pong, echo));
}

void tst_hostileStreams::secondaryProcessGoesOn_data()
{
    addStreams();
    QTest::newRow("greeting of another version") << packet(handshake, QStringLiteral("QtRO 99"));
    QTest::newRow("greeting, then junk") << greeting() + withLength(randomBytes(100));
    QTest::newRow("signal of nobody") << greeting() + packet(invoke, serviceList, 0, 1000, QVariantList{1}, 1, -1);
    QTest::newRow("property of nobody") << greeting() + packet(propertyChange, serviceList, 1000, QVariant(1));
    QTest::newRow("endless list of nobody")
        << greeting() + packet(invoke, QStringLiteral("Nobody"), 0, 0, endless, randomBytes(100));
    QTest::newRow("endless property of nobody") << greeting()
            + packet(propertyChange, QStringLiteral("Nobody"), 0, quint32(QMetaType::QVariantList), false, endless,
                     randomBytes(100));
    Description withoutNames;
    withoutNames.properties = withoutNames.values = noItems();
    QTest::newRow("list of services without its property") << greeting() + withoutNames.packet() + withLength("x");
    QTest::newRow("answer to nothing") << greeting() + packet(invokeReply, serviceList, 1000, QVariant(1));
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
    QVERIFY(listenAtSession(impostor.get()));
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

void tst_hostileStreams::secondaryProcessTakesARightDescription()
{
    QLocalServer main;
    QVERIFY(listenAtSession(&main));
    connect(&main, &QLocalServer::newConnection, &main,
            [&main] { main.nextPendingConnection()->write(greeting() + Description().packet()); });
    oxQRPCClient client;
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
}

void tst_hostileStreams::secondaryProcessEndsAConnectionThatIsNoMainProcess_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray right = Description().packet();
    const auto addDescription = [](const char *name, QByteArray Description::*part, const QByteArray &bytes) {
        Description description;
        description.*part = bytes;
        QTest::newRow(name) << description.packet();
    };
    addDescription("enumeration", &Description::enumerations,
                   bytesOf(1, QByteArray("Kind"), false, false, 4, 1, QByteArray("One"), 1) + noItems());
    addDescription("enumeration of an argument", &Description::enumerations,
                   noItems() + bytesOf(1, QByteArray("Kind"), 4));
    addDescription("endless enumerations", &Description::enumerations, bytesOf(endless));
    addDescription("type of a name that is no text", &Description::gadgets, bytesOf(1, QByteArray("a\nb"), 0, 0));
    addDescription("endless types", &Description::gadgets, bytesOf(endless));
    addDescription("endless properties of a type", &Description::gadgets, bytesOf(1, QByteArray("QLocale"), endless));
    addDescription("endless enumerations of a type", &Description::gadgets,
                   bytesOf(1, QByteArray("QLocale"), 0, endless));
    addDescription("endless signals", &Description::signalList, bytesOf(endless));
    addDescription("signal without parentheses", &Description::signalList, signatures({"emptied)"}));
    addDescription("signal without an end", &Description::signalList, signatures({"emptied(int"}));
    addDescription("signal that nobody writes so", &Description::signalList, signatures({"emptied( int )"}));
    addDescription("signal of a million brackets", &Description::signalList,
                   signatures({"emptied(" + QByteArray(1 << 20, '<') + QByteArray(1 << 20, '>') + ')'}));
    addDescription("20,000 signals", &Description::signalList,
                   bytesOf(20000) + bytesOf(QByteArray("emptied()"), 0).repeated(20000));
    addDescription("endless names of parameters", &Description::signalList,
                   bytesOf(1, QByteArray("emptied()"), endless));
    addDescription("endless methods", &Description::methods, bytesOf(endless));
    addDescription("method without parentheses", &Description::methods,
                   bytesOf(1, QByteArray("count"), QByteArray("int"), QList<QByteArray>()));
    addDescription("20,000 methods", &Description::methods,
                   bytesOf(20000) + bytesOf(QByteArray("count()"), QByteArray(), 0).repeated(20000));
    addDescription("endless properties", &Description::properties, bytesOf(endless));
    addDescription("property that is an object", &Description::properties, propertyOf("QObject*"));
    Description withProperties;
    withProperties.properties = propertyOf("int", 20000);
    withProperties.values = bytesOf(20000) + bytesOf(QVariant(1)).repeated(20000);
    QTest::newRow("20,000 properties") << withProperties.packet();
    addDescription("no value", &Description::values, noItems());
    addDescription("value too many", &Description::values, bytesOf(QVariantList{QStringList(), 1}));
    addDescription("value of another type", &Description::values, bytesOf(QVariantList{1}));
    addDescription("value of no type", &Description::values, bytesOf(QVariantList{QVariant()}));
    addDescription("endless values", &Description::values, bytesOf(endless, QVariant(QStringList())));
    addDescription("value of an endless list", &Description::values,
                   bytesOf(1, quint32(QMetaType::QStringList), false, endless));
    addDescription("value that is cut", &Description::values, bytesOf(QVariantList{QStringList{"a"}}).chopped(1));
    addDescription("more than said", &Description::values, bytesOf(QVariantList{QStringList()}, 1));
    QTest::newRow("description of nobody, with an enumeration") << packet(
        initDynamic, QStringLiteral("Nobody"), QStringLiteral("Nobody"), 1, QByteArray("Kind"), false, false, 4, 0);
    QTest::newRow("second description") << right + right;
    QTest::newRow("values alone") << packet(init, serviceList, QVariantList{QStringList()});
    QTest::newRow("endless objects") << packet(objectList, endless);
    QTest::newRow("object that is cut") << packet(objectList, 1, echo, echo);
    QTest::newRow("more than the objects") << packet(objectList, 1, echo, echo, QByteArray(), 1);
    QTest::newRow("answer with an endless list")
        << right + packet(invokeReply, serviceList, 1, quint32(QMetaType::QVariantList), false, endless);
    QTest::newRow("answer that is cut") << right
            + withLength(packet(invokeReply, serviceList, 1, QVariant(QStringLiteral("a"))).mid(4).chopped(1));
    QTest::newRow("signal with the value of no property")
        << right + packet(invoke, serviceList, int(QMetaObject::InvokeMetaMethod), 1, QVariantList(), -1, 1000000);
    QTest::newRow("signal with the value of the property after the last one")
        << right + packet(invoke, serviceList, int(QMetaObject::InvokeMetaMethod), 1, QVariantList(), -1, 1);
    QTest::newRow("signal with the value of a negative property")
        << right + packet(invoke, serviceList, int(QMetaObject::InvokeMetaMethod), 1, QVariantList(), -1, -1000000);
    QTest::newRow("method in place of a signal")
        << right + packet(invoke, serviceList, int(QMetaObject::InvokeMetaMethod), 2, QVariantList(), -1, -1);
    QTest::newRow("signal with an argument of another type")
        << right + packet(invoke, serviceList, int(QMetaObject::InvokeMetaMethod), 0, QVariantList{1}, -1, -1);
    QTest::newRow("property of another type") << right + packet(propertyChange, serviceList, 0, QVariant(1));
    QTest::newRow("property after the last one") << right + packet(propertyChange, serviceList, 1, QVariant());
    QTest::newRow("property that is none") << right + packet(propertyChange, serviceList, 1000, QVariant());
    QTest::newRow("request for an object") << packet(addObject, serviceList, true);
    QTest::newRow("ping") << packet(ping, serviceList);
}

void tst_hostileStreams::secondaryProcessEndsAConnectionThatIsNoMainProcess()
{
    QFETCH(QByteArray, bytes);
    QLocalServer impostor;
    QVERIFY(listenAtSession(&impostor));
    QPointer<QLocalSocket> socket;
    connect(&impostor, &QLocalServer::newConnection, &impostor, [&] {
        socket = impostor.nextPendingConnection();
        socket->write(greeting() + bytes);
    });
    oxQRPCClient client;
    const QByteArray lines = outputOf([&] {
                                 QVERIFY(client.connectToHost(sessionAddress()));
                                 QTRY_VERIFY(socket && socket->state() == QLocalSocket::UnconnectedState);
                             }).standardError;
    const QString address = sessionAddress().toString();
    QVERIFY2(lines.contains("oxQRPCClient: what answers at " + address.toUtf8() + " is no main process\n"), lines);
    QVERIFY(!client.isConnected());
}

void tst_hostileStreams::secondaryProcessNamesATypeThatItDoesNotKnow_data()
{
    QTest::addColumn<QByteArray>("bytes");
    Description withClass;
    withClass.gadgets = bytesOf(1, QByteArray("QVector<Nobody>"), 0, 0);
    QTest::newRow("class of an argument") << withClass.packet();
    Description withProperty;
    withProperty.properties = propertyOf("QVector<Nobody>");
    withProperty.values = bytesOf(QVariantList{QVariant()});
    QTest::newRow("of a property") << withProperty.packet();
}

// Not a stranger then, but a main process whose types were not registered. Once, as with a stranger.
void tst_hostileStreams::secondaryProcessNamesATypeThatItDoesNotKnow()
{
    QFETCH(QByteArray, bytes);
    QLocalServer main;
    QVERIFY(listenAtSession(&main));
    int connections = 0;
    connect(&main, &QLocalServer::newConnection, &main, [&] {
        ++connections;
        main.nextPendingConnection()->write(greeting() + bytes);
    });
    oxQRPCClient client;
    const auto linesOfTwoConnections = [&] {
        connections = 0;
        return outputOf([&] {
                   QVERIFY(client.connectToHost(sessionAddress()));
                   QTRY_VERIFY_WITH_TIMEOUT(connections > 1, 30000);
               })
            .standardError;
    };
    const QByteArray start = "oxQRPCClient: what answers at " + sessionAddress().toString().toUtf8();
    QCOMPARE(linesOfTwoConnections(), start + " offers a service with the type 'QVector<Nobody>': register it here\n");
    QVERIFY(!client.isConnected());
    bytes = packet(ping, serviceList);
    QCOMPARE(linesOfTwoConnections(), start + " is no main process\n");
}

// Qt Remote Objects signals the values of properties with any signal that the description names.
void tst_hostileStreams::secondaryProcessIsNotGivenThePropertiesOfADescription()
{
    QLocalServer impostor;
    QVERIFY(listenAtSession(&impostor));
    Description list;
    list.values = bytesOf(QVariantList{QStringList{echo}});
    Description object;
    object.name = echo;
    object.signalList = signatures({"noted(QString)"});
    object.properties = bytesOf(1, QByteArray("number"), QByteArray("int"), QByteArray("noted(QString)"));
    object.values = bytesOf(QVariantList{1});
    connect(&impostor, &QLocalServer::newConnection, &impostor, [&] {
        impostor.nextPendingConnection()->write(
            greeting() + list.packet() + object.packet()
            + packet(invoke, echo, int(QMetaObject::InvokeMetaMethod), 0, QVariantList{QStringLiteral("a")}, -1, 0));
    });
    EchoService service;
    const QSignalSpy notes(&service, &EchoService::noted);
    oxQRPCClient client;
    client.registerService(&service);
    QVERIFY(client.connectToHost(sessionAddress()));
    QTRY_COMPARE(notes.count(), 1);
    QCOMPARE(notes.at(0), QVariantList{QStringLiteral("a")});
}

void tst_hostileStreams::answerOfAnotherCallIsNotTaken()
{
    QLocalServer impostor;
    QVERIFY(listenAtSession(&impostor));
    Description list;
    list.values = bytesOf(QVariantList{QStringList{echo}});
    Description object;
    object.name = echo;
    object.methods = bytesOf(1, QByteArray("text(QString)"), QByteArray("QString"), QList<QByteArray>());
    connect(&impostor, &QLocalServer::newConnection, &impostor, [&] {
        QLocalSocket *socket = impostor.nextPendingConnection();
        socket->write(greeting() + list.packet() + object.packet());
        connect(socket, &QLocalSocket::readyRead, socket, [socket] {
            qint32 serial = 0;
            QDataStream(socket->readAll().right(8)) >> serial; // the end of a call
            socket->write(packet(invokeReply, echo, serial + 1, QVariant(QStringLiteral("other")))
                          + packet(invokeReply, echo, serial, QVariant(QStringLiteral("right")))
                          + packet(invokeReply, echo, serial, QVariant(QStringLiteral("again"))));
        });
    });
    EchoService service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    QCOMPARE(service.text(QStringLiteral("a")), QStringLiteral("right"));
    QCOMPARE(service.text(QStringLiteral("a")), QStringLiteral("right"));
    QVERIFY(client.isConnected());
}

void tst_hostileStreams::secondaryProcessGoesOnAfterDamageOfEveryKind()
{
    const QByteArray right = conversation();
    QVERIFY(right.contains("materialsBack(QList<oxdMaterial>)"));
    QLocalServer impostor;
    QVERIFY(listenAtSession(&impostor));
    std::mt19937 random(11);
    int connectedCount = 0;
    outputOf([&] {
        for (int i = 0; i < 1000; ++i) {
            QByteArray bytes = right;
            for (int changes = int(random() % 4); changes > 0; --changes)
                bytes[int(random() % unsigned(bytes.size()))] = char(random());
            EchoService service;
            oxQRPCClient client;
            client.registerService(&service);
            client.connectToHost(sessionAddress());
            settle();
            const std::unique_ptr<QLocalSocket> socket(impostor.nextPendingConnection());
            QVERIFY(socket);
            socket->write(bytes);
            settle();
            connectedCount += client.isConnected();
        }
    });
    QVERIFY(connectedCount > 0);
    QVERIFY(connectedCount < 1000);
}

QTEST_GUILESS_MAIN(tst_hostileStreams)
#include "tst_hostileStreams.moc"
