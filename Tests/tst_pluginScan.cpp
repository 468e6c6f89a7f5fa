#include "InterpreterLock.h"

#include "PluginHost.h"

#include <PythonQt.h>
#include <QAction>
#include <QChildEvent>
#include <QDirIterator>
#include <QDockWidget>
#include <QMenu>
#include <QPointer>
#include <QtTest>

#include <sys/stat.h>

#include "OutputCapture.h"
#include "PrivateData.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"
#include "oxRenderService.h"

// The plugins folder, looked through again and again.
class tst_pluginScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fileIsLoadedByItsSuffix_data();
    void fileIsLoadedByItsSuffix();
    void subfoldersAreScannedInAnyDepth();
    void hiddenFilesAndFoldersAreNot();
    void linkToAFileIsLoadedAndLinkToAFolderNotFollowed();
    void linksAndPipesThatAreNoFilesAreNotOpened();
    void foldersNamedLikePluginsAreFolders();
    void orderIsThatOfTheFileSystem();
    void pathsAreFull();

    void secondScanReloadsInPlace();
    void secondScanAddsReloadsAndRemoves();
    void thirdScanFindsAPluginAgain();
    void foundIsClearedAtTheStartOfAScan();
    void sameKeyInTwoFoldersIsOneModule_data();
    void sameKeyInTwoFoldersIsOneModule();
    void keysThatDifferInThePrefixAreTwoModulesOfOneTitle();
    void failingPluginsKeepTheirEntriesAndTheOthersLoad();
    void fileNameThatIsNotUtf8IsPassedOver();
    void fileThatGoesBeforeItsTurnKeepsItsEntry();

    void sweepRemovesDockEntryAndContainer();
    void sweepGoesInTheOrderOfTheKeys();
    void sweepLeavesThePythonModuleAlone();
    void sweepOfAPluginWithoutDock();
    void contentOfASweptPluginIsNotTakenForThatOfTheNextOne();
    void sweepThatEndsInAnotherScan();
    void scanInDestroyedOfWhatAReloadDeletes_data();
    void scanInDestroyedOfWhatAReloadDeletes();
    void sweepInDestroyedOfWhatAReloadDeletes();
    void scanInDestroyedOfAContainerThatItsOwnerDeletes();
    void missingScriptsFolderHasNoPlugins();
    void missingPluginsFolderHasNoPlugins_data();
    void missingPluginsFolderHasNoPlugins();
    void pluginsFolderMayHaveAnyName_data();
    void pluginsFolderMayHaveAnyName();
    void relativePluginsFolderIsBelowTheCurrentOne();

    void handlersOfEarlierScansAreDropped();
    void handlerOfAReloadedPluginIsCalledOnce();
    void interpreterLockIsHeldDuringTheScanOnly();
    void callerMayHoldTheInterpreterLock();
    void currentFolderIsTheSameAfterwards();

private:
    Output scan();
    QStringList keys() const { return privateData(oxKernelInterface::the())->plugins.keys(); }
    oxKernelInterfaceP::oxPluginInfo record(const QString &key) const;
    int dockCount() const { return m_host.window.findChildren<QDockWidget *>().size(); }

    PluginHost m_host;
    QByteArray m_pluginsFolder = qgetenv("OX_PLUGINS_DIR");
};

namespace {

const QByteArray bindings("PythonQt: no PySide2: no\n");

QByteArray loaded(const QByteArray &key)
{
    return "Loaded '" + key + "' python plugin.\n";
}

QByteArray info(const QByteArray &line)
{
    return "python info: '" + line + "'\n";
}

oxMessageService *messageService()
{
    return oxKernelServiceFactory::the()->getService<oxMessageService>();
}

// Plugins that say in __main__.events that they ran.
const QByteArray noteFirst("import __main__\n__main__.events.append('first')\n");
const QByteArray noteSecond("import __main__\n__main__.events.append('second')\n");

QStringList events()
{
    return PluginHost::evaluate("events").toStringList();
}

/// Whether this thread holds the interpreter lock each time when a window gets a child.
class LockWatch : public QObject
{
public:
    int heldCount = 0;
    int freeCount = 0;

