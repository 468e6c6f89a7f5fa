#include "InterpreterLock.h"

#include "PluginHost.h"

#include <PythonQt.h>
#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTextCodec>
#include <QVBoxLayout>
#include <QtTest>

#include <unistd.h>

#include "OutputCapture.h"
#include "Patience.h"
#include "PrivateData.h"
#include "QOXDockWidget.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"
#include "oxRenderService.h"

// The way of one file into a panel, and of a changed file into the same panel.
class tst_pluginLoading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void keyAndModuleNameComeFromTheFileName_data();
    void keyAndModuleNameComeFromTheFileName();
    void panelIsAHiddenDockWithAnEntryInScripts();
    void containerIsAPlainWidgetWithALayout();
    void servicesAreToldOfTheContainer();
    void recordHoldsContainerAndModule();

    void pluginSeesItsContainerAndTheMessageService();
    void onlyTheMessageServiceStays();
    void containerGlobalsAreRemovedFromAFailedPlugin_data();
    void containerGlobalsAreRemovedFromAFailedPlugin();
    void pluginsHaveModulesOfTheirOwn();
    void panelExistsBeforeTheTextRuns();

    void messagesTellTheBindingsAndTheKey_data();
    void messagesTellTheBindingsAndTheKey();
    void outputOfThePluginComesBetweenTheMessages();
    void pythonErrorsAreNotTheLoadersFailure_data();
    void pythonErrorsAreNotTheLoadersFailure();
    void fileThatCannotBeOpenedLeavesAnEmptyPanel_data();
    void fileThatCannotBeOpenedLeavesAnEmptyPanel();
    void unreadableFileIsNotOpened();
    void mixedBindingsAreRefused();
    void refusalNamesThePathAsItWasGiven();
    void refusedPluginRunsOnceItIsRepaired();

    void textForPySide2IsRewritten();
    void textForPythonQtRunsAsItIs();
    void textWithoutBindingRunsAsItIs();
    void textEndsAtTheFirstZeroByte();
    void bindingAfterAZeroByteCounts();
    void lineEndsOfOtherSystemsAreFine();
    void bytesReachPythonUnchanged();

    void currentFolderIsThePlugins();
    void currentFolderIsThatOfALink();
    void currentFolderIsRestored_data();
    void currentFolderIsRestored();
    void relativePathIsLookedUpInThePluginsFolder();
    void textsAreUtf8InAnyLocale();

    void reloadKeepsDockAndEntry();
    void reloadDeletesTheOldContentFirst();
    void reloadClearsTheOldModuleBeforeTheNewTextRuns();
    void reloadTakesTheOldModuleOutOfSysModules();
    void reloadTakesNoOtherModuleOutOfSysModules_data();
    void reloadTakesNoOtherModuleOutOfSysModules();
    void globalsThatCannotBeDeletedStayAsTheyAre_data();
    void globalsThatCannotBeDeletedStayAsTheyAre();
    void moduleThatIsHeldKeepsWhatCannotBeDeleted();
    void reloadsLeaveNoModuleBehind_data();
    void reloadsLeaveNoModuleBehind();
    void reloadedPanelStaysVisible();
    void reloadedPanelStaysHidden();
    void reloadMovesTheNewContentIntoItsOverlayTab();
    void reloadTakesAnOpenTabOutOfTheOverlay();
    void reloadMarksTheRecordAsFound();
    void failedReloadLeavesAnEmptyPanel();
    void hundredReloadsLeaveOnePanel();
    void fortyThousandConnectionsOfReloadsWork();
    void handlersAreNotMixedUpAfterManyConnections();
    void handlerThatDisconnectsItself();

    void pluginThatDeletesItsContainer();
    void pluginThatDeletesItsDock();
    void pluginThatClearsItsGlobals();
    void pluginThatLoadsAllPluginsAnew();
    void pluginThatLoadsAllPluginsAnewWhenItIsCleared_data();
    void pluginThatLoadsAllPluginsAnewWhenItIsCleared();
    void pluginThatDeletesWindowsWhenItIsCleared();
    void pluginThatTakesItsContainerElsewhere();

    void pythonRunsWhenAButtonIsClickedLater();
    void endlessRecursionIsAnError();
    void fiveMegabytesAreLoaded();

private:
    Output load(const QString &path);
    Output loadText(const QByteArray &text);
    Output loadTextOf(const QString &key, const QByteArray &text);
    oxKernelInterfaceP::oxPluginInfo record(const QString &key = QStringLiteral("Plugin")) const;
    QStringList globals(const QString &key = QStringLiteral("Plugin")) const;
    QWidget *container(const QString &key = QStringLiteral("Plugin")) const { return record(key).widget; }
    QVariant value(const QString &expression) { return m_host.evaluateIn(QStringLiteral("Plugin"), expression); }

    PluginHost m_host;
    bool m_result = false; ///< of the last load
};

namespace {

const QByteArray noBinding("PythonQt: no PySide2: no\n");
const QByteArray loaded("Loaded 'Plugin' python plugin.\n");
const QByteArray traceback("python error: 'Traceback (most recent call last):'\n"
                           "python error: '  File \"<string>\", line 1, in <module>'\n");
const QString key = QStringLiteral("Plugin");

QByteArray info(const QByteArray &line)
{
    return "python info: '" + line + "'\n";
}

oxRenderService *renderService()
{
    return oxKernelServiceFactory::the()->getService<oxRenderService>();
}

// As long as nobody has placed it, a container has neither parent nor window flags.
QString described(const QWidget *widget)
{
    const bool isContainer = !widget->parentWidget() && widget->windowFlags() == QWidget().windowFlags();
    return isContainer ? QStringLiteral("container") : QStringLiteral("other widget");
}

QString currentFolder()
{
    return QStringLiteral(" in ") + QDir::currentPath();
}

/// Stand in for the services that a load calls, and note the calls and the current folder.
class MainWindowServiceNotes : public oxMainWindowService
{
public:
    explicit MainWindowServiceNotes(QStringList *calls)
        : m_calls(calls)
    {}

    void addModule(const QString &name, const QString &menu, QWidget *widget, const QString &shortcut,
                   const QIcon &icon, const QString &toolTip, Qt::DockWidgetArea area) override
    {
        m_calls->append(QStringLiteral("addModule('%1', '%2', %3, '%4', %5, '%6', %7)")
                            .arg(name, menu, described(widget), shortcut, icon.isNull() ? "no icon" : "icon", toolTip,
                                 QString::number(area))
                        + currentFolder());
        lastWidget = widget;
    }

    void changeModule(const QString &name, const QString &menu, QWidget *widget) override
    {
        m_calls->append(QStringLiteral("changeModule('%1', '%2', %3)").arg(name, menu, described(widget))
                        + currentFolder());
        lastWidget = widget;
    }

