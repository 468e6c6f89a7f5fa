// Before any header of Qt, as Python's own headers ask for.
#include <PythonQt.h>

#include <QTest>

#include <algorithm>

#include "NextDefinition.h"
#include "OutputCapture.h"
#include "PrivateData.h"
#include "oxActionService.h"
#include "oxAmbientOcclusionService.h"
#include "oxCameraService.h"
#include "oxClippingService.h"
#include "oxClusterService.h"
#include "oxConnectorService.h"
#include "oxControllerService.h"
#include "oxFileIOServiceRemoteImpl.h"
#include "oxGeometryService.h"
#include "oxKernelServiceFactory.h"
#include "oxKernelServiceRemoteImpl.h"
#include "oxMainWindowService.h"
#include "oxMaterialService.h"
#include "oxMessageService.h"
#include "oxNodeService.h"
#include "oxObjectService.h"
#include "oxOverlayService.h"
#include "oxPlatformService.h"
#include "oxPreferencesService.h"
#include "oxQRPCClient.h"
#include "oxRenderService.h"
#include "oxSequencerService.h"
#include "oxSurfaceAnalysisService.h"
#include "oxTouchSensorService.h"
#include "oxTransformService.h"
#include "oxTreeService.h"
#include "oxUndoService.h"
#include "oxVariantSetsService.h"
#include "oxVrpnTrackingService.h"
#include "oxdObjectManager.h"

using Lookup = oxBaseService *(*)();
Q_DECLARE_METATYPE(Lookup)

// Qt's own hooks for tools that look into a process.
extern quintptr Q_CORE_EXPORT qtHookData[];

namespace {

struct Step
{
    enum Kind { Created, TypesRegistered, DataObjectRegistered, ClientSet, RegisteredWithClient };

    Kind kind;
    const void *object;
};

// What init() does, in its order, and how things stand meanwhile.
struct Journal
{
    QVector<Step> steps;
    bool isRunning = false;
    bool pythonWasRunning = false;
    bool dataWasStored = true;
    bool wasFiledFirst = true;
    QByteArray outputBeforePython;
    const OutputCapture *capture = nullptr;

    void note(Step::Kind kind, const void *object)
    {
        if (!isRunning)
            return;
        steps.append({kind, object});
        if (kind != Step::Created)
            pythonWasRunning |= Py_IsInitialized() || oxKernelInterface::the()->getPythonEngine();
    }

    // A later object may have the address of one that is gone.
    void forgetCreation(const void *object)
    {
        steps.erase(
            std::remove_if(steps.begin(), steps.end(),
                           [object](const Step &step) { return step.kind == Step::Created && step.object == object; }),
            steps.end());
    }

    QVector<const void *> objects(Step::Kind kind) const
    {
        QVector<const void *> objects;
        for (const Step &step : steps) {
            if (step.kind == kind)
                objects.append(step.object);
        }
        return objects;
    }
};

Journal journal;
oxQRPCClient *expectedClient = nullptr;
QByteArray output;
QByteArray error;

QList<oxBaseService *> services()
{
    return oxKernelServiceFactory::the()->getServices();
}

template<class Object>
QVector<const void *> addresses(const QList<Object *> &objects)
{
    QVector<const void *> addresses;
    for (const QObject *object : objects)
        addresses.append(object);
    return addresses;
}

void noteCreatedObject(QObject *object)
{
    journal.note(Step::Created, object);
}

void forgetRemovedObject(QObject *object)
{
    journal.forgetCreation(object);
}

} // namespace

void oxKernelServiceFactory::registerTypes(oxBaseService *service) const
{
    journal.note(Step::TypesRegistered, service);
    const QList<oxBaseService *> filed = services();
    journal.wasFiledFirst &= !filed.isEmpty() && filed.last() == service;
    const oxKernelInterfaceP *data = privateData(oxKernelInterface::the());
    journal.dataWasStored &= data->client == expectedClient && data->initFlag;
    using Function = void(const oxKernelServiceFactory *, oxBaseService *);
    nextDefinition<Function>("_ZNK22oxKernelServiceFactory13registerTypesEP13oxBaseService")(this, service);
}

unsigned long long oxdObjectManager::registerType(const QMetaObject *metaObject)
{
    journal.note(Step::DataObjectRegistered, metaObject);
    using Function = unsigned long long(const QMetaObject *);
    return nextDefinition<Function>("_ZN16oxdObjectManager12registerTypeEPK11QMetaObject")(metaObject);
}

void oxBaseService::setClient(oxQRPCClient *client)
{
    journal.note(Step::ClientSet, this);
    using Function = void(oxBaseService *, oxQRPCClient *);
    nextDefinition<Function>("_ZN13oxBaseService9setClientEP12oxQRPCClient")(this, client);
}

