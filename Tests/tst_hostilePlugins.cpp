#include "InterpreterLock.h"

#include <PythonQt.h>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QDockWidget>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "PrivateData.h"
#include "PythonChild.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxQRPCClient.h"

namespace {

// With the address sanitizer Qt goes on with a widget that is gone: its memory is given to nobody else for long.
#ifdef __SANITIZE_ADDRESS__
constexpr bool keepsDeletedMemory = true;
#else
constexpr bool keepsDeletedMemory = false;
#endif

constexpr int patience = 240000; // milliseconds for a process with much to do

constexpr QLatin1String hostOption("--host-of");
constexpr QLatin1String startAgainOption("--start-again");
constexpr QLatin1String reloadOption("--reload-often");

// Without what every host hears: that there is no display, and that services have no init().
void printMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support "))
        && !text.startsWith(QLatin1String("QMetaObject::invokeMethod: No such method ")))
        fprintf(stderr, "%s\n", qPrintable(text));
}

// No permission binds the superuser, as long as that may do everything.
void giveUpPrivileges()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    if (syscall(SYS_capset, &header, none) != 0)
        abort();
}

void limit(__rlimit_resource_t resource, rlim_t value)
{
    rlimit limits{};
    getrlimit(resource, &limits);
    limits.rlim_cur = std::min(value, limits.rlim_max);
    setrlimit(resource, &limits);
}

/// The process that loads the plugins: it scans, uses the hostile one, scans again, and once more
/// without it. How it finds the plugins it writes into a file of its own, as a plugin does what it
/// likes to its standard output.
class Host
{
public:
    Host(const QString &folder, const QString &plugin)
        : m_folder(folder)
        , m_plugin(plugin)
        , m_key(QFileInfo(plugin).baseName())
        , m_window(new QMainWindow)
    {
        qInstallMessageHandler(printMessage);
        giveUpPrivileges();
        limit(RLIMIT_CORE, 0);
        limit(RLIMIT_STACK, 8 << 20); // some of the plugins fill it

        QDir::setCurrent(folder);
        m_window->menuBar()->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("About"));
        oxKernelInterface::the()->init(&m_client, true);
        service()->setWidget(m_window);
    }

    ~Host() { delete m_window; }

    void run(int reloads, bool startsAgain)
    {
        oxKernelInterface::the()->loadScriptPlugins();
        report("loaded");
        use();
        if (startsAgain) {
            oxKernelInterface::the()->init(&m_client, true);
            service()->setWidget(m_window);
        }
        report("used");
        for (int i = 0; i < reloads; ++i)
            oxKernelInterface::the()->loadScriptPlugins();
        report("reloaded");
        remove(QFile::encodeName(m_plugin).constData());
        oxKernelInterface::the()->loadScriptPlugins();
        report("removed");
        oxKernelInterface::the()->callAllInit();
    }

private:
    Q_DISABLE_COPY(Host)

    static oxMainWindowService *service() { return oxKernelServiceFactory::the()->getService<oxMainWindowService>(); }

    static oxKernelInterfaceP::oxPluginInfo record(const QString &key)
    {
        return privateData(oxKernelInterface::the())->plugins.value(key, {-1, nullptr, nullptr});
    }

    QDockWidget *dock(const QString &key) const { return m_window ? service()->getModule(key) : nullptr; }

    // As a user does: opens the panel, waits, and presses every button.
    void use()
    {
        if (!m_window)
            return;
        m_window->show();
        QDockWidget *panel = dock(m_key);
        if (panel && panel->widget() && !panel->widget()->layout()->isEmpty()) {
            service()->showModule(m_key);
            (void)QTest::qWaitForWindowExposed(panel);
        }
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        (void)QTest::qWaitFor([this] { return !isBusy(); }, 60000);
        if (const QWidget *container = record(m_key).widget) {
            QList<QPointer<QPushButton>> buttons;
            for (QPushButton *button : container->findChildren<QPushButton *>())
                buttons << button;
            for (const QPointer<QPushButton> &button : qAsConst(buttons)) {
                if (button)
                    button->click();
            }
        }
        QCoreApplication::processEvents();
    }

    // For as long as the plugin has a true global of that name.
    bool isBusy() const
    {
        const InterpreterLock lock;
        PythonQtObjectPtr *module = record(m_key).module;
        return module && module->getVariable(QStringLiteral("busy")).toBool();
    }

    void report(const QByteArray &stage) const
    {
        QByteArray line = stage + ": Before " + good("Before") + ", After " + good("After") + ", " + panel(m_key);
        if (QDir::currentPath() != m_folder)
            line += ", in another folder";
        QFile file(m_folder + QLatin1String("/report"));
        if (!file.open(QIODevice::Append) || file.write(line + '\n') < 0)
            abort();
    }

    QByteArray panel(const QString &key) const
    {
        const oxKernelInterfaceP::oxPluginInfo plugin = record(key);
        const QDockWidget *panel = dock(key);
        if (plugin.found < 0)
            return panel ? "panel without plugin" : "no plugin";
        if (!panel)
            return "no panel";
        if (panel->widget() != plugin.widget)
            return "panel of something else";
        return plugin.widget ? "panel" : "empty panel";
    }

    QByteArray good(const QString &key) const
    {
        const QByteArray place = panel(key);
        if (place != "panel")
            return "has " + place;
        auto *button = record(key).widget->findChild<QPushButton *>();
        if (!button)
            return "has no button";
        button->setText(QStringLiteral("press"));
        button->click();
        return button->text() == QLatin1String("pressed") ? "works" : "has a dead button";
    }

    QString m_folder;
    QString m_plugin;
    QString m_key;
    oxQRPCClient m_client;
    QPointer<QMainWindow> m_window;
};

