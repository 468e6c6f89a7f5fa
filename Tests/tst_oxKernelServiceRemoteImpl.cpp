#include <QTest>

#include <stdio_ext.h>

#include "OutputCapture.h"
#include "oxKernelServiceRemoteImpl.h"
#include "oxQRPCClient.h"

class tst_oxKernelServiceRemoteImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void consoleLogWritesTheTextUnchanged_data();
    void consoleLogWritesTheTextUnchanged();
    void textWithoutLineFeedIsContinuedByTheNext();
    void consoleLogDoesNotFlush();
    void consoleLogDoesNotCallTheMainProcess();
    void consoleLogIsReachedByItsNameAndThroughTheInterface();
    void otherOperationsAreInherited();
    void metaCastAnswersItsOwnClassAndItsBases();
};

void tst_oxKernelServiceRemoteImpl::consoleLogWritesTheTextUnchanged_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("null") << QString() << QByteArray();
    QTest::newRow("empty") << QString(QLatin1String("")) << QByteArray();
    QTest::newRow("without line feed") << QStringLiteral("ready") << QByteArray("ready");
    QTest::newRow("with line feeds") << QStringLiteral("\none\r\ntwo\n") << QByteArray("\none\r\ntwo\n");
    QTest::newRow("percent signs") << QStringLiteral("100 %s %n %%") << QByteArray("100 %s %n %%");
    QTest::newRow("not ASCII") << QStringLiteral("Größe \u20ac \U0001F697")
                               << QByteArray("Gr\xc3\xb6\xc3\x9f"
                                             "e \xe2\x82\xac \xf0\x9f\x9a\x97");
    QTest::newRow("NUL") << QString::fromLatin1("before\0after", 12) << QByteArray("before");
    QTest::newRow("NUL first") << QString::fromLatin1("\0after", 6) << QByteArray();
    QTest::newRow("long") << QString(100000, QLatin1Char('x')) << QByteArray(100000, 'x');
}

void tst_oxKernelServiceRemoteImpl::consoleLogWritesTheTextUnchanged()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    oxKernelServiceRemoteImpl service;

    const Output output = outputOf([&] { service.consoleLog(text); });
    QCOMPARE(output.standardOutput, bytes);
    QCOMPARE(output.standardError, QByteArray());
}

void tst_oxKernelServiceRemoteImpl::textWithoutLineFeedIsContinuedByTheNext()
{
    oxKernelServiceRemoteImpl service;

    const Output output = outputOf([&] {
        service.consoleLog(QStringLiteral("Loading ... "));
        service.consoleLog(QStringLiteral("done\n"));
    });
    QCOMPARE(output.standardOutput, QByteArray("Loading ... done\n"));
}

void tst_oxKernelServiceRemoteImpl::consoleLogDoesNotFlush()
{
    oxKernelServiceRemoteImpl service;
    size_t pending = 0;

    outputOf([&] {
        service.consoleLog(QStringLiteral("waits"));
        pending = __fpending(stdout);
    });
    QCOMPARE(pending, size_t(5));
}

void tst_oxKernelServiceRemoteImpl::consoleLogDoesNotCallTheMainProcess()
{
    oxQRPCClient client;
    oxKernelServiceRemoteImpl service;
    service.setClient(&client);

    const Output output = outputOf([&] { service.consoleLog(QStringLiteral("here")); });
    QCOMPARE(output.standardOutput, QByteArray("here"));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_oxKernelServiceRemoteImpl::consoleLogIsReachedByItsNameAndThroughTheInterface()
{
    oxKernelServiceRemoteImpl service;

    const Output output = outputOf([&] {
        QMetaObject::invokeMethod(&service, "consoleLog", Q_ARG(QString, QStringLiteral("by name\n")));
        static_cast<oxKernelService *>(&service)->consoleLog(QStringLiteral("by interface\n"));
    });
    QCOMPARE(output.standardOutput, QByteArray("by name\nby interface\n"));
}

void tst_oxKernelServiceRemoteImpl::otherOperationsAreInherited()
{
    oxQRPCClient client;
    oxKernelServiceRemoteImpl service;
    service.setClient(&client);

    const Output output = outputOf([&] {
        service.initialize(true);
        service.terminate(false);
        service.salt();
        service.authenticate(QStringLiteral("secret"));
    });
    QCOMPARE(output.standardError,
             QByteArray("oxQRPCClient: not connected, oxKernelService::initialize(bool) does nothing\n"
                        "oxQRPCClient: not connected, oxKernelService::terminate(bool) does nothing\n"
                        "oxQRPCClient: not connected, oxKernelService::salt() does nothing\n"
                        "oxQRPCClient: not connected, oxKernelService::authenticate(QString) does nothing\n"));
    QCOMPARE(output.standardOutput, QByteArray());
}

void tst_oxKernelServiceRemoteImpl::metaCastAnswersItsOwnClassAndItsBases()
{
    oxKernelServiceRemoteImpl service;

    QCOMPARE(service.metaObject()->className(), "oxKernelServiceRemoteImpl");
    for (const char *name : {"oxKernelServiceRemoteImpl", "oxKernelService", "oxBaseService", "QObject"})
        QCOMPARE(service.qt_metacast(name), static_cast<void *>(&service));
    QVERIFY(!service.qt_metacast("oxFileIOService"));
}

QTEST_GUILESS_MAIN(tst_oxKernelServiceRemoteImpl)
#include "tst_oxKernelServiceRemoteImpl.moc"
