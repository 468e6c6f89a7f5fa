#include <QTest>

#include "OutputCapture.h"
#include "oxFileIOService.h"
#include "oxKernelService.h"
#include "oxMessageService.h"
#include "oxQRPCClient.h"
#include "oxRenderService.h"

namespace {

using Call = std::function<QVariant(oxQRPCClient *)>;

// A call of an operation of a service that has the client.
template<class Service, class Operation, class... Arguments>
Call call(Operation operation, Arguments... arguments)
{
    return [=](oxQRPCClient *client) {
        Service service;
        service.setClient(client);
        if constexpr (std::is_void_v<decltype((service.*operation)(arguments...))>) {
            (service.*operation)(arguments...);
            return QVariant();
        } else {
            return QVariant((service.*operation)(arguments...));
        }
    };
}

} // namespace

Q_DECLARE_METATYPE(Call)

class tst_oxQRPCClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasNoServicesAtFirst();
    void keepsWhatWasRegisteredInOrder();
    void keepsAnObjectTwiceThatWasRegisteredTwice();
    void doesNotOwnWhatWasRegistered();
    void addressThatIsNoneIsRefused_data();
    void addressThatIsNoneIsRefused();
    void callWithoutConnectionGivesDefaultResultAndALine_data();
    void callWithoutConnectionGivesDefaultResultAndALine();
    void callWithoutClientGivesDefaultResultAndNoLine_data();
    void callWithoutClientGivesDefaultResultAndNoLine();
    void callWithoutConnectionLeavesTheResultAsItIs();

private:
    static void addOperations();
};

void tst_oxQRPCClient::hasNoServicesAtFirst()
{
    QVERIFY(oxQRPCClient().services().isEmpty());
}

void tst_oxQRPCClient::keepsWhatWasRegisteredInOrder()
{
    QObject plain;
    oxKernelService kernel;
    oxMessageService message;
    oxQRPCClient client;
    client.registerService(&message);
    client.registerService(&plain);
    client.registerService(&kernel);

    const QList<QObject *> expected{&message, &plain, &kernel};
    QCOMPARE(client.services(), expected);
}

void tst_oxQRPCClient::keepsAnObjectTwiceThatWasRegisteredTwice()
{
    oxKernelService kernel;
    oxQRPCClient client;
    client.registerService(&kernel);
    client.registerService(&kernel);

    const QList<QObject *> expected{&kernel, &kernel};
    QCOMPARE(client.services(), expected);
}

void tst_oxQRPCClient::doesNotOwnWhatWasRegistered()
{
    QPointer<QObject> service = new QObject;
    {
        oxQRPCClient client;
        client.registerService(service);
        QVERIFY(!service->parent());
    }
    QVERIFY(service);
    delete service;
}

void tst_oxQRPCClient::addressThatIsNoneIsRefused_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address :
         {"", "name", "local:", "http://localhost:80", "tcp:", "tcp://localhost", "tcp://localhost:0"})
        QTest::newRow(address) << QString::fromLatin1(address);
}

void tst_oxQRPCClient::addressThatIsNoneIsRefused()
{
    QFETCH(QString, address);
    oxQRPCClient client;
    bool isTaken = true;
    const Output output = outputOf([&] { isTaken = client.connectToHost(QUrl(address)); });
    QVERIFY(!isTaken);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_oxQRPCClient::addOperations()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QVariant>("result");
    QTest::addColumn<QByteArray>("operation");

    const QString text = QStringLiteral("text");
    QTest::newRow("bool") << call<oxFileIOService>(&oxFileIOService::saveFile, text) << QVariant(false)
                          << QByteArray("oxFileIOService::saveFile(QString)");
    QTest::newRow("text") << call<oxKernelService>(&oxKernelService::salt) << QVariant(QString())
                          << QByteArray("oxKernelService::salt()");
    QTest::newRow("nothing") << call<oxKernelService>(&oxKernelService::consoleLog, text) << QVariant()
                             << QByteArray("oxKernelService::consoleLog(QString)");
    QTest::newRow("int, const") << call<oxRenderService>(&oxRenderService::getCodec) << QVariant(0)
                                << QByteArray("oxRenderService::getCodec()");
    QTest::newRow("bytes") << call<oxRenderService>(&oxRenderService::getFrameBuffer) << QVariant(QByteArray())
                           << QByteArray("oxRenderService::getFrameBuffer()");
    QTest::newRow("four arguments") << call<oxRenderService>(&oxRenderService::mouseMove, 1, 2, 3, 4) << QVariant()
                                    << QByteArray("oxRenderService::mouseMove(int,int,int,int)");
}

void tst_oxQRPCClient::callWithoutConnectionGivesDefaultResultAndALine_data()
{
    addOperations();
}

void tst_oxQRPCClient::callWithoutConnectionGivesDefaultResultAndALine()
{
    QFETCH(Call, call);
    QFETCH(QVariant, result);
    QFETCH(QByteArray, operation);
    oxQRPCClient client;
    QVariant actual;
    const Output output = outputOf([&] { actual = call(&client); });

    QCOMPARE(actual, result);
    QCOMPARE(output.standardError, "oxQRPCClient: not connected, " + operation + " does nothing\n");
    QCOMPARE(output.standardOutput, QByteArray());
}

void tst_oxQRPCClient::callWithoutClientGivesDefaultResultAndNoLine_data()
{
    addOperations();
}

void tst_oxQRPCClient::callWithoutClientGivesDefaultResultAndNoLine()
{
    QFETCH(Call, call);
    QFETCH(QVariant, result);
    QVariant actual;
    const Output output = outputOf([&] { actual = call(nullptr); });

    QCOMPARE(actual, result);
    QCOMPARE(output.standardError + output.standardOutput, QByteArray());
}

void tst_oxQRPCClient::callWithoutConnectionLeavesTheResultAsItIs()
{
    oxKernelService service;
    oxQRPCClient client;
    service.setClient(&client);
    QString result = QStringLiteral("as it was");
    void *arguments[] = {&result};
    const QMetaObject *metaObject = &oxKernelService::staticMetaObject;
    outputOf([&] { service.invokeMethod(metaObject, metaObject->indexOfMethod("salt()"), arguments); });

    QCOMPARE(result, QStringLiteral("as it was"));
}

QTEST_GUILESS_MAIN(tst_oxQRPCClient)
#include "tst_oxQRPCClient.moc"