// Reports, by a change of its own text, that a click still reaches Python.
const QByteArray goodPlugin("from PythonQt.QtGui import QPushButton\n"
                            "\n"
                            "def press():\n"
                            "    button.text = 'pressed'\n"
                            "\n"
                            "button = QPushButton('press')\n"
                            "button.connect('clicked()', press)\n"
                            "TARNPluginWidget.layout().addWidget(button)\n"
                            "print 'good'\n");

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

// The error of a text that ends in the given line of the module itself.
QByteArray errorIn(int line, const QByteArray &error)
{
    return errors({"Traceback (most recent call last):",
                   "  File \"<string>\", line " + QByteArray::number(line) + ", in <module>", error});
}

QByteArray errorIn(int line, const QByteArray &function, const QByteArray &error)
{
    return errors({"Traceback (most recent call last):",
                   "  File \"<string>\", line " + QByteArray::number(line) + ", in " + function, error});
}

bool write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

bool makePipe(const QString &path)
{
    return mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
}

struct Text
{
    QByteArray output;
    QByteArray error;

    Text &operator+=(const Text &text)
    {
        output += text.output;
        error += text.error;
        return *this;
    }
};

Text operator+(Text first, const Text &second)
{
    return first += second;
}

Text fails(const QByteArray &error)
{
    return {{}, error};
}

// What is printed as a plugin is loaded.
Text load(const QByteArray &key, bool usesPythonQt, const Text &printed)
{
    return {"PythonQt: " + QByteArray(usesPythonQt ? "yes" : "no") + " PySide2: no\n" + printed.output + "Loaded '"
                + key + "' python plugin.\n",
            printed.error};
}

Text loadGood(const QByteArray &key, const Text &printed = {info("good"), {}})
{
    return load(key, true, printed);
}

const Text startUp{"python binding: oxMessageService\n", {}};

using Make = std::function<bool(const QString &path)>;

/// What a hostile plugin brings about. Without any further word: it is loaded, prints nothing and
/// harms nobody, and its panel stays for as long as its file.
class Outcome
{
public:
    /// The plugin is no file of the folder of fixtures but made so.
    Outcome &madeBy(const Make &function)
    {
        make = function;
        return *this;
    }
    Outcome &usesPythonQt()
    {
        pythonQt = true;
        return *this;
    }
    /// What its text prints, the first and the second time.
    Outcome &prints(const Text &text) { return prints(text, text); }
    Outcome &prints(const Text &first, const Text &second)
    {
        printed[0] = first;
        printed[1] = second;
        return *this;
    }
    /// What is printed as it is used.
    Outcome &thenPrints(const Text &text)
    {
        used = text;
        return *this;
    }
    /// What is printed as its globals are deleted.
    Outcome &partsWith(const Text &text)
    {
        parting = text;
        return *this;
    }
    /// What is printed from then on as a good plugin is loaded, and before that as its globals are deleted.
    Outcome &othersPrint(const Text &text, const Text &before = {})
    {
        others = text;
        othersParting = before;
        return *this;
    }
    /// Its panel when it was loaded, used, loaded again and removed.
    Outcome &leaves(const QByteArray &panel) { return leaves({panel, panel, panel}); }
    Outcome &leaves(const QByteArrayList &states)
    {
        panels = states;
        return *this;
    }
    /// What becomes of the good plugins when it was loaded, used, loaded again and removed.
    Outcome &harms(const QByteArrayList &states)
    {
        good = states;
        return *this;
    }
    /// The plugin's file is not even opened.
    Outcome &isPassedOver()
    {
        isListed = false;
        return leaves("no plugin");
    }
    Outcome &cannotBeOpened()
    {
        isReadable = false;
        return *this;
    }
    /// All that the process prints, whatever it would otherwise.
    Outcome &allOutputIs(const Text &text)
    {
        everything = text;
        isEverythingKnown = true;
        return *this;
    }
    /// The process ends as it loads the plugin, and with it what it has not yet written.
    Outcome &endsTheProcess(int code, const QByteArray &error = {})
    {
        exitCode = code;
        return harms({}).allOutputIs(fails(error));
    }
    Outcome &killsTheProcess(int signal, const QByteArray &error = {})
    {
        exitStatus = QProcess::CrashExit;
        return endsTheProcess(signal, error);
    }
    /// The host calls init() once more after the plugin was used.
    Outcome &hostStartsAgain()
    {
        startsAgain = true;
        return thenPrints(startUp);
    }
    /// Lines that come as often as they like.
    Outcome &ignores(const char *lines)
    {
        ignored = QRegularExpression(QLatin1String(lines), QRegularExpression::MultilineOption);
        return *this;
    }

