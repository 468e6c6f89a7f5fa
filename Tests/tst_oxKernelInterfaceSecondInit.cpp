#include "InterpreterLock.h"

#include <PythonQt.h>

#include <QTest>

#include "NextDefinition.h"
#include "OutputCapture.h"
#include "PrivateData.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"
#include "oxNodeService.h"
#include "oxQRPCClient.h"
#include "oxTreeService.h"
#include "oxdObjectManager.h"

namespace {

const QByteArray bindingLine = "python binding: oxMessageService\n";

QVector<const QMetaObject *> registeredDataObjects;

QList<oxBaseService *> services()
{
    return oxKernelServiceFactory::the()->getServices();
}

QVector<QPointer<oxBaseService>> watched(const QList<oxBaseService *> &services)
{
    QVector<QPointer<oxBaseService>> pointers;
    for (oxBaseService *service : services)
        pointers.append(service);
    return pointers;
}

QStringList classNames(const QList<oxBaseService *> &services)
{
    QStringList names;
    for (const oxBaseService *service : services)
        names.append(QString::fromLatin1(service->metaObject()->className()));
    return names;
}

QVariant evaluate(const QString &expression)
{
    const InterpreterLock lock;
    return oxKernelInterface::the()->getPythonEngine()->evalScript(expression, Py_eval_input);
}

} // namespace

unsigned long long oxdObjectManager::registerType(const QMetaObject *metaObject)
{
    registeredDataObjects.append(metaObject);
    using Function = unsigned long long(const QMetaObject *);
    return nextDefinition<Function>("_ZN16oxdObjectManager12registerTypeEPK11QMetaObject")(metaObject);
}

// The tests build on one another: a process has one interface.
class tst_oxKernelInterfaceSecondInit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void destroyingAnotherInterfaceLeavesServicesAndPythonAlive();
    void secondInitReplacesAllServices();
    void replacedServicesStayAlive();
    void secondInitStoresClientAndFlag();
    void secondInitRegistersTheDataObjectsAgain();
    void secondInitBindsTheNewServicesOnly();
    void secondInitPrintsTheBindingAgain();
    void pythonRunsOnAndSeesTheNewMessageService();
    void deletedServiceThatWasReplacedLeavesTheNewOneFiled();
    void deletedServiceIsNullWhereverItWasFiled();
    void serviceThatAScriptDeletesIsPassedOver();

private:
    oxQRPCClient m_firstClient;
    oxQRPCClient m_secondClient;
    QVector<QPointer<oxBaseService>> m_firstServices;
    QStringList m_firstClasses;
    PythonQtObjectPtr *m_firstEngine = nullptr;
    Output m_secondOutput;
};

void tst_oxKernelInterfaceSecondInit::initTestCase()
{
    auto *interface = oxKernelInterface::the();
    const Output output = outputOf([&] { interface->init(&m_firstClient, true); });
    QCOMPARE(output.standardOutput, bindingLine);
    QCOMPARE(privateData(interface)->initFlag, true);
    m_firstServices = watched(services());
    m_firstClasses = classNames(services());
    m_firstEngine = interface->getPythonEngine();
    QCOMPARE(m_firstServices.size(), 28);
    evaluate(QStringLiteral("globals().update(kept='from before')"));
}

void tst_oxKernelInterfaceSecondInit::destroyingAnotherInterfaceLeavesServicesAndPythonAlive()
{
    auto *other = new oxKernelInterface;
    *privateData(other) = *privateData(oxKernelInterface::the());
    delete other;

    QCOMPARE(watched(services()), m_firstServices);
    QVERIFY(!m_firstServices.contains(nullptr));
    QCOMPARE(m_firstClient.services().size(), 28);
    QCOMPARE(oxKernelInterface::the()->getPythonEngine(), m_firstEngine);
    QCOMPARE(evaluate(QStringLiteral("kept")).toString(), QStringLiteral("from before"));
}

void tst_oxKernelInterfaceSecondInit::secondInitReplacesAllServices()
{
    m_secondOutput = outputOf([this] { oxKernelInterface::the()->init(&m_secondClient, false); });

    QCOMPARE(classNames(services()), m_firstClasses);
    const QVector<QPointer<oxBaseService>> second = watched(services());
    for (const auto &service : second)
        QVERIFY2(!m_firstServices.contains(service), service->metaObject()->className());
}

