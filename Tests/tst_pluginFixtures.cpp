#include "PluginHost.h"

#include <QDirIterator>
#include <QDockWidget>
#include <QPushButton>
#include <QtTest>

#include "OutputCapture.h"
#include "PrivateData.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"

namespace {

enum Panel { Kept, Emptied, Removed };

/// What a plugin of the folder Fixtures prints, and what it leaves.
struct Expected
{
    QByteArray standardOutput;
    QByteArray standardError = {};
    Panel panel = Kept;
    bool result = true;
};

} // namespace

// One plugin for every way to fail, beside others that work, in one process.
class tst_pluginFixtures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void everyFileIsExpected();
    void pluginPrintsAndLeaves_data();
    void pluginPrintsAndLeaves();
    void oneScanLoadsThemAll();
    void nextScansDoTheSame();
    void workingPluginsWorkBesideTheOthers();

private:
    void checkScan();
    void checkPanel(const QString &key, Panel panel);

    PluginHost m_host;
    QMap<QString, Expected> m_expected;
    QMap<QString, QString> m_paths; ///< by key
    QStringList m_order;            ///< in which the file system yields them
};

namespace {

QByteArray info(const QByteArray &line)
{
    return "python info: '" + line + "'\n";
}

QByteArray errors(const QByteArrayList &lines)
{
    QByteArray text;
    for (const QByteArray &line : lines)
        text += "python error: '" + line + "'\n";
    return text;
}

QByteArray bindings(const char *pythonQt, const char *pySide2)
{
    return QByteArray("PythonQt: ") + pythonQt + " PySide2: " + pySide2 + '\n';
}

QByteArray endlessOutput()
{
    QByteArray text;
    for (int i = 0; i < 20000; ++i)
        text += info("line " + QByteArray::number(i));
    return text + info(QByteArray(1000000, 'x'));
}

QMap<QString, oxKernelInterfaceP::oxPluginInfo> records()
{
    return privateData(oxKernelInterface::the())->plugins;
}

} // namespace