    Make make;
    bool pythonQt = false;
    bool isListed = true;
    bool isReadable = true;
    Text printed[2];
    Text used;
    Text parting;
    Text others{info("good"), {}};
    Text othersParting;
    bool startsAgain = false;
    QByteArrayList panels{"panel", "panel", "panel"};
    QByteArrayList good{"Before works, After works", "Before works, After works", "Before works, After works",
                        "Before works, After works"};
    bool isEverythingKnown = false;
    Text everything;
    QProcess::ExitStatus exitStatus = QProcess::NormalExit;
    int exitCode = 0;
    QRegularExpression ignored;
};

} // namespace

// One plugin for every way to harm its host and its neighbours, each in a process of its own: loaded
// between two good plugins, used, loaded again, and removed.
class tst_hostilePlugins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void everyFileIsExpected();
    void outcomeIsAsExpected_data();
    void outcomeIsAsExpected();
    void endlessLoopStopsTheProcess();
    void fileThatChangesAsItIsRead();

private:
    QString script(const QString &name) const { return m_folder->filePath("Scripts/" + name); }
    QString hostilePath(const QString &key) const { return script(m_places.at(1) + '/' + key + ".py"); }
    void start(const QString &key, const QStringList &options = {});
    bool waitForEnd();
    QByteArray report() const;
    Text expectedText(const QByteArray &key, const Outcome &outcome) const;

    QMap<QString, Outcome> m_outcomes;
    QScopedPointer<QTemporaryDir> m_folder; ///< one for each process
    QStringList m_places;                   ///< folders for Before, the hostile one and After, as they are scanned
    QProcess m_process;
};

