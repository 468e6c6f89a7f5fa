#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QToolBar>
#include <QtTest>

#include "DesignerForm.h"
#include "OutputCapture.h"
#include "Patience.h"
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
    void formIsPlacedAsItsClassPlacesChildren_data();
    void formIsPlacedAsItsClassPlacesChildren();
    void partsOfAMainWindowBecomeTheWidgetsOwn();
    void mainWindowLiesInAWidgetOfAnotherClass();
    void objectMayHaveTheNameOfAMember_data();
    void objectMayHaveTheNameOfAMember();
    void memberThatAnObjectHidesIsStillThere();
    void functionThatAnObjectHidesIsStillOverridden();
    void relativeFileIsLookedUpInThePluginsFolder();
    void relativeFileIsFoundAfterTheFolderChanged();
    void badFilesGiveOneClearError_data();
    void badFilesGiveOneClearError();
    void helpersForPySide2SayThatItIsMissing_data();
    void helpersForPySide2SayThatItIsMissing();

private:
    Output loadPanel(const QByteArray &form, const QByteArray &text = {});
    QVariant value(const char *expression) const;
    template<class Widget>
    Widget *panel() const;

    PluginHost *m_host = nullptr;
};

namespace {

// A form whose parts have places of their own, as Designer writes it.
const QByteArray mainWindow("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\">\n"
                            "<class>Window</class><widget class=\"QMainWindow\" name=\"Window\">\n"
                            "<property name=\"windowTitle\"><string>A window</string></property>\n"
                            "<property name=\"dockNestingEnabled\"><bool>true</bool></property>\n"
                            "<widget class=\"QWidget\" name=\"centralWidget\"/>\n"
                            "<widget class=\"QMenuBar\" name=\"menubar\"><widget class=\"QMenu\" name=\"menuFile\">"
                            "<property name=\"title\"><string>File</string></property>"
                            "<addaction name=\"actionOpen\"/></widget><addaction name=\"menuFile\"/></widget>\n"
                            "<widget class=\"QToolBar\" name=\"toolBar\">"
                            "<attribute name=\"toolBarArea\"><enum>LeftToolBarArea</enum></attribute>"
                            "<addaction name=\"actionOpen\"/></widget>\n"
                            "<widget class=\"QDockWidget\" name=\"dock\">"
                            "<attribute name=\"dockWidgetArea\"><number>2</number></attribute>"
                            "<widget class=\"QWidget\" name=\"dockContents\"/></widget>\n"
                            "<widget class=\"QStatusBar\" name=\"statusbar\"/>\n"
                            "<action name=\"actionOpen\"><property name=\"text\"><string>Open</string></property>"
                            "</action>\n</widget>\n</ui>\n");

// A form with a page, which has a layout with a button.
QByteArray formWithPage(const QByteArray &topWidget)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\">\n <class>Form</class>\n"
           " <widget class=\""
        + topWidget
        + "\" name=\"Form\">\n  <widget class=\"QWidget\" name=\"page\"><layout class=\"QVBoxLayout\" name=\"column\">"
          "<item><widget class=\"QPushButton\" name=\"button\"/></item></layout></widget>\n </widget>\n</ui>\n";
}

} // namespace

void tst_uiTools::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path.insert(0, '" SOURCE_DIR "/Share/lib/python')"));
}

void tst_uiTools::init()
{
    m_host->clear();
}

// Loads a plugin that has a panel of the form, and that text.
Output tst_uiTools::loadPanel(const QByteArray &form, const QByteArray &text)
{
    m_host->write(QStringLiteral("panel.ui"), form);
    m_host->write(QStringLiteral("Panel.py"),
                  "from PythonQt import QtCore, QtGui\n"
                  "import uiTools\n"
                  "Form, Base = uiTools.loadUiType('panel.ui')\n"
                  "class Panel(Form, Base):\n"
                  "    def __init__(self, parent=None):\n"
                  "        Base.__init__(self, parent)\n"
                  "        self.setupUi(self)\n"
                      + text
                      + "panel = Panel()\n"
                        "TARNPluginWidget.layout().addWidget(panel)\n");
    return outputOf([this] { m_host->scan(); });
}

QVariant tst_uiTools::value(const char *expression) const
{
    return m_host->evaluateIn(QStringLiteral("Panel"), QLatin1String(expression));
}

