#include <QApplication>
#include <QMainWindow>
#include <QProcess>
#include <QPushButton>
#include <QtTest>

#include <qpa/qwindowsysteminterface.h>

#include <unistd.h>

#include "EchoService.h"
#include "MainProcess.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxFileIOServiceRemoteImpl.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxQRPCClient.h"

namespace {

constexpr QLatin1String childOption("--secondary");
constexpr int patience = 60000;

QUrl sessionAddress()
{
    return QUrl(QStringLiteral("local:tst_twoProcesses-%1").arg(getpid()));
}

/// A secondary process's service and its connection.
struct Secondary
{
    explicit Secondary(const QUrl &address)
    {
        echo.setClient(&client);
        client.registerService(&echo);
        client.connectToHost(address);
    }
    bool isConnected() { return client.waitForConnected(patience); }

    EchoService echo;
    oxQRPCClient client;
};

/// Counts what a window does that is alive.
class LivingWindow : public QWidget
{
public:
    LivingWindow()
    {
        show();
        connect(&m_timer, &QTimer::timeout, this, [this] {
            ++ticks;
            update();
        });
        m_timer.start(10);
    }

    int ticks = 0;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *) override { ++paints; }

private:
    QTimer m_timer;
};

/// A button that a user clicks: the window system has the click until it is asked for it.
class ClickedButton : public QPushButton
{
public:
    ClickedButton()
    {
        show();
        connect(this, &QPushButton::clicked, [this] { ++clicks; });
    }
    void click()
    {
        using System = QWindowSystemInterface;
        const QPointF place = rect().center();
        for (const bool isPress : {true, false})
            System::handleMouseEvent<System::AsynchronousDelivery>(
                windowHandle(), place, mapToGlobal(place.toPoint()), isPress ? Qt::LeftButton : Qt::NoButton,
                Qt::LeftButton, isPress ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease);
    }

    int clicks = 0;
};

// A secondary process that calls and says so, over and over.
int callForEver(const QUrl &address, const QString &operation)
{
    Secondary secondary(address);
    QObject::connect(&secondary.echo, &EchoService::progress, [] { printf("calling\n"), fflush(stdout); });
    QObject::connect(&secondary.echo, &EchoService::noted, [] { printf("calling\n"), fflush(stdout); });
    if (!secondary.isConnected())
        return 1;
    for (;;) {
        if (operation == QLatin1String("event loop"))
            secondary.echo.takeTime(patience, true);
        else if (operation == QLatin1String("events"))
            secondary.echo.textLater(QStringLiteral("text"), 300);
        else
            secondary.echo.count(100000);
    }
}

} // namespace

/// Faults, with a main process that is one.
class tst_twoProcesses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mainProcessIsKilledInTheMiddleOfACall();
    void mainProcessThatIsStopped();
    void mainProcessThatIsStoppedLosesAConnectionWithTooManyCalls();
    void mainProcessThatIsBlocked();
    void windowLivesWhileACallWaits();
    void clickWaitsForTheEndOfACall();
    void clickWaitsForTheConnection();
    void mainProcessStartsLater();
    void mainProcessRestarts();
    void mainProcessRestartsAfterItHung();
    void callWhenConnected();
    void otherMainProcessWhenDisconnected();
    void secondSecondaryProcess();
    void callsOfTwoSecondaryProcessesAtATime();
    void answerOfTheWrongType();
    void tenThousandCalls();
    void hundredThousandProgressValuesDuringALoad();
    void mainProcessIsKilledDuringALoad();
    void secondaryProcessIsKilledInTheMiddleOfACall_data();
    void secondaryProcessIsKilledInTheMiddleOfACall();
};

void tst_twoProcesses::mainProcessIsKilledInTheMiddleOfACall()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    connect(&secondary.echo, &EchoService::progress, this, [&] { main.kill(); });
    bool result = true;
    const QByteArray lines = outputOf([&] { result = secondary.echo.takeTime(patience, true); }).standardError;
    QCOMPARE(lines,
             QByteArray("oxQRPCClient: connection lost before the answer from EchoService::takeTime(int,bool)\n"));
    QVERIFY(!result);
    QVERIFY(!secondary.client.isConnected());
}

