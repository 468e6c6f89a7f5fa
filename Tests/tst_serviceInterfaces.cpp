#include <QMetaMethod>
#include <QTest>

#include <memory>

#include "VirtualSlot.h"
#include "oxActionService.h"
#include "oxAmbientOcclusionService.h"
#include "oxCameraService.h"
#include "oxClippingService.h"
#include "oxClusterService.h"
#include "oxConnectorService.h"
#include "oxControllerService.h"
#include "oxFileIOServiceRemoteImpl.h"
#include "oxGeometryService.h"
#include "oxKernelServiceRemoteImpl.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxMaterialService.h"
#include "oxMessageService.h"
#include "oxNodeService.h"
#include "oxObjectService.h"
#include "oxOverlayService.h"
#include "oxPlatformService.h"
#include "oxPreferencesServiceRemoteImpl.h"
#include "oxRenderServiceRemoteImpl.h"
#include "oxSequencerService.h"
#include "oxSurfaceAnalysisService.h"
#include "oxTouchSensorService.h"
#include "oxTransformService.h"
#include "oxTreeService.h"
#include "oxUndoService.h"
#include "oxVariantSetsService.h"
#include "oxVrpnTrackingService.h"

using ServicePointer = std::shared_ptr<oxBaseService>;

// An operation of an interface, in the order of the table of virtual functions.
struct Operation
{
    const char *signature;
    std::ptrdiff_t slot;
    bool isOverridden = false; // by the local subclass
};
constexpr bool overridden = true;

struct Interface
{
    QByteArray name;
    ServicePointer plain;
    ServicePointer remote;
    QVector<Operation> operations;
};

Q_DECLARE_METATYPE(ServicePointer)
Q_DECLARE_METATYPE(const QMetaObject *)