    QPointer<QWidget> lastWidget;

private:
    QStringList *m_calls;
};

class RenderServiceNotes : public oxRenderService
{
public:
    explicit RenderServiceNotes(QStringList *calls)
        : m_calls(calls)
    {}

    void updateOverlay(const QString &name) override
    {
        m_calls->append(QStringLiteral("updateOverlay('%1')").arg(name) + currentFolder());
    }

private:
    QStringList *m_calls;
};

/// Files another service for as long as it lives.
template<class Interface>
class Substitute
{
public:
    explicit Substitute(Interface *service)
        : m_original(oxKernelServiceFactory::the()->getService<Interface>())
    {
        oxKernelServiceFactory::the()->fileService<Interface>(service);
    }
    ~Substitute() { oxKernelServiceFactory::the()->fileService<Interface>(m_original); }

private:
    Q_DISABLE_COPY(Substitute)

    Interface *m_original;
};

QTabWidget *overlayPanel()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget *widget : widgets) {
        if (auto *panel = qobject_cast<QTabWidget *>(widget))
            return panel;
    }
    return nullptr;
}

} // namespace

// Plugins see __main__.events, and the helpers that a text for PySide2 is rewritten to use.
void tst_pluginLoading::initTestCase()
{
    m_host.writeModule("PySide2.py", "");
    m_host.writeModule("uiTools.py",
                       "def loadUiType(name): return 'PythonQt', name\n"
                       "def loadUiTypePySide(name): return 'PySide2', name\n"
                       "def getWidget(address): return 'wrapper', address\n");
}

void tst_pluginLoading::cleanup()
{
    outputOf([this] { m_host.clear(); });
    PluginHost::run(QStringLiteral("events = []"));
}

Output tst_pluginLoading::load(const QString &path)
{
    return outputOf([this, &path] { m_result = m_host.load(path); });
}

Output tst_pluginLoading::loadText(const QByteArray &text)
{
    return loadTextOf(key, text);
}

Output tst_pluginLoading::loadTextOf(const QString &pluginKey, const QByteArray &text)
{
    return load(m_host.write(pluginKey + ".py", text));
}

oxKernelInterfaceP::oxPluginInfo tst_pluginLoading::record(const QString &pluginKey) const
{
    return privateData(oxKernelInterface::the())->plugins.value(pluginKey, {-1, nullptr, nullptr});
}

// Without Python's own.
QStringList tst_pluginLoading::globals(const QString &pluginKey) const
{
    return m_host.evaluateIn(pluginKey, "sorted(n for n in globals() if n[0] != '_')").toStringList();
}

void tst_pluginLoading::keyAndModuleNameComeFromTheFileName_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("pluginKey");
    QTest::addColumn<QString>("moduleName");

    const auto add = [](const QString &fileName, const QString &pluginKey, const QString &moduleName) {
        QTest::newRow(qPrintable(fileName)) << fileName << pluginKey << moduleName;
    };
    add("Plugin.py", "Plugin", "Plugin");
    add("Sub/Folder.d/Plugin.py", "Plugin", "Plugin");
    add("ox.py", "ox", "");
    add("oxFoo.py", "oxFoo", "Foo");
    add("oxoxFoo.py", "oxoxFoo", "oxFoo");
    add("OxFoo.py", "OxFoo", "OxFoo");
    add("oXFoo.py", "oXFoo", "oXFoo");
    add("Fox.py", "Fox", "Fox");
    add("o.py", "o", "o");
    add("a.b.py", "a", "a");
    add("ox.b.py", "ox", "");
    add("noSuffix", "noSuffix", "noSuffix");
    add(".py", "", "");
    add("my own tool.py", "my own tool", "my own tool");
    add("ox tool.py", "ox tool", " tool");
    add("100%s%n%d.py", "100%s%n%d", "100%s%n%d");
    add("line\nfeed.py", "line\nfeed", "line\nfeed");
    add("it's \"quoted\".py", "it's \"quoted\"", "it's \"quoted\"");
    add("a&b.py", "a&b", "a&b");
    add("back\\slash.py", "back\\slash", "back\\slash");
    add(QStringLiteral("Gr\u00f6\u00dfe \U0001f40d.py"), QStringLiteral("Gr\u00f6\u00dfe \U0001f40d"),
        QStringLiteral("Gr\u00f6\u00dfe \U0001f40d"));
    add("Scripts.py", "Scripts", "Scripts");
    add(QString(200, 'x') + ".py", QString(200, 'x'), QString(200, 'x'));
}

