#include <QTest>
#include <QThread>

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
    const Output output = outputOf([] {
        for (int i = 0; i < 3; ++i)
            oxKernelInterface::the()->loopAll();
    });

    QVERIFY(calls.isEmpty());
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

QTEST_GUILESS_MAIN(tst_callAllInit)
#include "tst_callAllInit.moc"
