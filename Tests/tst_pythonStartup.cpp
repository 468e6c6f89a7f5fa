#include "InterpreterLock.h"

#include "PluginHost.h"

#include <PythonQt.h>
#include <QTextCodec>
#include <QtTest>

#include "OutputCapture.h"
#include "PrivateData.h"
#include "PythonChild.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"

// How the interpreter is when the library has started it. The environment is that of a process,
// so each function but those that say otherwise looks at a child process.
class tst_pythonStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void engineIsNullBeforeStart();
    void startLeavesTheInterpreterLockFree();
    void engineIsTheMainModule();
    void engineIsThatOfTheObjectItself();
    void mainModuleHasTheFiledMessageService();
    void anotherStartBindsTheServicesAnew();

    void startPrintsTheBindingOnce();
    void searchPathBeginsBelowTheBaseFolder_data();
    void searchPathBeginsBelowTheBaseFolder();
    void defaultSearchPathFollows();
    void moduleBelowTheBaseFolderIsFound_data();
    void moduleBelowTheBaseFolderIsFound();
    void baseFolderIsUtf8InAnyLocale();
    void baseFolderWithAQuoteIsASyntaxError();
    void searchPathIsSetBeforeTheServicesAreBound();

    void executableIsAnInterpreterThatFits_data();
    void executableIsAnInterpreterThatFits();
    void executableOfARelativeBaseFolderIsAbsolute();
    void executableRunsScripts();

    void sysIsImportedInMain();
    void noByteCodeIsWritten();
    void siteIsNotImported();
    void qtClassesAreAvailable();
    void exitInMainDoesNotEndTheProcess();
    void exitInCodeOfTheHostEndsTheProcess_data();
    void exitInCodeOfTheHostEndsTheProcess();
    void processEndsWithPythonObjectsAlive();
};

namespace {

const QByteArray bindingLine("python binding: oxMessageService\n");

QByteArray info(const QByteArray &line)
{
    return "python info: '" + line + "'\n";
}

const QString hostRunsOption = QStringLiteral("--host-runs");
const QString latin1HostRunsOption = QStringLiteral("--latin-1-host-runs");

// How a host runs code of its own whose sys.exit() is to end the process, as README.md has it.
void runAsPythonDoes(const char *code)
{
    const PyGILState_STATE state = PyGILState_Ensure();
    PyObject *globals = PyModule_GetDict(PyImport_AddModule("__main__"));
    PyObject *result = PyRun_String(code, Py_file_input, globals, globals);
    if (!result) {
        Py_InspectFlag = !PyErr_ExceptionMatches(PyExc_SystemExit);
        PyErr_Print(); // with the flag at 0, a SystemExit ends the process here
        Py_InspectFlag = 1;
    }
    Py_XDECREF(result);
    PyGILState_Release(state);
}

// The main() of a host that runs each argument.
int hostMain(const QStringList &arguments)
{
    if (arguments.at(1) == latin1HostRunsOption)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    oxQRPCClient client;
    oxKernelInterface::the()->init(&client, false);
    PluginHost::run(QStringLiteral("from PythonQt.QtGui import QLabel\n"
                                   "label = QLabel('text')\n"
                                   "label.show()\n"));
    for (const QString &code : arguments.mid(2))
        runAsPythonDoes(code.toUtf8());
    PluginHost::run(QStringLiteral("print 'goes on'"));
    return 0;
}

PythonChildResult runHost(const QProcessEnvironment &environment, const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    const bool ended = process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

PythonChildResult runWithBase(const QString &baseFolder, const QString &statements)
{
    PythonChild child;
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), baseFolder);
    return child.run(statements);
}

void writeFile(const QString &path, QFile::Permissions permissions)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(permissions))
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace

// Needs a process in which nothing was started: first of all functions.
void tst_pythonStartup::engineIsNullBeforeStart()
{
    QVERIFY(!Py_IsInitialized());
    QVERIFY(!oxKernelInterface::the()->getPythonEngine());
    QVERIFY(!privateData(oxKernelInterface::the())->pythonEngine);
}

// The interpreter of this process; the tests that follow go on with it.
static PluginHost *host()
{
    static PluginHost pluginHost;
    return &pluginHost;
}