void tst_pluginLoading::keyAndModuleNameComeFromTheFileName()
{
    QFETCH(QString, fileName);
    QFETCH(QString, pluginKey);
    QFETCH(QString, moduleName);

    const Output output = load(m_host.write(fileName, "print 'runs'\n"));
    QVERIFY(m_result);
    QCOMPARE(output.standardOutput, noBinding + info("runs") + "Loaded '" + pluginKey.toUtf8() + "' python plugin.\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(privateData(oxKernelInterface::the())->plugins.keys(), QStringList{pluginKey});
    QVERIFY(m_host.entry(moduleName));
    QVERIFY(m_host.dock(moduleName));
    QCOMPARE(m_host.dock(moduleName)->widget(), container(pluginKey));
}

void tst_pluginLoading::panelIsAHiddenDockWithAnEntryInScripts()
{
    loadText("");
    auto *dock = qobject_cast<QOXDockWidget *>(m_host.dock(key));
    QVERIFY(dock);
    QVERIFY(dock->isHidden());
    QCOMPARE(dock->menuName(), QStringLiteral("Scripts"));
    QVERIFY(dock->windowIcon().isNull());

    QAction *entry = m_host.entry(key);
    QVERIFY(m_host.menu(QStringLiteral("Scripts"))->actions().contains(entry));
    QVERIFY(entry->isCheckable());
    QVERIFY(!entry->isChecked());
    QVERIFY(entry->icon().isNull());
}

void tst_pluginLoading::containerIsAPlainWidgetWithALayout()
{
    loadText("");
    QWidget *widget = container();
    QVERIFY(widget);
    QCOMPARE(widget->metaObject(), &QWidget::staticMetaObject);
    QCOMPARE(widget->windowType(), Qt::Widget);
    QCOMPARE(widget->contentsMargins(), QMargins());
    QCOMPARE(widget->children().size(), 1);
    auto *layout = qobject_cast<QVBoxLayout *>(widget->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->count(), 0);
}

void tst_pluginLoading::servicesAreToldOfTheContainer()
{
    QStringList calls;
    MainWindowServiceNotes mainWindow(&calls);
    RenderServiceNotes render(&calls);
    const Substitute<oxMainWindowService> mainWindowSubstitute(&mainWindow);
    const Substitute<oxRenderService> renderSubstitute(&render);

    loadTextOf("oxPlugin", "");
    QCOMPARE(calls, QStringList{"addModule('Plugin', 'Scripts', container, '', no icon, '', 0)" + currentFolder()});
    QVERIFY(mainWindow.lastWidget);
    QCOMPARE(mainWindow.lastWidget.data(), container("oxPlugin"));

    calls.clear();
    loadTextOf("oxPlugin", "");
    QCOMPARE(calls,
             QStringList({"changeModule('Plugin', 'Scripts', container)" + currentFolder(),
                          "updateOverlay('Plugin')" + currentFolder()}));
    QCOMPARE(mainWindow.lastWidget.data(), container("oxPlugin"));
    delete container("oxPlugin");
}

void tst_pluginLoading::recordHoldsContainerAndModule()
{
    QCOMPARE(record().found, -1);
    loadText("mark = 42\n");
    QCOMPARE(record().found, 1);
    QCOMPARE(record().widget, m_host.dock(key)->widget());
    QVERIFY(record().module);
    QCOMPARE(value("mark").toInt(), 42);
}

void tst_pluginLoading::pluginSeesItsContainerAndTheMessageService()
{
    loadText("widget = TARNPluginWidget\n"
             "isNumber = isinstance(TARNPluginWidgetId, (int, long))\n"
             "number = TARNPluginWidgetId\n"
             "service = oxMessageService\n"
             "type = TARNPluginWidget.className()\n");
    QCOMPARE(value("widget").value<QObject *>(), container());
    QCOMPARE(value("type").toString(), QStringLiteral("QWidget"));
    QVERIFY(value("isNumber").toBool());
    QCOMPARE(value("str(number)").toString(), QString::number(reinterpret_cast<quintptr>(container())));
    QCOMPARE(value("service").value<QObject *>(), oxKernelServiceFactory::the()->getService<oxMessageService>());
}

void tst_pluginLoading::onlyTheMessageServiceStays()
{
    loadText("mine = 1\n");
    QCOMPARE(globals(), QStringList({"mine", "oxMessageService"}));
}

void tst_pluginLoading::containerGlobalsAreRemovedFromAFailedPlugin_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("exception") << QByteArray("raise Exception\n");
    QTest::newRow("syntax error") << QByteArray("a b\n");
    QTest::newRow("both bindings") << QByteArray("import PySide2, PythonQt\n");
    QTest::newRow("removed them itself") << QByteArray("del TARNPluginWidget, TARNPluginWidgetId\n");
    QTest::newRow("replaced them") << QByteArray("TARNPluginWidget = TARNPluginWidgetId = None\n");
}

void tst_pluginLoading::containerGlobalsAreRemovedFromAFailedPlugin()
{
    QFETCH(QByteArray, text);

    loadText(text);
    QCOMPARE(globals(), QStringList{"oxMessageService"});
    // A look for globals that are not there must leave no error for the next statement.
    QCOMPARE(loadTextOf("Other", "").standardError, QByteArray());
}

void tst_pluginLoading::pluginsHaveModulesOfTheirOwn()
{
    loadTextOf("First", "x = 'first'\n");
    loadTextOf("Second", "had_x = 'x' in globals()\nx = 'second'\n");
    QCOMPARE(m_host.evaluateIn("First", "x").toString(), QStringLiteral("first"));
    QVERIFY(!m_host.evaluateIn("Second", "had_x").toBool());
    QVERIFY(m_host.evaluateIn("First", "__name__") != m_host.evaluateIn("Second", "__name__"));
    QVERIFY(!PluginHost::evaluate("'x' in globals()").toBool());
}

void tst_pluginLoading::panelExistsBeforeTheTextRuns()
{
    loadText("window = TARNPluginWidget.parentWidget().windowTitle\n");
    QCOMPARE(value("window").toString(), key);
}

void tst_pluginLoading::messagesTellTheBindingsAndTheKey_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bindings");

    QTest::newRow("neither") << QByteArray("") << noBinding;
    QTest::newRow("PythonQt") << QByteArray("import PythonQt\n") << QByteArray("PythonQt: yes PySide2: no\n");
    QTest::newRow("PySide2") << QByteArray("import PySide2\n") << QByteArray("PythonQt: no PySide2: yes\n");
    QTest::newRow("comment") << QByteArray("# import PySide2\n") << noBinding;
    QTest::newRow("indented comment") << QByteArray("    # import PySide2\n")
                                      << QByteArray("PythonQt: no PySide2: yes\n");
}

void tst_pluginLoading::messagesTellTheBindingsAndTheKey()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bindings);

    const Output output = loadText(text);
    QVERIFY(m_result);
    QCOMPARE(output.standardOutput, bindings + loaded);
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pluginLoading::outputOfThePluginComesBetweenTheMessages()
{
    QCOMPARE(loadText("print 'one'\nprint 'two'\n").standardOutput, noBinding + info("one") + info("two") + loaded);
}

void tst_pluginLoading::pythonErrorsAreNotTheLoadersFailure_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("syntax error") << QByteArray("a b\n")
                                  << QByteArray("python error: '  File \"<string>\", line 1'\n"
                                                "python error: '    a b'\n"
                                                "python error: '      ^'\n"
                                                "python error: 'SyntaxError: invalid syntax'\n");
    QTest::newRow("exception") << QByteArray("raise ValueError('100%s')\n")
                               << traceback + "python error: 'ValueError: 100%s'\n";
    QTest::newRow("failing import") << QByteArray("import noSuchModule\n")
                                    << traceback + "python error: 'ImportError: No module named noSuchModule'\n";
    QTest::newRow("exit") << QByteArray("import sys\nsys.exit(3)\n") << QByteArray();
    QTest::newRow("exit with a text") << QByteArray("raise SystemExit('leaving')\n")
                                      << QByteArray("python error: 'leaving'\n");
    QTest::newRow("interrupt") << QByteArray("raise KeyboardInterrupt\n")
                               << traceback + "python error: 'KeyboardInterrupt'\n";
}

void tst_pluginLoading::pythonErrorsAreNotTheLoadersFailure()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, error);

    const Output output = loadText(text);
    QVERIFY(m_result);
    QCOMPARE(output.standardOutput, noBinding + loaded);
    QCOMPARE(output.standardError, error);
    QCOMPARE(record().found, 1);
    QCOMPARE(m_host.dock(key)->widget(), container());
}

void tst_pluginLoading::fileThatCannotBeOpenedLeavesAnEmptyPanel_data()
{
    QTest::addColumn<QString>("path");

    QDir(m_host.scripts()).mkdir("Folder.py");
    QTest::newRow("missing file") << m_host.scripts() + "/Plugin.py";
    QTest::newRow("missing folder") << m_host.scripts() + "/Missing/Plugin.py";
    QTest::newRow("a folder") << m_host.scripts();
    QTest::newRow("percent signs") << QStringLiteral("/100%s%n/Plugin%d.py");
    QTest::newRow("beyond ASCII") << QStringLiteral("/gr\u00fc\u00dfe/\U0001f40d.py");
}