void tst_pluginFixtures::initTestCase()
{
    m_host.writeModule("PySide2.py", "");
    m_host.writeModule("uiTools.py",
                       "def loadUiTypePySide(name): return name + ' for PySide2'\n"
                       "def getWidget(address): return 'a widget'\n");

    QDirIterator files(FIXTURES "/Scripts", {"*.py"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        m_paths.insert(files.fileInfo().baseName(), files.filePath());
        m_order << files.fileInfo().baseName();
    }

    const QByteArray neither = bindings("no", "no");
    const QByteArray pythonQt = bindings("yes", "no");
    const QByteArray pySide2 = bindings("no", "yes");
    const QByteArray path = m_paths.value("fail_both_bindings").toUtf8();
    m_expected = {
        {"fail_both_bindings",
         {bindings("yes", "yes"), "Couldn't load plugin '" + path + "', it seems to use PythonQt annd PySide2!\n", Kept,
          false}},
        {"fail_deletes_its_dock", {neither + info("the dock is gone"), {}, Removed}},
        {"fail_deletes_its_widget", {neither + info("the container is gone"), {}, Emptied}},
        {"fail_endless_output", {neither + endlessOutput()}},
        {"fail_exception_at_import",
         {pythonQt + info("before"),
          errors({"Traceback (most recent call last):", "  File \"<string>\", line 11, in <module>",
                  "  File \"<string>\", line 7, in build", "ValueError: 100% of this"})}},
        {"fail_missing_module",
         {neither,
          errors({"Traceback (most recent call last):", "  File \"<string>\", line 1, in <module>",
                  "ImportError: No module named a_module_that_nobody_has"})}},
        {"fail_not_utf8", {neither + info("caf\xef\xbf\xbd")}},
        {"fail_syntax_error",
         {neither,
          errors(
              {"  File \"<string>\", line 3", "    def broken(:", "               ^", "SyntaxError: invalid syntax"})}},
        {"fail_sys_exit", {neither + info("before")}},
        {"fail_zero_byte", {pySide2 + info("before")}},
        {"success_button", {pythonQt + info("1 Press")}},
        {"success_byte_order_mark", {neither + info("gr\u00fc\u00dfe gr\u00fc\u00dfe")}},
        {"success_empty", {neither}},
        {"success_last_line", {neither + info("no line feed at the end")}},
        {"success_message", {neither}},
        {"success_pyside2", {pySide2 + info("form.ui for PySide2 a widget")}},
        {"success_subfolder", {neither + info("text beside the plugin")}},
    };
    for (auto expected = m_expected.begin(); expected != m_expected.end(); ++expected) {
        if (expected->result)
            expected->standardOutput += "Loaded '" + expected.key().toUtf8() + "' python plugin.\n";
    }
}

// All are swept, as the plugins folder of the process has none of them.
void tst_pluginFixtures::cleanup()
{
    const Output output = outputOf([this] { m_host.clear(); });
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(records().isEmpty());
    QVERIFY(m_host.window.findChildren<QDockWidget *>().isEmpty());
}

void tst_pluginFixtures::everyFileIsExpected()
{
    QCOMPARE(m_paths.keys(), m_expected.keys());
}

void tst_pluginFixtures::pluginPrintsAndLeaves_data()
{
    QTest::addColumn<QString>("key");

    const QStringList keys = m_expected.keys();
    for (const QString &key : keys)
        QTest::newRow(qPrintable(key)) << key;
}

void tst_pluginFixtures::pluginPrintsAndLeaves()
{
    QFETCH(QString, key);
    const Expected expected = m_expected.value(key);

    bool result = !expected.result;
    const Output output = outputOf([this, &key, &result] { result = m_host.load(m_paths.value(key)); });
    QCOMPARE(result, expected.result);
    QVERIFY(output.standardOutput == expected.standardOutput);
    QCOMPARE(output.standardError, expected.standardError);
    checkPanel(key, expected.panel);
}

void tst_pluginFixtures::oneScanLoadsThemAll()
{
    checkScan();
}

void tst_pluginFixtures::nextScansDoTheSame()
{
    for (int i = 0; i < 3; ++i)
        checkScan();
}

void tst_pluginFixtures::workingPluginsWorkBesideTheOthers()
{
    const QSignalSpy messages(oxKernelServiceFactory::the()->getService<oxMessageService>(),
                              &oxMessageService::messageReceived);
    checkScan();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().value(1).toString(), QStringLiteral("loaded"));
    QCOMPARE(records().value("success_button").widget->findChild<QPushButton *>()->text(), QStringLiteral("Press"));
}

void tst_pluginFixtures::checkScan()
{
    Expected expected;
    for (const QString &key : qAsConst(m_order)) {
        expected.standardOutput += m_expected.value(key).standardOutput;
        expected.standardError += m_expected.value(key).standardError;
    }
    const QByteArray pluginsFolder = qgetenv("OX_PLUGINS_DIR");
    qputenv("OX_PLUGINS_DIR", FIXTURES);
    const Output output = outputOf([this] { m_host.scan(); });
    qputenv("OX_PLUGINS_DIR", pluginsFolder);

    QVERIFY(output.standardOutput == expected.standardOutput);
    QCOMPARE(output.standardError, expected.standardError);
    QCOMPARE(records().keys(), m_expected.keys());
    for (const QString &key : qAsConst(m_order))
        checkPanel(key, m_expected.value(key).panel);
}

void tst_pluginFixtures::checkPanel(const QString &key, Panel panel)
{
    const QDockWidget *dock = m_host.dock(key);
    const oxKernelInterfaceP::oxPluginInfo record = records().value(key, {-1, nullptr, nullptr});
    QCOMPARE(record.found, 1);
    QVERIFY(record.module);
    QVERIFY(m_host.entry(key));
    QCOMPARE(dock != nullptr, panel != Removed);
    if (dock) {
        QCOMPARE(record.widget != nullptr, panel == Kept);
        QCOMPARE(dock->widget(), record.widget);
    }
}

QTEST_MAIN(tst_pluginFixtures)
#include "tst_pluginFixtures.moc"