    void look() { ++(InterpreterLock::isHeldHere() ? heldCount : freeCount); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded)
            look();
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void tst_pluginScan::init()
{
    PluginHost::run("events = []");
}

void tst_pluginScan::cleanup()
{
    qputenv("OX_PLUGINS_DIR", m_pluginsFolder);
    outputOf([this] { m_host.clear(); });
}

Output tst_pluginScan::scan()
{
    return outputOf([this] { m_host.scan(); });
}

oxKernelInterfaceP::oxPluginInfo tst_pluginScan::record(const QString &key) const
{
    return privateData(oxKernelInterface::the())->plugins.value(key, {-1, nullptr, nullptr});
}

void tst_pluginScan::fileIsLoadedByItsSuffix_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("output");

    const auto add = [](const QString &fileName, const QByteArray &output) {
        QTest::newRow(qPrintable(fileName)) << fileName << output;
    };
    add("Tool.py", bindings + info("runs") + loaded("Tool"));
    add("my tool.py", bindings + info("runs") + loaded("my tool"));
    add("100%s%n.py", bindings + info("runs") + loaded("100%s%n"));
    add("line\nfeed.py", bindings + info("runs") + loaded("line\nfeed"));
    add(QStringLiteral("Gr\u00f6\u00dfe.py"), bindings + info("runs") + loaded("Gr\u00f6\u00dfe"));
    add("ox.py", bindings + info("runs") + loaded("ox"));
    add("Tool.js.py", bindings + info("runs") + loaded("Tool"));
    add("Tool.py.py", bindings + info("runs") + loaded("Tool"));
    add("[a-z]*?.py", bindings + info("runs") + loaded("[a-z]*?"));
    add("Tool.PY", "");
    add("Tool.Py", "");
    add("Tool.js", "");
    add("Tool.JS", "");
    add("Tool.py.js", "");
    add("Tool.pyc", "");
    add("Tool.pyw", "");
    add("Tool.py~", "");
    add("Tool.py.txt", "");
    add("Toolpy", "");
    add("py", "");
}

void tst_pluginScan::fileIsLoadedByItsSuffix()
{
    QFETCH(QString, fileName);
    QFETCH(QByteArray, output);

    m_host.write(fileName, "print 'runs'\n");
    const Output scanned = scan();
    QCOMPARE(scanned.standardOutput, output);
    QCOMPARE(scanned.standardError, QByteArray());
    QCOMPARE(keys().size(), output.isEmpty() ? 0 : 1);
    QCOMPARE(dockCount(), keys().size());
}

void tst_pluginScan::subfoldersAreScannedInAnyDepth()
{
    m_host.write("One.py", "");
    m_host.write("a/Two.py", "");
    m_host.write("a/b/c d/e.py/Three.py", "");
    scan();
    QCOMPARE(keys(), QStringList({"One", "Three", "Two"}));
}

void tst_pluginScan::hiddenFilesAndFoldersAreNot()
{
    m_host.write(".Hidden.py", "");
    m_host.write(".py", "");
    m_host.write(".folder/Inside.py", "");
    m_host.write("Shown.py", "");
    scan();
    QCOMPARE(keys(), QStringList{"Shown"});
}

void tst_pluginScan::linkToAFileIsLoadedAndLinkToAFolderNotFollowed()
{
    const QTemporaryDir elsewhere;
    QFile file(elsewhere.filePath("Inside.py"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("import os\nprint os.getcwd()\n");
    file.close();
    QVERIFY(QFile::link(file.fileName(), m_host.scripts() + "/Link.py"));
    QVERIFY(QFile::link(elsewhere.path(), m_host.scripts() + "/Folder"));
    QVERIFY(QFile::link(m_host.scripts(), m_host.scripts() + "/Loop"));

    QCOMPARE(scan().standardOutput, bindings + info(m_host.scripts().toUtf8()) + loaded("Link"));
    QCOMPARE(keys(), QStringList{"Link"});
}

// A pipe would be waited for until somebody writes into it.
void tst_pluginScan::linksAndPipesThatAreNoFilesAreNotOpened()
{
    QVERIFY(QFile::link("/no/such/file.py", m_host.scripts() + "/Dangling.py"));
    QCOMPARE(mkfifo(qPrintable(m_host.scripts() + "/Pipe.py"), 0600), 0);
    const Output output = scan();
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(keys().isEmpty());
}

void tst_pluginScan::foldersNamedLikePluginsAreFolders()
{
    QDir(m_host.scripts()).mkdir("Folder.py");
    const Output output = scan();
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(keys().isEmpty());
}

void tst_pluginScan::orderIsThatOfTheFileSystem()
{
    for (char name = 'a'; name <= 'z'; ++name)
        m_host.write(QString(QLatin1Char(name)) + "/x" + QLatin1Char(name) + ".py", "");

    QByteArray expected;
    QDirIterator files(m_host.scripts(), {"*.py"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        expected += bindings + loaded(files.fileInfo().baseName().toUtf8());
    }
    QCOMPARE(expected.count("Loaded"), 26);
    QCOMPARE(scan().standardOutput, expected);
}

void tst_pluginScan::pathsAreFull()
{
    const QString path = m_host.write("Sub/Mixed.py", "import PythonQt, PySide2\n");
    QCOMPARE(scan().standardError,
             "Couldn't load plugin '" + path.toUtf8() + "', it seems to use PythonQt annd PySide2!\n");
}

void tst_pluginScan::secondScanReloadsInPlace()
{
    m_host.write("Tool.py", "print 'runs'\n");
    const Output first = scan();
    const QPointer<QDockWidget> dock = m_host.dock("Tool");
    const QPointer<QWidget> container = record("Tool").widget;
    const Output second = scan();

    QCOMPARE(second.standardOutput, first.standardOutput);
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
    QVERIFY(dock);
    QVERIFY(!container);
    QCOMPARE(dock->widget(), record("Tool").widget);
}

void tst_pluginScan::secondScanAddsReloadsAndRemoves()
{
    m_host.write("Changed.py", noteFirst);
    const QString deleted = m_host.write("Deleted.py", "");
    m_host.write("Same.py", "");
    scan();
    QCOMPARE(keys(), QStringList({"Changed", "Deleted", "Same"}));
    const QPointer<QDockWidget> same = m_host.dock("Same");

    m_host.write("Added.py", "");
    m_host.write("Changed.py", noteSecond);
    QVERIFY(QFile::remove(deleted));
    const Output output = scan();

    QCOMPARE(output.standardOutput.count("Loaded '"), 3);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(keys(), QStringList({"Added", "Changed", "Same"}));
    for (const QString &key : keys()) {
        QCOMPARE(record(key).found, 1);
        QCOMPARE(m_host.dock(key)->widget(), record(key).widget);
        QVERIFY(m_host.entry(key));
    }
    QCOMPARE(events(), QStringList({"first", "second"}));
    QVERIFY(same);
    QCOMPARE(m_host.dock("Same"), same.data());
    QVERIFY(!m_host.dock("Deleted"));
    QVERIFY(!m_host.entry("Deleted"));
}

void tst_pluginScan::thirdScanFindsAPluginAgain()
{
    const QString path = m_host.write("Tool.py", noteFirst);
    scan();
    QVERIFY(QFile::remove(path));
    scan();
    QVERIFY(keys().isEmpty());
    m_host.write("Tool.py", noteSecond);
    scan();
    QCOMPARE(keys(), QStringList{"Tool"});
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
    QCOMPARE(events(), QStringList({"first", "second"}));
}

void tst_pluginScan::foundIsClearedAtTheStartOfAScan()
{
    for (const char *name : {"A.py", "B.py", "C.py"})
        m_host.write(name, "oxMessageService.information('')\n");
    QList<int> foundCounts;
    const QMetaObject::Connection counting =
        connect(messageService(), &oxMessageService::messageReceived, this, [&foundCounts] {
            const auto &plugins = privateData(oxKernelInterface::the())->plugins;
            foundCounts << int(std::count_if(plugins.begin(), plugins.end(), [](auto plugin) { return plugin.found; }));
        });
    scan();
    scan();
    disconnect(counting);
    QCOMPARE(foundCounts, QList<int>({1, 2, 3, 1, 2, 3}));
}

void tst_pluginScan::sameKeyInTwoFoldersIsOneModule_data()
{
    QTest::addColumn<QString>("firstName");
    QTest::addColumn<QString>("secondName");

    QTest::newRow("two folders") << "a/Tool.py"
                                 << "b/Tool.py";
    QTest::newRow("folder and subfolder") << "Tool.py"
                                          << "a/Tool.py";
    QTest::newRow("two middle parts") << "Tool.x.py"
                                      << "Tool.y.py";
}

void tst_pluginScan::sameKeyInTwoFoldersIsOneModule()
{
    QFETCH(QString, firstName);
    QFETCH(QString, secondName);

    m_host.write(firstName, noteFirst);
    const QString second = m_host.write(secondName, noteSecond);
    QCOMPARE(scan().standardOutput, (bindings + loaded("Tool")).repeated(2));
    QCOMPARE(keys(), QStringList{"Tool"});
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
    QCOMPARE(m_host.dock("Tool")->widget(), record("Tool").widget);
    QCOMPARE(events().size(), 2);

    // Either file keeps the module.
    QVERIFY(QFile::remove(second));
    scan();
    QCOMPARE(keys(), QStringList{"Tool"});
    QCOMPARE(events().mid(2), QStringList{"first"});
}

void tst_pluginScan::keysThatDifferInThePrefixAreTwoModulesOfOneTitle()
{
    const QString prefixed = m_host.write("oxFoo.py", "");
    m_host.write("Foo.py", "");
    scan();
    QCOMPARE(keys(), QStringList({"Foo", "oxFoo"}));
    QCOMPARE(dockCount(), 2);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 2);
    const auto docks = m_host.window.findChildren<QDockWidget *>();
    for (const QDockWidget *dock : docks)
        QCOMPARE(dock->windowTitle(), QStringLiteral("Foo"));

    // Which of the two docks a title means is not settled, but there is one for each key.
    scan();
    QCOMPARE(keys(), QStringList({"Foo", "oxFoo"}));
    QCOMPARE(dockCount(), 2);
    QVERIFY(QFile::remove(prefixed));
    scan();
    QCOMPARE(keys(), QStringList{"Foo"});
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
}

void tst_pluginScan::failingPluginsKeepTheirEntriesAndTheOthersLoad()
{
    m_host.write("Bad.py", "raise Exception\n");
    m_host.write("Broken.py", "a b\n");
    m_host.write("Exit.py", "raise SystemExit(1)\n");
    m_host.write("Mixed.py", "import PythonQt, PySide2\n");
    m_host.write("Good.py", noteFirst);
    for (int i = 1; i <= 2; ++i) {
        scan();
        QCOMPARE(keys(), QStringList({"Bad", "Broken", "Exit", "Good", "Mixed"}));
        QCOMPARE(dockCount(), 5);
        for (const QString &key : keys()) {
            QCOMPARE(record(key).found, 1);
            QVERIFY(record(key).widget);
        }
        QCOMPARE(events().size(), i);
    }
}

void tst_pluginScan::fileNameThatIsNotUtf8IsPassedOver()
{
    const QByteArray path = m_host.scripts().toUtf8() + "/\xff.py";
    FILE *file = fopen(path.constData(), "w");
    QVERIFY(file);
    fclose(file);
    m_host.write("Good.py", noteFirst);
    const Output output = scan();
    QCOMPARE(remove(path.constData()), 0);

    QCOMPARE(output.standardOutput, bindings + loaded("Good"));
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(keys(), QStringList{"Good"});
}

// Each removes the other: the one that comes second cannot be opened any more.
void tst_pluginScan::fileThatGoesBeforeItsTurnKeepsItsEntry()
{
    m_host.write("One.py", "import os\nos.remove('Two.py')\n");
    m_host.write("Two.py", "import os\nos.remove('One.py')\n");
    const Output output = scan();

    const QStringList left = QDir(m_host.scripts()).entryList(QDir::Files);
    QCOMPARE(left.size(), 1);
    const QString removed = left.first() == "One.py" ? "Two.py" : "One.py";
    QCOMPARE(output.standardOutput, bindings + loaded(left.first().chopped(3).toUtf8()));
    QCOMPARE(output.standardError, "Couldn't load '" + (m_host.scripts() + '/' + removed).toUtf8() + "' plugin!\n");
    QCOMPARE(keys(), QStringList({"One", "Two"}));
    QCOMPARE(record(removed.chopped(3)).found, 1);
    QCOMPARE(m_host.dock(removed.chopped(3))->widget(), record(removed.chopped(3)).widget);
}

void tst_pluginScan::sweepRemovesDockEntryAndContainer()
{
    const QString path = m_host.write("oxTool.py",
                                      "from PythonQt.QtGui import QLabel\n"
                                      "label = QLabel('text', TARNPluginWidget)\n");
    scan();
    const QPointer<QDockWidget> dock = m_host.dock("Tool");
    const QPointer<QAction> entry = m_host.entry("Tool");
    const QPointer<QWidget> container = record("oxTool").widget;
    QVERIFY(dock && entry && container);
    QVERIFY(QFile::remove(path));
    const Output output = scan();

    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(!dock && !entry && !container);
    QVERIFY(keys().isEmpty());
}

void tst_pluginScan::sweepGoesInTheOrderOfTheKeys()
{
    const QStringList order{"B", "a", "b", "oxA", "oxc", "z"};
    QStringList removed;
    QStringList firstLeft;
    for (const char *key : {"oxc", "z", "a", "B", "oxA", "b"})
        m_host.write(QString(key) + ".py", "");
    scan();
    QCOMPARE(keys(), order);
    for (const QString &key : order) {
        const QString title = key.startsWith("ox") ? key.mid(2) : key;
        connect(m_host.dock(title), &QObject::destroyed, this, [this, &removed, &firstLeft, key] {
            removed << key;
            firstLeft << keys().first();
        });
    }
    QDir(m_host.scripts()).removeRecursively();
    scan();
    QCOMPARE(removed, order);
    QCOMPARE(firstLeft, order); // each entry goes right after its module
}

void tst_pluginScan::sweepLeavesThePythonModuleAlone()
{
    const QString path = m_host.write("Tool.py",
                                      "import __main__\n"
                                      "text = 'still here'\n"
                                      "def function(): return text\n"
                                      "__main__.function = function\n");
    scan();
    const PyObject *module = *record("Tool").module;
    const auto references = module->ob_refcnt;
    QVERIFY(QFile::remove(path));
    scan();
    QVERIFY(keys().isEmpty());
    QCOMPARE(module->ob_refcnt, references);
    QCOMPARE(PluginHost::evaluate("function()").toString(), QStringLiteral("still here"));
    PluginHost::run("del function");
}

void tst_pluginScan::sweepOfAPluginWithoutDock()
{
    const QString path = m_host.write("Tool.py", "TARNPluginWidget.parentWidget().delete()\n");
    scan();
    QVERIFY(m_host.entry("Tool"));
    QVERIFY(QFile::remove(path));
    scan();
    QVERIFY(keys().isEmpty());
    QVERIFY(!m_host.entry("Tool"));
}

// It lives on in the overlay, and goes when the plugin has another one.
void tst_pluginScan::contentOfASweptPluginIsNotTakenForThatOfTheNextOne()
{
    const QString path = m_host.write("Tool.py", "");
    scan();
    const QPointer<QWidget> swept = record("Tool").widget;
    oxKernelServiceFactory::the()->getService<oxRenderService>()->addOverlay("Tool");
    QVERIFY(QFile::remove(path));
    scan();
    m_host.write("Tool.py", "");
    scan();
    QVERIFY(swept);
    delete swept;

    QVERIFY(record("Tool").widget);
    QCOMPARE(record("Tool").widget, m_host.dock("Tool")->widget());
}

// What the inner scan has swept is not swept again: the window may have another module of that title.
void tst_pluginScan::sweepThatEndsInAnotherScan()
{
    m_host.write("One.py", "");
    m_host.write("Two.py", "");
    scan();
    connect(m_host.dock("One"), &QObject::destroyed, this, [this] { m_host.scan(); });
    auto *mainWindow = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    const QPointer<QWidget> ofTheHost = new QWidget;
    mainWindow->addModule("Two", "Scripts", ofTheHost, QString(), QIcon(), QString(), Qt::NoDockWidgetArea);
    QDir(m_host.scripts()).removeRecursively();
    scan();

    QVERIFY(keys().isEmpty());
    QVERIFY(ofTheHost);
    QCOMPARE(dockCount(), 1);
    QVERIFY(m_host.entry("Two"));
    mainWindow->subModule("Two");
}

void tst_pluginScan::scanInDestroyedOfWhatAReloadDeletes_data()
{
    QTest::addColumn<bool>("isChild");
    QTest::addColumn<bool>("isShown");
    QTest::addColumn<bool>("isInOverlay");
    for (const bool isChild : {false, true}) {
        const char *what = isChild ? "child" : "container";
        QTest::addRow("%s, hidden", what) << isChild << false << false;
        QTest::addRow("%s, shown", what) << isChild << true << false;
        QTest::addRow("%s, in the overlay", what) << isChild << false << true;
    }
}

// The host's own code, which no scan disconnects.
void tst_pluginScan::scanInDestroyedOfWhatAReloadDeletes()
{
    QFETCH(bool, isChild);
    QFETCH(bool, isShown);
    QFETCH(bool, isInOverlay);

    m_host.write("Tool.py", "print 'runs'\n");
    scan();
    auto *renderService = oxKernelServiceFactory::the()->getService<oxRenderService>();
    if (isInOverlay)
        renderService->addOverlay("Tool");
    if (isShown) {
        m_host.window.show();
        m_host.dock("Tool")->show();
    }
    const QPointer<QWidget> container = record("Tool").widget;
    const QObject *watched = isChild ? new QWidget(container) : container.data();
    int scans = 0;
    connect(watched, &QObject::destroyed, this, [this, &scans] {
        ++scans;
        m_host.scan();
    });
    const Output output = scan();
    m_host.window.hide();

    QCOMPARE(scans, 1);
    QVERIFY(!container);
    QCOMPARE(output.standardOutput, (bindings + info("runs") + loaded("Tool")).repeated(2));
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(keys(), QStringList{"Tool"});
    QVERIFY(record("Tool").widget);
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.dock("Tool")->widget(), record("Tool").widget);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
    QCOMPARE(scan().standardOutput, bindings + info("runs") + loaded("Tool"));
}

void tst_pluginScan::sweepInDestroyedOfWhatAReloadDeletes()
{
    const QString path = m_host.write("Tool.py", "");
    scan();
    const QPointer<QDockWidget> dock = m_host.dock("Tool");
    connect(record("Tool").widget, &QObject::destroyed, this, [this, &path] {
        QFile::remove(path);
        m_host.scan();
    });
    const Output output = scan();

    QVERIFY(!dock);
    QCOMPARE(output.standardError, "Couldn't load '" + path.toUtf8() + "' plugin!\n");
    QCOMPARE(keys(), QStringList{"Tool"});
    QCOMPARE(dockCount(), 1);
    QCOMPARE(m_host.dock("Tool")->widget(), record("Tool").widget);
}

void tst_pluginScan::scanInDestroyedOfAContainerThatItsOwnerDeletes()
{
    m_host.write("Tool.py", "");
    scan();
    QWidget *container = record("Tool").widget;
    connect(container, &QObject::destroyed, this, [this] { m_host.scan(); });
    const Output output = outputOf([container] { delete container; });

    QCOMPARE(output.standardOutput, bindings + loaded("Tool"));
    QVERIFY(record("Tool").widget);
    QCOMPARE(m_host.dock("Tool")->widget(), record("Tool").widget);
}

void tst_pluginScan::missingScriptsFolderHasNoPlugins()
{
    m_host.write("One.py", "");
    m_host.write("Two.py", "");
    scan();
    QCOMPARE(dockCount(), 2);
    QVERIFY(QDir(m_host.scripts()).removeRecursively());
    const Output output = scan();

    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(keys().isEmpty());
    QCOMPARE(dockCount(), 0);
}

void tst_pluginScan::missingPluginsFolderHasNoPlugins_data()
{
    QTest::addColumn<QByteArray>("pluginsFolder");

    QTest::newRow("unset") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("not there") << QByteArray("/no/such/folder");
    QTest::newRow("a file") << QByteArray(FIXTURES "/../CMakeLists.txt");
}

void tst_pluginScan::missingPluginsFolderHasNoPlugins()
{
    QFETCH(QByteArray, pluginsFolder);
    QVERIFY(!QFileInfo::exists("/Scripts")); // what unset and empty stand for

    m_host.write("Tool.py", "");
    scan();
    QCOMPARE(keys(), QStringList{"Tool"});
    if (pluginsFolder.isNull())
        qunsetenv("OX_PLUGINS_DIR");
    else
        qputenv("OX_PLUGINS_DIR", pluginsFolder);
    // The current folder stands for none of them.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_pluginsFolder));
    const Output output = scan();
    QVERIFY(QDir::setCurrent(before));

    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(keys().isEmpty());
    QCOMPARE(dockCount(), 0);
}

void tst_pluginScan::pluginsFolderMayHaveAnyName_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("blanks") << "my plugins";
    QTest::newRow("percent signs") << "100%s%n";
    QTest::newRow("beyond ASCII") << QStringLiteral("Gr\u00f6\u00dfe \U0001f40d");
    QTest::newRow("quotes") << "it's \"mine\"";
    QTest::newRow("pattern characters") << "[a]*?";
}

void tst_pluginScan::pluginsFolderMayHaveAnyName()
{
    QFETCH(QString, name);

    const QString path = m_host.write(name + "/Scripts/Tool.py", "import os\nprint os.getcwd()\n");
    qputenv("OX_PLUGINS_DIR", (m_host.scripts() + '/' + name).toUtf8());
    const Output output = scan();
    QCOMPARE(output.standardOutput, bindings + info(QFileInfo(path).path().toUtf8()) + loaded("Tool"));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pluginScan::relativePluginsFolderIsBelowTheCurrentOne()
{
    m_host.write("Plugins/Scripts/One.py", "");
    m_host.write("Plugins/Scripts/Sub/Two.py", "");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_host.scripts()));
    qputenv("OX_PLUGINS_DIR", "Plugins");
    const Output output = scan();
    QVERIFY(QDir::setCurrent(before));

    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(output.standardOutput.count("Loaded '"), 2);
    QCOMPARE(keys(), QStringList({"One", "Two"}));
}

