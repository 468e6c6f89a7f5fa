#include <QTest>

#include "OutputCapture.h"
#include "VirtualSlot.h"
#include "oxBaseService.h"
#include "oxDecouplingDispatcher.h"
#include "oxQRPCClient.h"

namespace {

// Only a virtual base has no way back by static_cast.
template<class Base, class Derived, class = void>
constexpr bool isVirtualBase = std::is_base_of_v<Base, Derived>;
template<class Base, class Derived>
constexpr bool isVirtualBase<Base, Derived, std::void_t<decltype(static_cast<Derived *>(std::declval<Base *>()))>> =
    false;

// metaObject, qt_metacast, qt_metacall, two for the destructor, event, eventFilter, timerEvent, childEvent,
// customEvent, connectNotify, disconnectNotify
constexpr std::ptrdiff_t slotsOfQObject = 12;

const QMetaObject *const anyClass = &QObject::staticMetaObject;
const QByteArray lineOfAnyCall = "oxQRPCClient: not connected, QObject::deleteLater() does nothing\n";

int anyMethod()
{
    return anyClass->indexOfMethod("deleteLater()");
}

} // namespace

class tst_oxBaseService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isAQObjectByAPublicBase();
    void dispatcherIsAVirtualBase();
    void dispatcherHasOneAbstractOperationAndNothingElse();
    void operationsFollowThoseOfQObject();
    void metaObjectHasTheNameOnly();
    void parentOwnsTheService();
    void hasNoClientAtFirst();
    void clientIsTheOneLastGiven();
    void initializedDoesNothing();
    void invokeMethodCallsTheClient();
    void invokeMethodDoesNothingWithoutAClient();
    void dispatcherPartReachesTheService();
};

void tst_oxBaseService::isAQObjectByAPublicBase()
{
    QVERIFY((std::is_convertible_v<oxBaseService *, QObject *>));
    QVERIFY((!isVirtualBase<QObject, oxBaseService>));
}

void tst_oxBaseService::dispatcherIsAVirtualBase()
{
    QVERIFY((std::is_convertible_v<oxBaseService *, oxDecouplingDispatcher *>));
    QVERIFY((isVirtualBase<oxDecouplingDispatcher, oxBaseService>));
}

void tst_oxBaseService::dispatcherHasOneAbstractOperationAndNothingElse()
{
    QVERIFY(std::is_abstract_v<oxDecouplingDispatcher>);
    QVERIFY(!std::has_virtual_destructor_v<oxDecouplingDispatcher>);
    QCOMPARE(sizeof(oxDecouplingDispatcher), sizeof(void *));
    QCOMPARE(virtualSlot(&oxDecouplingDispatcher::invokeMethod), std::ptrdiff_t(0));
}

void tst_oxBaseService::operationsFollowThoseOfQObject()
{
    QCOMPARE(virtualSlot(&oxBaseService::initialized), slotsOfQObject);
    QCOMPARE(virtualSlot(&oxBaseService::setClient), slotsOfQObject + 1);
    QCOMPARE(virtualSlot(&oxBaseService::invokeMethod), slotsOfQObject + 2);
}

void tst_oxBaseService::metaObjectHasTheNameOnly()
{
    const QMetaObject &metaObject = oxBaseService::staticMetaObject;

    QCOMPARE(metaObject.className(), "oxBaseService");
    QCOMPARE(metaObject.superClass(), &QObject::staticMetaObject);
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(metaObject.propertyCount(), metaObject.propertyOffset());
}

void tst_oxBaseService::parentOwnsTheService()
{
    QPointer<oxBaseService> service;
    {
        QObject parent;
        service = new oxBaseService(&parent);
        QCOMPARE(service->parent(), &parent);
    }

    QVERIFY(!service);
    QVERIFY(!oxBaseService().parent());
}

void tst_oxBaseService::hasNoClientAtFirst()
{
    QVERIFY(!oxBaseService().client());
}

void tst_oxBaseService::clientIsTheOneLastGiven()
{
    oxQRPCClient first;
    oxQRPCClient second;
    oxBaseService service;

    for (oxQRPCClient *client : {&first, &second, static_cast<oxQRPCClient *>(nullptr), &first}) {
        service.setClient(client);
        QCOMPARE(service.client(), client);
    }
    QVERIFY(first.services().isEmpty());
}

void tst_oxBaseService::initializedDoesNothing()
{
    oxQRPCClient client;
    oxBaseService service;
    service.setClient(&client);

    const Output output = outputOf([&] { service.initialized(); });
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
    QCOMPARE(service.client(), &client);
}

void tst_oxBaseService::invokeMethodCallsTheClient()
{
    oxQRPCClient client;
    oxBaseService service;
    service.setClient(&client);

    const Output output = outputOf([&] { service.invokeMethod(anyClass, anyMethod(), nullptr); });
    QCOMPARE(output.standardError, lineOfAnyCall);
}

void tst_oxBaseService::invokeMethodDoesNothingWithoutAClient()
{
    oxBaseService service;

    const Output output = outputOf([&] { service.invokeMethod(anyClass, anyMethod(), nullptr); });
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_oxBaseService::dispatcherPartReachesTheService()
{
    oxQRPCClient client;
    oxBaseService service;
    service.setClient(&client);
    oxDecouplingDispatcher *dispatcher = &service;

    QCOMPARE(dynamic_cast<QObject *>(dispatcher), &service);
    const Output output = outputOf([&] { dispatcher->invokeMethod(anyClass, anyMethod(), nullptr); });
    QCOMPARE(output.standardError, lineOfAnyCall);
}

QTEST_GUILESS_MAIN(tst_oxBaseService)
#include "tst_oxBaseService.moc"
