#include "Console.h"

#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QtTest>

#include "OutputCapture.h"
#include "Patience.h"
#include "PluginHost.h"
#include "Scripting.h"

/// The console panel, alone and with a real Python.
class tst_Console : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsLinesAsTheProcessPrintsThem();
    void linesOfAThreadAppear();
    void errorsHaveAnotherColor();
    void lineWaitsForItsLineFeed();
    void textIsNoMarkup();
    void breaksWithinALineStayInIt_data();
    void breaksWithinALineStayInIt();
    void olderLinesGo();
    void longLineIsCut();
    void takesAHundredMegabytes_data();
    void takesAHundredMegabytes();
    void clearButtonEmptiesIt();
    void followsTheLastLine();
    void staysWhereTheUserReads();
    void takesNoInput();

private:
    QStringList lines() const { return view()->toPlainText().split(QLatin1Char('\n')); }
    QPlainTextEdit *view() const { return m_console->findChild<QPlainTextEdit *>(); }
    QScrollBar *bar() const { return view()->verticalScrollBar(); }

    std::unique_ptr<Console> m_console;
};

void tst_Console::init()
{
    static PluginHost *const host = new PluginHost; // never deleted: Python lives as long as the process
    Q_UNUSED(host)
    m_console = std::make_unique<Console>();
    showScriptOutput(m_console.get());
    m_console->show();
}

void tst_Console::showsLinesAsTheProcessPrintsThem()
{
    const Output output = outputOf([] {
        PluginHost::run(QStringLiteral("print('one'); print(u'zw\\xf6lf'); print(''); print('a\\0b')"));
        PluginHost::run(QStringLiteral("raise ValueError('no')"));
    });
    QTRY_COMPARE(QString(view()->toPlainText() + QLatin1Char('\n')),
                 QString::fromUtf8(output.standardOutput + output.standardError));
    QCOMPARE(lines().mid(0, 4),
             QStringList({QStringLiteral("python info: 'one'"), QStringLiteral("python info: 'zwölf'"),
                          QStringLiteral("python info: ''"), QStringLiteral("python info: 'a'")}));
    QCOMPARE(lines().last(), QStringLiteral("python error: 'ValueError: no'"));
}

void tst_Console::linesOfAThreadAppear()
{
    outputOf([this] {
        PluginHost::run(QStringLiteral("import sys, thread; thread.start_new_thread(sys.stdout.write, ('aside\\n',))"));
        QTRY_COMPARE(lines(), QStringList(QStringLiteral("python info: 'aside'")));
    });
    QCOMPARE(lines(), QStringList(QStringLiteral("python info: 'aside'")));
}

void tst_Console::errorsHaveAnotherColor()
{
    m_console->addOutput(QStringLiteral("fine\n"));
    m_console->addError(QStringLiteral("bad\n"));
    m_console->addOutput(QStringLiteral("fine\n"));
    QTRY_COMPARE(lines().size(), 3);

    QVector<QColor> colors;
    for (QTextBlock block = view()->document()->begin(); block.isValid(); block = block.next())
        colors.append(block.begin().fragment().charFormat().foreground().color());
    QCOMPARE(colors.size(), 3);
    QVERIFY(colors.at(0) != colors.at(1));
    QCOMPARE(colors.at(0), colors.at(2));
}

void tst_Console::lineWaitsForItsLineFeed()
{
    m_console->addOutput(QStringLiteral("be"));
    m_console->addError(QStringLiteral("other\n"));
    m_console->addOutput(QString());
    m_console->addOutput(QStringLiteral("gin\nnext"));
    QTRY_COMPARE(lines(),
                 QStringList({QStringLiteral("python error: 'other'"), QStringLiteral("python info: 'begin'")}));
}

void tst_Console::textIsNoMarkup()
{
    m_console->addOutput(QStringLiteral("<b>1 &lt; 2</b> %1 %2\n"));
    QTRY_COMPARE(lines(), QStringList(QStringLiteral("python info: '<b>1 &lt; 2</b> %1 %2'")));
}

void tst_Console::breaksWithinALineStayInIt_data()
{
    QTest::addColumn<QChar>("character");
    QTest::newRow("carriage return") << QChar(QChar::CarriageReturn);
    QTest::newRow("paragraph separator") << QChar(QChar::ParagraphSeparator);
}

