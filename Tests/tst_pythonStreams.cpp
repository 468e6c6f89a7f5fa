#include "PluginHost.h"

#include <QTextCodec>
#include <QtTest>

#include <array>
#include <future>
#include <memory>
#include <thread>

#include "OutputCapture.h"
#include "PrivateData.h"
#include "PythonChild.h"

// Everything Python prints comes out line by line, tagged.
class tst_pythonStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void completeLinesArePrinted_data();
    void completeLinesArePrinted();
    void pythonsWritesArePutTogether_data();
    void pythonsWritesArePutTogether();
    void streamsHaveWhatATextStreamHas_data();
    void streamsHaveWhatATextStreamHas();
    void writtenLinesMayBeAnySequence_data();
    void writtenLinesMayBeAnySequence();
    void descriptorsAreTheProcesss();
    void streamsCannotBeChanged();

    void linesAreUtf8InAnyLocale();
    void textEndsAtAnEmbeddedZero();
    void partialLineWaitsForItsLineFeed();
    void streamsHaveBuffersOfTheirOwn();
    void buffersAreEmptyAndNotNullAtFirst();
    void textOfAnotherThreadIsPrintedByTheEventLoop();
    void textIsPrintedWhicheverThreadAsksFirst_data();
    void textIsPrintedWhicheverThreadAsksFirst();
    void standardErrorIsNotBufferedAndStandardOutputNotFlushed();
    void unfinishedLastLineIsNeverPrinted();

    void aMillionLinesInOneWrite();
    void aMillionWritesWithoutLineFeed();

private:
    std::unique_ptr<PluginHost> m_host;
};

namespace {

const QString askedOption = QStringLiteral("--interface-is-asked-for-first-by");

// Who calls oxKernelInterface::the() first, in a process of its own.
constexpr std::array askers{"main thread",
                            "thread",
                            "thread that goes on",
                            "QThread",
                            "main thread, before the application",
                            "thread, before the application"};

oxKernelInterface *interface()
{
    return oxKernelInterface::the();
}

} // namespace

void tst_pythonStreams::initTestCase()
{
    m_host = std::make_unique<PluginHost>();
}

void tst_pythonStreams::cleanup()
{
    outputOf([] {
        interface()->pythonStdOut(QStringLiteral("\n"));
        interface()->pythonStdErr(QStringLiteral("\n"));
    });
}

void tst_pythonStreams::completeLinesArePrinted_data()
{
    QTest::addColumn<QStringList>("pieces");
    QTest::addColumn<QByteArrayList>("lines");

    const auto add = [](const char *name, const QStringList &pieces, const QByteArrayList &lines) {
        QTest::newRow(name) << pieces << lines;
    };
    add("one line", {"abc\n"}, {"abc"});
    add("nothing", {""}, {});
    add("empty pieces in between", {"", "a", "", "\n", ""}, {"a"});
    add("two pieces", {"a", "b\n"}, {"ab"});
    add("line feed by itself", {"ab", "\n"}, {"ab"});
    add("character by character", {"a", "\n", "b", "\n"}, {"a", "b"});
    add("two lines in one piece and a rest", {"x\ny\nz"}, {"x", "y"});
    add("the rest comes later", {"x\ny\nz", "\n"}, {"x", "y", "z"});
    add("the rest and more", {"a\nb", "c\nd", "e\n"}, {"a", "bc", "de"});
    add("lone line feed", {"\n"}, {""});
    add("empty lines", {"\n\n", "a\n\nb\n"}, {"", "", "a", "", "b"});
    add("carriage return is kept", {"a\r\n", "b\rc\n"}, {"a\r", "b\rc"});
    add("carriage returns in one piece", {"a\r\nb\r\nc\rd\n\r\n"}, {"a\r", "b\r", "c\rd", "\r"});
    add("quotes are not escaped", {"it's '\n"}, {"it's '"});
    add("percent signs", {"100% %s %n %d %%\n"}, {"100% %s %n %d %%"});
    add("backslashes", {"a\\nb\n"}, {"a\\nb"});
    add("tabs and blanks", {"\t a \n"}, {"\t a "});
    add("other line separators are text", {"a\u2028b\u0085c\x0b\x0c\n"}, {"a\u2028b\u0085c\x0b\x0c"});
    add("beyond ASCII", {QStringLiteral("gr\u00fc\u00df"), QStringLiteral("e \U0001f40d\n")},
        {"gr\u00fc\u00dfe \U0001f40d"});
    add("halves of a surrogate pair", {QString(QChar(0xd83d)), QString(QChar(0xdc0d)) + '\n'}, {"\xf0\x9f\x90\x8d"});
}

