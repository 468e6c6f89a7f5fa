#include <QSignalSpy>
#include <QtTest>

#include <unistd.h>

#include "MainProcess.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "ShapeService.h"
#include "oxQRPCClient.h"

namespace {

constexpr int patience = 60000;

QUrl sessionAddress()
{
    return QUrl(QStringLiteral("local:tst_unregisteredTypes-%1").arg(getpid()));
}

void registerShape()
{
    qRegisterMetaTypeStreamOperators<Shape>();
}

/// A secondary process's service and its connection.
struct Secondary
{
    explicit Secondary(const QUrl &address)
    {
        shapes.setClient(&client);
        client.registerService(&shapes);
        client.registerService(&holder);
        client.connectToHost(address);
    }
    bool isConnected() { return client.waitForConnected(patience); }

    ShapeService shapes;
    ShapeHolder holder;
    oxQRPCClient client;
};

const QByteArray refusedCall("oxQRPCServer: a connection called ShapeService::sides(Shape), it was ended: register the "
                             "type 'Shape' here\n");

QByteArray refusedService(const char *reason)
{
    return "oxQRPCClient: what answers at " + sessionAddress().toString().toUtf8()
        + " offers a service with the type 'Shape'" + reason + '\n';
}

/// What both processes write to standard error while @p action uses the services, until @p line is there.
template<class Action>
QByteArray errorsUntil(const QByteArray &line, const QStringList &options, const Action &action)
{
    const OutputCapture capture;
    const MainProcess main(sessionAddress(), options);
    Secondary secondary(main.address());
    action(&secondary);
    static_cast<void>(QTest::qWaitFor([&] { return capture.standardError().contains(line); }, patience));
    return capture.standardError();
}

void doNothing(Secondary *) {}

void sendShape(Secondary *secondary)
{
    if (secondary->isConnected())
        secondary->shapes.sides({3});
}

void haveShapeSent(Secondary *secondary)
{
    if (secondary->isConnected())
        secondary->shapes.draw(3);
}

} // namespace

/// A main process that is one, and types that not both processes have registered: who lacks one is told its name.
class tst_unregisteredTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Before the others, which register the type in this process.
    void argumentThatNeitherProcessKnows();
    void signalThatNeitherProcessKnows();
    void propertyThatThisProcessDoesNotKnow();
    void signalThatThisProcessDoesNotKnow();

    void argumentThatTheMainProcessDoesNotKnow();
    void resultThatTheMainProcessDoesNotKnow();
    void signalThatTheMainProcessDoesNotKnow();
    void propertyThatTheMainProcessDoesNotKnow();
    void typeThatBothProcessesKnow();
};

void tst_unregisteredTypes::argumentThatNeitherProcessKnows()
{
    const QByteArray expected = refusedCall;
    const QByteArray lines = errorsUntil(expected, {}, sendShape);
    QVERIFY2(lines.contains(expected), lines);
    QVERIFY2(lines.contains("connection lost before the answer from ShapeService::sides(Shape)\n"), lines);
}

void tst_unregisteredTypes::signalThatNeitherProcessKnows()
{
    const QByteArray expected = refusedService(": register it here");
    const QByteArray lines = errorsUntil(expected, {}, haveShapeSent);
    QVERIFY2(lines.contains(expected), lines);
}

void tst_unregisteredTypes::propertyThatThisProcessDoesNotKnow()
{
    const QByteArray expected = refusedService(": register it here");
    const QByteArray lines =
        errorsUntil(expected, {QStringLiteral("registered"), QStringLiteral("shapeProperty")}, doNothing);
    QVERIFY2(lines.contains(expected), lines);
}

void tst_unregisteredTypes::signalThatThisProcessDoesNotKnow()
{
    const QByteArray expected = refusedService(": register it here");
    const QByteArray lines = errorsUntil(expected, {QStringLiteral("registered")}, haveShapeSent);
    QVERIFY2(lines.contains(expected), lines);
}

void tst_unregisteredTypes::argumentThatTheMainProcessDoesNotKnow()
{
    registerShape();
    const QByteArray expected = refusedCall;
    const QByteArray lines = errorsUntil(expected, {}, sendShape);
    QVERIFY2(lines.contains(expected), lines);
    QVERIFY2(lines.contains("connection lost before the answer from ShapeService::sides(Shape)\n"), lines);
}

void tst_unregisteredTypes::resultThatTheMainProcessDoesNotKnow()
{
    registerShape();
    const MainProcess main(sessionAddress());
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    const QByteArray lines = outputOf([&] { secondary.shapes.polygon(3); }).standardError;
    QCOMPARE(lines, QByteArray("oxQRPCClient: nothing instead of Shape from ShapeService::polygon(int)\n"));
    QVERIFY(secondary.client.isConnected());
}

void tst_unregisteredTypes::signalThatTheMainProcessDoesNotKnow()
{
    registerShape();
    const QByteArray expected = refusedService(", which it has not registered: register it there");
    const QByteArray lines = errorsUntil(expected, {}, haveShapeSent);
    QVERIFY2(lines.contains(expected), lines);
    QVERIFY2(!lines.contains("is no main process"), lines);
}

void tst_unregisteredTypes::propertyThatTheMainProcessDoesNotKnow()
{
    registerShape();
    const QByteArray expected = refusedService(", which it has not registered: register it there");
    const QByteArray lines = errorsUntil(expected, {QStringLiteral("shapeProperty")}, doNothing);
    QVERIFY2(lines.contains(expected), lines);
    QVERIFY2(!lines.contains("is no main process"), lines);
}

void tst_unregisteredTypes::typeThatBothProcessesKnow()
{
    registerShape();
    MainProcess main(sessionAddress(), {QStringLiteral("registered"), QStringLiteral("shapeProperty")});
    Secondary secondary(main.address());
    QVERIFY(secondary.isConnected());
    QCOMPARE(secondary.shapes.sides({3}), 3);
    QCOMPARE(secondary.shapes.polygon(5).sides, 5);
    int sides = 0;
    connect(&secondary.shapes, &ShapeService::drawn, this, [&](const Shape &shape) { sides = shape.sides; });
    secondary.shapes.draw(6);
    QTRY_COMPARE(sides, 6);
}

QTEST_GUILESS_MAIN(tst_unregisteredTypes)
#include "tst_unregisteredTypes.moc"