void tst_Console::breaksWithinALineStayInIt()
{
    QFETCH(QChar, character);
    m_console->addOutput(QStringLiteral("a") + character + QStringLiteral("b\n"));
    QTRY_COMPARE(lines(), QStringList(QStringLiteral("python info: 'a b'")));
}

void tst_Console::olderLinesGo()
{
    for (int i = 0; i < 3 * Console::maximumLines; ++i) {
        m_console->addOutput(QStringLiteral("%1\n").arg(i));
        if (i % 1000 == 0)
            QCoreApplication::processEvents();
    }
    const QString last = QStringLiteral("python info: '%1'").arg(3 * Console::maximumLines - 1);
    QTRY_COMPARE(lines().last(), last);
    QCOMPARE(lines().size(), int(Console::maximumLines));
}

void tst_Console::longLineIsCut()
{
    m_console->addOutput(QString(Console::maximumLineLength, QLatin1Char('a')) + QLatin1Char('\n'));
    m_console->addOutput(QString(Console::maximumLineLength, QLatin1Char('b')));
    m_console->addOutput(QStringLiteral("c\nnext\n"));
    QTRY_COMPARE(lines().size(), 3);
    QCOMPARE(lines().at(0),
             QStringLiteral("python info: '%1'").arg(QString(Console::maximumLineLength, QLatin1Char('a'))));
    QCOMPARE(lines().at(1),
             QStringLiteral("python info: '%1…'").arg(QString(Console::maximumLineLength, QLatin1Char('b'))));
    QCOMPARE(lines().at(2), QStringLiteral("python info: 'next'"));
}

void tst_Console::takesAHundredMegabytes_data()
{
    QTest::addColumn<QString>("statement");
    QTest::newRow("in one line") << QStringLiteral("print('x' * 100000000)");
    QTest::newRow("in lines") << QStringLiteral("for i in range(1000): print('\\n'.join([str(i) + 'x' * 990] * 100))");
}

void tst_Console::takesAHundredMegabytes()
{
    QFETCH(QString, statement);
    const Output output = outputOf([&statement] { PluginHost::run(statement + QStringLiteral("\n")); });
    QVERIFY(output.standardOutput.size() > 90000000); // the process's own output has all of it
    PluginHost::run(QStringLiteral("print('end')"));
    QTRY_COMPARE(lines().last(), QStringLiteral("python info: 'end'"));
    QVERIFY(view()->toPlainText().size() <= Console::maximumLines * (Console::maximumLineLength + 20));
    QVERIFY(lines().at(lines().size() - 2).contains(QLatin1String("xxxxx")));
}

void tst_Console::clearButtonEmptiesIt()
{
    m_console->addOutput(QStringLiteral("shown\n"));
    QTRY_COMPARE(lines().size(), 1);
    m_console->addOutput(QStringLiteral("not shown yet\n"));
    m_console->findChild<QPushButton *>()->click();
    m_console->addOutput(QStringLiteral("later\n"));
    QTRY_COMPARE(lines(), QStringList(QStringLiteral("python info: 'later'")));
}

void tst_Console::followsTheLastLine()
{
    for (int i = 0; i < 200; ++i)
        m_console->addOutput(QStringLiteral("line\n"));
    QTRY_COMPARE(lines().size(), 200);
    QVERIFY(bar()->maximum() > 0);
    QCOMPARE(bar()->value(), bar()->maximum());
}

void tst_Console::staysWhereTheUserReads()
{
    followsTheLastLine();
    bar()->setValue(7);
    m_console->addOutput(QStringLiteral("new\n"));
    QTRY_COMPARE(lines().size(), 201);
    QCOMPARE(bar()->value(), 7);
}

void tst_Console::takesNoInput()
{
    m_console->addOutput(QStringLiteral("line\n"));
    const QStringList shown{QStringLiteral("python info: 'line'")};
    QTRY_COMPARE(lines(), shown);
    QTest::keyClicks(view(), QStringLiteral("typed"));
    QCOMPARE(lines(), shown);
}

QTEST_MAIN(tst_Console)
#include "tst_Console.moc"