void tst_twoProcesses::mainProcessThatIsStopped()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    main.stop();
    secondary.client.setCallTimeout(200);
    int sum = -1;
    QCOMPARE(outputOf([&] { sum = secondary.echo.sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: no answer within 200 ms from EchoService::sum(int,int)\n"));
    QCOMPARE(sum, 0);
    secondary.client.setCallTimeout(patience);
    QCOMPARE(outputOf([&] { sum = secondary.echo.sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: the main process does not answer, EchoService::sum(int,int) does nothing\n"));
    QSignalSpy noted(&secondary.echo, &EchoService::noted);
    QCOMPARE(outputOf([&] { secondary.echo.note(QStringLiteral("for later")); }).standardError, QByteArray());

    main.goOn();
    QTRY_COMPARE(noted.count(), 1);
    QCOMPARE(noted.first().first().toString(), QStringLiteral("for later"));
    const auto answers = [&] {
        outputOf([&] { sum = secondary.echo.sum(1, 2); });
        return sum == 3;
    };
    QTRY_VERIFY_WITH_TIMEOUT(answers(), patience);
    QVERIFY(secondary.client.isConnected());
}

void tst_twoProcesses::mainProcessThatIsStoppedLosesAConnectionWithTooManyCalls()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    main.stop();
    const QString twoMegabytes(1 << 20, QLatin1Char('x'));
    const QByteArray lines = outputOf([&] {
                                 for (int i = 0; i < 150; ++i)
                                     secondary.echo.note(twoMegabytes);
                                 QTRY_VERIFY(!secondary.client.isConnected());
                             }).standardError;
    QCOMPARE(lines,
             QByteArray("oxQRPCClient: the main process does not read what it is sent, the connection was ended\n"));

    main.goOn();
    QVERIFY(secondary.client.waitForConnected(patience));
    QCOMPARE(secondary.echo.sum(1, 2), 3);
}

void tst_twoProcesses::mainProcessThatIsBlocked()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    secondary.client.setCallTimeout(200);
    bool result = true;
    QCOMPARE(outputOf([&] { result = secondary.echo.block(2000); }).standardError,
             QByteArray("oxQRPCClient: no answer within 200 ms from EchoService::block(int)\n"));
    QVERIFY(!result);

    secondary.client.setCallTimeout(patience);
    const auto answers = [&] {
        int sum = 0;
        outputOf([&] { sum = secondary.echo.sum(1, 2); });
        return sum == 3;
    };
    QTRY_VERIFY_WITH_TIMEOUT(answers(), patience);
}

void tst_twoProcesses::windowLivesWhileACallWaits()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    LivingWindow window;
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    secondary.client.setCallTimeout(1000);
    const int ticks = window.ticks;
    const int paints = window.paints;
    outputOf([&] { secondary.echo.block(3000); });
    QVERIFY2(window.ticks > ticks + 2, qPrintable(QString::number(window.ticks - ticks)));
    QVERIFY2(window.paints > paints + 2, qPrintable(QString::number(window.paints - paints)));
}

void tst_twoProcesses::clickWaitsForTheEndOfACall()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    ClickedButton button;
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    button.click();
    QVERIFY(secondary.echo.takeTime(200, true));
    QCOMPARE(button.clicks, 0);
    QTRY_COMPARE(button.clicks, 1);
}

void tst_twoProcesses::clickWaitsForTheConnection()
{
    Secondary secondary(sessionAddress());
    ClickedButton button;
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    button.click();
    QVERIFY(!secondary.client.waitForConnected(200)); // nobody is there
    QCOMPARE(button.clicks, 0);
    QTRY_COMPARE(button.clicks, 1);
}

void tst_twoProcesses::mainProcessStartsLater()
{
    Secondary secondary(sessionAddress());
    QSignalSpy connected(&secondary.client, &oxQRPCClient::connected);
    int sum = -1;
    QCOMPARE(outputOf([&] { sum = secondary.echo.sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: not connected, EchoService::sum(int,int) does nothing\n"));
    QCOMPARE(sum, 0);

    MainProcess main(sessionAddress());
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 1, patience);
    QCOMPARE(secondary.echo.sum(1, 2), 3);
}

void tst_twoProcesses::mainProcessRestarts()
{
    auto main = std::make_unique<MainProcess>(sessionAddress());
    Secondary secondary(main->address());
    QVERIFY(secondary.isConnected());
    QSignalSpy connected(&secondary.client, &oxQRPCClient::connected);
    QSignalSpy disconnected(&secondary.client, &oxQRPCClient::disconnected);
    for (int restart = 1; restart <= 3; ++restart) {
        main->kill();
        QTRY_COMPARE_WITH_TIMEOUT(disconnected.count(), restart, patience);
        main = std::make_unique<MainProcess>(sessionAddress());
        QTRY_COMPARE_WITH_TIMEOUT(connected.count(), restart, patience);

        QSignalSpy progress(&secondary.echo, &EchoService::progress);
        QCOMPARE(secondary.echo.count(3), 3);
        QCOMPARE(progress.count(), 3);
        QCOMPARE(secondary.echo.text(QStringLiteral("text")), QStringLiteral("text"));
        QCOMPARE(progress.count(), 3);
    }
    QCOMPARE(disconnected.count(), 3);
}

void tst_twoProcesses::mainProcessRestartsAfterItHung()
{
    auto main = std::make_unique<MainProcess>(sessionAddress());
    Secondary secondary(main->address());
    QVERIFY(secondary.isConnected());
    secondary.client.setCallTimeout(200);
    main->stop();
    outputOf([&] { secondary.echo.sum(1, 2); });
    secondary.client.setCallTimeout(patience);
    main->kill();
    QTRY_VERIFY(!secondary.client.isConnected());

    main = std::make_unique<MainProcess>(sessionAddress());
    QVERIFY(secondary.isConnected());
    QCOMPARE(secondary.echo.sum(1, 2), 3);
}

void tst_twoProcesses::callWhenConnected()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    int sum = 0;
    connect(&secondary.client, &oxQRPCClient::connected, this, [&] { sum = secondary.echo.sum(1, 2); });
    QTRY_COMPARE_WITH_TIMEOUT(sum, 3, patience / 3);
}

void tst_twoProcesses::otherMainProcessWhenDisconnected()
{
    MainProcess one(sessionAddress());
    MainProcess other(QUrl(QStringLiteral("tcp://localhost:0")));
    Secondary secondary(one.address());
    QVERIFY(secondary.isConnected());
    QSignalSpy connected(&secondary.client, &oxQRPCClient::connected);
    connect(&secondary.client, &oxQRPCClient::disconnected, this,
            [&] { QVERIFY(secondary.client.connectToHost(other.address())); });
    one.kill();
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 1, patience);
    QCOMPARE(secondary.echo.sum(1, 2), 3);
}

void tst_twoProcesses::secondSecondaryProcess()
{
    MainProcess main(sessionAddress());
    Secondary one(main.address());
    QVERIFY(one.isConnected());
    QSignalSpy noted(&one.echo, &EchoService::noted);
    QProcess other;
    other.start(QCoreApplication::applicationFilePath(),
                {childOption, main.address().toString(), QStringLiteral("events")});
    QTRY_VERIFY_WITH_TIMEOUT(noted.count() >= 3, patience); // what the other one's calls make the service signal
    QCOMPARE(one.echo.sum(1, 2), 3);
    QVERIFY(other.state() == QProcess::Running);
    QVERIFY(other.readAllStandardOutput().startsWith("calling\n"));
    other.kill();
    QVERIFY(other.waitForFinished());
    QCOMPARE(one.echo.sum(1, 2), 3);
}

// The slot of the first call handles events, the second call among them, and then looks at its
// argument again.
void tst_twoProcesses::callsOfTwoSecondaryProcessesAtATime()
{
    MainProcess main(sessionAddress());
    Secondary one(main.address());
    Secondary other(main.address());
    QVERIFY(one.isConnected());
    QVERIFY(other.isConnected());
    QString between;
    connect(&one.echo, &EchoService::noted, this, [&](const QString &text) {
        if (text == QLatin1String("first"))
            between = other.echo.text(QStringLiteral("second, which is longer"));
    });
    QCOMPARE(one.echo.textLater(QStringLiteral("first"), 1000), QStringLiteral("first"));
    QCOMPARE(between, QStringLiteral("second, which is longer"));
}

class EchoOfAnotherVersion : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "EchoService")