namespace {

const std::ptrdiff_t slotOfEvent = virtualSlot(&QObject::event);
const std::ptrdiff_t slotOfEventFilter = virtualSlot(&QObject::eventFilter);
const std::ptrdiff_t lastSlotOfBase = virtualSlot(&oxBaseService::invokeMethod);

Interface kernelService()
{
    using T = oxKernelService;
    return {"oxKernelService",
            std::make_shared<T>(),
            std::make_shared<oxKernelServiceRemoteImpl>(),
            {
                {"initialize(bool)", virtualSlot(&T::initialize)},
                {"terminate(bool)", virtualSlot(&T::terminate)},
                {"salt()", virtualSlot(&T::salt)},
                {"authenticate(QString)", virtualSlot(&T::authenticate)},
                {"consoleLog(QString)", virtualSlot(&T::consoleLog), overridden},
            }};
}

Interface fileIOService()
{
    using T = oxFileIOService;
    return {"oxFileIOService",
            std::make_shared<T>(),
            std::make_shared<oxFileIOServiceRemoteImpl>(),
            {
                {"newFile()", virtualSlot(&T::newFile)},
                {"loadFile(QString)", virtualSlot(&T::loadFile), overridden},
                {"saveFile(QString)", virtualSlot(&T::saveFile)},
                {"getTARNDir()", virtualSlot(&T::getTARNDir)},
                {"getTARNDataDir()", virtualSlot(&T::getTARNDataDir)},
                {"getTARNExamplesDir()", virtualSlot(&T::getTARNExamplesDir)},
                {"getImageReadFilter()", virtualSlot(&T::getImageReadFilter)},
                {"getImageWriteFilter()", virtualSlot(&T::getImageWriteFilter)},
            }};
}

Interface mainWindowService()
{
    using T = oxMainWindowService;
    return {"oxMainWindowService",
            std::make_shared<T>(),
            std::make_shared<oxMainWindowServiceRemoteImpl>(),
            {
                {"setWidget(QMainWindow*)", virtualSlot(&T::setWidget), overridden},
                {"getWidget()", virtualSlot(&T::getWidget), overridden},
                {"addModule(QString,QString,QWidget*,QString,QIcon,QString,Qt::DockWidgetArea)",
                 virtualSlot(&T::addModule), overridden},
                {"getModule(QString)", virtualSlot(&T::getModule), overridden},
                {"changeModule(QString,QString,QWidget*)", virtualSlot(&T::changeModule), overridden},
                {"subModule(QString)", virtualSlot(&T::subModule), overridden},
                {"showModule(QString)", virtualSlot(&T::showModule), overridden},
                {"hideModule(QString)", virtualSlot(&T::hideModule), overridden},
                {"addSeparator(QString)", virtualSlot(&T::addSeparator), overridden},
                {"getSceneMenu()", virtualSlot(&T::getSceneMenu), overridden},
                {"getSimpleSceneMenu()", virtualSlot(&T::getSimpleSceneMenu), overridden},
                {"getViewMenu()", virtualSlot(&T::getViewMenu), overridden},
                {"getImportMenu()", virtualSlot(&T::getImportMenu), overridden},
                {"getExportMenu()", virtualSlot(&T::getExportMenu), overridden},
                {"getSynchronisationToolBar()", virtualSlot(&T::getSynchronisationToolBar), overridden},
                {"setModuleWidget(const char*,QWidget*)", virtualSlot(&T::setModuleWidget), overridden},
            }};
}

Interface preferencesService()
{
    using T = oxPreferencesService;
    return {"oxPreferencesService",
            std::make_shared<T>(),
            std::make_shared<oxPreferencesServiceRemoteImpl>(nullptr),
            {
                {"setDefault(QString)", virtualSlot(qOverload<const QString &>(&T::setDefault))},
                {"setDefault()", virtualSlot(qOverload<>(&T::setDefault))},
                {"saveChanges()", virtualSlot(&T::saveChanges)},
                {"applyChanges(QString)", virtualSlot(qOverload<const QString &>(&T::applyChanges))},
                {"applyChanges()", virtualSlot(qOverload<>(&T::applyChanges))},
                {"showPreferences()", virtualSlot(&T::showPreferences)},
                {"addToPreferences(QString,QString,QWidget*)", virtualSlot(&T::addToPreferences), overridden},
                {"subFromPreferences(QWidget*)", virtualSlot(&T::subFromPreferences), overridden},
                {"setWidget(QMainWindow*)", virtualSlot(&T::setWidget), overridden},
                {"getWidget()", virtualSlot(&T::getWidget), overridden},
                {"getStringValue(QString)", virtualSlot(&T::getStringValue)},
                {"getIntValue(QString)", virtualSlot(&T::getIntValue)},
                {"getDoubleValue(QString)", virtualSlot(&T::getDoubleValue)},
                {"getFloatValue(QString)", virtualSlot(&T::getFloatValue)},
                {"getBoolValue(QString)", virtualSlot(&T::getBoolValue)},
                {"setStringValue(QString,QString)", virtualSlot(&T::setStringValue)},
                {"setIntValue(QString,int)", virtualSlot(&T::setIntValue)},
                {"setDoubleValue(QString,double)", virtualSlot(&T::setDoubleValue)},
                {"setFloatValue(QString,float)", virtualSlot(&T::setFloatValue)},
                {"setBoolValue(QString,bool)", virtualSlot(&T::setBoolValue)},
            }};
}

Interface renderService()
{
    using T = oxRenderService;
    return {"oxRenderService",
            std::make_shared<T>(),
            std::make_shared<oxRenderServiceRemoteImpl>(),
            {
                {"initialize(bool)", virtualSlot(&T::initialize)},
                {"terminate(bool)", virtualSlot(&T::terminate)},
                {"getSharedMemoryName()", virtualSlot(&T::getSharedMemoryName)},
                {"getWidth()", virtualSlot(&T::getWidth)},
                {"getHeight()", virtualSlot(&T::getHeight)},
                {"resize(int,int)", virtualSlot(&T::resize)},
                {"setQuality(int)", virtualSlot(&T::setQuality)},
                {"getQuality()", virtualSlot(&T::getQuality)},
                {"setBitrate(int)", virtualSlot(&T::setBitrate)},
                {"getBitrate()", virtualSlot(&T::getBitrate)},
                {"setCodec(int)", virtualSlot(&T::setCodec)},
                {"getCodec()", virtualSlot(&T::getCodec)},
                {"getFrameBuffer()", virtualSlot(&T::getFrameBuffer)},
                {"getCompressedFrameBuffer()", virtualSlot(&T::getCompressedFrameBuffer)},
                {"keyPress(int,int,int,int)", virtualSlot(&T::keyPress)},
                {"keyRelease(int,int,int,int)", virtualSlot(&T::keyRelease)},
                {"mouseDoubleClick(int,int,int,int)", virtualSlot(&T::mouseDoubleClick)},
                {"mousePress(int,int,int,int)", virtualSlot(&T::mousePress)},
                {"mouseRelease(int,int,int,int)", virtualSlot(&T::mouseRelease)},
                {"mouseMove(int,int,int,int)", virtualSlot(&T::mouseMove)},
                {"mouseWheel(int,int,int,int)", virtualSlot(&T::mouseWheel)},
                {"sendTouchEvent(QByteArray)", virtualSlot(&T::sendTouchEvent)},
                {"indicateOverlay(bool)", virtualSlot(&T::indicateOverlay), overridden},
                {"showOverlay()", virtualSlot(&T::showOverlay), overridden},
                {"hideOverlay()", virtualSlot(&T::hideOverlay), overridden},
                {"addOverlay(QString)", virtualSlot(&T::addOverlay), overridden},
                {"subOverlay(QString)", virtualSlot(&T::subOverlay), overridden},
                {"updateOverlay(QString)", virtualSlot(&T::updateOverlay), overridden},
            }};
}

Interface materialService()
{
    using T = oxMaterialService;
    return {"oxMaterialService",
            std::make_shared<T>(),
            std::make_shared<T>(),
            {
                {"getMaterials()", virtualSlot(&T::getMaterials)},
                {"getNames(QList<oxdMaterial>)", virtualSlot(&T::getNames)},
                {"getTypes(QList<oxdMaterial>)", virtualSlot(&T::getTypes)},
                {"getColors(QList<oxdMaterial>)", virtualSlot(&T::getColors)},
                {"setColor(QList<oxdMaterial>,QColor)", virtualSlot(&T::setColor)},
                {"getGloss(QList<oxdMaterial>)", virtualSlot(&T::getGloss)},
                {"setGloss(QList<oxdMaterial>,double)", virtualSlot(&T::setGloss)},
            }};
}

Interface cameraService()
{
    using T = oxCameraService;
    return {"oxCameraService",
            std::make_shared<T>(),
            std::make_shared<T>(),
            {
                {"getCameras()", virtualSlot(&T::getCameras)},
                {"getNames(QList<oxdSceneObject>)", virtualSlot(&T::getNames)},
                {"getActiveCamera()", virtualSlot(&T::getActiveCamera)},
                {"setActiveCamera(QList<oxdSceneObject>)", virtualSlot(&T::setActiveCamera)},
                {"getAzimuth()", virtualSlot(&T::getAzimuth)},
                {"getElevation()", virtualSlot(&T::getElevation)},
                {"getDistance()", virtualSlot(&T::getDistance)},
                {"setView(double,double,double)", virtualSlot(&T::setView)},
                {"orbit(double,double)", virtualSlot(&T::orbit)},
                {"zoom(double)", virtualSlot(&T::zoom)},
                {"reset()", virtualSlot(&T::reset)},
                {"isTurning()", virtualSlot(&T::isTurning)},
                {"setTurning(bool)", virtualSlot(&T::setTurning)},
            }};
}

Interface nodeService()
{
    using T = oxNodeService;
    return {"oxNodeService",
            std::make_shared<T>(),
            std::make_shared<T>(),
            {
                {"getNodes()", virtualSlot(&T::getNodes)},
                {"getNames(QVector<oxdNode>)", virtualSlot(&T::getNames)},
                {"getVisible(QVector<oxdNode>)", virtualSlot(&T::getVisible)},
                {"setVisible(QVector<oxdNode>,bool)", virtualSlot(&T::setVisible)},
                {"getMaterials(QVector<oxdNode>)", virtualSlot(&T::getMaterials)},
                {"setMaterial(QVector<oxdNode>,QList<oxdMaterial>)", virtualSlot(&T::setMaterial)},
            }};
}

Interface undoService()
{
    using T = oxUndoService;
    return {"oxUndoService",
            std::make_shared<T>(),
            std::make_shared<T>(),
            {
                {"undo()", virtualSlot(&T::undo)},
                {"redo()", virtualSlot(&T::redo)},
                {"canUndo()", virtualSlot(&T::canUndo)},
                {"canRedo()", virtualSlot(&T::canRedo)},
                {"undoText()", virtualSlot(&T::undoText)},
                {"redoText()", virtualSlot(&T::redoText)},
            }};
}

// The last four have no local subclass.
QVector<Interface> interfaces()
{
    return {kernelService(),   fileIOService(), mainWindowService(), preferencesService(), renderService(),
            materialService(), cameraService(), nodeService(),       undoService()};
}

template<class Service, class Base = oxBaseService, class... Arguments>
void addService(const char *name, Arguments... arguments)
{
    QTest::newRow(name) << ServicePointer(std::make_shared<Service>(arguments...)) << &Service::staticMetaObject
                        << &Base::staticMetaObject;
}

QByteArray describe(const QMetaMethod &method)
{
    static const QHash<int, QByteArray> access{
        {QMetaMethod::Private, "private"}, {QMetaMethod::Protected, "protected"}, {QMetaMethod::Public, "public"}};
    static const QHash<int, QByteArray> type{
        {QMetaMethod::Method, "method"}, {QMetaMethod::Signal, "signal"}, {QMetaMethod::Slot, "slot"}};
    return access.value(method.access()) + ' ' + type.value(method.methodType()) + ' ' + method.typeName() + ' '
        + method.methodSignature() + ' ' + method.parameterNames().join(',');
}

QList<QByteArray> ownMethods(const QMetaObject &metaObject)
{
    QList<QByteArray> methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i)
        methods.append(describe(metaObject.method(i)).trimmed());
    return methods;
}

} // namespace