void tst_hostilePlugins::initTestCase()
{
    const QByteArray traceback("Traceback (most recent call last):");
    const QByteArray recursion("RuntimeError: maximum recursion depth exceeded");
    const QByteArray traced = errors({traceback, "  File \"<string>\", line 1, in <module>",
                                      "  File \"<string>\", line 5, in trace", "ValueError: traced"});
    const QByteArray writing = errors({"  File \"<string>\", line 6, in write"}).repeated(333)
        + errors({recursion + " while calling a Python object"});
    const QByteArray much(100000000, 'x');
    const Text cannotLoadAfter = fails("Couldn't load '%After%' plugin!\n");
    const QByteArrayList removed{"Before works, After works", "Before works, After works",
                                 "Before has no plugin, After has no plugin",
                                 "Before has no plugin, After has no plugin"};
    const QByteArrayList harmed{"Before works, After has no button", "Before works, After has no button",
                                "Before has no button, After has no button",
                                "Before has no button, After has no button"};

    m_outcomes = {
        // errors, and ends
        {"recursion_without_end",
         Outcome().prints(fails(errors({traceback, "  File \"<string>\", line 5, in <module>"})
                                + errors({"  File \"<string>\", line 2, in again"}).repeated(999)
                                + errors({recursion})))},
        {"recursion_through_a_signal",
         Outcome().prints(fails(errorIn(2, "answer", recursion + " while calling a Python object")))},
        {"recursion_in_paint_event",
         Outcome().usesPythonQt().thenPrints(fails(errors({traceback, "  File \"<string>\", line 10, in paintEvent"})
                                                   + errors({"  File \"<string>\", line 14, in paint"}).repeated(997)
                                                   + errors({recursion})))},
        {"repaints_as_it_paints",
         Outcome()
             .killsTheProcess(SIGSEGV)
             .harms({"Before works, After works"})
             .ignores("^QWidget::repaint: Recursive repaint detected\n")},
        {"deletes_itself_as_it_paints",
         keepsDeletedMemory ? Outcome().usesPythonQt()
                            : Outcome().killsTheProcess(SIGSEGV).harms({"Before works, After works"})},
        {"recursion_without_limit", Outcome().killsTheProcess(SIGSEGV)},
        {"sys_exit", Outcome().prints({info("before"), {}})},
        {"sys_exit_with_text", Outcome().prints(fails(errors({"the reason"})))},
        {"os_exit", Outcome().endsTheProcess(3)},
        {"os_abort", Outcome().killsTheProcess(SIGABRT)},
        {"keyboard_interrupt", Outcome().prints(fails(errorIn(1, "KeyboardInterrupt")))},
        {"out_of_memory", Outcome().prints(fails(errorIn(1, "MemoryError")))},
        {"exception_without_text", Outcome().prints(fails(errorIn(8, "mute.Mute: <exception str() failed>")))},
        {"exception_of_many_lines",
         Outcome().prints(fails(errorIn(1, "Exception: 100%\r") + errors({"%s%n", "", "'quoted'\t"})))},
        {"exception_in_slot", Outcome().usesPythonQt().thenPrints(fails(errorIn(5, "press", "ValueError: in a slot")))},
        {"exception_in_timer",
         Outcome().usesPythonQt().thenPrints(fails(errorIn(11, "tick", "ValueError: tick 2")
                                                   + errorIn(11, "tick", "ValueError: tick 1")
                                                   + errorIn(11, "tick", "ValueError: tick 0")))},
        {"exception_in_paint_event",
         Outcome().usesPythonQt().thenPrints(fails(errorIn(10, "paintEvent", "ValueError: in a paint event")))},
        {"exception_in_event_filter",
         Outcome().usesPythonQt().prints({info("tip"), errorIn(7, "eventFilter", "ValueError: in an event filter")})},
        {"exception_in_destructor",
         Outcome().partsWith(fails(errors({"Exception ValueError: ValueError('in a destructor',) in "
                                           "<bound method Parting.__del__ of parting> ignored"})))},
        {"exit_in_callback", Outcome().usesPythonQt().thenPrints({info("pressed"), {}})},
        {"exit_in_paint_event", Outcome().usesPythonQt().thenPrints({info("painted"), {}})},
        {"exit_in_destructor",
         Outcome().partsWith(
             fails(errors({"Exception SystemExit: 3 in <bound method Parting.__del__ of parting> ignored"})))},
        {"exit_in_excepthook",
         Outcome().prints(fails(errors({"Error in sys.excepthook:"}) + errorIn(3, "<lambda>", "SystemExit: 3")
                                + errors({"", "Original exception was:"})
                                + errorIn(4, "ValueError: shown after all")))},
        {"comes_back_from_the_dead", Outcome().partsWith({info("not yet"), {}})},
        {"registers_at_exit", Outcome()},

        // threads and processes
        {"thread_prints_as_it_loads",
         Outcome()
             .prints({info("joined"), {}})
             .thenPrints({info("from the thread 0") + info("from the thread 1") + info("from the thread 2"), {}})},
        {"thread_never_ends", Outcome()},
        {"thread_computes_for_ever", Outcome()},
        {"thread_with_exception",
         Outcome()
             .thenPrints(fails(errors({"Exception in thread Worker:", traceback, "  File \"<string>\", line 5, in work",
                                       "ValueError: in a thread", ""})))
             .ignores("^python error: '(  File \"/|    ).*\n")},
        {"thread_prints_for_ever", Outcome().ignores("^python info: 'tick'\n")},
        {"thread_prints_as_the_host_starts_again",
         Outcome().hostStartsAgain().ignores("^python info: 'tick'\n").madeBy([](const QString &path) {
             return QFile::copy(FIXTURES "/Hostile/thread_prints_for_ever.py", path);
         })},
        {"qthread_runs_for_ever", Outcome().usesPythonQt()},
        {"deletes_a_running_qthread",
         Outcome().killsTheProcess(SIGABRT, "QThread: Destroyed while thread is still running\n")},
        {"forks", Outcome().prints({info("3"), {}})},

        // the interpreter
        {"replaces_stdout", Outcome().othersPrint({})},
        {"replaces_stdout_by_nothing",
         Outcome()
             .prints(fails(errorIn(4, "AttributeError: 'NoneType' object has no attribute 'write'")))
             .othersPrint(fails(errorIn(9, "AttributeError: 'NoneType' object has no attribute 'write'")))},
        {"deletes_stdout",
         Outcome()
             .prints({}, fails(errorIn(3, "AttributeError: stdout")))
             .othersPrint(fails(errorIn(9, "RuntimeError: lost sys.stdout")))},
        {"replaces_stderr", Outcome()},
        {"prints_as_it_prints",
         Outcome()
             .prints(fails(errors({traceback, "  File \"<string>\", line 10, in <module>"}) + writing))
             .othersPrint(fails(errors({traceback, "  File \"<string>\", line 9, in <module>"}) + writing))},
        {"reloads_sys", Outcome().prints({"as it is\n", {}}).othersPrint({"good\n", {}})},
        {"deletes_its_builtins",
         Outcome().prints({info("3"), {}}).partsWith(fails(errorIn(1, "NameError: name 'dir' is not defined")))},
        {"deletes_its_names", Outcome()},
        {"clears_the_builtins",
         Outcome()
             .prints({}, fails(errorIn(1, "ImportError: __import__ not found")))
             .partsWith(fails(errorIn(1, "NameError: name 'dir' is not defined")))
             .othersPrint(fails(errorIn(1, "ImportError: __import__ not found")),
                          fails(errorIn(1, "NameError: name 'dir' is not defined")))
             .harms(harmed)},
        {"replaces_import",
         Outcome()
             .prints({}, fails(errorIn(1, "TypeError: 'NoneType' object is not callable")))
             .othersPrint(fails(errorIn(1, "TypeError: 'NoneType' object is not callable")))
             .harms(harmed)},
        {"clears_the_modules",
         Outcome()
             .prints({}, fails(errorIn(3, "AttributeError: 'module' object has no attribute 'modules'")))
             .othersPrint(fails(errorIn(1, "ImportError: No module named PythonQt.QtGui")))
             .harms(harmed)},
        {"replaces_dir",
         Outcome().partsWith(fails(errors({traceback, "  File \"<string>\", line 1, in <module>",
                                           "  File \"<string>\", line 6, in no", "ValueError: no"})))},
        {"clears_pythonqt", Outcome().usesPythonQt()},
        {"clears_main", Outcome()},
        // Python drops the function as it raises: one text is lost each time, whosever it is.
        {"traces_with_exceptions",
         Outcome()
             .harms({"Before works, After has no button", "Before works, After has no button",
                     "Before works, After works", "Before works, After works"})
             .allOutputIs(startUp + loadGood("Before") + load("traces_with_exceptions", false, {})
                          + loadGood("After", fails(traced)) + loadGood("Before")
                          + load("traces_with_exceptions", false, {}) + fails(traced) + loadGood("After")
                          + loadGood("Before") + loadGood("After"))},
        {"changes_folder", Outcome()},
        {"changes_folder_later",
         Outcome().usesPythonQt().leaves(
             {"panel", "panel, in another folder", "panel, in another folder", "no plugin, in another folder"})},
        {"removes_its_folder", Outcome()},
        {"clears_the_path", Outcome()},
        {"replaces_the_path", Outcome()},
        // With the variable that tells where the plugins are.
        {"clears_the_environment",
         Outcome()
             .leaves({"panel", "panel", "no plugin"})
             .harms(removed)
             .allOutputIs(startUp + loadGood("Before") + load("clears_the_environment", false, {})
                          + loadGood("After"))},
        // files
        {"closes_standard_output", Outcome().allOutputIs({})},
        {"closes_all_descriptors", Outcome().allOutputIs({})},
        {"removes_all_plugins",
         Outcome()
             .leaves({"panel", "panel", "no plugin"})
             .harms({"Before works, After has no button", "Before works, After has no button",
                     "Before has no plugin, After has no plugin", "Before has no plugin, After has no plugin"})
             .allOutputIs(startUp + loadGood("Before") + load("removes_all_plugins", false, {}) + cannotLoadAfter)},
        {"rewrites_itself", Outcome().prints({info("first"), {}}, {info("second"), {}})},
        // A pipe is found to be none once it is looked at again.
        {"replaces_a_file_by_a_pipe",
         Outcome()
             .harms({"Before works, After has no button", "Before works, After has no button",
                     "Before works, After has no plugin", "Before works, After has no plugin"})
             .allOutputIs(startUp + loadGood("Before") + load("replaces_a_file_by_a_pipe", false, {}) + cannotLoadAfter
                          + loadGood("Before") + load("replaces_a_file_by_a_pipe", false, {}) + loadGood("Before"))},
        // A link is listed wherever it leads to.
        {"replaces_a_file_by_a_device",
         Outcome()
             .harms({"Before works, After has no button", "Before works, After has no button",
                     "Before works, After has no button", "Before works, After has no button"})
             .allOutputIs(startUp + loadGood("Before") + load("replaces_a_file_by_a_device", false, {})
                          + cannotLoadAfter + loadGood("Before") + load("replaces_a_file_by_a_device", false, {})
                          + cannotLoadAfter + loadGood("Before") + cannotLoadAfter)},
        {"directory", Outcome().isPassedOver().madeBy([](const QString &path) { return QDir().mkdir(path); })},
        {"dangling_link",
         Outcome().isPassedOver().madeBy([](const QString &path) { return QFile::link("nowhere.py", path); })},
        {"link_to_itself",
         Outcome().isPassedOver().madeBy([](const QString &path) { return QFile::link(path, path); })},
        {"pipe", Outcome().isPassedOver().madeBy(makePipe)},
        {"link_to_a_pipe", Outcome().cannotBeOpened().madeBy([](const QString &path) {
             return makePipe(path + ".pipe") && QFile::link(path + ".pipe", path);
         })},
        {"link_to_a_device",
         Outcome().cannotBeOpened().madeBy([](const QString &path) { return QFile::link("/dev/null", path); })},
        {"no_permission", Outcome().cannotBeOpened().madeBy([](const QString &path) {
             return write(path, goodPlugin) && QFile::setPermissions(path, {});
         })},

        // widgets
        {"deletes_its_container", Outcome().prints({info("goes on"), {}}).leaves("empty panel")},
        {"deletes_its_container_later",
         Outcome().prints({info("goes on"), {}}).leaves({"panel", "empty panel", "panel"})},
        {"deletes_its_dock", Outcome().leaves("no panel")},
        {"deletes_its_dock_in_a_slot",
         Outcome().usesPythonQt().thenPrints({info("pressed"), {}}).leaves({"panel", "no panel", "no panel"})},
        {"deletes_its_dock_as_it_goes", Outcome().leaves({"panel", "panel", "no panel"})},
        {"deletes_another_dock",
         Outcome().harms({"Before has no panel, After works", "Before has no panel, After works",
                          "Before has no panel, After works", "Before has no panel, After works"})},
        {"deletes_its_menu", Outcome().usesPythonQt()},
        {"deletes_all_menu_entries", Outcome().usesPythonQt()},
        {"deletes_the_menu_bar", Outcome()},
        {"deletes_the_main_window",
         Outcome()
             .leaves("no panel")
             .harms({"Before has no panel, After has no panel", "Before has no panel, After has no panel",
                     "Before has no panel, After has no panel", "Before has no panel, After has no panel"})},
        {"deletes_the_message_service",
         Outcome().prints({}, fails(errorIn(1, "NameError: name 'oxMessageService' is not defined")))},
        {"blocks_the_message_service", Outcome()},
        {"quits_the_application", Outcome().usesPythonQt()},
        {"renames_its_dock", Outcome().leaves("no panel")},
        {"moves_its_container", Outcome().leaves("panel of something else")},
        {"replaces_the_layout", Outcome().usesPythonQt().prints({info("QHBoxLayout"), {}})},
        {"adds_ten_thousand_widgets", Outcome().usesPythonQt().prints({info("10000"), {}})},

        // texts and what they print
        {"prints_much_in_one_line", Outcome().prints({info(much), {}})},
        // Shown with the next line that anybody prints.
        {"prints_much_without_line_feed",
         Outcome().allOutputIs(startUp + loadGood("Before") + load("prints_much_without_line_feed", false, {})
                               + loadGood("After", {info(much + "good"), {}}) + loadGood("Before")
                               + load("prints_much_without_line_feed", false, {})
                               + loadGood("After", {info(much + "good"), {}}) + loadGood("Before")
                               + loadGood("After"))},
        {"prints_odd_bytes", Outcome().prints({info("a \ufffd\ufffd \ufffd\ufffd\ufffd \r%s%n"), {}})},
        {"nests_parentheses", Outcome().prints(fails("s_push: parser stack overflow\n" + errors({"MemoryError"})))},
        {"nests_blocks",
         Outcome().prints(fails(errors({"  File \"<string>\", line 101", "    if True:", "           ^",
                                        "IndentationError: too many levels of indentation"})))},
        {"adds_many_numbers", Outcome().killsTheProcess(SIGSEGV).madeBy([](const QString &path) {
             return write(path, '1' + QByteArray("+1").repeated(1000000) + '\n');
         })},
        {"fifty_megabytes", Outcome().prints({info("50"), {}}).madeBy([](const QString &path) {
             return write(path, QByteArray("# " + QByteArray(77, 'x') + '\n').repeated(655360) + "print 50\n");
         })},
        {"byte_order_mark", Outcome().prints({info("gr\u00fc\u00dfe gr\u00fc\u00dfe"), {}})},
        {"windows_line_ends", Outcome().prints({info("0") + info("1"), {}})},
        {"old_mac_line_ends", Outcome().prints({info("0") + info("1"), {}})},
        {"tabs_and_blanks", Outcome().prints({info("tab") + info("blanks"), {}})},
        {"latin1", Outcome().prints({info("caf\ufffd"), {}})},
        {"latin1_with_coding_line", Outcome().prints({info("caf\ufffd"), {}})},
        {"unknown_coding_line",
         Outcome().prints(
             fails(errors({"  File \"<string>\", line 0", "SyntaxError: unknown encoding: no-such-coding"})))},
        {"utf16",
         Outcome().prints(fails(
             errors({"  File \"<string>\", line 1", "    \ufffd\ufffdp", "    ^", "SyntaxError: invalid syntax"})))},
        {"zero_byte_first", Outcome()},
    };
}