void oxQRPCClient::registerService(QObject *service)
{
    journal.note(Step::RegisteredWithClient, service);
    if (journal.isRunning)
        journal.outputBeforePython = journal.capture->standardOutput();
    using Function = void(oxQRPCClient *, QObject *);
    nextDefinition<Function>("_ZN12oxQRPCClient15registerServiceEP7QObject")(this, service);
}

// One init() for all tests, which look at what it did.
class tst_oxKernelInterfaceInit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void clientAndFlagAreStoredFirst();
    void serviceIsCreatedAndFiled_data();
    void serviceIsCreatedAndFiled();
    void thereAre28DifferentServices();
    void servicesHaveNoParent();
    void kernelServiceIsThePlainOne();
    void fileServiceIsTheLocalOne();
    void eachServiceIsFiledBeforeTheNextIsCreated();
    void typesAreRegisteredOnceForEachServiceRightAfterItsFiling();
    void eachServiceHasTheClientAndIsRegisteredOnce();
    void eachServiceGetsTheClientThenIsRegisteredBeforeTheNext();
    void dataObjectsAreRegisteredBetweenFilingAndBinding();
    void pythonIsStartedLast();
    void initPrintsTheBindingOnly();

private:
    oxQRPCClient m_client;
};

void tst_oxKernelInterfaceInit::initTestCase()
{
    expectedClient = &m_client;
    constexpr int addQObject = 3;
    constexpr int removeQObject = 4;
    qtHookData[addQObject] = reinterpret_cast<quintptr>(&noteCreatedObject);
    qtHookData[removeQObject] = reinterpret_cast<quintptr>(&forgetRemovedObject);

    const OutputCapture capture;
    journal.capture = &capture;
    journal.isRunning = true;
    oxKernelInterface::the()->init(&m_client, true);
    journal.isRunning = false;
    qtHookData[addQObject] = 0;
    qtHookData[removeQObject] = 0;
    output = capture.standardOutput();
    error = capture.standardError();
}

void tst_oxKernelInterfaceInit::clientAndFlagAreStoredFirst()
{
    QVERIFY(journal.dataWasStored);
    QCOMPARE(privateData(oxKernelInterface::the())->client, &m_client);
    QCOMPARE(privateData(oxKernelInterface::the())->initFlag, true);
}

namespace {

template<class Interface>
void addService(int place, const char *className)
{
    const Lookup lookUp = []() -> oxBaseService * { return oxKernelServiceFactory::the()->getService<Interface>(); };
    QTest::newRow(className) << place << QByteArray(className) << lookUp;
}

} // namespace

void tst_oxKernelInterfaceInit::serviceIsCreatedAndFiled_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<Lookup>("lookUp");
    int place = 0;
    addService<oxBaseService>(++place, "oxBaseService");
    addService<oxKernelService>(++place, "oxKernelService");
    addService<oxFileIOService>(++place, "oxFileIOServiceRemoteImpl");
    addService<oxMainWindowService>(++place, "oxMainWindowServiceRemoteImpl");
    addService<oxMessageService>(++place, "oxMessageService");
    addService<oxRenderService>(++place, "oxRenderServiceRemoteImpl");
    addService<oxTreeService>(++place, "oxTreeService");
    addService<oxControllerService>(++place, "oxControllerService");
    addService<oxTouchSensorService>(++place, "oxTouchSensorService");
    addService<oxSequencerService>(++place, "oxSequencerService");
    addService<oxAmbientOcclusionService>(++place, "oxAmbientOcclusionService");
    addService<oxOverlayService>(++place, "oxOverlayService");
    addService<oxTransformService>(++place, "oxTransformService");
    addService<oxPlatformService>(++place, "oxPlatformService");
    addService<oxPreferencesService>(++place, "oxPreferencesServiceRemoteImpl");
    addService<oxClippingService>(++place, "oxClippingService");
    addService<oxVariantSetsService>(++place, "oxVariantSetsService");
    addService<oxSurfaceAnalysisService>(++place, "oxSurfaceAnalysisService");
    addService<oxVrpnTrackingService>(++place, "oxVrpnTrackingService");
    addService<oxMaterialService>(++place, "oxMaterialService");
    addService<oxGeometryService>(++place, "oxGeometryService");
    addService<oxCameraService>(++place, "oxCameraService");
    addService<oxNodeService>(++place, "oxNodeService");
    addService<oxConnectorService>(++place, "oxConnectorService");
    addService<oxObjectService>(++place, "oxObjectService");
    addService<oxClusterService>(++place, "oxClusterService");
    addService<oxActionService>(++place, "oxActionService");
    addService<oxUndoService>(++place, "oxUndoService");
}