class tst_serviceInterfaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void classHasItsPlaceInTheTree_data();
    void classHasItsPlaceInTheTree();
    void operationStandsInItsSlot_data();
    void operationStandsInItsSlot();
    void operationIsKnownByItsSignature_data();
    void operationIsKnownByItsSignature();
    void subclassOverridesWhatItShouldAndNothingElse_data();
    void subclassOverridesWhatItShouldAndNothingElse();
    void subclassHasTheseMethodsOfItsOwn_data();
    void subclassHasTheseMethodsOfItsOwn();
    void signalIsKnownByItsSignature_data();
    void signalIsKnownByItsSignature();
};

void tst_serviceInterfaces::classHasItsPlaceInTheTree_data()
{
    QTest::addColumn<ServicePointer>("service");
    QTest::addColumn<const QMetaObject *>("metaObject");
    QTest::addColumn<const QMetaObject *>("base");

    addService<oxBaseService, QObject>("oxBaseService");
    addService<oxKernelService>("oxKernelService");
    addService<oxFileIOService>("oxFileIOService");
    addService<oxMainWindowService>("oxMainWindowService");
    addService<oxMessageService>("oxMessageService");
    addService<oxRenderService>("oxRenderService");
    addService<oxTreeService>("oxTreeService");
    addService<oxControllerService>("oxControllerService");
    addService<oxTouchSensorService>("oxTouchSensorService");
    addService<oxSequencerService>("oxSequencerService");
    addService<oxAmbientOcclusionService>("oxAmbientOcclusionService");
    addService<oxOverlayService>("oxOverlayService");
    addService<oxTransformService>("oxTransformService");
    addService<oxPlatformService>("oxPlatformService");
    addService<oxPreferencesService>("oxPreferencesService");
    addService<oxClippingService>("oxClippingService");
    addService<oxVariantSetsService>("oxVariantSetsService");
    addService<oxSurfaceAnalysisService>("oxSurfaceAnalysisService");
    addService<oxVrpnTrackingService>("oxVrpnTrackingService");
    addService<oxMaterialService>("oxMaterialService");
    addService<oxGeometryService>("oxGeometryService");
    addService<oxCameraService>("oxCameraService");
    addService<oxNodeService>("oxNodeService");
    addService<oxConnectorService>("oxConnectorService");
    addService<oxObjectService>("oxObjectService");
    addService<oxClusterService>("oxClusterService");
    addService<oxActionService>("oxActionService");
    addService<oxUndoService>("oxUndoService");

    addService<oxKernelServiceRemoteImpl, oxKernelService>("oxKernelServiceRemoteImpl");
    addService<oxFileIOServiceRemoteImpl, oxFileIOService>("oxFileIOServiceRemoteImpl");
    addService<oxMainWindowServiceRemoteImpl, oxMainWindowService>("oxMainWindowServiceRemoteImpl");
    addService<oxRenderServiceRemoteImpl, oxRenderService>("oxRenderServiceRemoteImpl");
    addService<oxPreferencesServiceRemoteImpl, oxPreferencesService>("oxPreferencesServiceRemoteImpl", nullptr);
}

