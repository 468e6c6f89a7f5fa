#include <QSignalSpy>
#include <QtTest>

#include "EchoServiceMain.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxQRPCClient.h"
#include "oxdObjectManager.h"

namespace {

constexpr int limit = 60000;

} // namespace

/// Calls and signals between a service and the main process's object, here in one process.
class tst_serviceCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void callReturnsWhatTheMainProcessAnswers();
    void valuesTravelUnchanged_data();
    void valuesTravelUnchanged();
    void dataObjectsTravelWithTheirIds();
    void callWithoutResultDoesNotWait();
    void callsKeepTheirOrder();
    void signalsAreEmittedByTheService();
    void signalsBeforeTheAnswerComeBeforeTheCallReturns();
    void receiverOfASignalMayCall();
    void receiverThatProcessesEventsHasTheNextSignalAfterwards();
    void receiverInAnEventLoopGetsSignals();
    void receiversInEventLoopsAreNotNestedWithoutEnd();
    void callFromAReceiverGetsSignalsMeanwhile();
    void timersRunWhileACallWaits();
    void operationThatIsNotOffered();
    void serviceWithoutInterfaceClass();
    void serviceThatTheMainProcessLacks();
    void serviceThatIsRegisteredLater();
    void serviceThatTheMainProcessOffersLater();
    void serviceThatIsDeletedIsForgotten();
    void serviceMayBeDeletedByAReceiver();
    void serviceMayBeDeletedWhileItsCallWaits();
    void callEndsWithItsLimit();
    void callAfterOneWithoutAnswerDoesNotWait();
    void lateAnswerMakesCallsWaitAgain();
    void signalMakesCallsWaitAgain();
    void signalsOfTheServiceProlongTheLimit();
    void signalsOfAnotherServiceDoNot();
    void callWithinACallEndsWithTheOuterOne();
    void disconnectingEndsACall();
    void limitIsThirtySecondsAtFirst();

private:
    void connectClient();

    std::unique_ptr<MainThread> m_main;
    std::unique_ptr<EchoServiceMain> m_echoMain;
    std::unique_ptr<EchoService> m_echo;
    std::unique_ptr<oxQRPCClient> m_client;
};

void tst_serviceCalls::initTestCase()
{
#define REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(REGISTER)
#undef REGISTER
}

void tst_serviceCalls::init()
{
    m_main = std::make_unique<MainThread>();
    m_echo = std::make_unique<EchoService>();
    m_client = std::make_unique<oxQRPCClient>();
    m_echo->setClient(m_client.get());
    m_client->registerService(m_echo.get());
    m_echoMain = std::make_unique<EchoServiceMain>();
    m_main->offer(m_echoMain.get());
    connectClient();
}

void tst_serviceCalls::connectClient()
{
    QVERIFY(m_client->connectToHost(m_main->address()));
    QVERIFY(m_client->waitForConnected(limit));
}

void tst_serviceCalls::cleanup()
{
    m_client.reset();
    m_main.reset();
    m_echo.reset();
    m_echoMain.reset();
}

void tst_serviceCalls::callReturnsWhatTheMainProcessAnswers()
{
    QCOMPARE(m_echo->sum(40, 2), 42);
}

void tst_serviceCalls::valuesTravelUnchanged_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("int") << QVariant(-7);
    QTest::newRow("text") << QVariant(QStringLiteral("Grüße, 日本"));
    QTest::newRow("list") << QVariant(QVariantList{1, QStringLiteral("two"), 3.0});
    QTest::newRow("color") << QVariant(QColor(1, 2, 3, 4));
    QTest::newRow("list of data objects") << QVariant::fromValue(QList<oxdImage>{oxdImage(1), oxdImage(2)});
    QTest::newRow("nothing") << QVariant();
}