void tst_pluginLoading::fileThatCannotBeOpenedLeavesAnEmptyPanel()
{
    QFETCH(QString, path);

    const Output output = load(path);
    QVERIFY(!m_result);
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, "Couldn't load '" + path.toUtf8() + "' plugin!\n");

    const QString pluginKey = QFileInfo(path).baseName();
    QCOMPARE(record(pluginKey).found, 1);
    QVERIFY(container(pluginKey));
    QCOMPARE(m_host.dock(pluginKey)->widget(), container(pluginKey));
    QVERIFY(m_host.entry(pluginKey));
    QCOMPARE(globals(pluginKey), QStringList{"oxMessageService"});
}

void tst_pluginLoading::unreadableFileIsNotOpened()
{
    const QString path = m_host.write("Plugin.py", "print 'runs'\n");
    QVERIFY(QFile::setPermissions(path, {}));
    const Output output = load(path);
    // No permission binds the superuser.
    const bool isReadable = geteuid() == 0;
    QCOMPARE(m_result, isReadable);
    QCOMPARE(output.standardOutput, isReadable ? noBinding + info("runs") + loaded : QByteArray());
    QCOMPARE(output.standardError, isReadable ? QByteArray() : "Couldn't load '" + path.toUtf8() + "' plugin!\n");
}

// Deliberate: "annd" is what the message says.
void tst_pluginLoading::mixedBindingsAreRefused()
{
    const QString path = m_host.write("Plugin.py", "import PythonQt\nprint 'runs'\nimport PySide2\n");
    const Output output = load(path);
    QVERIFY(!m_result);
    QCOMPARE(output.standardOutput, QByteArray("PythonQt: yes PySide2: yes\n"));
    QCOMPARE(output.standardError,
             "Couldn't load plugin '" + path.toUtf8() + "', it seems to use PythonQt annd PySide2!\n");
    QCOMPARE(record().found, 1);
    QCOMPARE(m_host.dock(key)->widget(), container());
    QVERIFY(m_host.entry(key));
}

void tst_pluginLoading::refusalNamesThePathAsItWasGiven()
{
    const QString before = QDir::currentPath();
    const QString fileName = QStringLiteral("100%s%n gr\u00fc\u00dfe.py");
    m_host.write(fileName, "import PythonQt, PySide2\n");
    QDir::setCurrent(m_host.scripts());
    const Output output = load(fileName);
    QDir::setCurrent(before);

    QVERIFY(!m_result);
    QCOMPARE(output.standardError,
             "Couldn't load plugin '" + fileName.toUtf8() + "', it seems to use PythonQt annd PySide2!\n");
}

void tst_pluginLoading::refusedPluginRunsOnceItIsRepaired()
{
    loadText("import PythonQt, PySide2\n");
    const QPointer<QDockWidget> dock = m_host.dock(key);
    QCOMPARE(loadText("print 'runs'\n").standardOutput, noBinding + info("runs") + loaded);
    QVERIFY(m_result);
    QVERIFY(dock);
    QCOMPARE(m_host.dock(key), dock.data());
}

void tst_pluginLoading::textForPySide2IsRewritten()
{
    const Output output = loadText("import PySide2, uiTools\n"
                                   "print uiTools.loadUiType('a.ui'), uiTools.loadUiType('b.ui')\n"
                                   "kind, address = TARNPluginWidget\n"
                                   "print kind, 'TARNPluginWidget'\n"
                                   "print 'uiTools.loadUiTypePySide TARNPluginWidgetId'\n");
    QVERIFY(m_result);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(output.standardOutput,
             "PythonQt: no PySide2: yes\n" + info("('PySide2', 'a.ui') ('PySide2', 'b.ui')")
                 + info("wrapper uiTools.getWidget(TARNPluginWidgetId)")
                 + info("uiTools.loadUiTypePySidePySide uiTools.getWidget(TARNPluginWidgetId)Id") + loaded);
    QCOMPARE(value("str(address)").toString(), QString::number(reinterpret_cast<quintptr>(container())));
}

void tst_pluginLoading::textForPythonQtRunsAsItIs()
{
    const Output output = loadText("import PythonQt, uiTools\n"
                                   "print uiTools.loadUiType('a.ui'), 'TARNPluginWidget'\n");
    QCOMPARE(output.standardOutput,
             "PythonQt: yes PySide2: no\n" + info("('PythonQt', 'a.ui') TARNPluginWidget") + loaded);
}

void tst_pluginLoading::textWithoutBindingRunsAsItIs()
{
    const Output output = loadText("# import PySide2\n"
                                   "import uiTools\n"
                                   "print uiTools.loadUiType('a.ui'), 'TARNPluginWidget'\n");
    QCOMPARE(output.standardOutput, noBinding + info("('PythonQt', 'a.ui') TARNPluginWidget") + loaded);
}

