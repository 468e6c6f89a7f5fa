#include "oxPluginSource.h"

#include <QtTest>

// What a plugin's file holds, and what of it is run.
class tst_oxPluginSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsUtf8UpToTheFirstZeroByte_data();
    void textIsUtf8UpToTheFirstZeroByte();

    void bindingIsNamedOnALineWithImport_data();
    void bindingIsNamedOnALineWithImport();

    void rewritePutsThePySide2HelpersIn_data();
    void rewritePutsThePySide2HelpersIn();
};

void tst_oxPluginSource::textIsUtf8UpToTheFirstZeroByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("ASCII") << QByteArray("a = 1\n") << QStringLiteral("a = 1\n");
    QTest::newRow("non-ASCII") << QByteArray("gr\xc3\xbc\xc3\x9f") << QStringLiteral("gr\u00fc\u00df");
    QTest::newRow("beyond 16 bits") << QByteArray("\xf0\x9f\x90\x8d") << QStringLiteral("\U0001f40d");
    QTest::newRow("carriage returns stay") << QByteArray("a\r\nb\rc") << QStringLiteral("a\r\nb\rc");
    QTest::newRow("byte order mark goes") << QByteArray("\xef\xbb\xbf# a") << QStringLiteral("# a");
    QTest::newRow("not UTF-8") << QByteArray("a\xff\xe9z") << QStringLiteral("a\ufffd\ufffdz");
    QTest::newRow("zero byte in the middle") << QByteArray("a\0b", 3) << QStringLiteral("a");
    QTest::newRow("two zero bytes") << QByteArray("a\0b\0c", 5) << QStringLiteral("a");
    QTest::newRow("zero byte at the start") << QByteArray("\0a", 2) << QString();
    QTest::newRow("zero byte at the end") << QByteArray("a\0", 2) << QStringLiteral("a");
}

void tst_oxPluginSource::textIsUtf8UpToTheFirstZeroByte()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(pluginText(bytes), text);
}

void tst_oxPluginSource::bindingIsNamedOnALineWithImport_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("usesPythonQt");
    QTest::addColumn<bool>("usesPySide2");

    const auto add = [](const char *name, const QByteArray &bytes, bool usesPythonQt, bool usesPySide2) {
        QTest::newRow(name) << bytes << usesPythonQt << usesPySide2;
    };
    add("empty", "", false, false);
    add("neither", "import os\n", false, false);
    add("PythonQt", "from PythonQt import QtGui\n", true, false);
    add("PySide2", "from PySide2 import QtWidgets\n", false, true);
    add("either on a line of its own", "import PythonQt\nimport PySide2\n", true, true);
    add("either, the other way round", "import PySide2\nimport PythonQt\n", true, true);
    add("both on one line", "import PythonQt, PySide2\n", true, true);
    add("import after the name", "PythonQt = 1 # import\n", true, false);
    add("import before the name", "import os # PySide2\n", false, true);
    add("part of a longer word", "importlib.reload(myPySide2x)\n", false, true);
    add("within a string", "print 'important: PythonQt'\n", true, false);
    add("PythonQt without import", "PythonQt.QtGui\n", false, false);
    add("PySide2 without import", "x = 'PySide2'\n", false, false);
    add("import on another line", "import os\nPySide2\n", false, false);
    add("wrong case of the name", "import pythonqt, pyside2, PYSIDE2\n", false, false);
    add("wrong case of import", "Import PythonQt, PySide2\n", false, false);
    add("an older binding", "import PySide\n", false, false);
    add("comment", "#from PythonQt import QtGui\n", false, false);
    add("comment with a blank", "# import PySide2\n", false, false);
    add("indented comment counts", "    # from PythonQt import QtGui\n", true, false);
    add("tabbed comment counts", "\t#import PySide2\n", false, true);
    add("comment at the end of a line counts", "x = 1 # import PySide2\n", false, true);
    add("the next line after a comment", "# import PythonQt\nimport PySide2\n", false, true);
    add("within a text of several lines", "'''\nimport PythonQt\n'''\n", true, false);
    add("last line without line feed", "x = 1\nimport PySide2", false, true);
    add("lines that end in CR LF", "# import PythonQt\r\nimport PySide2\r\n", false, true);
    add("a lone CR ends no line", "# import PythonQt\rimport PySide2\n", false, false);
    add("byte order mark before a comment", "\xef\xbb\xbf# import PythonQt\nimport PySide2\n", false, true);
    add("not UTF-8 before it", "x = '\xff\xe9'\nimport PySide2\n", false, true);
    add("zero byte on the line before", QByteArray("x\0\nimport PySide2\n", 18), false, true);
    add("zero byte on the line itself", QByteArray("\0import PythonQt\n", 17), true, false);
    add("after a long line", QByteArray(1 << 20, 'x') + "\nimport PySide2\n", false, true);
    add("import far before the name", "import " + QByteArray(1 << 20, 'x') + "PySide2\n", false, true);
    add("import far behind the name", "PySide2" + QByteArray(1 << 20, 'x') + "import\n", false, true);
    add("comment far before the name", "#" + QByteArray(1 << 20, 'x') + "import PySide2\n", false, false);
    add("a name on a line before", "PySide2\nimport PythonQt\n", true, false);
    add("a name on a comment before", "# PySide2\nimport os\nimport PySide2\n", false, true);
    add("a name where the others begin", "import PyPyPythonQt\n", true, false);
    add("after ten thousand lines", QByteArray("x = 1\n").repeated(10000) + "import PythonQt\n", true, false);
}

