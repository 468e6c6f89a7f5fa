#include <QSignalSpy>
#include <QTest>

#include <limits>

#include "FileIOServiceMain.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxQRPCClient.h"

namespace {

class AllOperations : public FileIOServiceMain
{
public:
    bool newFile() override { return true; }
    bool saveFile(const QString &file) override { return file == QLatin1String("saved"); }
    QString getTARNDir() override { return QStringLiteral("folder"); }
    QString getTARNDataDir() override { return QStringLiteral("data"); }
    QString getTARNExamplesDir() override { return QStringLiteral("examples"); }
    QString getImageReadFilter() override { return QStringLiteral("read"); }
    QString getImageWriteFilter() override { return QStringLiteral("write"); }
};

} // namespace

class tst_oxFileIOService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void loadReturnsWhatTheMainProcessReturns_data();
    void loadReturnsWhatTheMainProcessReturns();
    void fileNameReachesTheMainProcessUnchanged_data();
    void fileNameReachesTheMainProcessUnchanged();
    void progressIsEmittedInOrderBeforeTheLoadReturns();
    void progressOfOtherLoadsIsEmittedToo();
    void sameServiceLoadsAgain();
    void otherOperationsCallTheMainProcess();
    void loadWithoutAConnectionIsFalseAndOneLine();
    void loadWithoutAClientIsFalse();

private:
    QVector<int> progressOf(const QString &file, bool expectedResult);

    AllOperations m_serviceMain;
    MainThread m_main;
    oxFileIOService m_service;
    oxQRPCClient m_client;
};

void tst_oxFileIOService::initTestCase()
{
    m_main.offer(&m_serviceMain);
    m_service.setClient(&m_client);
    m_client.registerService(&m_service);
    QVERIFY(m_client.connectToHost(m_main.address()));
    QVERIFY(m_client.waitForConnected(30000));
}

void tst_oxFileIOService::init()
{
    m_main.run([this] {
        m_serviceMain.values = {0, 50, 100, 100};
        m_serviceMain.result = true;
        m_serviceMain.files.clear();
    });
}

QVector<int> tst_oxFileIOService::progressOf(const QString &file, bool expectedResult)
{
    const QSignalSpy spy(&m_service, &oxFileIOService::progress);
    const bool result = m_service.loadFile(file);
    [&] { QCOMPARE(result, expectedResult); }();
    QVector<int> values;
    for (const QList<QVariant> &arguments : spy)
        values.append(arguments.first().toInt());
    return values;
}

void tst_oxFileIOService::loadReturnsWhatTheMainProcessReturns_data()
{
    QTest::addColumn<QVector<int>>("values");
    QTest::addColumn<bool>("result");
    QTest::newRow("loads") << QVector<int>{0, 100} << true;
    QTest::newRow("loads at once") << QVector<int>() << true;
    QTest::newRow("fails on the way") << QVector<int>{0, 50} << false;
    QTest::newRow("fails in the end") << QVector<int>{0, 100, 100} << false;
    QTest::newRow("fails at once") << QVector<int>() << false;
}

void tst_oxFileIOService::loadReturnsWhatTheMainProcessReturns()
{
    QFETCH(QVector<int>, values);
    QFETCH(bool, result);
    m_main.run([&] {
        m_serviceMain.values = values;
        m_serviceMain.result = result;
    });
    QCOMPARE(progressOf(QStringLiteral("scene"), result), values);
}

void tst_oxFileIOService::fileNameReachesTheMainProcessUnchanged_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("plain") << QStringLiteral("/scenes/car");
    QTest::newRow("with everything") << QStringLiteral("Gr\u00f6\u00dfe 100% %s\n'\"\\.bin \U0001f697");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("NUL in it") << QStringLiteral("file") + QChar() + QStringLiteral("x");
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void tst_oxFileIOService::fileNameReachesTheMainProcessUnchanged()
{
    QFETCH(QString, file);
    QVERIFY(m_service.loadFile(file));
    QStringList files;
    m_main.run([&] { files = m_serviceMain.files; });
    QCOMPARE(files, QStringList(file));
}

void tst_oxFileIOService::progressIsEmittedInOrderBeforeTheLoadReturns()
{
    QVector<int> values{std::numeric_limits<int>::min(), -1, 101, std::numeric_limits<int>::max()};
    for (int i = 0; i < 1000; ++i)
        values.append(i * 37 % 101);
    m_main.run([&] { m_serviceMain.values = values; });
    QCOMPARE(progressOf(QStringLiteral("scene"), true), values);
}

void tst_oxFileIOService::progressOfOtherLoadsIsEmittedToo()
{
    QSignalSpy progress(&m_service, &oxFileIOService::progress);
    m_main.run([this] { m_serviceMain.loadFile(QStringLiteral("by the main process's own menu")); });
    QTRY_COMPARE(progress.count(), 4);
}

void tst_oxFileIOService::sameServiceLoadsAgain()
{
    const QVector<int> values{0, 50, 100, 100};
    QCOMPARE(progressOf(QStringLiteral("once"), true), values);
    QCOMPARE(progressOf(QStringLiteral("again"), true), values);
}

void tst_oxFileIOService::otherOperationsCallTheMainProcess()
{
    QVERIFY(m_service.newFile());
    QVERIFY(m_service.saveFile(QStringLiteral("saved")));
    QVERIFY(!m_service.saveFile(QStringLiteral("another")));
    QCOMPARE(m_service.getTARNDir(), QStringLiteral("folder"));
    QCOMPARE(m_service.getTARNDataDir(), QStringLiteral("data"));
    QCOMPARE(m_service.getTARNExamplesDir(), QStringLiteral("examples"));
    QCOMPARE(m_service.getImageReadFilter(), QStringLiteral("read"));
    QCOMPARE(m_service.getImageWriteFilter(), QStringLiteral("write"));
}

void tst_oxFileIOService::loadWithoutAConnectionIsFalseAndOneLine()
{
    oxQRPCClient client;
    oxFileIOService service;
    service.setClient(&client);
    client.registerService(&service);
    const QSignalSpy progress(&service, &oxFileIOService::progress);
    bool isLoaded = true;
    const Output output = outputOf([&] { isLoaded = service.loadFile(QStringLiteral("scene")); });

    QVERIFY(!isLoaded);
    QCOMPARE(output.standardError,
             QByteArray("oxQRPCClient: not connected, oxFileIOService::loadFile(QString) does nothing\n"));
    QCOMPARE(output.standardOutput, QByteArray());
    QVERIFY(progress.isEmpty());
    service.setClient(nullptr);
}

void tst_oxFileIOService::loadWithoutAClientIsFalse()
{
    oxFileIOService service;
    bool isLoaded = true;
    const Output output = outputOf([&] { isLoaded = service.loadFile(QStringLiteral("scene")); });

    QVERIFY(!isLoaded);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

QTEST_GUILESS_MAIN(tst_oxFileIOService)
#include "tst_oxFileIOService.moc"