void tst_pluginLoading::textEndsAtTheFirstZeroByte()
{
    const QByteArray text("print 'before'\n\0print 'after'\n", 30);
    QCOMPARE(text.size(), 15 + 1 + 14);
    const Output output = loadText(text);
    QCOMPARE(output.standardOutput, noBinding + info("before") + loaded);
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pluginLoading::bindingAfterAZeroByteCounts()
{
    const QByteArray start("import PythonQt\n\0\n", 18);
    QCOMPARE(loadText(start + "import PySide2\n").standardOutput, QByteArray("PythonQt: yes PySide2: yes\n"));
    QVERIFY(!m_result);
}

void tst_pluginLoading::lineEndsOfOtherSystemsAreFine()
{
    const Output output = loadText("if True:\r\n    print 'one'\r\nprint 'two'\r\n");
    QCOMPARE(output.standardOutput, noBinding + info("one") + info("two") + loaded);
    QCOMPARE(output.standardError, QByteArray());
}

// A lone carriage return reaches Python, which reads it as a line feed.
void tst_pluginLoading::bytesReachPythonUnchanged()
{
    const Output output = loadText("print repr('\t\x0b\x7f'), repr(u'gr\xc3\xbc\xc3\x9f'), repr(\"\"\"a\rb\"\"\")\n");
    QCOMPARE(output.standardOutput, noBinding + info(R"('\t\x0b\x7f' u'gr\xfc\xdf' 'a\nb')") + loaded);
}

void tst_pluginLoading::currentFolderIsThePlugins()
{
    m_host.write("Sub/data.txt", "contents");
    const Output output = load(m_host.write("Sub/Plugin.py",
                                            "import os\n"
                                            "print os.getcwd()\n"
                                            "print open('data.txt').read()\n"));
    QCOMPARE(output.standardOutput, noBinding + info(m_host.scripts().toUtf8() + "/Sub") + info("contents") + loaded);
}

void tst_pluginLoading::currentFolderIsThatOfALink()
{
    m_host.write("Links/data.txt", "contents");
    const QString link = m_host.scripts() + "/Links/Plugin.py";
    QVERIFY(QFile::link(m_host.write("Sub/Target.py", "print open('data.txt').read()\n"), link));
    const Output output = load(link);
    QCOMPARE(output.standardOutput, noBinding + info("contents") + loaded);
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pluginLoading::currentFolderIsRestored_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("text");

    const auto add = [](const char *name, const QByteArray &text) { QTest::newRow(name) << "Sub/Plugin.py" << text; };
    add("success", "x = 1\n");
    add("exception", "raise Exception\n");
    add("syntax error", "a b\n");
    add("exit", "raise SystemExit\n");
    add("both bindings", "import PythonQt, PySide2\n");
    add("goes elsewhere itself", "import os\nos.chdir('/')\n");
    add("goes elsewhere and fails", "import os\nos.chdir('/')\nraise Exception\n");
    add("removes its folder", "import os, shutil\nshutil.rmtree(os.getcwd())\n");
    QTest::newRow("missing file") << "Sub/Missing.py" << QByteArray();
    QTest::newRow("missing folder") << "Missing/Plugin.py" << QByteArray();
}

void tst_pluginLoading::currentFolderIsRestored()
{
    QFETCH(QString, fileName);
    QFETCH(QByteArray, text);

    const QString before = QDir::currentPath();
    m_host.write("Sub/Plugin.py", text);
    load(m_host.scripts() + '/' + fileName);
    QCOMPARE(QDir::currentPath(), before);
}

void tst_pluginLoading::relativePathIsLookedUpInThePluginsFolder()
{
    const QString before = QDir::currentPath();
    m_host.write("Sub/Plugin.py", "print 'runs'\n");
    QDir::setCurrent(m_host.scripts());
    const Output fromAbove = load("Sub/Plugin.py");
    const bool resultFromAbove = m_result;
    QDir::setCurrent(m_host.scripts() + "/Sub");
    const Output fromItsFolder = load("Plugin.py");
    QDir::setCurrent(before);

    QVERIFY(!resultFromAbove);
    QCOMPARE(fromAbove.standardOutput, QByteArray());
    QCOMPARE(fromAbove.standardError, QByteArray("Couldn't load 'Sub/Plugin.py' plugin!\n"));
    QVERIFY(m_result);
    QCOMPARE(fromItsFolder.standardOutput, noBinding + info("runs") + loaded);
}

// File names are not: they follow the locale, as all of Qt's do.
void tst_pluginLoading::textsAreUtf8InAnyLocale()
{
    QTextCodec *const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QString name = QStringLiteral("Gr\u00fc\u00dfe");
    const QString path = m_host.scripts() + '/' + name + ".py";
    const Output output = loadTextOf(name, "print u'gr\xc3\xbcn', len(u'gr\xc3\xbcn')\n");
    const Output refused = loadTextOf(name, "import PySide2, PythonQt\n");
    QFile::remove(path);
    const Output missing = load(path);
    QTextCodec::setCodecForLocale(codec);

    QCOMPARE(output.standardOutput,
             noBinding + info("gr\xc3\xbcn 4") + "Loaded '" + name.toUtf8() + "' python plugin.\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(refused.standardError,
             "Couldn't load plugin '" + path.toUtf8() + "', it seems to use PythonQt annd PySide2!\n");
    QCOMPARE(missing.standardError, "Couldn't load '" + path.toUtf8() + "' plugin!\n");
}

void tst_pluginLoading::reloadKeepsDockAndEntry()
{
    loadText("version = 1\n");
    const QPointer<QDockWidget> dock = m_host.dock(key);
    loadTextOf("Other", "");
    const Output output = loadText("version = 2\n");

    QCOMPARE(output.standardOutput, noBinding + loaded);
    QCOMPARE(value("version").toInt(), 2);
    QVERIFY(dock);
    QCOMPARE(m_host.dock(key), dock.data());
    QCOMPARE(dock->widget(), container());
    QCOMPARE(m_host.window.findChildren<QDockWidget *>().size(), 2);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 2);
    QVERIFY(m_host.menu("Scripts")->actions().contains(m_host.entry(key)));
}

// While the old content goes, the new module has nothing yet and the old one all it had.
void tst_pluginLoading::reloadDeletesTheOldContentFirst()
{
    loadText("import __main__\n"
             "class Mark(object):\n"
             "    def __init__(self, append):\n"
             "        self.append = append\n"
             "    def __del__(self):\n"
             "        self.append('module is cleared')\n"
             "mark = Mark(__main__.events.append)\n");
    const QPointer<QWidget> old = container();
    QObject::connect(old, &QObject::destroyed, this, [] { PluginHost::run("events.append('content is deleted')"); });
    loadText("import __main__\n"
             "__main__.events.append('new text runs')\n");
    QVERIFY(!old);
    QCOMPARE(PluginHost::evaluate("events").toStringList(),
             QStringList({"content is deleted", "module is cleared", "new text runs"}));
}

void tst_pluginLoading::reloadClearsTheOldModuleBeforeTheNewTextRuns()
{
    PluginHost::run("def cleared(reference):\n"
                    "    events.append('old global is gone')\n");
    loadText("import __main__, weakref\n"
             "class Thing(object): pass\n"
             "name = Thing()\n"
             "kept = Thing()\n"
             "__main__.kept = kept\n"
             "__main__.reference = weakref.ref(name, __main__.cleared)\n"
             "def function(): return kept\n"
             "__main__.function = function\n");
    const Output output = loadText("import __main__\n"
                                   "__main__.events.append('new text runs')\n"
                                   "print sorted(n for n in __main__.function.func_globals if n != 'name')\n");
    QCOMPARE(output.standardOutput, noBinding + info("[]") + loaded);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(PluginHost::evaluate("events").toStringList(), QStringList({"old global is gone", "new text runs"}));
    QVERIFY(PluginHost::evaluate("kept is not None").toBool());
}

void tst_pluginLoading::reloadTakesTheOldModuleOutOfSysModules()
{
    PluginHost::run(QStringLiteral("import sys"));
    const QString path = m_host.write(QStringLiteral("Plugin.py"), "a = 1\n");
    outputOf([this, &path] { m_host.load(path); });
    const QVariant count = PluginHost::evaluate(QStringLiteral("len(sys.modules)"));
    outputOf([this, &path] {
        m_host.load(path);
        m_host.load(path);
    });

    QCOMPARE(PluginHost::evaluate(QStringLiteral("len(sys.modules)")), count);
    QVERIFY(m_host.evaluateIn(QStringLiteral("Plugin"), QStringLiteral("__import__('sys').modules[__name__].a == 1"))
                .toBool());
}

