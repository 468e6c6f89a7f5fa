#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QNetworkInterface>
#include <QSemaphore>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "EchoServiceMain.h"
#include "MainProcess.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxQRPCClient.h"

namespace {

QUrl sessionAddress()
{
    return QUrl(QStringLiteral("local:tst_oxQRPCServer-%1").arg(getpid()));
}

QString socketFile()
{
    return QDir::tempPath() + QLatin1Char('/') + sessionAddress().path();
}

// What another user gets who connects: the number of an error, or 0. Only root can try.
int errorOfAnotherUser(const QByteArray &file)
{
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (setuid(nobody) != 0)
            _exit(255);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy_n(file.constData(), std::min<size_t>(size_t(file.size()), sizeof(address.sun_path) - 1),
                    address.sun_path);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        _exit(connect(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0 ? 0 : errno);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

bool canConnect(const QString &host, int port)
{
    QTcpSocket socket;
    socket.connectToHost(host, quint16(port));
    return socket.waitForConnected(5000);
}

int openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

int connections(const oxQRPCServer &server)
{
    const QObjectList children = server.children();
    return int(std::count_if(children.cbegin(), children.cend(), [](const QObject *child) {
        return QLatin1String(child->metaObject()->className()) == QLatin1String("oxServerConnection");
    }));
}

class WithEnumeration : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "WithEnumeration")

public:
    enum Kind { One };
    Q_ENUM(Kind)
};

class WithPrivateSlot : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "WithPrivateSlot")

public:
    int hiddenCalls = 0;

private Q_SLOTS:
    int hidden() { return ++hiddenCalls; }

public Q_SLOTS:
    virtual int shown() { return call<int>(staticMetaObject, "shown()"); }
    int callHidden() { return call<int>(staticMetaObject, "hidden()"); }
};

class WithPrivateSlotMain : public WithPrivateSlot
{
public:
    int shown() override { return 7; }
};

class WithProperties : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "WithProperties")
    Q_PROPERTY(QString title MEMBER m_title NOTIFY titleChanged)
    Q_PROPERTY(QVariant value MEMBER m_value NOTIFY valueChanged)
    Q_PROPERTY(int size MEMBER m_size NOTIFY resized)

public Q_SLOTS:
    /// QLocale describes its enumerations.
    virtual QLocale locale(const QLocale &like) { return call<QLocale>(staticMetaObject, "locale(QLocale)", like); }

Q_SIGNALS:
    void titleChanged(const QString &title);
    void valueChanged(const QVariant &value);
    void resized();

private:
    QString m_title;
    QVariant m_value;
    int m_size = 0;
};

class WithPropertiesMain : public WithProperties
{
public:
    QLocale locale(const QLocale &like) override { return like; }
};

class OfAnotherName : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxNobody")
};

} // namespace

class tst_oxQRPCServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void localSocketIsOpenToTheUserAlone();
    void nameInUseIsRefusedAndTheFirstServerGoesOn();
    void socketOfAProcessThatDiedIsReplaced();
    void socketGoesWithTheServer();
    void tcpIsOnTheLoopbackInterfaceAlone_data();
    void tcpIsOnTheLoopbackInterfaceAlone();
    void tcpPortInUseIsRefused();
    void tcpPortIsTakenWhenItIsGiven();
    void addressThatIsNoneIsRefused_data();
    void addressThatIsNoneIsRefused();
    void socketFileHasALongestName();
    void listensOnceOnly();
    void listensAfterAFailure();
    void serviceIsOfferedOnceOnly();
    void serviceWithoutInterfaceClassIsRefused();
    void serviceWithAnEnumerationIsRefused();
    void privateSlotsAreNotCalled();
    void signalsOfPropertiesTravel();
    void signalArrivesWhileItsSlotRuns_data();
    void signalArrivesWhileItsSlotRuns();
    void deletedServiceIsNoLongerOffered();
    void callOfADeletedServiceDoesNothing();
    void connectionThatDoesNotReadIsEnded();
    void endedConnectionsAreDropped();
    void clientsThatCameAndWentAreDropped();
    void serverEndsItsConnections();
    void addressThatIsNoneEndsTheConnectionBefore();
    void addressBeforeIsNotTriedAgain();
};