void tst_pythonStreams::completeLinesArePrinted()
{
    QFETCH(QStringList, pieces);
    QFETCH(QByteArrayList, lines);
    QByteArray infos;
    QByteArray errors;
    for (const QByteArray &line : lines) {
        infos += "python info: '" + line + "'\n";
        errors += "python error: '" + line + "'\n";
    }

    const Output infoOutput = outputOf([&pieces] {
        for (const QString &piece : pieces)
            interface()->pythonStdOut(piece);
    });
    QCOMPARE(infoOutput.standardOutput, infos);
    QCOMPARE(infoOutput.standardError, QByteArray());

    const Output errorOutput = outputOf([&pieces] {
        for (const QString &piece : pieces)
            interface()->pythonStdErr(piece);
    });
    QCOMPARE(errorOutput.standardOutput, QByteArray());
    QCOMPARE(errorOutput.standardError, errors);
}

void tst_pythonStreams::pythonsWritesArePutTogether_data()
{
    QTest::addColumn<QString>("statements");
    QTest::addColumn<QByteArray>("standardOutput");
    QTest::addColumn<QByteArray>("standardError");

    const auto add = [](const char *name, const char *statements, const char *output, const char *error) {
        QTest::newRow(name) << QString::fromUtf8(statements) << QByteArray(output) << QByteArray(error);
    };
    add("print", "print 'a'", "python info: 'a'\n", "");
    add("print of nothing", "print", "python info: ''\n", "");
    add("print of several", "print 'a', 1, None", "python info: 'a 1 None'\n", "");
    add("print with a comma goes on", "print 'a',\nprint 'b'", "python info: 'a b'\n", "");
    add("print of a text with line feeds", "print 'a\\nb'", "python info: 'a'\npython info: 'b'\n", "");
    add("bytes", "print '\\xc3\\xbc'", "python info: '\xc3\xbc'\n", "");
    add("unicode", "print u'\\xfc'", "python info: '\xc3\xbc'\n", "");
    add("literals beyond ASCII", "print '\xc3\xbc', u'\xc3\xbc'", "python info: '\xc3\xbc \xc3\xbc'\n", "");
    add("writes", "sys.stdout.write('a')\nsys.stdout.write('b\\n')", "python info: 'ab'\n", "");
    add("standard error", "print >>sys.stderr, 'a'", "", "python error: 'a'\n");
    add("flush prints nothing", "sys.stdout.write('a')\nsys.stdout.flush()", "", "");
    add("exception", "1 / 0", "",
        "python error: 'Traceback (most recent call last):'\n"
        "python error: '  File \"<string>\", line 1, in <module>'\n"
        "python error: 'ZeroDivisionError: integer division or modulo by zero'\n");
    add("syntax error", "a b", "",
        "python error: '  File \"<string>\", line 1'\n"
        "python error: '    a b'\n"
        "python error: '      ^'\n"
        "python error: 'SyntaxError: invalid syntax'\n");
}

void tst_pythonStreams::pythonsWritesArePutTogether()
{
    QFETCH(QString, statements);

    const Output output = outputOf([&statements] { PluginHost::run(statements); });
    QTEST(output.standardOutput, "standardOutput");
    QTEST(output.standardError, "standardError");
}