void tst_serviceCalls::valuesTravelUnchanged()
{
    QFETCH(QVariant, value);
    const QVariant back = m_echo->variant(value);
    QCOMPARE(back.userType(), value.userType());
    if (value.userType() == qMetaTypeId<QList<oxdImage>>())
        QCOMPARE(back.value<QList<oxdImage>>().at(1).objectId(), 2ULL);
    else
        QCOMPARE(back, value);

    QCOMPARE(m_echo->text(QStringLiteral("Grüße")), QStringLiteral("Grüße"));
    const QByteArray megabyte(1 << 20, '\xa5');
    QCOMPARE(m_echo->bytes(megabyte), megabyte);
}

void tst_serviceCalls::dataObjectsTravelWithTheirIds()
{
    QCOMPARE(m_echo->material(oxdMaterial(0x1122334455667788)).objectId(), 0x1122334455667788ULL);

    const QList<oxdMaterial> materials = m_echo->materials({oxdMaterial(3), oxdMaterial(0), oxdMaterial(5)});
    QCOMPARE(materials.size(), 3);
    QCOMPARE(materials.at(0).objectId(), 3ULL);
    QCOMPARE(materials.at(1).objectId(), 0ULL);
    QCOMPARE(materials.at(2).objectId(), 5ULL);

    const QVector<oxdNode> nodes = m_echo->nodes({oxdNode(7), oxdNode(8)});
    QCOMPARE(nodes.size(), 2);
    QCOMPARE(nodes.at(1).objectId(), 8ULL);
    QVERIFY(m_echo->materials({}).isEmpty());
}

void tst_serviceCalls::callWithoutResultDoesNotWait()
{
    QSignalSpy noted(m_echo.get(), &EchoService::noted);
    m_echo->note(QStringLiteral("later"));
    QCOMPARE(noted.count(), 0);
    QTRY_COMPARE(noted.count(), 1);
}

void tst_serviceCalls::callsKeepTheirOrder()
{
    QSignalSpy noted(m_echo.get(), &EchoService::noted);
    for (int i = 0; i < 100; ++i)
        m_echo->note(QString::number(i));
    QCOMPARE(m_echo->sum(1, 1), 2);
    QCOMPARE(noted.count(), 100);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(noted.at(i).first().toInt(), i);
}

void tst_serviceCalls::signalsAreEmittedByTheService()
{
    QSignalSpy noted(m_echo.get(), &EchoService::noted);
    QSignalSpy changed(m_echo.get(), &EchoService::materialsChanged);
    m_echo->note(QStringLiteral("hello"));
    QTRY_COMPARE(noted.count(), 1);
    QCOMPARE(noted.first().at(0).toString(), QStringLiteral("hello"));

    m_echo->materials({oxdMaterial(9)});
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().value<QList<oxdMaterial>>().first().objectId(), 9ULL);
}

void tst_serviceCalls::signalsBeforeTheAnswerComeBeforeTheCallReturns()
{
    QSignalSpy progress(m_echo.get(), &EchoService::progress);
    QCOMPARE(m_echo->count(1000), 1000);
    QCOMPARE(progress.count(), 1000);
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(progress.at(i).first().toInt(), i);
}

void tst_serviceCalls::receiverOfASignalMayCall()
{
    m_client->setCallTimeout(limit);
    QList<int> sums;
    connect(m_echo.get(), &EchoService::progress, this, [&](int value) { sums.append(m_echo->sum(value, 10)); });
    QCOMPARE(m_echo->count(3), 3);
    std::sort(sums.begin(), sums.end()); // each waits while the next ones are delivered
    QCOMPARE(sums, QList<int>({10, 11, 12}));
}

void tst_serviceCalls::receiverThatProcessesEventsHasTheNextSignalAfterwards()
{
    bool isInside = false;
    connect(m_echo.get(), &EchoService::progress, this, [&] {
        QVERIFY(!isInside);
        isInside = true;
        QCoreApplication::processEvents();
        isInside = false;
    });
    QSignalSpy progress(m_echo.get(), &EchoService::progress); // after it
    QCOMPARE(m_echo->count(2000), 2000);
    QCOMPARE(progress.count(), 2000);
    for (int i = 0; i < 2000; ++i)
        QCOMPARE(progress.at(i).first().toInt(), i);
}