void tst_oxQRPCServer::localSocketIsOpenToTheUserAlone()
{
    oxQRPCServer server;
    QVERIFY(server.listen(sessionAddress()));
    struct stat status = {};
    QCOMPARE(stat(qPrintable(socketFile()), &status), 0);
    QVERIFY(S_ISSOCK(status.st_mode));
    QCOMPARE(status.st_uid, getuid());
    QCOMPARE(status.st_mode & 0077, 0U);
    if (geteuid() == 0)
        QCOMPARE(errorOfAnotherUser(QFile::encodeName(socketFile())), EACCES);
}

void tst_oxQRPCServer::nameInUseIsRefusedAndTheFirstServerGoesOn()
{
    MainProcess first(sessionAddress());
    oxQRPCServer second;
    QVERIFY(!second.listen(sessionAddress()));
    QCOMPARE(second.errorString(), QStringLiteral("another process listens at ") + sessionAddress().toString());
    QVERIFY(second.address().isEmpty());

    EchoService echo;
    oxQRPCClient client;
    echo.setClient(&client);
    client.registerService(&echo);
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    QCOMPARE(echo.sum(1, 2), 3);
}

void tst_oxQRPCServer::socketOfAProcessThatDiedIsReplaced()
{
    MainProcess(sessionAddress()).kill();
    QVERIFY(QFileInfo::exists(socketFile()));
    oxQRPCServer server;
    QVERIFY2(server.listen(sessionAddress()), qPrintable(server.errorString()));
    oxQRPCClient client;
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
}

void tst_oxQRPCServer::socketGoesWithTheServer()
{
    {
        oxQRPCServer server;
        QVERIFY(server.listen(sessionAddress()));
    }
    QVERIFY(!QFileInfo::exists(socketFile()));
}

void tst_oxQRPCServer::tcpIsOnTheLoopbackInterfaceAlone_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("localhost") << QStringLiteral("tcp://localhost:0");
    QTest::newRow("no host") << QStringLiteral("tcp://:0");
    QTest::newRow("by number") << QStringLiteral("tcp://127.0.0.1:0");
}

void tst_oxQRPCServer::tcpIsOnTheLoopbackInterfaceAlone()
{
    QFETCH(QString, address);
    oxQRPCServer server;
    QVERIFY2(server.listen(QUrl(address)), qPrintable(server.errorString()));
    QCOMPARE(server.address().scheme(), QStringLiteral("tcp"));
    QCOMPARE(server.address().host(), QStringLiteral("127.0.0.1"));
    QVERIFY(server.address().port() > 0);

    QVERIFY(canConnect(QStringLiteral("127.0.0.1"), server.address().port()));
    QVERIFY(!canConnect(QStringLiteral("127.0.0.2"), server.address().port()));
    const QList<QHostAddress> addresses = QNetworkInterface::allAddresses();
    for (const QHostAddress &other : addresses) {
        if (!other.isLoopback())
            QVERIFY2(!canConnect(other.toString(), server.address().port()), qPrintable(other.toString()));
    }
}

void tst_oxQRPCServer::tcpPortInUseIsRefused()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    oxQRPCServer server;
    QVERIFY(!server.listen(QUrl(QStringLiteral("tcp://localhost:%1").arg(other.serverPort()))));
    QCOMPARE(server.errorString(), QStringLiteral("The bound address is already in use"));
    QVERIFY(server.address().isEmpty());
}

void tst_oxQRPCServer::tcpPortIsTakenWhenItIsGiven()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    const int port = other.serverPort();
    other.close();
    oxQRPCServer server;
    QVERIFY2(server.listen(QUrl(QStringLiteral("tcp://localhost:%1").arg(port))), qPrintable(server.errorString()));
    QCOMPARE(server.address(), QUrl(QStringLiteral("tcp://127.0.0.1:%1").arg(port)));
}

void tst_oxQRPCServer::addressThatIsNoneIsRefused_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("error");
    const QString noAddress = QStringLiteral("'%1' is no address: use local:name or tcp://host:port");
    for (const char *address : {"", "local:", "name", "http://localhost:80", "tcp:", "tcp://localhost"})
        QTest::newRow(address) << QString::fromLatin1(address) << noAddress.arg(QLatin1String(address));
    QTest::newRow("a name") << QStringLiteral("tcp://somewhere:1") << QStringLiteral("'somewhere' is no IP address");
    QTest::newRow("of another machine") << QStringLiteral("tcp://192.0.2.1:0")
                                        << QStringLiteral("The address is not available");
    QTest::newRow("too long") << QStringLiteral("local:") + QString(200, QLatin1Char('x'))
                              << QStringLiteral("'%1/%2' is too long for a local socket")
                                     .arg(QDir::tempPath(), QString(200, QLatin1Char('x')));
}

