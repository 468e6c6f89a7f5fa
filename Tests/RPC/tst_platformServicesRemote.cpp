#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxMessageService.h"
#include "oxPreferencesService.h"
#include "oxQRPCClient.h"

namespace {

// The services of a secondary process.
struct Secondary
{
    explicit Secondary(const QUrl &address)
    {
        for (oxBaseService *service : std::initializer_list<oxBaseService *>{&preferences, &messages}) {
            service->setClient(&client);
            client.registerService(service);
        }
        client.connectToHost(address);
        client.waitForConnected(30000);
    }

    oxPreferencesService preferences;
    oxMessageService messages;
    oxQRPCClient client;
};

} // namespace

/// The services that answer for themselves without a connection, over one.
class tst_platformServicesRemote : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void valuesAreKeptByTheMainProcess();
    void valuesAreSharedByAllProcesses();
    void defaultsAreThoseOfTheMainProcess();
    void changesAreSavedByTheMainProcess();
    void valuesAreLocalWithoutConnection();
    void messageReachesAllProcesses_data();
    void messageReachesAllProcesses();
    void messageStaysHereWithoutConnection();

private:
    std::unique_ptr<oxPreferencesService> m_preferencesMain;
    std::unique_ptr<oxMessageService> m_messagesMain;
    std::unique_ptr<MainThread> m_main;
};

void tst_platformServicesRemote::init()
{
    m_preferencesMain = std::make_unique<oxPreferencesService>();
    m_messagesMain = std::make_unique<oxMessageService>();
    m_main = std::make_unique<MainThread>();
    m_main->offer(m_preferencesMain.get());
    m_main->offer(m_messagesMain.get());
}

void tst_platformServicesRemote::cleanup()
{
    m_main->run([this] {
        m_preferencesMain->setDefault();
        m_preferencesMain->saveChanges();
    });
    m_main.reset();
}

void tst_platformServicesRemote::valuesAreKeptByTheMainProcess()
{
    Secondary secondary(m_main->address());
    QVERIFY(secondary.client.isConnected());
    oxPreferencesService &preferences = secondary.preferences;
    preferences.setStringValue(QStringLiteral("Page/Text"), QStringLiteral("Gr\u00fc\u00dfe"));
    preferences.setIntValue(QStringLiteral("Page/Int"), -7);
    preferences.setDoubleValue(QStringLiteral("Page/Double"), 1.0 / 3);
    preferences.setFloatValue(QStringLiteral("Page/Float"), 0.1F);
    preferences.setBoolValue(QStringLiteral("Page/Bool"), true);

    QCOMPARE(preferences.getStringValue(QStringLiteral("Page/Text")), QStringLiteral("Gr\u00fc\u00dfe"));
    QCOMPARE(preferences.getIntValue(QStringLiteral("Page/Int")), -7);
    QCOMPARE(preferences.getDoubleValue(QStringLiteral("Page/Double")), 1.0 / 3);
    QCOMPARE(preferences.getFloatValue(QStringLiteral("Page/Float")), 0.1F);
    QCOMPARE(preferences.getBoolValue(QStringLiteral("Page/Bool")), true);
    QCOMPARE(preferences.getIntValue(QStringLiteral("Page/None")), 0);

    int value = 0;
    m_main->run([&] { value = m_preferencesMain->getIntValue(QStringLiteral("Page/Int")); });
    QCOMPARE(value, -7);
}

void tst_platformServicesRemote::valuesAreSharedByAllProcesses()
{
    Secondary one(m_main->address());
    Secondary other(m_main->address());
    one.preferences.setIntValue(QStringLiteral("Page/Int"), 1);
    QCOMPARE(one.preferences.getIntValue(QStringLiteral("Page/Int")), 1); // it has arrived
    QCOMPARE(other.preferences.getIntValue(QStringLiteral("Page/Int")), 1);
    other.preferences.setIntValue(QStringLiteral("Page/Int"), 2);
    QCOMPARE(other.preferences.getIntValue(QStringLiteral("Page/Int")), 2);
    QCOMPARE(one.preferences.getIntValue(QStringLiteral("Page/Int")), 2);
}

