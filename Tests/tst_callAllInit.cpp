#include <QTest>
#include <QThread>

#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

#include "OutputCapture.h"
#include "oxFileIOService.h"
#include "oxKernelInterfaceRemote.h"
#include "oxKernelService.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"
#include "oxRenderService.h"

namespace {

struct Call
{
    const QObject *service;
    const QThread *thread;
};

QVector<Call> calls;

void note(const QObject *service)
{
    calls.append({service, QThread::currentThread()});
}

QVector<const QObject *> calledServices()
{
    QVector<const QObject *> services;
    for (const Call &call : calls)
        services.append(call.service);
    return services;
}

} // namespace

class ServiceWithSlot : public oxMessageService
{
    Q_OBJECT

public Q_SLOTS:
    void init() { note(this); }
};

class ServiceWithPrivateSlot : public oxKernelService
{
    Q_OBJECT

private Q_SLOTS:
    void init() { note(this); }
};

class ServiceWithInvokable : public oxRenderService
{
    Q_OBJECT

public:
    Q_INVOKABLE bool init(int level = 7)
    {
        note(this);
        return level != 7; // no one looks at it
    }
};

class ServiceWithOtherInit : public oxFileIOService
{
    Q_OBJECT

public Q_SLOTS:
    void init(int) { note(this); }
};

class ServiceThatThrows : public oxMainWindowService
{
    Q_OBJECT

public Q_SLOTS:
    void init()
    {
        note(this);
        throw std::runtime_error("init");
    }
};

class ServiceThatActs : public oxRenderService
{
    Q_OBJECT

public:
    explicit ServiceThatActs(std::function<void()> action)
        : m_action(std::move(action))
    {}

public Q_SLOTS:
    void init()
    {
        note(this);
        m_action();
    }

private:
    std::function<void()> m_action;
};

class tst_callAllInit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void servicesAreInitializedInTheOrderOfTheRegistry();
    void slotsAndInvokablesAreCalledAtOnceInTheCallingThread();
    void repeatedCallsInitializeAgain();
    void serviceWithoutInitIsSkippedWithTheWarningOfQt();
    void nullServiceIsSkipped();
    void serviceThatIsFiledMeanwhileIsNotInitialized();
    void serviceThatIsReplacedMeanwhileIsStillInitialized();
    void serviceThatIsDeletedBeforeItsTurnIsSkipped();
    void serviceMayDeleteItself();
    void exceptionReachesTheCaller();
    void loopAllDoesNothing();

private:
    template<class Interface>
    static void file(oxBaseService *service)
    {
        oxKernelServiceFactory::the()->fileService<Interface>(service);
    }

    ServiceWithSlot m_slot;
    ServiceWithPrivateSlot m_privateSlot;
    ServiceWithInvokable m_invokable;
};