void tst_pluginLoading::reloadTakesNoOtherModuleOutOfSysModules_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("another name") << QByteArray("__name__ = 'sys'\n");
    QTest::newRow("no name") << QByteArray("del __name__\n");
    QTest::newRow("a name that is no text") << QByteArray("__name__ = 3\n");
}

void tst_pluginLoading::reloadTakesNoOtherModuleOutOfSysModules()
{
    QFETCH(QByteArray, text);
    PluginHost::run(QStringLiteral("import sys"));
    const QString path = m_host.write(QStringLiteral("Plugin.py"), text);
    const Output output = outputOf([this, &path] {
        m_host.load(path);
        m_host.load(path);
    });

    QVERIFY(PluginHost::evaluate(QStringLiteral("sys.modules['sys'] is sys")).toBool());
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pluginLoading::globalsThatCannotBeDeletedStayAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("obstacle");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("dir is something else")
        << QByteArray("dir = None\n") << traceback + "python error: 'TypeError: 'NoneType' object is not callable'\n";
    QTest::newRow("globals is something else")
        << QByteArray("globals = 3\n")
        << QByteArray("python error: 'Traceback (most recent call last):'\n"
                      "python error: '  File \"<string>\", line 2, in <module>'\n"
                      "python error: 'TypeError: 'int' object is not callable'\n");
    QTest::newRow("dir names none") << QByteArray("def dir(): return []\n") << QByteArray();
}

void tst_pluginLoading::globalsThatCannotBeDeletedStayAsTheyAre()
{
    QFETCH(QByteArray, obstacle);

    loadText("import __main__, weakref\n"
             "class Thing(object): pass\n"
             "_text = 'kept'\n"
             "thing = Thing()\n"
             "def function(): return _text, thing\n"
             "__main__.function = function\n"
             "__main__.reference = weakref.ref(thing)\n"
             + obstacle);
    PluginHost::run("before = dict(function.func_globals)");
    const Output output = loadText("print 'new'\n");
    QCOMPARE(output.standardOutput, noBinding + info("new") + loaded);
    QTEST(output.standardError, "error");

    QCOMPARE(PluginHost::evaluate("function()[0]").toString(), QStringLiteral("kept"));
    QVERIFY(PluginHost::evaluate("all(function.func_globals[n] is before[n] for n in before)").toBool());

    // Nobody uses them now, but for the error that was printed.
    loadTextOf("Other", "raise Exception\n");
    PluginHost::run("import gc\n"
                    "del function, before\n"
                    "gc.collect()\n");
    QVERIFY(PluginHost::evaluate("reference() is None").toBool());
}

void tst_pluginLoading::moduleThatIsHeldKeepsWhatCannotBeDeleted()
{
    loadText("import __main__, sys\n"
             "dir = None\n"
             "text = 'kept'\n"
             "def function(): return text\n"
             "__main__.module = sys.modules[__name__]\n"
             "__main__.function = function\n");
    loadText("");
    QCOMPARE(PluginHost::evaluate("module.text").toString(), QStringLiteral("kept"));
    PluginHost::run("del module");
    QCOMPARE(PluginHost::evaluate("function()").toString(), QStringLiteral("kept"));
    PluginHost::run("del function");
}

void tst_pluginLoading::reloadsLeaveNoModuleBehind_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("deleted globals") << QByteArray("a = 1\ndef function(): return a\n");
    QTest::newRow("globals that cannot be deleted") << QByteArray("dir = None\ndef function(): return dir\n");
    QTest::newRow("held by another module") << QByteArray("import __main__, sys\n"
                                                          "__main__.module = sys.modules[__name__]\n");
}

void tst_pluginLoading::reloadsLeaveNoModuleBehind()
{
    QFETCH(QByteArray, text);
    const auto modules = [] {
        PluginHost::run("import gc, types\n"
                        "gc.collect()\n");
        return PluginHost::evaluate("len([o for o in gc.get_objects() if type(o) is types.ModuleType])").toInt();
    };

    loadText(text);
    loadText(text);
    const int before = modules();
    for (int i = 0; i < 10; ++i)
        loadText(text);
    QCOMPARE(modules(), before);
}

void tst_pluginLoading::reloadedPanelStaysVisible()
{
    loadText("");
    m_host.window.show();
    m_host.entry(key)->trigger();
    QTRY_VERIFY(container()->isVisible());
    QVERIFY(m_host.entry(key)->isChecked());
    loadText("");
    QVERIFY(m_host.dock(key)->isVisible());
    QVERIFY(m_host.entry(key)->isChecked());
    QTRY_VERIFY(container()->isVisible());

    m_host.entry(key)->trigger();
    QVERIFY(!m_host.dock(key)->isVisible());
    m_host.window.hide();
}

void tst_pluginLoading::reloadedPanelStaysHidden()
{
    loadText("");
    loadText("");
    QVERIFY(m_host.dock(key)->isHidden());
    QVERIFY(!m_host.entry(key)->isChecked());
    m_host.entry(key)->trigger();
    QVERIFY(!m_host.dock(key)->isHidden());
}

void tst_pluginLoading::reloadMovesTheNewContentIntoItsOverlayTab()
{
    loadText("");
    QTabWidget *panel = overlayPanel();
    panel->addTab(new QWidget, "Before");
    QWidget placeholder;
    panel->addTab(&placeholder, key);
    panel->addTab(new QWidget, "After");
    loadText("");

    QCOMPARE(panel->count(), 3);
    QCOMPARE(panel->tabText(1), key);
    QCOMPARE(panel->widget(1), container());
    QVERIFY(!m_host.dock(key)->widget());
    panel->clear();
}

// The deletion of the old content takes its tab away before the new one is there.
void tst_pluginLoading::reloadTakesAnOpenTabOutOfTheOverlay()
{
    loadText("");
    QTabWidget *panel = overlayPanel();
    renderService()->addOverlay(key);
    QCOMPARE(panel->count(), 1);
    QCOMPARE(panel->widget(0), container());
    loadText("");

    QCOMPARE(panel->count(), 0);
    QCOMPARE(m_host.dock(key)->widget(), container());
}

void tst_pluginLoading::reloadMarksTheRecordAsFound()
{
    loadText("");
    const QString module = value("__name__").toString();
    privateData(oxKernelInterface::the())->plugins[key].found = 0;
    loadText("");
    QCOMPARE(record().found, 1);
    QVERIFY(record().module);
    QVERIFY(value("__name__").toString() != module);
    QVERIFY(record().widget);
    QCOMPARE(privateData(oxKernelInterface::the())->plugins.size(), 1);
}