void tst_oxPluginSource::bindingIsNamedOnALineWithImport()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, usesPythonQt);
    QFETCH(bool, usesPySide2);

    const oxPluginBindings bindings = detectBindings(bytes);
    QCOMPARE(bindings.usesPythonQt, usesPythonQt);
    QCOMPARE(bindings.usesPySide2, usesPySide2);
}

void tst_oxPluginSource::rewritePutsThePySide2HelpersIn_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("rewritten");

    QTest::newRow("nothing to replace") << "import PySide2\n"
                                        << "import PySide2\n";
    QTest::newRow("loadUiType") << "f = uiTools.loadUiType('a.ui')"
                                << "f = uiTools.loadUiTypePySide('a.ui')";
    QTest::newRow("loadUiType of another module") << "tools.loadUiType()"
                                                  << "tools.loadUiType()";
    QTest::newRow("widget") << "p = TARNPluginWidget\n"
                            << "p = uiTools.getWidget(TARNPluginWidgetId)\n";
    QTest::newRow("every occurrence") << "uiTools.loadUiType;TARNPluginWidget;uiTools.loadUiType;TARNPluginWidget"
                                      << "uiTools.loadUiTypePySide;uiTools.getWidget(TARNPluginWidgetId);"
                                         "uiTools.loadUiTypePySide;uiTools.getWidget(TARNPluginWidgetId)";
    QTest::newRow("at the very end") << "a = b.c(TARNPluginWidget"
                                     << "a = b.c(uiTools.getWidget(TARNPluginWidgetId)";
    QTest::newRow("very often") << QStringLiteral("TARNPluginWidget;").repeated(5000)
                                << QStringLiteral("uiTools.getWidget(TARNPluginWidgetId);").repeated(5000);
    QTest::newRow("a beginning of it") << "TARNPluginWidge TARNTARNPluginWidget"
                                       << "TARNPluginWidge TARNuiTools.getWidget(TARNPluginWidgetId)";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("in comments and strings") << "# 'TARNPluginWidget'"
                                             << "# 'uiTools.getWidget(TARNPluginWidgetId)'";
    QTest::newRow("wrong case") << "UiTools.loaduitype tarnPluginWidget"
                                << "UiTools.loaduitype tarnPluginWidget";
    QTest::newRow("suffix is doubled") << "uiTools.loadUiTypePySide"
                                       << "uiTools.loadUiTypePySidePySide";
    QTest::newRow("identifier is taken for the widget") << "TARNPluginWidgetId"
                                                        << "uiTools.getWidget(TARNPluginWidgetId)Id";
}

void tst_oxPluginSource::rewritePutsThePySide2HelpersIn()
{
    QFETCH(QString, text);
    QFETCH(QString, rewritten);
    QCOMPARE(rewriteForPySide2(text), rewritten);
}

QTEST_APPLESS_MAIN(tst_oxPluginSource)
#include "tst_oxPluginSource.moc"