void tst_platformServicesRemote::defaultsAreThoseOfTheMainProcess()
{
    Secondary secondary(m_main->address());
    oxPreferencesService &preferences = secondary.preferences;
    for (const char *key : {"Page/One", "Page/Two", "Other/One", "Third/One"})
        preferences.setIntValue(QString::fromLatin1(key), 5);
    preferences.setDefault(QStringLiteral("Page"));
    QCOMPARE(preferences.getIntValue(QStringLiteral("Page/One")), 0);
    QCOMPARE(preferences.getIntValue(QStringLiteral("Page/Two")), 0);
    QCOMPARE(preferences.getIntValue(QStringLiteral("Other/One")), 5);
    preferences.setDefault();
    QCOMPARE(preferences.getIntValue(QStringLiteral("Other/One")), 0);
    QCOMPARE(preferences.getIntValue(QStringLiteral("Third/One")), 0);
}

void tst_platformServicesRemote::changesAreSavedByTheMainProcess()
{
    Secondary secondary(m_main->address());
    secondary.preferences.setIntValue(QStringLiteral("Page/Saved"), 42);
    secondary.preferences.saveChanges();
    QCOMPARE(secondary.preferences.getIntValue(QStringLiteral("Page/Saved")), 42); // it has been done

    QFile file(QSettings(QCoreApplication::applicationName(), QCoreApplication::applicationName()).fileName());
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    QVERIFY(file.readAll().contains("Saved=42"));
}

void tst_platformServicesRemote::valuesAreLocalWithoutConnection()
{
    Secondary secondary(m_main->address());
    secondary.client.disconnectFromHost();
    const QByteArray lines =
        outputOf([&] { secondary.preferences.setIntValue(QStringLiteral("Page/Local"), 3); }).standardError;
    QCOMPARE(lines, QByteArray());
    QCOMPARE(secondary.preferences.getIntValue(QStringLiteral("Page/Local")), 3);
    secondary.preferences.setDefault(QStringLiteral("Page"));
    QCOMPARE(secondary.preferences.getIntValue(QStringLiteral("Page/Local")), 0);
}

void tst_platformServicesRemote::messageReachesAllProcesses_data()
{
    QTest::addColumn<int>("severity");
    QTest::newRow("information") << int(oxMessageService::Information);
    QTest::newRow("warning") << int(oxMessageService::Warning);
    QTest::newRow("error") << int(oxMessageService::Error);
}

void tst_platformServicesRemote::messageReachesAllProcesses()
{
    QFETCH(int, severity);
    Secondary one(m_main->address());
    Secondary other(m_main->address());
    QSignalSpy here(&one.messages, &oxMessageService::messageReceived);
    QSignalSpy there(&other.messages, &oxMessageService::messageReceived);
    QSignalSpy inTheMainProcess(m_messagesMain.get(), &oxMessageService::messageReceived);

    const QString text = QStringLiteral("Gr\u00fc\u00dfe\n%s");
    if (severity == oxMessageService::Information)
        one.messages.information(text);
    else if (severity == oxMessageService::Warning)
        one.messages.warning(text);
    else
        one.messages.error(text);

    const QVariantList expected{severity, text};
    QTRY_COMPARE(here.count(), 1);
    QTRY_COMPARE(there.count(), 1);
    QCOMPARE(here.first(), expected);
    QCOMPARE(there.first(), expected);
    QCOMPARE(inTheMainProcess.count(), 1);

    other.messages.information(QStringLiteral("the next one")); // nothing is between the two
    QTRY_COMPARE(here.last().at(1).toString(), QStringLiteral("the next one"));
    QCOMPARE(here.count(), 2);
}

void tst_platformServicesRemote::messageStaysHereWithoutConnection()
{
    Secondary one(m_main->address());
    Secondary other(m_main->address());
    one.client.disconnectFromHost();
    QSignalSpy here(&one.messages, &oxMessageService::messageReceived);
    QSignalSpy there(&other.messages, &oxMessageService::messageReceived);
    one.messages.warning(QStringLiteral("alone"));
    QCOMPARE(here.count(), 1);

    other.messages.warning(QStringLiteral("together")); // would come after it
    QTRY_COMPARE(there.count(), 1);
    QCOMPARE(there.first().at(1).toString(), QStringLiteral("together"));
    QCOMPARE(here.count(), 1);
}

int main(int argc, char *argv[])
{
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    const QCoreApplication application(argc, argv);
    tst_platformServicesRemote test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_platformServicesRemote.moc"