void tst_pythonStartup::startLeavesTheInterpreterLockFree()
{
    host();
    QVERIFY(InterpreterLock::isFree());

    bool isHeldByThread = false;
    const std::unique_ptr<QThread> thread(QThread::create([&isHeldByThread] {
        const InterpreterLock lock;
        isHeldByThread = InterpreterLock::isHeldHere() && PyRun_SimpleString("1 + 1") == 0;
    }));
    thread->start();
    QVERIFY(thread->wait(30000));
    QVERIFY(isHeldByThread);
    QVERIFY(InterpreterLock::isFree());
}

void tst_pythonStartup::engineIsTheMainModule()
{
    host();
    PythonQtObjectPtr *engine = oxKernelInterface::the()->getPythonEngine();
    QVERIFY(engine);
    QCOMPARE(privateData(oxKernelInterface::the())->pythonEngine, engine);

    const InterpreterLock lock;
    QCOMPARE(engine->object(), PyImport_AddModule("__main__"));
    QCOMPARE(engine->getVariable(QStringLiteral("__name__")).toString(), QStringLiteral("__main__"));
}

void tst_pythonStartup::engineIsThatOfTheObjectItself()
{
    host();
    oxKernelInterface another;
    QVERIFY(!another.getPythonEngine());

    const InterpreterLock lock;
    PythonQtObjectPtr engine;
    privateData(&another)->pythonEngine = &engine;
    QCOMPARE(another.getPythonEngine(), &engine);
}

void tst_pythonStartup::mainModuleHasTheFiledMessageService()
{
    host();
    QCOMPARE(PluginHost::evaluate(QStringLiteral("oxMessageService")).value<QObject *>(),
             oxKernelServiceFactory::the()->getService<oxMessageService>());
}

void tst_pythonStartup::anotherStartBindsTheServicesAnew()
{
    PluginHost *started = host();
    PythonQtObjectPtr *engine = oxKernelInterface::the()->getPythonEngine();
    const Output output = outputOf([started] { oxKernelInterface::the()->init(&started->client, true); });

    QCOMPARE(output.standardOutput, bindingLine);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(oxKernelInterface::the()->getPythonEngine(), engine);
    QVERIFY(InterpreterLock::isFree());
    mainModuleHasTheFiledMessageService();
}

void tst_pythonStartup::startPrintsTheBindingOnce()
{
    const PythonChildResult result = PythonChild().run(QString());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput, bindingLine);
    QCOMPARE(result.standardError, QByteArray());
}

void tst_pythonStartup::searchPathBeginsBelowTheBaseFolder_data()
{
    QTest::addColumn<QString>("baseFolder");
    QTest::addColumn<QByteArray>("inPython");

    const auto add = [](const char *name, const QString &baseFolder, const QByteArray &inPython) {
        QTest::newRow(name) << baseFolder << inPython;
    };
    add("unset", QString(), "");
    add("empty", QStringLiteral(""), "");
    add("plain", QStringLiteral("/opt/application"), "/opt/application");
    add("not there", QStringLiteral("/no/such/folder"), "/no/such/folder");
    add("relative", QStringLiteral("somewhere"), "somewhere");
    add("slash at the end", QStringLiteral("/opt/"), "/opt/");
    add("blanks", QStringLiteral("/my folder / x"), "/my folder / x");
    add("percent signs", QStringLiteral("/100%s%n%d%%"), "/100%s%n%d%%");
    add("single quote", QStringLiteral("/it's"), "/it's");
    add("beyond ASCII", QStringLiteral("/gr\u00fc\u00dfe/\U0001f40d"), "/gr\u00fc\u00dfe/\U0001f40d");
    add("backslash is Python's escape", QStringLiteral("/a\\tb\\\\c"), "/a\tb\\c");
}

void tst_pythonStartup::searchPathBeginsBelowTheBaseFolder()
{
    QFETCH(QString, baseFolder);
    QFETCH(QByteArray, inPython);

    const QString statements = QStringLiteral("for folder in sys.path[:4]:\n"
                                              "    print folder\n");
    const PythonChildResult result =
        baseFolder.isNull() ? PythonChild().run(statements) : runWithBase(baseFolder, statements);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput,
             bindingLine + info(inPython + "/lib/python/site-packages") + info(inPython + "/examples/presentations")
                 + info(inPython + "/lib/python/lib-dynload") + info(inPython + "/lib/python"));
    QCOMPARE(result.standardError, QByteArray());
}