void tst_oxQRPCServer::addressThatIsNoneIsRefused()
{
    QFETCH(QString, address);
    QFETCH(QString, error);
    oxQRPCServer server;
    QVERIFY(!server.listen(QUrl(address)));
    QCOMPARE(server.errorString(), error);
    QVERIFY(server.address().isEmpty());
}

// The system has room for 108 bytes, with the zero at the end.
void tst_oxQRPCServer::socketFileHasALongestName()
{
    const auto addressOfPath = [](int bytes) {
        QString name = sessionAddress().path();
        const int folder = QFile::encodeName(QDir::tempPath()).size() + 1;
        name += QString(bytes - folder - QFile::encodeName(name).size(), QLatin1Char('x'));
        return QUrl(QStringLiteral("local:") + name);
    };
    oxQRPCServer server;
    QVERIFY(!server.listen(addressOfPath(108)));
    QVERIFY2(server.errorString().endsWith(QStringLiteral("' is too long for a local socket")),
             qPrintable(server.errorString()));
    QVERIFY2(server.listen(addressOfPath(107)), qPrintable(server.errorString()));
    oxQRPCClient client;
    QVERIFY(client.connectToHost(server.address()));
    QVERIFY(client.waitForConnected(30000));
}

void tst_oxQRPCServer::listensOnceOnly()
{
    oxQRPCServer server;
    QVERIFY(server.address().isEmpty());
    QVERIFY(server.listen(sessionAddress()));
    QCOMPARE(server.address(), sessionAddress());
    QVERIFY(!server.listen(QUrl(QStringLiteral("tcp://localhost:0"))));
    QCOMPARE(server.errorString(), QStringLiteral("already listening at ") + sessionAddress().toString());
    QCOMPARE(server.address(), sessionAddress());
}

void tst_oxQRPCServer::listensAfterAFailure()
{
    oxQRPCServer server;
    QVERIFY(!server.listen(QUrl(QStringLiteral("nowhere"))));
    QVERIFY(server.listen(sessionAddress()));
    oxQRPCClient client;
    QVERIFY(client.connectToHost(server.address()));
    QVERIFY(client.waitForConnected(30000));
}

void tst_oxQRPCServer::serviceIsOfferedOnceOnly()
{
    oxQRPCServer server;
    EchoServiceMain echo;
    EchoServiceMain another;
    QVERIFY(server.registerService(&echo));
    QVERIFY(!server.registerService(&echo));
    QVERIFY(!server.registerService(&another));
}

void tst_oxQRPCServer::serviceWithoutInterfaceClassIsRefused()
{
    oxQRPCServer server;
    oxBaseService plain;
    QVERIFY(!server.registerService(&plain));
    OfAnotherName other;
    QVERIFY(!server.registerService(&other));
}

void tst_oxQRPCServer::serviceWithAnEnumerationIsRefused()
{
    oxQRPCServer server;
    WithEnumeration service;
    QVERIFY(!server.registerService(&service));
}

void tst_oxQRPCServer::privateSlotsAreNotCalled()
{
    WithPrivateSlotMain main;
    oxQRPCServer server;
    QVERIFY(server.registerService(&main));
    QVERIFY(server.listen(sessionAddress()));
    WithPrivateSlot service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);
    QVERIFY(client.connectToHost(server.address()));
    QVERIFY(client.waitForConnected(30000));
    QCOMPARE(service.shown(), 7);

    const QByteArray lines = outputOf([&] { service.callHidden(); }).standardError;
    QVERIFY2(lines.contains("oxQRPCServer: what a connection sent is no call, it was ended\n"), lines);
    QCOMPARE(main.hiddenCalls, 0);
}