public Q_SLOTS:
    QString sum(int a, int b) { return call<QString>(staticMetaObject, "sum(int,int)", a, b); }
};

void tst_twoProcesses::answerOfTheWrongType()
{
    MainProcess main(sessionAddress());
    EchoOfAnotherVersion echo;
    oxQRPCClient client;
    echo.setClient(&client);
    client.registerService(&echo);
    client.connectToHost(main.address());
    QVERIFY(client.waitForConnected(patience));
    QString result;
    QCOMPARE(outputOf([&] { result = echo.sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: int instead of QString from EchoOfAnotherVersion::sum(int,int)\n"));
    QVERIFY(result.isEmpty());
}

void tst_twoProcesses::tenThousandCalls()
{
    MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    for (int i = 0; i < 10000; ++i)
        QCOMPARE(secondary.echo.sum(i, -1), i - 1);
}

void tst_twoProcesses::hundredThousandProgressValuesDuringALoad()
{
    constexpr int count = 100000;
    MainProcess main(sessionAddress());
    QMainWindow window;
    window.show();
    oxMainWindowServiceRemoteImpl mainWindow;
    mainWindow.setWidget(&window);
    oxFileIOServiceRemoteImpl files;
    oxQRPCClient client;
    files.setClient(&client);
    client.registerService(&files);
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(&mainWindow);
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(&files);
    client.connectToHost(main.address());
    QVERIFY(client.waitForConnected(patience));

    int next = 0;
    bool isInOrder = true;
    connect(&files, &oxFileIOService::progress, this, [&](int value) { isInOrder &= value == next++; });
    QVERIFY(files.loadFile(QString::number(count)));
    QCOMPARE(next, count);
    QVERIFY(isInOrder);
    QVERIFY(window.findChildren<QProgressDialog *>().isEmpty());
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(nullptr);
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(nullptr);
}

void tst_twoProcesses::mainProcessIsKilledDuringALoad()
{
    MainProcess main(sessionAddress());
    QMainWindow window;
    oxMainWindowServiceRemoteImpl mainWindow;
    mainWindow.setWidget(&window);
    oxFileIOServiceRemoteImpl files;
    oxQRPCClient client;
    files.setClient(&client);
    client.registerService(&files);
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(&mainWindow);
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(&files);
    client.connectToHost(main.address());
    QVERIFY(client.waitForConnected(patience));

    connect(&files, &oxFileIOService::progress, this, [&](int value) {
        if (value == 1)
            main.kill();
    });
    bool isLoaded = true;
    const QByteArray lines = outputOf([&] { isLoaded = files.loadFile(QStringLiteral("100000000")); }).standardError;
    QCOMPARE(lines,
             QByteArray("oxQRPCClient: connection lost before the answer from oxFileIOService::loadFile(QString)\n"));
    QVERIFY(!isLoaded);
    QVERIFY(window.findChildren<QProgressDialog *>().isEmpty());
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(nullptr);
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(nullptr);
}

void tst_twoProcesses::secondaryProcessIsKilledInTheMiddleOfACall_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("slot that runs an event loop") << QStringLiteral("event loop");
    QTest::newRow("slot that processes events") << QStringLiteral("events");
    QTest::newRow("slot that signals") << QStringLiteral("storm");
}

void tst_twoProcesses::secondaryProcessIsKilledInTheMiddleOfACall()
{
    QFETCH(QString, operation);
    MainProcess main(sessionAddress());
    for (int i = 0; i < 10; ++i) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {childOption, main.address().toString(), operation});
        QVERIFY(child.waitForReadyRead(patience));
        child.kill();
        QVERIFY(child.waitForFinished(patience));

        Secondary secondary(main.address());
        QVERIFY(secondary.isConnected());
        QCOMPARE(secondary.echo.sum(i, 1), i + 1);
        QVERIFY(main.isRunning());
    }
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == childOption)
        return callForEver(QUrl(arguments.value(2)), arguments.value(3));
    tst_twoProcesses test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_twoProcesses.moc"