void tst_pythonStartup::defaultSearchPathFollows()
{
    PythonChild child;
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), QStringLiteral("/opt"));
    child.environment.insert(QStringLiteral("PYTHONPATH"), QStringLiteral("/first:/second"));
    const PythonChildResult result = child.run(QStringLiteral("for folder in sys.path[3:6]:\n"
                                                              "    print folder\n"
                                                              "import os\n"
                                                              "print os.path.dirname(os.__file__) in sys.path[6:]\n"));
    QCOMPARE(result.standardOutput,
             bindingLine + info("/opt/lib/python") + info("/first") + info("/second") + info("True"));
    QCOMPARE(result.standardError, QByteArray());
}

void tst_pythonStartup::moduleBelowTheBaseFolderIsFound_data()
{
    QTest::addColumn<QString>("baseFolder");
    QTest::addColumn<QString>("subfolder");

    QTest::newRow("plain") << "base"
                           << "lib/python";
    QTest::newRow("extension modules") << "base"
                                       << "lib/python/lib-dynload";
    QTest::newRow("presentations") << "base"
                                   << "examples/presentations";
    QTest::newRow("site packages") << "base"
                                   << "lib/python/site-packages";
    QTest::newRow("blanks") << "my base"
                            << "lib/python";
    QTest::newRow("percent signs") << "100%s%n"
                                   << "lib/python";
    QTest::newRow("beyond ASCII") << QStringLiteral("gr\u00fc\u00dfe \U0001f40d") << "lib/python";
}

void tst_pythonStartup::moduleBelowTheBaseFolderIsFound()
{
    QFETCH(QString, baseFolder);
    QFETCH(QString, subfolder);

    const QTemporaryDir folder;
    const QString base = folder.filePath(baseFolder);
    QDir().mkpath(base + '/' + subfolder);
    QFile module(base + '/' + subfolder + "/helper.py");
    QVERIFY(module.open(QIODevice::WriteOnly));
    module.write("print 'here', __file__\n");
    module.close();

    const PythonChildResult result = runWithBase(base, QStringLiteral("import helper"));
    QCOMPARE(result.standardOutput, bindingLine + info("here " + module.fileName().toUtf8()));
    QCOMPARE(result.standardError, QByteArray());
}

void tst_pythonStartup::baseFolderWithAQuoteIsASyntaxError()
{
    const PythonChildResult result = runWithBase(QStringLiteral("/a\"b"), QStringLiteral("print 1 + 1"));
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput, bindingLine + info("2"));
    QCOMPARE(result.standardError,
             QByteArray("python error: '  File \"<string>\", line 1'\n"
                        "python error: '    sys.path.insert(0, \"/a\"b/lib/python\")'\n"
                        "python error: '                           ^'\n"
                        "python error: 'SyntaxError: invalid syntax'\n"));
}

void tst_pythonStartup::searchPathIsSetBeforeTheServicesAreBound()
{
    PythonChild child;
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), QStringLiteral("\" + base + \""));
    const PythonChildResult result = child.runMerged(QStringLiteral("print 'started'"));
    QCOMPARE(result.standardOutput,
             QByteArray("python error: 'Traceback (most recent call last):'\n"
                        "python error: '  File \"<string>\", line 1, in <module>'\n"
                        "python error: 'NameError: name 'base' is not defined'\n")
                 + bindingLine + info("started"));
}

// The interpreter's own folder is one of the test's, which PYTHONHOME names.
void tst_pythonStartup::executableIsAnInterpreterThatFits_data()
{
    QTest::addColumn<QStringList>("programs");
    QTest::addColumn<QStringList>("others");
    QTest::addColumn<QString>("executable");

    const auto add = [](const char *name, const QStringList &programs, const QStringList &others,
                        const char *executable) {
        QTest::newRow(name) << programs << others << QString::fromLatin1(executable);
    };
    const QString base = QStringLiteral("base/bin/python2.7");
    const QString own = QStringLiteral("own/bin/python2.7");
    const QString found = QStringLiteral("second/python2.7");
    add("base folder", {base, own, found}, {}, "base/bin/python2.7");
    add("the interpreter's folder", {own, found}, {}, "own/bin/python2.7");
    add("search path", {found}, {}, "second/python2.7");
    add("first of the search path", {"first/python2.7", found}, {}, "first/python2.7");
    add("none", {}, {}, "");
    add("what Python takes for its own program", {"first/PythonQt"}, {}, "");
    add("file that is no program", {own, found}, {base}, "own/bin/python2.7");
    add("file that is no program on the search path", {found}, {"first/python2.7"}, "second/python2.7");
    add("folder", {"base/bin/python2.7/python2.7", own}, {}, "own/bin/python2.7");
    add("another version", {"base/bin/python", "base/bin/python2", "base/bin/python3", "first/python2.6"}, {}, "");
    add("the current folder", {"python2.7", "bin/python2.7"}, {}, "");
}