void tst_pluginScan::handlersOfEarlierScansAreDropped()
{
    const QString path = m_host.write("Tool.py",
                                      "def note(name):\n"
                                      "    print 'called', name\n"
                                      "oxMessageService.connect('objectNameChanged(QString)', note)\n");
    scan();
    const Output connected = outputOf([] { messageService()->setObjectName("one"); });
    QCOMPARE(connected.standardOutput, info("called one"));
    QVERIFY(QFile::remove(path));
    scan();
    const Output dropped = outputOf([] { messageService()->setObjectName("two"); });
    QCOMPARE(dropped.standardOutput, QByteArray());
    QCOMPARE(dropped.standardError, QByteArray());
}

void tst_pluginScan::handlerOfAReloadedPluginIsCalledOnce()
{
    m_host.write("Tool.py",
                 "def note(name):\n"
                 "    print 'called', name\n"
                 "oxMessageService.connect('objectNameChanged(QString)', note)\n");
    for (int i = 0; i < 3; ++i)
        scan();
    const Output output = outputOf([] { messageService()->setObjectName("three"); });
    QCOMPARE(output.standardOutput, info("called three"));
}

void tst_pluginScan::interpreterLockIsHeldDuringTheScanOnly()
{
    LockWatch loading;
    LockWatch sweeping;
    m_host.write("One.py", "");
    m_host.write("Two.py", "");
    QVERIFY(InterpreterLock::isFree());
    m_host.window.installEventFilter(&loading);
    scan();
    m_host.window.removeEventFilter(&loading);
    QVERIFY(InterpreterLock::isFree());
    QCOMPARE(loading.freeCount, 0);
    QVERIFY(loading.heldCount >= 2);

    for (const char *name : {"One", "Two"})
        connect(m_host.dock(name), &QObject::destroyed, this, [&sweeping] { sweeping.look(); });
    QDir(m_host.scripts()).removeRecursively();
    scan();
    QVERIFY(InterpreterLock::isFree());
    QCOMPARE(sweeping.freeCount, 0);
    QCOMPARE(sweeping.heldCount, 2);
}

void tst_pluginScan::callerMayHoldTheInterpreterLock()
{
    m_host.write("Tool.py", "");
    {
        const InterpreterLock lock;
        scan();
        QVERIFY(InterpreterLock::isHeldHere());
    }
    QVERIFY(InterpreterLock::isFree());
    QCOMPARE(keys(), QStringList{"Tool"});
}

void tst_pluginScan::currentFolderIsTheSameAfterwards()
{
    const QString before = QDir::currentPath();
    m_host.write("Sub/Tool.py", "import os\nos.chdir('/')\n");
    scan();
    QCOMPARE(QDir::currentPath(), before);
}

QTEST_MAIN(tst_pluginScan)
#include "tst_pluginScan.moc"