void tst_pythonStreams::streamsHaveWhatATextStreamHas_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QByteArray>("onOutput");
    QTest::addColumn<QByteArray>("onError");

    const auto add = [](const char *expression, const char *onOutput, const char *onError) {
        QTest::newRow(expression) << QString::fromLatin1(expression) << QByteArray(onOutput) << QByteArray(onError);
    };
    add("stream.encoding", "'UTF-8'", "'UTF-8'");
    add("stream.errors", "'replace'", "'replace'");
    add("stream.name", "'<stdout>'", "'<stderr>'");
    add("stream.mode", "'w'", "'w'");
    add("stream.fileno()", "1", "2");
    add("stream.isatty()", "False", "False");
    add("stream.closed", "False", "False");
    add("stream.softspace", "0", "0");
    add("stream.writelines([])", "None", "None");
    add("stream.flush()", "None", "None");
    add("stream.write('')", "None", "None");
}

void tst_pythonStreams::streamsHaveWhatATextStreamHas()
{
    QFETCH(QString, expression);
    const QString inPython = QStringLiteral("[repr(%1) for stream in (sys.stdout, sys.stderr)]").arg(expression);

    const QStringList values = PluginHost::evaluate(inPython).toStringList();
    QCOMPARE(values.size(), 2);
    QTEST(values.first().toLatin1(), "onOutput");
    QTEST(values.last().toLatin1(), "onError");
}

void tst_pythonStreams::writtenLinesMayBeAnySequence_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QByteArray>("printed");
    QTest::addColumn<QByteArray>("error");

    const auto add = [](const char *lines, const char *printed, const char *error) {
        QTest::newRow(lines) << QString::fromLatin1(lines) << QByteArray(printed) << QByteArray(error);
    };
    add("['a\\n', 'b\\n']", "python info: 'a'\npython info: 'b'\n", "");
    add("('a', u'\\xfc', '\\xc3\\xbc\\n')", "python info: 'a\xc3\xbc\xc3\xbc'\n", "");
    add("(str(i) + '\\n' for i in range(2))", "python info: '0'\npython info: '1'\n", "");
    add("'a\\nb\\n'", "python info: 'a'\npython info: 'b'\n", "");
    add("[]", "", "");
    add("7", "", "TypeError: 'int' object is not iterable");
    add("['a\\n', 7, 'b\\n']", "python info: 'a'\n", "TypeError: argument 1 must be string, not int");
    add("(1 / 0 for i in range(2))", "", "ZeroDivisionError: integer division or modulo by zero");
}

void tst_pythonStreams::writtenLinesMayBeAnySequence()
{
    QFETCH(QString, lines);
    QFETCH(QByteArray, error);

    const Output output = outputOf([&lines] { PluginHost::run("sys.stdout.writelines(" + lines + ")\n"); });
    QTEST(output.standardOutput, "printed");
    if (error.isEmpty())
        QCOMPARE(output.standardError, QByteArray());
    else
        QVERIFY2(output.standardError.endsWith("python error: '" + error + "'\n"), output.standardError);
}

// What is written there is not Python's output: it appears as it is.
void tst_pythonStreams::descriptorsAreTheProcesss()
{
    const Output output = outputOf([] {
        PluginHost::run(QStringLiteral("import os, subprocess\n"
                                       "os.write(sys.stdout.fileno(), 'written\\n')\n"
                                       "subprocess.call(['echo', 'echoed'], stdout=sys.stdout)\n"
                                       "subprocess.call(['echo', 'echoed'], stdout=sys.stderr)\n"));
    });
    QCOMPARE(output.standardOutput, QByteArray("written\nechoed\n"));
    QCOMPARE(output.standardError, QByteArray("echoed\n"));
}

void tst_pythonStreams::streamsCannotBeChanged()
{
    const Output output = outputOf([] { PluginHost::run(QStringLiteral("sys.stdout.encoding = 'latin-1'")); });
    QVERIFY2(output.standardError.endsWith("attribute 'encoding' is read-only'\n"), output.standardError);
    QCOMPARE(PluginHost::evaluate(QStringLiteral("sys.stdout.encoding")).toString(), QStringLiteral("UTF-8"));
}