void tst_pythonStartup::executableIsAnInterpreterThatFits()
{
    host();
    QFETCH(QStringList, programs);
    QFETCH(QStringList, others);
    QFETCH(QString, executable);

    const QTemporaryDir folder;
    for (const QString &program : qAsConst(programs))
        writeFile(folder.filePath(program), QFile::ReadOwner | QFile::ExeOwner);
    for (const QString &other : qAsConst(others))
        writeFile(folder.filePath(other), QFile::ReadOwner);

    PythonChild child;
    child.workingFolder = folder.path();
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), folder.filePath(QStringLiteral("base")));
    child.environment.insert(QStringLiteral("PYTHONHOME"),
                             QString::fromLocal8Bit(Py_GetPrefix()) + ':' + folder.filePath("own"));
    child.environment.insert(QStringLiteral("PATH"),
                             folder.filePath("first") + "::" + folder.filePath(QStringLiteral("second")));
    const PythonChildResult result = child.run(QStringLiteral("print repr(sys.executable)"));
    const QByteArray expected = executable.isEmpty() ? QByteArray() : folder.filePath(executable).toUtf8();
    QCOMPARE(result.standardError, QByteArray());
    QCOMPARE(result.standardOutput, bindingLine + info("'" + expected + "'"));
}

void tst_pythonStartup::executableOfARelativeBaseFolderIsAbsolute()
{
    const QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("base/bin/python2.7")), QFile::ReadOwner | QFile::ExeOwner);

    PythonChild child;
    child.workingFolder = folder.path();
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), QStringLiteral("base"));
    const PythonChildResult result = child.run(QStringLiteral("print sys.executable"));
    QCOMPARE(result.standardOutput,
             bindingLine + info(QFileInfo(folder.path()).canonicalFilePath().toUtf8() + "/base/bin/python2.7"));
}

void tst_pythonStartup::baseFolderIsUtf8InAnyLocale()
{
    const QTemporaryDir folder;
    const QString base = folder.filePath(QStringLiteral("gr\u00fc\u00dfe \U0001f40d"));
    writeFile(base + "/bin/python2.7", QFile::ReadOwner | QFile::ExeOwner);
    writeFile(base + "/lib/python/helper.py", QFile::ReadOwner);

    PythonChild child;
    child.environment.insert(QStringLiteral("OX_BASE_DIR"), base);
    const PythonChildResult result = runHost(child.environment,
                                             {latin1HostRunsOption,
                                              QStringLiteral("import helper\n"
                                                             "print helper.__file__\n"
                                                             "print sys.executable\n")});
    QCOMPARE(result.standardOutput,
             bindingLine + info(base.toUtf8() + "/lib/python/helper.py") + info(base.toUtf8() + "/bin/python2.7")
                 + info("goes on"));
}

// The machine's own.
void tst_pythonStartup::executableRunsScripts()
{
    const PythonChildResult result = PythonChild().run(
        QStringLiteral("import subprocess\n"
                       "script = 'import json, sys; print json.dumps(sys.version_info[:2]), sys.prefix'\n"
                       "child = subprocess.Popen([sys.executable, '-c', script], stdout=subprocess.PIPE)\n"
                       "print child.communicate()[0] == '[2, 7] %s\\n' % sys.prefix, child.returncode\n"
                       "import platform\n"
                       "print platform.libc_ver()[0]\n"));
    QCOMPARE(result.standardError, QByteArray());
    QCOMPARE(result.standardOutput, bindingLine + info("True 0") + info("glibc"));
}

void tst_pythonStartup::sysIsImportedInMain()
{
    QCOMPARE(PythonChild().run(QStringLiteral("print sys.__name__")).standardOutput, bindingLine + info("sys"));
}

