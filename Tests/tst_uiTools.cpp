#include <QDockWidget>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QtTest>

#include "DesignerForm.h"
#include "OutputCapture.h"
#include "PluginHost.h"

/// The Python module uiTools of the installation folder, as plugins use it.
class tst_uiTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void formFillsTheWidgetAndNamesItsChildren();
    void baseIsTheClassOfTheTopWidget_data();
    void baseIsTheClassOfTheTopWidget();
    void relativeFileIsLookedUpInThePluginsFolder();
    void relativeFileIsFoundAfterTheFolderChanged();
    void badFilesGiveOneClearError_data();
    void badFilesGiveOneClearError();
    void helpersForPySide2SayThatItIsMissing_data();
    void helpersForPySide2SayThatItIsMissing();

private:
    PluginHost *m_host = nullptr;
};

void tst_uiTools::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path.insert(0, '" SOURCE_DIR "/Share/lib/python')"));
}

void tst_uiTools::init()
{
    m_host->clear();
}

void tst_uiTools::formFillsTheWidgetAndNamesItsChildren()
{
    m_host->write(QStringLiteral("panel.ui"), designerForm("QWidget"));
    m_host->write(QStringLiteral("Panel.py"),
                  "from PythonQt import QtGui\n"
                  "import uiTools\n"
                  "Form, Base = uiTools.loadUiType('panel.ui')\n"
                  "class Panel(Form, Base):\n"
                  "    def __init__(self, parent=None):\n"
                  "        Base.__init__(self, parent)\n"
                  "        self.setupUi(self)\n"
                  "        self.button.connect('clicked()', self.pressed)\n"
                  "    def pressed(self):\n"
                  "        self.label.setText('pressed')\n"
                  "panel = Panel()\n"
                  "TARNPluginWidget.layout().addWidget(panel)\n"
                  "title = panel.windowTitle\n");
    m_host->scan();

    QWidget *panel = m_host->dock(QStringLiteral("Panel"))->widget()->layout()->itemAt(0)->widget();
    panel->findChild<QPushButton *>(QStringLiteral("button"))->click();
    QCOMPARE(panel->findChild<QLabel *>(QStringLiteral("label"))->text(), QStringLiteral("pressed"));
    QCOMPARE(panel->layout()->contentsMargins(), QMargins());
    QCOMPARE(m_host->evaluateIn(QStringLiteral("Panel"), QStringLiteral("title")).toString(),
             QStringLiteral("A title"));
}

void tst_uiTools::baseIsTheClassOfTheTopWidget_data()
{
    QTest::addColumn<QByteArray>("topWidget");
    for (const char *name : {"QWidget", "QDialog", "QGroupBox", "QFrame"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_uiTools::baseIsTheClassOfTheTopWidget()
{
    QFETCH(QByteArray, topWidget);
    m_host->write(QStringLiteral("panel.ui"), designerForm(topWidget));
    m_host->write(QStringLiteral("Panel.py"),
                  "import uiTools\n"
                  "Form, Base = uiTools.loadUiType('panel.ui')\n"
                  "Form().setupUi(TARNPluginWidget)\n");
    m_host->scan();

    const QString panel = QStringLiteral("Panel");
    const auto *content = m_host->dock(panel)->widget()->findChild<QWidget *>(QStringLiteral("Form"));
    QVERIFY(content && !content->isWindow());
    QCOMPARE(m_host->evaluateIn(panel, QStringLiteral("Base.__name__")).toByteArray(), topWidget);
    QCOMPARE(m_host->evaluateIn(panel, QStringLiteral("Form.__name__")).toByteArray(), "Ui_" + topWidget);
}

void tst_uiTools::relativeFileIsLookedUpInThePluginsFolder()
{
    m_host->write(QStringLiteral("deep/panel.ui"), designerForm("QFrame"));
    m_host->write(QStringLiteral("deep/Panel.py"),
                  "import uiTools\n"
                  "Form, Base = uiTools.loadUiType('panel.ui')\n");
    m_host->scan();
    QCOMPARE(m_host->evaluateIn(QStringLiteral("Panel"), QStringLiteral("Base.__name__")).toString(),
             QStringLiteral("QFrame"));
}

void tst_uiTools::relativeFileIsFoundAfterTheFolderChanged()
{
    m_host->write(QStringLiteral("panel.ui"), designerForm("QWidget"));
    m_host->write(QStringLiteral("Panel.py"),
                  "from PythonQt import QtGui\n"
                  "import os, uiTools\n"
                  "Form, Base = uiTools.loadUiType('panel.ui')\n"
                  "os.chdir('/')\n"
                  "form, widget = Form(), QtGui.QWidget()\n"
                  "form.setupUi(widget)\n");
    m_host->scan();
    QCOMPARE(m_host->evaluateIn(QStringLiteral("Panel"), QStringLiteral("form.button.text")).toString(),
             QStringLiteral("Press"));
}

void tst_uiTools::badFilesGiveOneClearError_data()
{
    addBadDesignerFiles("PythonQt.QtGui");
}

void tst_uiTools::badFilesGiveOneClearError()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, error);
    const QString file = m_host->scripts() + QLatin1String("/panel.ui");
    if (!text.isEmpty())
        m_host->write(QStringLiteral("panel.ui"), text);
    m_host->write(QStringLiteral("Panel.py"), "import uiTools\nuiTools.loadUiType('panel.ui')\n");

    const Output output = outputOf([this] { m_host->scan(); });
    const QByteArray last = output.standardError.trimmed().split('\n').last();
    QCOMPARE(last, "python error: '" + error.replace("%1", file.toUtf8()) + "'");
}

void tst_uiTools::helpersForPySide2SayThatItIsMissing_data()
{
    QTest::addColumn<QByteArray>("call");

    QTest::newRow("form") << QByteArray("loadUiTypePySide('panel.ui')");
    QTest::newRow("panel") << QByteArray("getWidget(1)");
}

// In an installation without PySide2: the other helpers work, as the other tests show.
void tst_uiTools::helpersForPySide2SayThatItIsMissing()
{
    QFETCH(QByteArray, call);
    m_host->write(QStringLiteral("Panel.py"), "import uiTools\nuiTools." + call + '\n');
    m_host->write(QStringLiteral("Other.py"), "print 'runs'\n");
    const Output output = outputOf([this] { m_host->scan(); });
    QCOMPARE(output.standardError.trimmed().split('\n').last(),
             "python error: 'ImportError: uiTools." + call.left(call.indexOf('('))
                 + "() needs PySide2, which cannot be loaded: No module named PySide2'");
    QVERIFY(output.standardOutput.contains("python info: 'runs'\n"));
}

QTEST_MAIN(tst_uiTools)
#include "tst_uiTools.moc"