void tst_oxKernelInterfaceInit::serviceIsCreatedAndFiled()
{
    QFETCH(int, place);
    QFETCH(QByteArray, className);
    QFETCH(Lookup, lookUp);
    const oxBaseService *service = services().value(place - 1);

    QVERIFY(service);
    QCOMPARE(service->metaObject()->className(), className);
    QCOMPARE(lookUp(), service);
}

void tst_oxKernelInterfaceInit::thereAre28DifferentServices()
{
    const QList<oxBaseService *> all = services();
    QCOMPARE(all.size(), 28);
    for (oxBaseService *service : all)
        QCOMPARE(all.count(service), 1);
}

void tst_oxKernelInterfaceInit::servicesHaveNoParent()
{
    const QList<oxBaseService *> all = services();
    for (const oxBaseService *service : all)
        QVERIFY2(!service->parent(), service->metaObject()->className());
}

void tst_oxKernelInterfaceInit::kernelServiceIsThePlainOne()
{
    auto *service = oxKernelServiceFactory::the()->getService<oxKernelService>();

    QVERIFY(service);
    QVERIFY(!dynamic_cast<oxKernelServiceRemoteImpl *>(service));
    QVERIFY(!service->inherits("oxKernelServiceRemoteImpl"));
}

void tst_oxKernelInterfaceInit::fileServiceIsTheLocalOne()
{
    QVERIFY(dynamic_cast<oxFileIOServiceRemoteImpl *>(oxKernelServiceFactory::the()->getService<oxFileIOService>()));
}

void tst_oxKernelInterfaceInit::eachServiceIsFiledBeforeTheNextIsCreated()
{
    const QVector<const void *> all = addresses(services());
    QVector<const void *> created;
    for (const Step &step : qAsConst(journal.steps)) {
        if (!all.contains(step.object))
            continue;
        if (step.kind == Step::Created)
            created.append(step.object);
        else if (step.kind == Step::TypesRegistered)
            QCOMPARE(created.last(), step.object);
    }
    QCOMPARE(created, all);
}

void tst_oxKernelInterfaceInit::typesAreRegisteredOnceForEachServiceRightAfterItsFiling()
{
    QCOMPARE(journal.objects(Step::TypesRegistered), addresses(services()));
    QVERIFY(journal.wasFiledFirst);
}

void tst_oxKernelInterfaceInit::eachServiceHasTheClientAndIsRegisteredOnce()
{
    const QList<oxBaseService *> all = services();
    for (const oxBaseService *service : all)
        QCOMPARE(service->client(), &m_client);
    QCOMPARE(addresses(m_client.services()), addresses(all));
}

void tst_oxKernelInterfaceInit::eachServiceGetsTheClientThenIsRegisteredBeforeTheNext()
{
    QVector<QPair<Step::Kind, const void *>> steps;
    for (const Step &step : qAsConst(journal.steps)) {
        if (step.kind == Step::ClientSet || step.kind == Step::RegisteredWithClient)
            steps.append({step.kind, step.object});
    }
    QVector<QPair<Step::Kind, const void *>> expected;
    for (const void *service : addresses(services())) {
        expected.append({Step::ClientSet, service});
        expected.append({Step::RegisteredWithClient, service});
    }
    QCOMPARE(steps, expected);
}

void tst_oxKernelInterfaceInit::dataObjectsAreRegisteredBetweenFilingAndBinding()
{
    QVector<Step::Kind> phases;
    for (const Step &step : qAsConst(journal.steps)) {
        if (step.kind != Step::Created && (phases.isEmpty() || phases.last() != step.kind))
            phases.append(step.kind);
    }
    const QVector<Step::Kind> expected{Step::TypesRegistered, Step::DataObjectRegistered, Step::ClientSet};
    QCOMPARE(phases.mid(0, 3), expected);
    QCOMPARE(phases.count(Step::TypesRegistered), 1);
    QCOMPARE(phases.count(Step::DataObjectRegistered), 1);
    QCOMPARE(journal.objects(Step::DataObjectRegistered).size(), 47);
}

void tst_oxKernelInterfaceInit::pythonIsStartedLast()
{
    QVERIFY(!journal.pythonWasRunning);
    QCOMPARE(journal.outputBeforePython, QByteArray());
    QVERIFY(Py_IsInitialized());
    QVERIFY(oxKernelInterface::the()->getPythonEngine());
}

void tst_oxKernelInterfaceInit::initPrintsTheBindingOnly()
{
    QCOMPARE(output, QByteArray("python binding: oxMessageService\n"));
    QCOMPARE(error, QByteArray());
}

QTEST_MAIN(tst_oxKernelInterfaceInit)
#include "tst_oxKernelInterfaceInit.moc"