void tst_oxQRPCServer::signalsOfPropertiesTravel()
{
    WithProperties service;
    oxQRPCClient client;
    service.setClient(&client);
    client.registerService(&service);
    const QSignalSpy titles(&service, &WithProperties::titleChanged);
    const QSignalSpy values(&service, &WithProperties::valueChanged);
    const QSignalSpy sizes(&service, &WithProperties::resized);

    WithPropertiesMain serviceMain;
    MainThread main;
    main.offer(&serviceMain);
    QVERIFY(client.connectToHost(main.address()));
    QVERIFY(client.waitForConnected(30000));
    main.run([&] {
        serviceMain.setProperty("title", QStringLiteral("Grüße"));
        serviceMain.setProperty("value", QVariantList{1, QStringLiteral("two")});
        serviceMain.setProperty("size", 4);
    });
    QTRY_COMPARE(sizes.count(), 1);
    QCOMPARE(titles.count(), 1);
    QCOMPARE(titles.value(0), QVariantList{QStringLiteral("Grüße")});
    const QVariantList value{1, QStringLiteral("two")};
    QCOMPARE(values.value(0).value(0).value<QVariant>(), QVariant(value));
    QCOMPARE(service.locale(QLocale(QLocale::German, QLocale::Austria)), QLocale(QLocale::German, QLocale::Austria));
    QVERIFY(client.isConnected());
}

void tst_oxQRPCServer::signalArrivesWhileItsSlotRuns_data()
{
    QTest::addColumn<QUrl>("address");
    QTest::newRow("local") << sessionAddress();
    QTest::newRow("tcp") << QUrl(QStringLiteral("tcp://localhost:0"));
}

// Not only when the slot has returned to the event loop.
void tst_oxQRPCServer::signalArrivesWhileItsSlotRuns()
{
    QFETCH(QUrl, address);
    EchoServiceMain echoMain;
    MainThread main(address);
    main.offer(&echoMain);
    EchoService echo;
    oxQRPCClient client;
    client.registerService(&echo);
    QVERIFY(client.connectToHost(main.address()));
    QVERIFY(client.waitForConnected(30000));

    QSemaphore received;
    connect(&echo, &EchoService::noted, &echo, [&received] { received.release(); });
    std::atomic<bool> isOver = false;
    bool isInTime = false;
    const auto slot = [&] {
        Q_EMIT echoMain.noted(QString());
        isInTime = received.tryAcquire(1, 30000);
        isOver = true;
    };
    QMetaObject::invokeMethod(&echoMain, slot, Qt::QueuedConnection);
    QTRY_VERIFY(isOver);
    QVERIFY(isInTime);
}

void tst_oxQRPCServer::deletedServiceIsNoLongerOffered()
{
    EchoService echo;
    oxQRPCClient client;
    EchoServiceMain anew;
    auto *echoMain = new EchoServiceMain;
    MainThread main;
    main.offer(echoMain);
    echo.setClient(&client);
    client.registerService(&echo);
    QVERIFY(client.connectToHost(main.address()));
    QVERIFY(client.waitForConnected(30000));
    QCOMPARE(echo.sum(1, 2), 3);

    main.run([&] { delete echoMain; });
    const auto lineOfACall = [&] { return outputOf([&] { echo.sum(1, 2); }).standardError; };
    QTRY_COMPARE(lineOfACall(),
                 QByteArray("oxQRPCClient: not offered by the main process, EchoService::sum(int,int) does nothing\n"));

    EchoService lateEcho;
    oxQRPCClient late;
    late.registerService(&lateEcho);
    QVERIFY(late.connectToHost(main.address()));
    QVERIFY(late.waitForConnected(30000)); // it does not wait for what is gone

    main.offer(&anew);
    const auto isThere = [&] {
        int sum = 0;
        outputOf([&] { sum = echo.sum(1, 2); });
        return sum == 3;
    };
    QTRY_VERIFY(isThere());
}

void tst_oxQRPCServer::callOfADeletedServiceDoesNothing()
{
    oxQRPCServer server;
    auto echoMain = std::make_unique<EchoServiceMain>();
    server.registerService(echoMain.get());
    QVERIFY(server.listen(sessionAddress()));
    EchoService echo;
    oxQRPCClient client;
    echo.setClient(&client);
    client.registerService(&echo);
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    echoMain.reset();
    QCOMPARE(outputOf([&] { echo.note(QStringLiteral("sent before the client hears of it")); }).standardError,
             QByteArray());
    QTRY_VERIFY(outputOf([&] { echo.note(QString()); }).standardError.contains("not offered"));
    QVERIFY(client.isConnected());
}