void tst_hostilePlugins::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    QDir folder(m_folder->path());
    for (const char *name : {"Scripts/1", "Scripts/2", "Scripts/3", "Base/lib/python", "Run"})
        QVERIFY(folder.mkpath(name));
    QVERIFY(QFile::setPermissions(folder.filePath("Run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    // The order is the file system's, and stays when the folders get their files.
    m_places.clear();
    QDirIterator places(script(QString()), QDir::Dirs | QDir::NoDotAndDotDot);
    while (places.hasNext()) {
        places.next();
        m_places << places.fileName();
    }
    QCOMPARE(m_places.size(), 3);
    QVERIFY(write(script(m_places.at(0) + "/Before.py"), goodPlugin));
    QVERIFY(write(script(m_places.at(2) + "/After.py"), goodPlugin));

    QProcessEnvironment environment = PythonChild().environment;
    environment.insert("OX_PLUGINS_DIR", m_folder->path());
    environment.insert("OX_BASE_DIR", folder.filePath("Base"));
    environment.insert("TMPDIR", folder.filePath("Run"));
    environment.insert("XDG_RUNTIME_DIR", folder.filePath("Run"));
    // Where a sanitizer is built in, it leaves the signals alone.
    for (const char *name : {"ASAN_OPTIONS", "TSAN_OPTIONS"})
        environment.insert(name, environment.value(name) + ":handle_segv=0:handle_abort=0");
    m_process.setProcessEnvironment(environment);
    m_process.setWorkingDirectory(m_folder->path());
}

void tst_hostilePlugins::cleanup()
{
    m_process.kill();
    m_process.waitForFinished();
}

void tst_hostilePlugins::start(const QString &key, const QStringList &options)
{
    m_process.start(QCoreApplication::applicationFilePath(),
                    QStringList{hostOption, m_folder->path(), hostilePath(key)} + options);
}

bool tst_hostilePlugins::waitForEnd()
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patience);
}