void tst_serviceInterfaces::classHasItsPlaceInTheTree()
{
    QFETCH(ServicePointer, service);
    QFETCH(const QMetaObject *, metaObject);
    QFETCH(const QMetaObject *, base);

    QCOMPARE(metaObject->className(), QTest::currentDataTag());
    QCOMPARE(service->metaObject(), metaObject);
    QCOMPARE(metaObject->superClass(), base);
    QCOMPARE(service->qt_metacast(metaObject->className()), static_cast<void *>(service.get()));
    QCOMPARE(service->qt_metacast(base->className()), static_cast<void *>(service.get()));
    QVERIFY(!service->qt_metacast("QWidget"));
    QVERIFY(!service->parent());
}

void tst_serviceInterfaces::operationStandsInItsSlot_data()
{
    QTest::addColumn<qint64>("slot");
    QTest::addColumn<qint64>("expected");
    for (const Interface &interface : interfaces()) {
        qint64 expected = lastSlotOfBase;
        for (const Operation &operation : interface.operations)
            QTest::newRow(interface.name + "::" + operation.signature) << qint64(operation.slot) << ++expected;
    }
}

void tst_serviceInterfaces::operationStandsInItsSlot()
{
    QFETCH(qint64, slot);
    QFETCH(qint64, expected);

    QCOMPARE(slot, expected);
}