void tst_oxQRPCServer::connectionThatDoesNotReadIsEnded()
{
    oxQRPCServer server;
    EchoServiceMain echoMain;
    server.registerService(&echoMain);
    QVERIFY(server.listen(sessionAddress()));
    EchoService echo;
    oxQRPCClient client;
    client.registerService(&echo);
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    const QSignalSpy notes(&echo, &EchoService::noted);

    QLocalSocket socket;
    socket.setReadBufferSize(1);
    socket.connectToServer(sessionAddress().path());
    QVERIFY(socket.waitForConnected());
    QTRY_COMPARE(connections(server), 2);
    QByteArray request;
    QDataStream(&request, QIODevice::WriteOnly) << quint16(4) << QStringLiteral("EchoService") << true;
    QDataStream(&socket).writeBytes(request.constData(), uint(request.size()));
    QTRY_COMPARE(socket.bytesToWrite(), 0);
    constexpr int count = 160;
    const QString twoMegabytes(1 << 20, QLatin1Char('x'));
    const QByteArray lines = outputOf([&] {
                                 for (int i = 0; i < count; ++i) {
                                     Q_EMIT echoMain.noted(twoMegabytes);
                                     QTRY_COMPARE(notes.count(), i + 1);
                                 }
                                 QTRY_COMPARE(connections(server), 1);
                             }).standardError;
    QCOMPARE(lines, QByteArray("oxQRPCServer: a connection does not read what it is sent, it was ended\n"));
    QVERIFY(client.isConnected());
}

void tst_oxQRPCServer::endedConnectionsAreDropped()
{
    oxQRPCServer server;
    EchoServiceMain echo;
    server.registerService(&echo);
    QVERIFY(server.listen(sessionAddress()));
    const int before = openFiles();
    for (int i = 0; i < 1000; ++i) {
        QLocalSocket socket;
        socket.connectToServer(sessionAddress().path());
        QVERIFY(socket.waitForConnected());
        if (i % 2) // the others are gone before they are accepted
            QCoreApplication::processEvents();
        socket.abort();
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(connections(server), 0);
    QTRY_COMPARE(openFiles(), before);
}

void tst_oxQRPCServer::clientsThatCameAndWentAreDropped()
{
    oxQRPCServer server;
    EchoServiceMain echoMain;
    server.registerService(&echoMain);
    QVERIFY(server.listen(sessionAddress()));
    const int before = openFiles();
    for (int i = 0; i < 20; ++i) {
        EchoService echo;
        oxQRPCClient client;
        echo.setClient(&client);
        client.registerService(&echo);
        QVERIFY(client.connectToHost(sessionAddress()));
        QVERIFY(client.waitForConnected(30000));
        QCOMPARE(echo.sum(i, 1), i + 1);
        QCOMPARE(connections(server), 1);
        client.disconnectFromHost();
        QTRY_COMPARE(connections(server), 0);
    }
    QTRY_COMPARE(openFiles(), before);
}

void tst_oxQRPCServer::serverEndsItsConnections()
{
    auto server = std::make_unique<oxQRPCServer>();
    QVERIFY(server->listen(sessionAddress()));
    oxQRPCClient client;
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    server.reset();
    QTRY_VERIFY(!client.isConnected());
}

void tst_oxQRPCServer::addressThatIsNoneEndsTheConnectionBefore()
{
    oxQRPCServer server;
    QVERIFY(server.listen(sessionAddress()));
    oxQRPCClient client;
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));
    QVERIFY(!client.connectToHost(QUrl(QStringLiteral("nowhere"))));
    QVERIFY(!client.isConnected());
    QTRY_COMPARE(connections(server), 0);
}

void tst_oxQRPCServer::addressBeforeIsNotTriedAgain()
{
    oxQRPCServer server;
    QVERIFY(server.listen(sessionAddress()));
    oxQRPCClient client;
    QSignalSpy connected(&client, &oxQRPCClient::connected);
    QVERIFY(client.connectToHost(QUrl(QStringLiteral("local:nobody-%1").arg(getpid()))));
    QVERIFY(!client.waitForConnected(100));
    QVERIFY(client.connectToHost(sessionAddress()));
    QVERIFY(client.waitForConnected(30000));

    QTimer later; // than it would have tried
    later.setSingleShot(true);
    later.start(600);
    QTRY_VERIFY(!later.isActive());
    QCOMPARE(connections(server), 1);
    QCOMPARE(connected.count(), 1);
}

QTEST_GUILESS_MAIN(tst_oxQRPCServer)
#include "tst_oxQRPCServer.moc"