void tst_pythonStartup::noByteCodeIsWritten()
{
    const QTemporaryDir folder;
    QDir().mkpath(folder.filePath(QStringLiteral("lib/python")));
    QFile module(folder.filePath(QStringLiteral("lib/python/helper.py")));
    QVERIFY(module.open(QIODevice::WriteOnly));
    module.close();

    const PythonChildResult result =
        runWithBase(folder.path(),
                    QStringLiteral("import helper\n"
                                   "print sys.dont_write_bytecode, sys.flags.dont_write_bytecode\n"));
    // The interpreter's flag says that it was set before the interpreter started.
    QCOMPARE(result.standardOutput, bindingLine + info("True 1"));
    QCOMPARE(result.standardError, QByteArray());
    QCOMPARE(QDir(folder.filePath(QStringLiteral("lib/python"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("helper.py")});
}

void tst_pythonStartup::siteIsNotImported()
{
    const QString statements = QStringLiteral("print 'site' in sys.modules, sys.flags.no_site");
    QCOMPARE(PythonChild().run(statements).standardOutput, bindingLine + info("False 1"));
}

void tst_pythonStartup::qtClassesAreAvailable()
{
    const PythonChildResult result = PythonChild().run(QStringLiteral("from PythonQt.QtCore import QTimer\n"
                                                                      "from PythonQt.QtGui import QPushButton\n"
                                                                      "print QTimer, QPushButton('Press').text\n"));
    QCOMPARE(result.standardError, QByteArray());
    QCOMPARE(result.standardOutput, bindingLine + info("<class 'PythonQt.QtCore.QTimer'> Press"));
}

void tst_pythonStartup::exitInMainDoesNotEndTheProcess()
{
    const PythonChildResult result = PythonChild().run(QStringLiteral("sys.exit(3)"));
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput, bindingLine);
    QCOMPARE(result.standardError, QByteArray());
}

void tst_pythonStartup::exitInCodeOfTheHostEndsTheProcess_data()
{
    QTest::addColumn<QStringList>("code");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("lastError");

    const auto add = [](const char *name, const QStringList &code, int exitCode, const QByteArray &output,
                        const QByteArray &lastError) {
        QTest::newRow(name) << code << exitCode << output << lastError;
    };
    // As a slot of PySide2 does, it prints what is raised there.
    const QString callback = QStringLiteral("import ctypes, sys\n"
                                            "ctypes.CFUNCTYPE(None)(lambda: sys.exit(3))()\n"
                                            "print 'called back'\n");
    add("a number", {"print 'here'\nsys.exit(7)\nprint 'not here'"}, 7, info("here"), "");
    add("none", {"sys.exit()"}, 0, "", "");
    add("a text", {"raise SystemExit('the reason')"}, 1, "", "the reason");
    add("in a function", {"def leave(): sys.exit(7)", "leave()"}, 7, "", "");
    add("no error", {"x = 1", "print x"}, 0, info("1") + info("goes on"), "");
    add("another error", {"1 / 0"}, 0, info("goes on"), "ZeroDivisionError: integer division or modulo by zero");
    add("caught", {"try: sys.exit(7)\nexcept SystemExit: print 'no'"}, 0, info("no") + info("goes on"), "");
    add("in a callback", {callback}, 0, info("called back") + info("goes on"), "SystemExit: 3");
    add("in a callback after an error", {"1 / 0", callback}, 0, info("called back") + info("goes on"), "SystemExit: 3");
}

void tst_pythonStartup::exitInCodeOfTheHostEndsTheProcess()
{
    QFETCH(QStringList, code);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, lastError);

    const PythonChild child;
    const PythonChildResult result = runHost(child.environment, QStringList(hostRunsOption) + code);
    QVERIFY2(lastError.isEmpty() || result.standardError.endsWith("python error: '" + lastError + "'\n"),
             result.standardError);
    QCOMPARE(result.standardOutput, bindingLine + output);
    QCOMPARE(result.exitCode, exitCode);
}

void tst_pythonStartup::processEndsWithPythonObjectsAlive()
{
    const PythonChildResult result =
        PythonChild().run(QStringLiteral("from PythonQt.QtCore import QTimer\n"
                                         "from PythonQt.QtGui import QLabel, QWidget\n"
                                         "window = QWidget()\n"
                                         "label = QLabel('text', window)\n"
                                         "timer = QTimer()\n"
                                         "timer.connect('timeout()', lambda: None)\n"
                                         "timer.start(1)\n"
                                         "window.show()\n"
                                         "import threading, time\n"
                                         "thread = threading.Thread(target=time.sleep, args=(3600,))\n"
                                         "thread.daemon = True\n"
                                         "thread.start()\n"));
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput, bindingLine);
    QCOMPARE(result.standardError, QByteArray());
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == hostRunsOption || arguments.value(1) == latin1HostRunsOption)
        return hostMain(arguments);
    if (PythonChild::isOne(arguments))
        return PythonChild::main(arguments);
    tst_pythonStartup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pythonStartup.moc"