void tst_serviceInterfaces::operationIsKnownByItsSignature_data()
{
    QTest::addColumn<ServicePointer>("service");
    QTest::addColumn<QByteArray>("signature");
    for (const Interface &interface : interfaces()) {
        for (const Operation &operation : interface.operations)
            QTest::newRow(interface.name + "::" + operation.signature)
                << interface.plain << QByteArray(operation.signature);
    }
}

void tst_serviceInterfaces::operationIsKnownByItsSignature()
{
    QFETCH(ServicePointer, service);
    QFETCH(QByteArray, signature);
    const QMetaObject *metaObject = service->metaObject();

    QVERIFY(metaObject->indexOfSlot(QMetaObject::normalizedSignature(signature)) >= metaObject->methodOffset());
}

void tst_serviceInterfaces::subclassOverridesWhatItShouldAndNothingElse_data()
{
    QTest::addColumn<ServicePointer>("plain");
    QTest::addColumn<ServicePointer>("remote");
    QTest::addColumn<qint64>("slot");
    QTest::addColumn<bool>("isOverridden");
    for (const Interface &interface : interfaces()) {
        const auto addRow = [&interface](const char *signature, std::ptrdiff_t slot, bool isOverridden) {
            QTest::newRow(interface.name + "::" + signature)
                << interface.plain << interface.remote << qint64(slot) << isOverridden;
        };
        addRow("event(QEvent*)", slotOfEvent, false);
        addRow("eventFilter(QObject*,QEvent*)", slotOfEventFilter, interface.name == "oxRenderService");
        for (std::ptrdiff_t slot = slotOfEventFilter + 1; slot <= lastSlotOfBase; ++slot)
            addRow(QByteArray::number(qint64(slot)), slot, false);
        for (const Operation &operation : interface.operations)
            addRow(operation.signature, operation.slot, operation.isOverridden);
    }
}