void tst_serviceCalls::receiverInAnEventLoopGetsSignals()
{
    QEventLoop dialog;
    bool isFirst = true;
    connect(m_echo.get(), &EchoService::progress, this, [&] {
        if (std::exchange(isFirst, false))
            dialog.exec();
    });
    connect(m_echo.get(), &EchoService::noted, &dialog, &QEventLoop::quit);
    QTimer::singleShot(0, m_echo.get(), [&] { m_echo->note(QString()); });
    QCOMPARE(m_echo->count(2), 2);
    QVERIFY(!isFirst);
}

void tst_serviceCalls::receiversInEventLoopsAreNotNestedWithoutEnd()
{
    int depth = 0;
    int deepest = 0;
    QSet<int> values;
    QEventLoop dialogs[2000];
    connect(m_echo.get(), &EchoService::progress, this, [&](int value) {
        deepest = std::max(deepest, ++depth);
        values.insert(value);
        // It ends when the signals that are there have been delivered, within it or not.
        QTimer::singleShot(0, &dialogs[value], &QEventLoop::quit);
        dialogs[value].exec();
        --depth;
    });
    QCOMPARE(m_echo->count(2000), 2000);
    QTRY_COMPARE(values.size(), 2000);
    QCOMPARE(deepest, 16);
}

void tst_serviceCalls::callFromAReceiverGetsSignalsMeanwhile()
{
    QSignalSpy progress(m_echo.get(), &EchoService::progress);
    int progressDuringInnerCall = 0;
    connect(m_echo.get(), &EchoService::noted, this, [&] {
        m_echo->count(5);
        progressDuringInnerCall = progress.count();
    });
    m_echo->note(QString());
    QTRY_COMPARE(progressDuringInnerCall, 5);
}

void tst_serviceCalls::timersRunWhileACallWaits()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
    timer.start(5);
    QVERIFY(m_echo->takeTime(100, false));
    QVERIFY(ticks > 0);
}

// The main process's interface is of another version than this one's.
class EchoServiceOfTomorrow : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "EchoService")

public Q_SLOTS:
    int sumOfAll() { return call<int>(staticMetaObject, "sumOfAll()"); }
    QString sum(int a, int b) { return call<QString>(staticMetaObject, "sum(int,int)", a, b); }
    QString note(const QString &text) { return call<QString>(staticMetaObject, "note(QString)", text); }
    void count(int count) { call(staticMetaObject, "count(int)", count); }
};