void tst_oxKernelInterfaceSecondInit::replacedServicesStayAlive()
{
    for (const auto &service : qAsConst(m_firstServices)) {
        QVERIFY(service);
        QCOMPARE(service->client(), &m_firstClient);
    }
}

void tst_oxKernelInterfaceSecondInit::secondInitStoresClientAndFlag()
{
    QCOMPARE(privateData(oxKernelInterface::the())->client, &m_secondClient);
    QCOMPARE(privateData(oxKernelInterface::the())->initFlag, false);
}

void tst_oxKernelInterfaceSecondInit::secondInitRegistersTheDataObjectsAgain()
{
    QCOMPARE(registeredDataObjects.size(), 2 * 47);
    QCOMPARE(registeredDataObjects.mid(47), registeredDataObjects.mid(0, 47));
}

void tst_oxKernelInterfaceSecondInit::secondInitBindsTheNewServicesOnly()
{
    QCOMPARE(m_firstClient.services().size(), 28);
    QList<QObject *> expected;
    const QList<oxBaseService *> all = services();
    for (oxBaseService *service : all) {
        QCOMPARE(service->client(), &m_secondClient);
        expected.append(service);
    }
    QCOMPARE(m_secondClient.services(), expected);
}

void tst_oxKernelInterfaceSecondInit::secondInitPrintsTheBindingAgain()
{
    QCOMPARE(m_secondOutput.standardOutput, bindingLine);
    QCOMPARE(m_secondOutput.standardError, QByteArray());
}

void tst_oxKernelInterfaceSecondInit::pythonRunsOnAndSeesTheNewMessageService()
{
    QVERIFY(InterpreterLock::isFree());
    QCOMPARE(oxKernelInterface::the()->getPythonEngine(), m_firstEngine);
    QCOMPARE(evaluate(QStringLiteral("kept")).toString(), QStringLiteral("from before"));

    auto *message = oxKernelServiceFactory::the()->getService<oxMessageService>();
    message->setObjectName(QStringLiteral("the new one"));
    QCOMPARE(evaluate(QStringLiteral("oxMessageService.objectName")).toString(), QStringLiteral("the new one"));
}

void tst_oxKernelInterfaceSecondInit::deletedServiceThatWasReplacedLeavesTheNewOneFiled()
{
    const QList<oxBaseService *> before = services();
    for (const auto &service : qAsConst(m_firstServices))
        delete service;

    QCOMPARE(services(), before);
}

// A host has filed it under another key as well, and another one in its own place.
void tst_oxKernelInterfaceSecondInit::deletedServiceIsNullWhereverItWasFiled()
{
    auto *factory = oxKernelServiceFactory::the();
    oxBaseService *deleted = factory->getService<oxTreeService>();
    QList<oxBaseService *> expected = services();
    auto *replacement = new oxTreeService;
    expected[expected.indexOf(deleted)] = replacement;
    expected[expected.indexOf(factory->getService<oxNodeService>())] = nullptr;
    factory->fileService<oxNodeService>(deleted);
    factory->fileService<oxTreeService>(replacement);
    delete deleted;

    QCOMPARE(services(), expected);
    factory->forgetService(replacement);
    delete replacement;
}

void tst_oxKernelInterfaceSecondInit::serviceThatAScriptDeletesIsPassedOver()
{
    QList<oxBaseService *> expected = services();
    expected.removeAll(nullptr);
    QVERIFY(expected.removeOne(oxKernelServiceFactory::the()->getService<oxMessageService>()));
    evaluate(QStringLiteral("oxMessageService.delete()"));
    oxQRPCClient client;
    privateData(oxKernelInterface::the())->client = &client;
    oxKernelInterface::the()->registerServices();

    QCOMPARE(client.services().size(), expected.size());
    for (const oxBaseService *service : qAsConst(expected))
        QCOMPARE(service->client(), &client);
    outputOf([] { oxKernelInterface::the()->callAllInit(); }); // Qt warns that there is no such method
}

QTEST_MAIN(tst_oxKernelInterfaceSecondInit)
#include "tst_oxKernelInterfaceSecondInit.moc"