void tst_pythonStreams::linesAreUtf8InAnyLocale()
{
    QTextCodec *const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const Output output = outputOf([] {
        interface()->pythonStdOut(QStringLiteral("gr\u00fcn\n"));
        interface()->pythonStdErr(QStringLiteral("gr\u00fcn\n"));
    });
    QTextCodec::setCodecForLocale(codec);
    QCOMPARE(output.standardOutput, QByteArray("python info: 'gr\xc3\xbcn'\n"));
    QCOMPARE(output.standardError, QByteArray("python error: 'gr\xc3\xbcn'\n"));
}

// A line is handed to C's output functions.
void tst_pythonStreams::textEndsAtAnEmbeddedZero()
{
    const Output output = outputOf([] {
        const QString text = QStringLiteral("a") + QChar(0) + QStringLiteral("b\nc\n");
        interface()->pythonStdOut(text);
        interface()->pythonStdErr(text);
    });
    QCOMPARE(output.standardOutput, QByteArray("python info: 'a'\npython info: 'c'\n"));
    QCOMPARE(output.standardError, QByteArray("python error: 'a'\npython error: 'c'\n"));
}

void tst_pythonStreams::partialLineWaitsForItsLineFeed()
{
    const Output nothing = outputOf([] { PluginHost::run(QStringLiteral("sys.stdout.write('early ')")); });
    QCOMPARE(nothing.standardOutput, QByteArray());
    QCOMPARE(privateData(interface())->stdOutBuffer, QStringLiteral("early "));

    const Output line = outputOf([] { PluginHost::run(QStringLiteral("print 'late'")); });
    QCOMPARE(line.standardOutput, QByteArray("python info: 'early late'\n"));
    QCOMPARE(privateData(interface())->stdOutBuffer, QString());
}

void tst_pythonStreams::streamsHaveBuffersOfTheirOwn()
{
    const Output output = outputOf([] {
        PluginHost::run(QStringLiteral("sys.stdout.write('out')\n"
                                       "sys.stderr.write('err')\n"
                                       "sys.stdout.write('put\\n')\n"
                                       "sys.stderr.write('or\\n')\n"));
    });
    QCOMPARE(output.standardOutput, QByteArray("python info: 'output'\n"));
    QCOMPARE(output.standardError, QByteArray("python error: 'error'\n"));
}

void tst_pythonStreams::buffersAreEmptyAndNotNullAtFirst()
{
    const oxKernelInterfaceP data;
    QVERIFY(data.stdOutBuffer.isEmpty() && !data.stdOutBuffer.isNull());
    QVERIFY(data.stdErrBuffer.isEmpty() && !data.stdErrBuffer.isNull());
}

void tst_pythonStreams::textOfAnotherThreadIsPrintedByTheEventLoop()
{
    const Output meanwhile = outputOf([] {
        PluginHost::run(QStringLiteral("import threading\n"
                                       "def talk():\n"
                                       "    sys.stdout.write('from ')\n"
                                       "    print 'a thread'\n"
                                       "    print >>sys.stderr, 'as well'\n"
                                       "thread = threading.Thread(target=talk)\n"
                                       "thread.start()\n"
                                       "thread.join()\n"
                                       "print 'joined'\n"));
    });
    QCOMPARE(meanwhile.standardOutput, QByteArray("python info: 'joined'\n"));
    QCOMPARE(meanwhile.standardError, QByteArray());

    const Output later = outputOf([] { QCoreApplication::processEvents(); });
    QCOMPARE(later.standardOutput, QByteArray("python info: 'from a thread'\n"));
    QCOMPARE(later.standardError, QByteArray("python error: 'as well'\n"));
}

void tst_pythonStreams::textIsPrintedWhicheverThreadAsksFirst_data()
{
    QTest::addColumn<QString>("asker");
    for (const char *asker : askers)
        QTest::newRow(asker) << QString::fromLatin1(asker);
}