void tst_serviceInterfaces::subclassOverridesWhatItShouldAndNothingElse()
{
    QFETCH(ServicePointer, plain);
    QFETCH(ServicePointer, remote);
    QFETCH(qint64, slot);
    QFETCH(bool, isOverridden);

    QCOMPARE(functionInSlot(remote.get(), slot) != functionInSlot(plain.get(), slot), isOverridden);
}

void tst_serviceInterfaces::subclassHasTheseMethodsOfItsOwn_data()
{
    using Methods = QList<QByteArray>;
    QTest::addColumn<const QMetaObject *>("metaObject");
    QTest::addColumn<Methods>("methods");

    QTest::newRow("kernel") << &oxKernelServiceRemoteImpl::staticMetaObject << Methods();
    QTest::newRow("file I/O") << &oxFileIOServiceRemoteImpl::staticMetaObject
                              << Methods{"private slot void changedProgress(int) p"};
    QTest::newRow("main window") << &oxMainWindowServiceRemoteImpl::staticMetaObject << Methods();
    QTest::newRow("render") << &oxRenderServiceRemoteImpl::staticMetaObject
                            << Methods{"private slot void twTimerFinished()"};
    QTest::newRow("preferences") << &oxPreferencesServiceRemoteImpl::staticMetaObject << Methods();
}

void tst_serviceInterfaces::subclassHasTheseMethodsOfItsOwn()
{
    QFETCH(const QMetaObject *, metaObject);
    QFETCH(QList<QByteArray>, methods);

    QCOMPARE(ownMethods(*metaObject), methods);
    QCOMPARE(metaObject->propertyCount(), metaObject->propertyOffset());
}

void tst_serviceInterfaces::signalIsKnownByItsSignature_data()
{
    QTest::addColumn<const QMetaObject *>("metaObject");
    QTest::addColumn<QByteArray>("signature");

    QTest::newRow("progress") << &oxFileIOService::staticMetaObject << QByteArray("progress(int)");
    QTest::newRow("frame") << &oxRenderService::staticMetaObject << QByteArray("frameRendered(int)");
    QTest::newRow("materials") << &oxMaterialService::staticMetaObject << QByteArray("materialsChanged()");
    QTest::newRow("camera") << &oxCameraService::staticMetaObject << QByteArray("cameraChanged()");
    QTest::newRow("nodes") << &oxNodeService::staticMetaObject << QByteArray("nodesChanged()");
    QTest::newRow("undo") << &oxUndoService::staticMetaObject << QByteArray("changed()");
}

void tst_serviceInterfaces::signalIsKnownByItsSignature()
{
    QFETCH(const QMetaObject *, metaObject);
    QFETCH(QByteArray, signature);

    QVERIFY(metaObject->indexOfSignal(signature) >= metaObject->methodOffset());
}

QTEST_MAIN(tst_serviceInterfaces)
#include "tst_serviceInterfaces.moc"
