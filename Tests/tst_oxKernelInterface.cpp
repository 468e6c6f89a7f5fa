#include <QApplication>
#include <QProcess>
#include <QTest>
#include <QThread>
#include <QWidget>

#include <atomic>
#include <cstddef>
#include <thread>
#include <type_traits>

#include "PrivateData.h"
#include "VirtualSlot.h"
#include "oxKernelServiceFactory.h"

// Qt's own hooks for tools that look into a process.
extern quintptr Q_CORE_EXPORT qtHookData[];

// The interface as it is before init(), which this process never calls.
class tst_oxKernelInterface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theIsOneForAllThreads();
    void theLivesInNoThreadUntilItIsStarted();
    void anotherInterfaceLivesWhereItIsMade();
    void theIsDestroyedAtProcessExit();
    void theHasNoParent();
    void metaObjectHasTheClassNameOnly();
    void overridesNoHandlerOfQObject();
    void privateDataIsItsOnlyMember();
    void privateDataStartsEmpty();
    void buffersAreEmptyButNotNull();
    void fieldsStandInTheirOrder();
    void pluginRecordHasItsFieldsInOrder();
    void pythonEngineIsNullBeforeInit();
    void noServiceIsFiledBeforeInit();
    void eachInterfaceHasDataOfItsOwn();
    void destructionFreesThePluginsAndBothBuffers();
    void destructionLeavesWhatTheRecordsPointTo();
};