void tst_pythonStreams::textIsPrintedWhicheverThreadAsksFirst()
{
    QFETCH(QString, asker);

    const PythonChild child;
    QProcess process;
    process.setProcessEnvironment(child.environment);
    process.start(QCoreApplication::applicationFilePath(), {askedOption, asker});
    QVERIFY(process.waitForFinished(120000));
    QCOMPARE(process.readAllStandardError(), QByteArray("python error: 'error'\n"));
    QCOMPARE(process.readAllStandardOutput(), QByteArray("python binding: oxMessageService\npython info: 'info'\n"));
    QCOMPARE(process.exitCode(), 0);
}

void tst_pythonStreams::standardErrorIsNotBufferedAndStandardOutputNotFlushed()
{
#ifdef __SANITIZE_THREAD__
    QSKIP("the sanitizer flushes what _exit() does not");
#endif
    const PythonChildResult result = PythonChild().run(QStringLiteral("import os\n"
                                                                      "print 'lost'\n"
                                                                      "print >>sys.stderr, 'kept'\n"
                                                                      "os._exit(7)\n"));
    QCOMPARE(result.exitCode, 7);
    QCOMPARE(result.standardOutput, QByteArray());
    QCOMPARE(result.standardError, QByteArray("python error: 'kept'\n"));
}

void tst_pythonStreams::unfinishedLastLineIsNeverPrinted()
{
    const PythonChildResult result = PythonChild().run(QStringLiteral("print 'finished'\n"
                                                                      "sys.stdout.write('unfinished')\n"
                                                                      "sys.stderr.write('unfinished')\n"));
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.standardOutput, QByteArray("python binding: oxMessageService\npython info: 'finished'\n"));
    QCOMPARE(result.standardError, QByteArray());
}

// These two end in time only when the time is linear in the text.
void tst_pythonStreams::aMillionLinesInOneWrite()
{
    const Output output =
        outputOf([] { PluginHost::run(QStringLiteral("sys.stdout.write(('x' * 49 + '\\n') * 1000000)")); });
    const QByteArray line = "python info: '" + QByteArray(49, 'x') + "'\n";
    QVERIFY(output.standardOutput == line.repeated(1000000));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pythonStreams::aMillionWritesWithoutLineFeed()
{
    const Output output = outputOf([] {
        PluginHost::run(QStringLiteral("for i in xrange(1000000):\n"
                                       "    sys.stderr.write('ten bytes ')\n"
                                       "sys.stderr.write('\\n')\n"));
    });
    QVERIFY(output.standardError == "python error: '" + QByteArray("ten bytes ").repeated(1000000) + "'\n");
    QCOMPARE(output.standardOutput, QByteArray());
}

namespace {

void ask()
{
    oxKernelInterface::the();
}

int startAndPrint()
{
    oxQRPCClient client;
    interface()->init(&client, false);
    PluginHost::run(QStringLiteral("print 'info'\n"
                                   "print >>sys.stderr, 'error'\n"));
    return interface()->thread() == QThread::currentThread() ? 0 : 1;
}

int askFirst(int argc, char *argv[], const QByteArray &asker)
{
    if (asker == "thread, before the application")
        std::thread(ask).join();
    if (asker == "main thread, before the application")
        ask();
    const QApplication application(argc, argv);
    if (asker == "thread")
        std::thread(ask).join();
    if (asker == "QThread") {
        const std::unique_ptr<QThread> thread(QThread::create(ask));
        thread->start();
        thread->wait();
        return startAndPrint();
    }
    if (asker == "thread that goes on") {
        std::promise<void> asked;
        std::promise<void> ended;
        std::thread thread([&asked, &ended] {
            ask();
            asked.set_value();
            ended.get_future().wait();
        });
        asked.get_future().wait();
        const int result = startAndPrint();
        ended.set_value();
        thread.join();
        return result;
    }
    return startAndPrint();
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && argv[1] == askedOption)
        return askFirst(argc, argv, argv[2]);
    const QApplication application(argc, argv);
    if (PythonChild::isOne(QCoreApplication::arguments()))
        return PythonChild::main(QCoreApplication::arguments());
    tst_pythonStreams test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pythonStreams.moc"