void tst_pluginLoading::failedReloadLeavesAnEmptyPanel()
{
    loadText("from PythonQt.QtGui import QLabel\n"
             "label = QLabel('old', TARNPluginWidget)\n");
    const QPointer<QDockWidget> dock = m_host.dock(key);
    QVERIFY(container()->findChild<QWidget *>());
    const QString path = m_host.scripts() + "/Plugin.py";
    QVERIFY(QFile::remove(path));
    const Output output = load(path);

    QVERIFY(!m_result);
    QCOMPARE(output.standardError, "Couldn't load '" + path.toUtf8() + "' plugin!\n");
    QCOMPARE(record().found, 1);
    QVERIFY(dock);
    QCOMPARE(m_host.dock(key), dock.data());
    QCOMPARE(dock->widget(), container());
    QVERIFY(!container()->findChild<QWidget *>());
}

void tst_pluginLoading::hundredReloadsLeaveOnePanel()
{
    const QString path = m_host.write("Plugin.py",
                                      "from PythonQt.QtGui import QPushButton\n"
                                      "button = QPushButton('Press', TARNPluginWidget)\n"
                                      "def press(): pass\n"
                                      "button.connect('clicked()', press)\n");
    QByteArray output;
    for (int i = 0; i < 100; ++i)
        output += load(path).standardOutput;
    QCOMPARE(output, QByteArray("PythonQt: yes PySide2: no\n" + loaded).repeated(100));
    QCOMPARE(m_host.window.findChildren<QDockWidget *>().size(), 1);
    QCOMPARE(m_host.window.findChildren<QPushButton *>().size(), 1);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
}

// Without a scan in between, which would drop the earlier ones.
void tst_pluginLoading::fortyThousandConnectionsOfReloadsWork()
{
    QObject sender;
    PluginHost::bind(QStringLiteral("sender"), &sender);
    PluginHost::run(QStringLiteral("called = []"));
    const QString path = m_host.write(QStringLiteral("Plugin.py"),
                                      "import __main__\n"
                                      "def handler(called, number):\n"
                                      "    def note(name):\n"
                                      "        called.append((name, number))\n"
                                      "    return note\n"
                                      "for number in range(400):\n"
                                      "    __main__.sender.connect('objectNameChanged(QString)',\n"
                                      "                            handler(__main__.called, number))\n");
    outputOf([this, &path] {
        for (int i = 0; i < 100; ++i)
            m_host.load(path);
    });
    sender.setObjectName(QStringLiteral("new"));

    QVERIFY(
        PluginHost::evaluate(QStringLiteral("called == [('new', number) for number in range(400)] * 100")).toBool());
    PluginHost::run(QStringLiteral("del called, sender"));
}

void tst_pluginLoading::handlersAreNotMixedUpAfterManyConnections()
{
    QObject sender;
    PluginHost::bind(QStringLiteral("sender"), &sender);
    PluginHost::run(QStringLiteral("called = []\n"
                                   "signal = 'objectNameChanged(QString)'\n"
                                   "def first(name): called.append('first')\n"
                                   "def second(name): called.append('second')\n"
                                   "sender.connect(signal, first)\n"
                                   "for i in range(70000):\n"
                                   "    sender.connect(signal, second)\n"
                                   "    sender.disconnect(signal, second)\n"
                                   "connected = sender.connect(signal, second)\n"));
    sender.setObjectName(QStringLiteral("new"));

    QVERIFY(PluginHost::evaluate(QStringLiteral("connected")).toBool());
    QCOMPARE(PluginHost::evaluate(QStringLiteral("called")).toStringList(), QStringList({"first", "second"}));
    PluginHost::run(QStringLiteral("del sender"));
}

void tst_pluginLoading::handlerThatDisconnectsItself()
{
    QObject sender;
    PluginHost::bind(QStringLiteral("sender"), &sender);
    PluginHost::run(QStringLiteral("called = []\n"
                                   "signal = 'objectNameChanged(QString)'\n"
                                   "def connectOnce():\n"
                                   "    def once(name):\n"
                                   "        sender.disconnect(signal, once)\n"
                                   "        called.append(name)\n"
                                   "    sender.connect(signal, once)\n"
                                   "connectOnce()\n"));
    sender.setObjectName(QStringLiteral("new"));
    sender.setObjectName(QStringLiteral("newer"));

    QCOMPARE(PluginHost::evaluate(QStringLiteral("called")).toStringList(), QStringList("new"));
    PluginHost::run(QStringLiteral("del sender"));
}

void tst_pluginLoading::pluginThatDeletesItsContainer()
{
    const Output output = loadText("TARNPluginWidget.delete()\n"
                                   "print 'goes on'\n");
    QCOMPARE(output.standardOutput, noBinding + info("goes on") + loaded);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(record().found, 1);
    QVERIFY(!record().widget);
    QVERIFY(!m_host.dock(key)->widget());
    QVERIFY(m_host.entry(key));

    const QPointer<QDockWidget> dock = m_host.dock(key);
    QCOMPARE(loadText("print 'new'\n").standardOutput, noBinding + info("new") + loaded);
    QVERIFY(dock);
    QVERIFY(container());
    QCOMPARE(dock->widget(), container());
}

void tst_pluginLoading::pluginThatDeletesItsDock()
{
    const Output output = loadText("TARNPluginWidget.parentWidget().delete()\n"
                                   "print 'goes on'\n");
    QCOMPARE(output.standardOutput, noBinding + info("goes on") + loaded);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(record().found, 1);
    QVERIFY(!record().widget);
    QVERIFY(!m_host.dock(key));
    QVERIFY(m_host.entry(key));
    m_host.entry(key)->trigger();

    QCOMPARE(loadText("print 'new'\n").standardOutput, noBinding + info("new") + loaded);
    QVERIFY(record().widget);
    QCOMPARE(m_host.menu("Scripts")->actions().size(), 1);
    m_host.entry(key)->trigger();
    delete container();
}

void tst_pluginLoading::pluginThatClearsItsGlobals()
{
    QCOMPARE(loadText("globals().clear()\n").standardOutput, noBinding + loaded);
    const Output output = loadText("print 'new'\n");
    QCOMPARE(output.standardOutput, noBinding + info("new") + loaded);
    // Without the built-ins the old module cannot be cleared, and needs not to be.
    QCOMPARE(output.standardError, traceback + "python error: 'NameError: name 'dir' is not defined'\n");
}