template<class Widget>
Widget *tst_uiTools::panel() const
{
    QLayout *layout = m_host->dock(QStringLiteral("Panel"))->widget()->layout();
    return layout->count() == 0 ? nullptr : qobject_cast<Widget *>(layout->itemAt(0)->widget());
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

void tst_uiTools::formIsPlacedAsItsClassPlacesChildren_data()
{
    QTest::addColumn<QByteArray>("topWidget");
    for (const char *name : {"QMainWindow", "QDockWidget", "QStackedWidget", "QToolBox"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_uiTools::formIsPlacedAsItsClassPlacesChildren()
{
    QFETCH(QByteArray, topWidget);
    QCOMPARE(loadPanel(formWithPage(topWidget)).standardError, QByteArray());

    auto *widget = panel<QWidget>();
    QVERIFY(widget);
    QVERIFY(widget->inherits(topWidget));
    QCOMPARE(value("panel.button.parent() is panel.page"), QVariant(true));
    QDockWidget *dock = m_host->dock(QStringLiteral("Panel"));
    dock->show();
    dock->resize(700, 500);
    const auto *button = widget->findChild<QPushButton *>();
    QTRY_VERIFY(button->isVisible() && button->width() > 600);
}

void tst_uiTools::partsOfAMainWindowBecomeTheWidgetsOwn()
{
    QCOMPARE(loadPanel(mainWindow).standardError, QByteArray());

    auto *window = panel<QMainWindow>();
    QVERIFY(window);
    QCOMPARE(window->objectName(), QStringLiteral("Window"));
    QCOMPARE(window->windowTitle(), QStringLiteral("A window"));
    QVERIFY(window->isDockNestingEnabled());
    QCOMPARE(window->findChildren<QMainWindow *>().size(), 0);
    QCOMPARE(window->centralWidget()->objectName(), QStringLiteral("centralWidget"));
    QCOMPARE(window->menuBar()->actions().value(0)->text(), QStringLiteral("File"));
    QCOMPARE(window->statusBar()->objectName(), QStringLiteral("statusbar"));
    QCOMPARE(window->toolBarArea(window->findChild<QToolBar *>()), Qt::LeftToolBarArea);
    QCOMPARE(window->dockWidgetArea(window->findChild<QDockWidget *>()), Qt::RightDockWidgetArea);
    QCOMPARE(value("panel.actionOpen.text").toString(), QStringLiteral("Open"));
    QCOMPARE(value("[panel.menubar, panel.statusbar] == [panel.menuBar(), panel.statusBar()]"), QVariant(true));
}

void tst_uiTools::mainWindowLiesInAWidgetOfAnotherClass()
{
    m_host->write(QStringLiteral("panel.ui"), mainWindow);
    m_host->write(QStringLiteral("Panel.py"),
                  "from PythonQt.QtGui import QWidget\n"
                  "import uiTools\n"
                  "form, widget = uiTools.loadUiType('panel.ui')[0](), QWidget()\n"
                  "form.setupUi(widget)\n"
                  "TARNPluginWidget.layout().addWidget(widget)\n");
    QCOMPARE(outputOf([this] { m_host->scan(); }).standardError, QByteArray());

    auto *window = panel<QWidget>()->findChild<QMainWindow *>(QStringLiteral("Window"));
    QVERIFY(window && !window->isWindow());
    QCOMPARE(panel<QWidget>()->layout()->itemAt(0)->widget(), window);
    QCOMPARE(value("form.actionOpen.text").toString(), QStringLiteral("Open"));
}

void tst_uiTools::objectMayHaveTheNameOfAMember_data()
{
    addNamesOfMembers();
}

void tst_uiTools::objectMayHaveTheNameOfAMember()
{
    QFETCH(QByteArray, name);
    QCOMPARE(loadPanel(formWithButton(name)).standardError, QByteArray());

    QCOMPARE(value("type(panel." + name + ").__name__").toString(), QStringLiteral("QPushButton"));
    QCOMPARE(value("panel." + name + ".objectName").toByteArray(), name);
    QCOMPARE(value("panel.label.objectName").toByteArray(), QByteArray("label"));
    QCOMPARE(panel<QDialog>()->windowTitle(), QStringLiteral("A title"));
    QVERIFY(!panel<QDialog>()->isHidden());
}

void tst_uiTools::memberThatAnObjectHidesIsStillThere()
{
    const QByteArray items("<item><widget class=\"QLabel\" name=\"windowTitle\"/></item>"
                           "<item><widget class=\"QPushButton\" name=\"close\"/></item>"
                           "<item><widget class=\"QPushButton\" name=\"accept\"/></item>");
    QCOMPARE(loadPanel(designerForm("QDialog", items)).standardError, QByteArray());

    QCOMPARE(value("panel.property('windowTitle')").toString(), QStringLiteral("A title"));
    QCOMPARE(value("setattr(panel, 'windowTitle', 'Another')"), QVariant());
    QCOMPARE(panel<QDialog>()->windowTitle(), QStringLiteral("Another"));
    QCOMPARE(value("panel.windowTitle.objectName").toString(), QStringLiteral("windowTitle"));
    QCOMPARE(value("Base.close(panel)"), QVariant(true));
    QVERIFY(panel<QDialog>()->isHidden());

    const Output output = outputOf([this] { panel<QDialog>()->accept(); });
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(panel<QDialog>()->result(), int(QDialog::Accepted));
}

void tst_uiTools::functionThatAnObjectHidesIsStillOverridden()
{
    QCOMPARE(loadPanel(formWithButton("accept"), "    def accept(self):\n        self.label.setText('accepted')\n")
                 .standardError,
             QByteArray());
    panel<QDialog>()->accept();
    QCOMPARE(panel<QDialog>()->findChild<QLabel *>()->text(), QStringLiteral("accepted"));
    QCOMPARE(value("type(panel.accept).__name__").toString(), QStringLiteral("QPushButton"));
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