// The registry is one for the process and never empty again: so this comes first.
void tst_callAllInit::initTestCase()
{
    QVERIFY(oxKernelServiceFactory::the()->getServices().isEmpty());
    const Output output = outputOf([] { oxKernelInterface::the()->callAllInit(); });
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_callAllInit::init()
{
    file<oxRenderService>(&m_invokable);
    file<oxMessageService>(&m_slot);
    file<oxKernelService>(&m_privateSlot);
    file<oxFileIOService>(nullptr);
    file<oxMainWindowService>(nullptr);
    calls.clear();
}

void tst_callAllInit::servicesAreInitializedInTheOrderOfTheRegistry()
{
    const Output output = outputOf([] { oxKernelInterface::the()->callAllInit(); });

    const QVector<const QObject *> expected{&m_invokable, &m_slot, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_callAllInit::slotsAndInvokablesAreCalledAtOnceInTheCallingThread()
{
    const QThread *thread = nullptr;
    std::thread([&] {
        thread = QThread::currentThread();
        oxKernelInterface::the()->callAllInit();
    }).join();

    QVERIFY(thread != m_slot.thread());
    QCOMPARE(calls.size(), 3);
    for (const Call &call : qAsConst(calls))
        QCOMPARE(call.thread, thread);
}

void tst_callAllInit::repeatedCallsInitializeAgain()
{
    for (int i = 1; i <= 3; ++i) {
        oxKernelInterface::the()->callAllInit();
        QCOMPARE(calls.size(), 3 * i);
    }
}

void tst_callAllInit::serviceWithoutInitIsSkippedWithTheWarningOfQt()
{
    ServiceWithOtherInit other;
    oxMainWindowService plain;
    file<oxFileIOService>(&other);
    file<oxMainWindowService>(&plain);
    const Output output = outputOf([] { oxKernelInterface::the()->callAllInit(); });

    QCOMPARE(calls.size(), 3);
    QCOMPARE(output.standardError,
             QByteArray("QMetaObject::invokeMethod: No such method ServiceWithOtherInit::init()\n"
                        "Candidates are:\n    init(int)\n"
                        "QMetaObject::invokeMethod: No such method oxMainWindowService::init()\n"));
    QCOMPARE(output.standardOutput, QByteArray());
}

void tst_callAllInit::nullServiceIsSkipped()
{
    file<oxMessageService>(nullptr);
    oxKernelInterface::the()->callAllInit();

    const QVector<const QObject *> expected{&m_invokable, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::serviceThatIsFiledMeanwhileIsNotInitialized()
{
    ServiceWithSlot later;
    ServiceThatActs acting([&later] { file<oxMainWindowService>(&later); });
    file<oxRenderService>(&acting);
    oxKernelInterface::the()->callAllInit();

    const QVector<const QObject *> expected{&acting, &m_slot, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::serviceThatIsReplacedMeanwhileIsStillInitialized()
{
    ServiceWithSlot replacement;
    ServiceThatActs acting([&replacement] { file<oxMessageService>(&replacement); });
    file<oxRenderService>(&acting);
    oxKernelInterface::the()->callAllInit();

    const QVector<const QObject *> expected{&acting, &m_slot, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::serviceThatIsDeletedBeforeItsTurnIsSkipped()
{
    auto deleted = std::make_unique<ServiceWithSlot>();
    ServiceThatActs acting([&deleted] { deleted.reset(); });
    file<oxRenderService>(&acting);
    file<oxMessageService>(deleted.get());
    oxKernelInterface::the()->callAllInit();

    const QVector<const QObject *> expected{&acting, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::serviceMayDeleteItself()
{
    ServiceThatActs *acting = nullptr;
    acting = new ServiceThatActs([&acting] { delete acting; });
    file<oxRenderService>(acting);
    oxKernelInterface::the()->callAllInit();

    const QVector<const QObject *> expected{acting, &m_slot, &m_privateSlot};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::exceptionReachesTheCaller()
{
    ServiceThatThrows throwing;
    file<oxMessageService>(&throwing);

    QVERIFY_EXCEPTION_THROWN(oxKernelInterface::the()->callAllInit(), std::runtime_error);
    const QVector<const QObject *> expected{&m_invokable, &throwing};
    QCOMPARE(calledServices(), expected);
}

void tst_callAllInit::loopAllDoesNothing()
{
    bool isProcessed = false;
    QMetaObject::invokeMethod(
        this, [&isProcessed] { isProcessed = true; }, Qt::QueuedConnection);
    const QPointer<QObject> deletedLater = new QObject;
    deletedLater->deleteLater();
    const Output output = outputOf([] {
        for (int i = 0; i < 3; ++i)
            oxKernelInterface::the()->loopAll();
    });

    QVERIFY(!isProcessed);
    QVERIFY(deletedLater);
    QVERIFY(calls.isEmpty());
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
    QCoreApplication::processEvents(); // or else the call is made when the variable is gone
}

QTEST_GUILESS_MAIN(tst_callAllInit)
#include "tst_callAllInit.moc"