void tst_pluginLoading::pluginThatLoadsAllPluginsAnew()
{
    m_host.write("Another.py", "print 'another'\n");
    QMetaObject::Connection scans = connect(oxKernelServiceFactory::the()->getService<oxMessageService>(),
                                            &oxMessageService::messageReceived, this, [this, &scans] {
                                                disconnect(scans);
                                                m_host.scan();
                                            });
    const Output output = loadText("oxMessageService.information('scan')\n"
                                   "print 'ran'\n");

    QVERIFY(m_result);
    QVERIFY(output.standardOutput.startsWith(noBinding));
    QVERIFY(output.standardOutput.endsWith(info("ran") + loaded));
    QCOMPARE(output.standardOutput.count(info("ran")), 2);
    QCOMPARE(output.standardOutput.count(info("another")), 1);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(privateData(oxKernelInterface::the())->plugins.keys(), QStringList({"Another", "Plugin"}));
    QCOMPARE(m_host.dock(key)->widget(), container());
    QVERIFY(!value("'TARNPluginWidget' in globals()").toBool());
    QVERIFY(InterpreterLock::isFree());
    QCOMPARE(loadText("print 'later'\n").standardOutput, noBinding + info("later") + loaded);
}

void tst_pluginLoading::pluginThatLoadsAllPluginsAnewWhenItIsCleared_data()
{
    QTest::addColumn<bool>("fileIsThere");

    QTest::newRow("reloaded meanwhile") << true;
    QTest::newRow("swept meanwhile") << false;
}

void tst_pluginLoading::pluginThatLoadsAllPluginsAnewWhenItIsCleared()
{
    QFETCH(bool, fileIsThere);

    loadText("class Parting(object):\n"
             "    def __init__(self, say): self.say = say\n"
             "    def __del__(self): self.say('scan')\n"
             "parting = Parting(oxMessageService.information)\n");
    const QString path = m_host.write("Plugin.py", "print 'new'\n");
    if (!fileIsThere)
        QVERIFY(QFile::remove(path));
    int scans = 0;
    const QMetaObject::Connection scanning = connect(oxKernelServiceFactory::the()->getService<oxMessageService>(),
                                                     &oxMessageService::messageReceived, this, [this, &scans] {
                                                         ++scans;
                                                         m_host.scan();
                                                     });
    const Output output = load(path);
    disconnect(scanning);

    QCOMPARE(scans, 1);
    QCOMPARE(m_result, fileIsThere);
    QCOMPARE(output.standardOutput, fileIsThere ? (noBinding + info("new") + loaded).repeated(2) : QByteArray());
    QCOMPARE(record().found, 1);
    QVERIFY(record().widget && record().module);
    QVERIFY(m_host.dock(key));
    QCOMPARE(m_host.dock(key)->widget(), container());
    QCOMPARE(loadText("print 'later'\n").standardOutput, noBinding + info("later") + loaded);
}

// The container of the new text is a window until the main window has it.
void tst_pluginLoading::pluginThatDeletesWindowsWhenItIsCleared()
{
    loadText("from PythonQt.QtGui import QApplication\n"
             "class Parting(object):\n"
             "    def __init__(self, windows): self.windows = windows\n"
             "    def __del__(self):\n"
             "        for window in self.windows():\n"
             "            if window.className() == 'QWidget':\n"
             "                window.delete()\n"
             "parting = Parting(QApplication.topLevelWidgets)\n");
    const QPointer<QWidget> window = new QWidget;
    const Output output = loadText("print TARNPluginWidget.className()\n");

    QVERIFY(!window);
    QCOMPARE(output.standardOutput, noBinding + info("QWidget") + loaded);
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(container());
    QCOMPARE(m_host.dock(key)->widget(), container());
}

void tst_pluginLoading::pluginThatTakesItsContainerElsewhere()
{
    QWidget elsewhere;
    elsewhere.setObjectName("elsewhere");
    loadText("from PythonQt.QtGui import QApplication\n"
             "for widget in QApplication.topLevelWidgets():\n"
             "    if widget.objectName == 'elsewhere':\n"
             "        TARNPluginWidget.setParent(widget)\n");
    QCOMPARE(container()->parentWidget(), &elsewhere);
    loadText("");
    QCOMPARE(m_host.dock(key)->widget(), container());
    QVERIFY(!elsewhere.findChild<QWidget *>());
}

// The second Python thread runs all the time and wants the interpreter lock, too.
void tst_pluginLoading::pythonRunsWhenAButtonIsClickedLater()
{
    loadText("import threading\n"
             "from PythonQt.QtGui import QPushButton\n"
             "started = threading.Event()\n"
             "stop = threading.Event()\n"
             "def work():\n"
             "    started.set()\n"
             "    while not stop.is_set():\n"
             "        sum(xrange(1000))\n"
             "thread = threading.Thread(target=work)\n"
             "thread.daemon = True\n"
             "thread.start()\n"
             "started.wait()\n"
             "clicks = []\n"
             "def click():\n"
             "    clicks.append('click')\n"
             "    print 'clicked', len(clicks)\n"
             "    if len(clicks) == 100:\n"
             "        stop.set()\n"
             "        thread.join()\n"
             "button = QPushButton('Press')\n"
             "button.connect('clicked()', click)\n"
             "TARNPluginWidget.layout().addWidget(button)\n");
    m_host.window.show();
    m_host.entry(key)->trigger();
    auto *button = container()->findChild<QPushButton *>();
    QVERIFY(button);
    QTRY_VERIFY(button->isVisible());

    QByteArray clicked;
    const Output output = outputOf([button] {
        for (int i = 0; i < 100; ++i)
            QTest::mouseClick(button, Qt::LeftButton);
    });
    for (int i = 1; i <= 100; ++i)
        clicked += info("clicked " + QByteArray::number(i));
    QCOMPARE(output.standardOutput, clicked);
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(InterpreterLock::isFree());
    m_host.window.hide();
}

void tst_pluginLoading::endlessRecursionIsAnError()
{
    const Output output = loadText("def f(): f()\n"
                                   "f()\n");
    QVERIFY(m_result);
    QCOMPARE(output.standardOutput, noBinding + loaded);
    QVERIFY(output.standardError.startsWith("python error: 'Traceback (most recent call last):'\n"));
    QVERIFY(output.standardError.endsWith("python error: 'RuntimeError: maximum recursion depth exceeded'\n"));
    QCOMPARE(loadTextOf("Other", "print 'fine'\n").standardError, QByteArray());
}

void tst_pluginLoading::fiveMegabytesAreLoaded()
{
    const QByteArray comments = QByteArray("# " + QByteArray(77, 'x') + '\n').repeated(50000);
    const QByteArray text = comments + "text = '" + QByteArray(1000000, 'y') + "'\nprint len(text)\n";
    QVERIFY(text.size() > 5000000);
    QCOMPARE(loadText(text).standardOutput, noBinding + info("1000000") + loaded);
}

QTEST_MAIN(tst_pluginLoading)
#include "tst_pluginLoading.moc"