void tst_serviceCalls::operationThatIsNotOffered()
{
    EchoServiceOfTomorrow tomorrow;
    tomorrow.setClient(m_client.get());
    m_client->registerService(&tomorrow);
    QVERIFY(m_client->waitForConnected(limit));
    QTRY_COMPARE(outputOf([&] { tomorrow.sumOfAll(); }).standardError,
                 QByteArray("oxQRPCClient: not offered by the main process, EchoServiceOfTomorrow::sumOfAll() does "
                            "nothing\n"));
    QString result;
    QCOMPARE(outputOf([&] { result = tomorrow.sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: int instead of QString from EchoServiceOfTomorrow::sum(int,int)\n"));
    QCOMPARE(result, QString());
    QCOMPARE(outputOf([&] { result = tomorrow.note(QString()); }).standardError,
             QByteArray("oxQRPCClient: nothing instead of QString from EchoServiceOfTomorrow::note(QString)\n"));
    QCOMPARE(outputOf([&] { tomorrow.count(1); }).standardError, QByteArray());
    m_client.reset();
}

void tst_serviceCalls::serviceWithoutInterfaceClass()
{
    oxBaseService plain;
    plain.setClient(m_client.get());
    m_client->registerService(&plain);
    QVERIFY(m_client->isConnected());
    const int index = QObject::staticMetaObject.indexOfMethod("deleteLater()");
    void *arguments[] = {nullptr};
    QCOMPARE(outputOf([&] { plain.invokeMethod(&QObject::staticMetaObject, index, arguments); }).standardError,
             QByteArray("oxQRPCClient: not offered by the main process, QObject::deleteLater() does nothing\n"));
    m_client.reset();
}

void tst_serviceCalls::serviceThatTheMainProcessLacks()
{
    m_client->disconnectFromHost();
    m_main = std::make_unique<MainThread>();
    connectClient();
    int sum = -1;
    QCOMPARE(outputOf([&] { sum = m_echo->sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: not offered by the main process, EchoService::sum(int,int) does nothing\n"));
    QCOMPARE(sum, 0);
}

void tst_serviceCalls::serviceThatIsRegisteredLater()
{
    oxQRPCClient client;
    QVERIFY(client.connectToHost(m_main->address()));
    QVERIFY(client.waitForConnected(limit));
    EchoService late;
    late.setClient(&client);
    client.registerService(&late);
    int sum = 0;
    const auto isThere = [&] {
        outputOf([&] { sum = late.sum(1, 2); });
        return sum == 3;
    };
    QTRY_VERIFY(isThere());
}

void tst_serviceCalls::serviceThatTheMainProcessOffersLater()
{
    m_main = std::make_unique<MainThread>();
    connectClient();
    outputOf([&] { QCOMPARE(m_echo->sum(1, 2), 0); });
    EchoServiceMain late;
    m_main->offer(&late);
    int sum = 0;
    const auto isThere = [&] {
        outputOf([&] { sum = m_echo->sum(1, 2); });
        return sum == 3;
    };
    QTRY_VERIFY(isThere());
    m_main.reset();
}

void tst_serviceCalls::serviceThatIsDeletedIsForgotten()
{
    auto doomed = std::make_unique<EchoService>();
    doomed->setClient(m_client.get());
    m_client->registerService(doomed.get());
    QSignalSpy noted(m_echo.get(), &EchoService::noted);
    QSignalSpy doomedNoted(doomed.get(), &EchoService::noted);
    const auto isBound = [&] {
        m_echo->note(QString());
        m_echo->sum(1, 1);
        return doomedNoted.count() > 0;
    };
    QTRY_VERIFY(isBound());

    doomed.reset();
    QCOMPARE(m_client->services(), QList<QObject *>{m_echo.get()});
    noted.clear();
    m_echo->note(QStringLiteral("to whom it may concern"));
    QTRY_COMPARE(noted.count(), 1);
    connectClient();
    QCOMPARE(m_echo->sum(1, 2), 3);
}

void tst_serviceCalls::serviceMayBeDeletedByAReceiver()
{
    auto *doomed = new EchoService;
    doomed->setClient(m_client.get());
    m_client->registerService(doomed);
    int received = 0;
    connect(doomed, &EchoService::progress, this, [&] {
        ++received;
        delete doomed;
    });
    const auto isDeleted = [&] {
        m_echo->count(100);
        return received > 0;
    };
    QTRY_VERIFY(isDeleted());
    QCOMPARE(received, 1); // the others, which had arrived, are dropped
}

void tst_serviceCalls::serviceMayBeDeletedWhileItsCallWaits()
{
    m_client->setCallTimeout(limit);
    QTimer::singleShot(100, this, [&] { m_echo.reset(); });
    QCOMPARE(outputOf([&] { m_echo->takeTime(limit, false); }).standardError,
             QByteArray("oxQRPCClient: service withdrawn before the answer from EchoService::takeTime(int,bool)\n"));
}

void tst_serviceCalls::callEndsWithItsLimit()
{
    m_client->setCallTimeout(100);
    bool result = true;
    QCOMPARE(outputOf([&] { result = m_echo->takeTime(limit, false); }).standardError,
             QByteArray("oxQRPCClient: no answer within 100 ms from EchoService::takeTime(int,bool)\n"));
    QVERIFY(!result);
}

void tst_serviceCalls::callAfterOneWithoutAnswerDoesNotWait()
{
    m_client->setCallTimeout(100);
    outputOf([&] { m_echo->takeTime(limit, false); });
    m_client->setCallTimeout(limit);
    QElapsedTimer time;
    time.start();
    QCOMPARE(outputOf([&] { m_echo->sum(1, 2); }).standardError,
             QByteArray("oxQRPCClient: the main process does not answer, EchoService::sum(int,int) does nothing\n"));
    QVERIFY(time.elapsed() < limit / 2);
}

void tst_serviceCalls::lateAnswerMakesCallsWaitAgain()
{
    m_client->setCallTimeout(100);
    outputOf([&] { m_echo->takeTime(limit, false); });
    m_client->setCallTimeout(limit);
    int sum = 0;
    const auto isBack = [&] {
        outputOf([&] { sum = m_echo->sum(1, 2); });
        return sum == 3;
    };
    QVERIFY(!isBack());
    m_main->run([this] { m_echoMain->answerNow(); });
    QTRY_VERIFY(isBack());
}

void tst_serviceCalls::signalMakesCallsWaitAgain()
{
    m_client->setCallTimeout(100);
    outputOf([&] { m_echo->takeTime(limit, false); });
    const auto lineOfACall = [&] { return outputOf([&] { m_echo->sum(1, 2); }).standardError; };
    QCOMPARE(lineOfACall(),
             QByteArray("oxQRPCClient: the main process does not answer, EchoService::sum(int,int) does nothing\n"));
    QSignalSpy noted(m_echo.get(), &EchoService::noted);
    m_main->run([this] { Q_EMIT m_echoMain->noted(QString()); });
    QTRY_COMPARE(noted.count(), 1);
    QCOMPARE(lineOfACall(), QByteArray("oxQRPCClient: no answer within 100 ms from EchoService::sum(int,int)\n"));
}

void tst_serviceCalls::signalsOfTheServiceProlongTheLimit()
{
    m_client->setCallTimeout(2500);
    QVERIFY(m_echo->takeTime(3000, true));
}

class OtherService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "OtherService")

Q_SIGNALS:
    void ticked();

protected:
    void timerEvent(QTimerEvent *) override { Q_EMIT ticked(); }
};

void tst_serviceCalls::signalsOfAnotherServiceDoNot()
{
    OtherService otherMain;
    m_main->offer(&otherMain);
    OtherService other;
    m_client->registerService(&other);
    QSignalSpy ticked(&other, &OtherService::ticked);
    int timer = 0;
    m_main->run([&] { timer = otherMain.startTimer(20); });
    QTRY_VERIFY(ticked.count() > 0);

    m_client->setCallTimeout(300);
    QCOMPARE(outputOf([&] { m_echo->takeTime(limit, false); }).standardError,
             QByteArray("oxQRPCClient: no answer within 300 ms from EchoService::takeTime(int,bool)\n"));
    m_main->run([&] { otherMain.killTimer(timer); });
    m_client.reset();
    m_main.reset();
}

void tst_serviceCalls::callWithinACallEndsWithTheOuterOne()
{
    m_client->setCallTimeout(5000);
    QTimer::singleShot(4500, this, [&] { m_echo->sum(1, 2); });
    QElapsedTimer time;
    time.start();
    const QByteArray lines = outputOf([&] { m_echo->takeTime(limit, false); }).standardError;
    QCOMPARE(lines,
             QByteArray("oxQRPCClient: no answer within 5000 ms from EchoService::sum(int,int)\n"
                        "oxQRPCClient: no answer within 5000 ms from EchoService::takeTime(int,bool)\n"));
    QVERIFY(time.elapsed() < 9000);
}

void tst_serviceCalls::disconnectingEndsACall()
{
    QTimer::singleShot(100, m_client.get(), &oxQRPCClient::disconnectFromHost);
    QSignalSpy disconnected(m_client.get(), &oxQRPCClient::disconnected);
    QCOMPARE(outputOf([&] { m_echo->takeTime(limit, false); }).standardError,
             QByteArray("oxQRPCClient: connection lost before the answer from EchoService::takeTime(int,bool)\n"));
    QCOMPARE(disconnected.count(), 1);
    QVERIFY(!m_client->isConnected());
}

void tst_serviceCalls::limitIsThirtySecondsAtFirst()
{
    QCOMPARE(m_client->callTimeout(), 30000);
}

QTEST_GUILESS_MAIN(tst_serviceCalls)
#include "tst_serviceCalls.moc"