QByteArray tst_hostilePlugins::report() const
{
    QFile file(m_folder->filePath("report"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Text tst_hostilePlugins::expectedText(const QByteArray &key, const Outcome &outcome) const
{
    const auto loadHostile = [&](const Text &printed) {
        if (!outcome.isListed)
            return Text();
        if (!outcome.isReadable)
            return fails("Couldn't load '" + hostilePath(key).toUtf8() + "' plugin!\n");
        return load(key, outcome.pythonQt, printed);
    };
    const auto reloadGood = [&](const QByteArray &name) {
        return outcome.othersParting + loadGood(name, outcome.others);
    };

    return startUp + loadGood("Before") + loadHostile(outcome.printed[0]) + loadGood("After", outcome.others)
        + outcome.used + reloadGood("Before") + outcome.parting + loadHostile(outcome.printed[1]) + reloadGood("After")
        + reloadGood("Before") + reloadGood("After");
}

void tst_hostilePlugins::everyFileIsExpected()
{
    QStringList expected;
    for (auto outcome = m_outcomes.cbegin(); outcome != m_outcomes.cend(); ++outcome) {
        if (!outcome->make)
            expected << outcome.key() + ".py";
    }
    expected << "loops_for_ever.py";
    expected.sort();
    QCOMPARE(QDir(FIXTURES "/Hostile").entryList(QDir::Files), expected);
}

void tst_hostilePlugins::outcomeIsAsExpected_data()
{
    QTest::addColumn<QString>("key");

    const QStringList keys = m_outcomes.keys();
    for (const QString &key : keys)
        QTest::newRow(qPrintable(key)) << key;
}

void tst_hostilePlugins::outcomeIsAsExpected()
{
    QFETCH(QString, key);
    const Outcome outcome = m_outcomes.value(key);
    const QString path = hostilePath(key);
    QVERIFY(outcome.make ? outcome.make(path) : QFile::copy(FIXTURES "/Hostile/" + key + ".py", path));

    start(key, outcome.startsAgain ? QStringList{startAgainOption} : QStringList());
    QVERIFY(waitForEnd());
    Text printed{m_process.readAllStandardOutput(), m_process.readAllStandardError()};

    Text expected = outcome.isEverythingKnown ? outcome.everything : expectedText(key.toUtf8(), outcome);
    expected.error.replace("%After%", script(m_places.at(2) + "/After.py").toUtf8());
    QByteArray expectedReport;
    for (int i = 0; i < outcome.good.size(); ++i) {
        const QByteArrayList stages{"loaded", "used", "reloaded", "removed"};
        expectedReport += stages.at(i) + ": " + outcome.good.at(i) + ", " + outcome.panels.value(i, "no plugin") + '\n';
    }

    if (!outcome.ignored.pattern().isEmpty()) {
        printed.output = QString::fromUtf8(printed.output).remove(outcome.ignored).toUtf8();
        printed.error = QString::fromUtf8(printed.error).remove(outcome.ignored).toUtf8();
    }

    QCOMPARE(report(), expectedReport);
    QVERIFY2(printed.error == expected.error, printed.error.left(10000));
    QVERIFY2(printed.output == expected.output, printed.output.left(10000));
    QCOMPARE(m_process.exitStatus(), outcome.exitStatus);
    QCOMPARE(m_process.exitCode(), outcome.exitCode);
}

// Out of reach: the scan waits for the text to end.
void tst_hostilePlugins::endlessLoopStopsTheProcess()
{
    QVERIFY(QFile::copy(FIXTURES "/Hostile/loops_for_ever.py", hostilePath("loops_for_ever")));
    start("loops_for_ever");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(script(m_places.at(1) + "/looping")), 60000);
    QVERIFY(!m_process.waitForFinished(1000));
    QCOMPARE(m_process.readAllStandardError(), QByteArray());
    QCOMPARE(report(), QByteArray());
}

// What is run is whatever the file holds at that moment: one text, the other, a part of one, or nothing.
void tst_hostilePlugins::fileThatChangesAsItIsRead()
{
    const QByteArray filler = QByteArray("# " + QByteArray(77, 'x') + '\n').repeated(10000);
    const QByteArray texts[]{filler + "print 'first'\n", filler + "print 'second'\n"};
    const QString path = hostilePath("changes");
    QVERIFY(write(path, texts[0]));

    start("changes", {reloadOption});
    int changes = 0;
    const QDeadlineTimer deadline(60000);
    while (!m_process.waitForFinished(0) && !deadline.hasExpired()) {
        QFile file(path);
        // The host removes it in the end.
        if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered) && file.resize(0))
            file.write(texts[++changes % 2]);
    }

    QVERIFY(waitForEnd());
    QVERIFY(changes > 1);
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process.exitCode(), 0);
    QCOMPARE(report(),
             QByteArray("loaded: Before works, After works, panel\nused: Before works, After works, panel\n"
                        "reloaded: Before works, After works, panel\nremoved: Before works, After works, no plugin\n"));
    const QByteArray output = m_process.readAllStandardOutput();
    QCOMPARE(output.count("Loaded 'changes' python plugin.\n"), 301);
    const QSet<QByteArray> lines{startUp.output.trimmed(),         "PythonQt: yes PySide2: no",
                                 "PythonQt: no PySide2: no",       "python info: 'good'",
                                 "python info: 'first'",           "python info: 'second'",
                                 "Loaded 'Before' python plugin.", "Loaded 'After' python plugin.",
                                 "Loaded 'changes' python plugin."};
    for (const QByteArray &line : output.trimmed().split('\n'))
        QVERIFY2(lines.contains(line), line);
    const QByteArray error = m_process.readAllStandardError();
    QCOMPARE(error.count("python error: '"), error.count('\n'));
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == hostOption) {
        Host(arguments.value(2), arguments.value(3))
            .run(arguments.contains(reloadOption) ? 300 : 1, arguments.contains(startAgainOption));
        return 0;
    }
    tst_hostilePlugins test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_hostilePlugins.moc"