namespace {

const QString tellAtExit = QStringLiteral("--tell-when-the-interface-is-destroyed");

// A thread that constructs an object lets the others come as far as they get.
void yieldToOtherThreads(QObject *)
{
    for (int i = 0; i < 1000; ++i)
        std::this_thread::yield();
}

// All threads call at once.
QVector<oxKernelInterface *> callTheFromThreads(int count)
{
    constexpr int addQObject = 3;
    qtHookData[addQObject] = reinterpret_cast<quintptr>(&yieldToOtherThreads);
    QVector<oxKernelInterface *> results(count);
    std::atomic_int waiting{count};
    std::vector<std::thread> threads;
    for (oxKernelInterface *&result : results) {
        threads.emplace_back([&waiting, &result] {
            --waiting;
            while (waiting > 0) {}
            result = oxKernelInterface::the();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    qtHookData[addQObject] = 0;
    return results;
}

// Of two texts that share their characters, neither is detached.
QString textOnTheHeap()
{
    return QString(100, QLatin1Char('x'));
}

template<class... Field>
QVector<std::ptrdiff_t> offsets(const void *record, const Field &...field)
{
    return {reinterpret_cast<const char *>(&field) - static_cast<const char *>(record)...};
}

} // namespace

// The first test: later the interface exists.
void tst_oxKernelInterface::theIsOneForAllThreads()
{
    const QVector<oxKernelInterface *> results = callTheFromThreads(8);

    QVERIFY(oxKernelInterface::the());
    for (const oxKernelInterface *result : results)
        QCOMPARE(result, oxKernelInterface::the());
}

void tst_oxKernelInterface::theLivesInNoThreadUntilItIsStarted()
{
    QVERIFY(!oxKernelInterface::the()->thread());
}

void tst_oxKernelInterface::anotherInterfaceLivesWhereItIsMade()
{
    QCOMPARE(oxKernelInterface().thread(), QThread::currentThread());

    bool livesThere = false;
    std::thread([&livesThere] { livesThere = oxKernelInterface().thread() == QThread::currentThread(); }).join();
    QVERIFY(livesThere);
}

void tst_oxKernelInterface::theIsDestroyedAtProcessExit()
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {tellAtExit});
    QVERIFY(process.waitForFinished());

    QCOMPARE(process.readAllStandardOutput(), QByteArray("main ends\ninterface destroyed\n"));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

void tst_oxKernelInterface::theHasNoParent()
{
    QVERIFY(!oxKernelInterface::the()->parent());
    QVERIFY(!oxKernelInterface().parent());
}

void tst_oxKernelInterface::metaObjectHasTheClassNameOnly()
{
    const QMetaObject &metaObject = oxKernelInterface::staticMetaObject;

    QCOMPARE(metaObject.className(), "oxKernelInterface");
    QCOMPARE(oxKernelInterface::the()->metaObject(), &metaObject);
    QCOMPARE(metaObject.superClass(), &QObject::staticMetaObject);
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(metaObject.propertyCount(), metaObject.propertyOffset());
    QCOMPARE(metaObject.enumeratorCount(), metaObject.enumeratorOffset());
    QCOMPARE(metaObject.classInfoCount(), metaObject.classInfoOffset());
    QCOMPARE(metaObject.constructorCount(), 0);
}

void tst_oxKernelInterface::overridesNoHandlerOfQObject()
{
    const QObject plain;
    const oxKernelInterface interface;

    // event, eventFilter, timerEvent, childEvent, customEvent, connectNotify, disconnectNotify
    const std::ptrdiff_t first = virtualSlot(&QObject::event);
    for (std::ptrdiff_t slot = first; slot < first + 7; ++slot)
        QCOMPARE(functionInSlot(&interface, slot), functionInSlot(&plain, slot));
}

void tst_oxKernelInterface::privateDataIsItsOnlyMember()
{
    QCOMPARE(sizeof(oxKernelInterface), sizeof(QObject) + sizeof(void *));
    QVERIFY(privateData(oxKernelInterface::the()));
}

void tst_oxKernelInterface::privateDataStartsEmpty()
{
    oxKernelInterface interface;
    const oxKernelInterfaceP *data = privateData(&interface);

    QVERIFY(!data->client);
    QCOMPARE(data->initFlag, false);
    QVERIFY(data->plugins.isEmpty());
    QVERIFY(!data->pythonEngine);
}

void tst_oxKernelInterface::buffersAreEmptyButNotNull()
{
    oxKernelInterface interface;
    for (const QString &buffer : {privateData(&interface)->stdOutBuffer, privateData(&interface)->stdErrBuffer}) {
        QVERIFY(buffer.isEmpty());
        QVERIFY(!buffer.isNull());
    }
}

void tst_oxKernelInterface::fieldsStandInTheirOrder()
{
    oxKernelInterface interface;
    const oxKernelInterfaceP *data = privateData(&interface);
    const std::ptrdiff_t word = sizeof(void *);

    QCOMPARE(offsets(data, data->client, data->initFlag, data->plugins, data->pythonEngine, data->stdOutBuffer,
                     data->stdErrBuffer),
             QVector<std::ptrdiff_t>({0, word, 2 * word, 3 * word, 4 * word, 5 * word}));
    QCOMPARE(sizeof(oxKernelInterfaceP), size_t(6 * word));
}

void tst_oxKernelInterface::pluginRecordHasItsFieldsInOrder()
{
    using Record = oxKernelInterfaceP::oxPluginInfo;
    QVERIFY((std::is_same_v<decltype(Record::found), qint32>));
    QVERIFY((std::is_same_v<decltype(Record::widget), QWidget *>));
    QVERIFY((std::is_same_v<decltype(Record::module), PythonQtObjectPtr *>));
    QVERIFY(std::is_trivially_destructible_v<Record>);
    QVERIFY(std::is_trivially_copyable_v<Record>);

    const Record record{};
    QCOMPARE(offsets(&record, record.found, record.widget, record.module), QVector<std::ptrdiff_t>({0, 8, 16}));
    QCOMPARE(sizeof record, size_t(24));
}

void tst_oxKernelInterface::pythonEngineIsNullBeforeInit()
{
    QVERIFY(!oxKernelInterface::the()->getPythonEngine());
    QVERIFY(!oxKernelInterface().getPythonEngine());
}

void tst_oxKernelInterface::noServiceIsFiledBeforeInit()
{
    oxKernelInterface interface;
    QVERIFY(oxKernelServiceFactory::the()->getServices().isEmpty());
}

void tst_oxKernelInterface::eachInterfaceHasDataOfItsOwn()
{
    oxKernelInterface interface;
    QVERIFY(privateData(&interface) != privateData(oxKernelInterface::the()));

    privateData(&interface)->initFlag = true;
    QCOMPARE(privateData(oxKernelInterface::the())->initFlag, false);
}

void tst_oxKernelInterface::destructionFreesThePluginsAndBothBuffers()
{
    const QString key = textOnTheHeap();
    const QString output = textOnTheHeap();
    const QString error = textOnTheHeap();
    auto *interface = new oxKernelInterface;
    privateData(interface)->plugins.insert(key, {1, nullptr, nullptr});
    privateData(interface)->stdOutBuffer = output;
    privateData(interface)->stdErrBuffer = error;
    for (const QString &text : {std::cref(key), std::cref(output), std::cref(error)})
        QVERIFY(!text.isDetached());
    delete interface;

    for (const QString &text : {std::cref(key), std::cref(output), std::cref(error)})
        QVERIFY(text.isDetached());
}

void tst_oxKernelInterface::destructionLeavesWhatTheRecordsPointTo()
{
    const QPointer<QWidget> container = new QWidget;
    auto *interface = new oxKernelInterface;
    privateData(interface)->plugins.insert(QStringLiteral("plugin"), {1, container, nullptr});
    delete interface;

    QVERIFY(container);
    delete container;
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(tellAtExit)) {
        QObject::connect(oxKernelInterface::the(), &QObject::destroyed, [] { puts("interface destroyed"); });
        puts("main ends");
        return 0;
    }
    tst_oxKernelInterface test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_oxKernelInterface.moc"
