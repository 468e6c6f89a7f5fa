#include "InterpreterLock.h"

#include "PluginHost.h"

#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QtTest>

#include <new>

#include "DesignerForm.h"
#include "OutputCapture.h"

/// The half of the Python module uiTools that is for plugins with PySide2.
class tst_uiToolsPySide2 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void formBecomesTheWidgetsOwn();
    void formFillsAnotherWidget();
    void formFillsEachOfManyPanels();
    void baseIsTheClassOfTheTopWidget_data();
    void baseIsTheClassOfTheTopWidget();
    void objectMayHaveTheNameOfAMember_data();
    void objectMayHaveTheNameOfAMember();
    void memberThatAnObjectHidesIsStillThere();
    void relativeFileIsFoundAfterTheFolderChanged();
    void badFilesGiveOneClearError_data();
    void badFilesGiveOneClearError();

    void getWidgetGivesTheSameObjectEachTime();
    void getWidgetGivesWhatPySide2Knows();
    void getWidgetDoesNotOwnTheWidget();
    void objectIsInvalidOnceTheWidgetIsDeleted_data();
    void objectIsInvalidOnceTheWidgetIsDeleted();
    void nextWidgetAtTheAddressGetsAnObjectOfItsOwn();

private:
    Output load(const QByteArray &text);
    QVariant value(const char *expression) const;

    PluginHost *m_host = nullptr;
};

namespace {

const QByteArray panel("from PySide2 import QtCore, QtWidgets\n"
                       "import os, shiboken2, uiTools\n"
                       "Form, Base = uiTools.loadUiType('panel.ui')\n"
                       "class Panel(Form, Base):\n"
                       "    def __init__(self, parent=None):\n"
                       "        Base.__init__(self, parent)\n"
                       "        self.setupUi(self)\n"
                       "    @QtCore.Slot()\n"
                       "    def on_button_clicked(self):\n"
                       "        self.label.setText('pressed')\n");

QString getWidget(const QWidget *widget)
{
    return QStringLiteral("uiTools.getWidget(%1)").arg(reinterpret_cast<quintptr>(widget));
}

bool evaluate(const QString &expression)
{
    return PluginHost::evaluate(expression).toBool();
}

} // namespace

void tst_uiToolsPySide2::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path[:0] = ['" PYSIDE2_DIR "', '" SOURCE_DIR "/Share/lib/python']\n"
                                   "import gc, uiTools, shiboken2\n"
                                   "from PySide2.QtWidgets import QLabel, QWidget\n"));
}

void tst_uiToolsPySide2::init()
{
    outputOf([this] { m_host->clear(); });
}

Output tst_uiToolsPySide2::load(const QByteArray &text)
{
    m_host->write(QStringLiteral("Panel.py"), text);
    return outputOf([this] { m_host->scan(); });
}

QVariant tst_uiToolsPySide2::value(const char *expression) const
{
    return m_host->evaluateIn(QStringLiteral("Panel"), QLatin1String(expression));
}

void tst_uiToolsPySide2::formBecomesTheWidgetsOwn()
{
    m_host->write(QStringLiteral("panel.ui"),
                  designerForm("QWidget", "<item><widget class=\"QLineEdit\" name=\"size\"/></item>"));
    const Output output = load(panel
                               + "panel = Panel()\n"
                                 "TARNPluginWidget.layout().addWidget(panel)\n");
    QCOMPARE(output.standardError, QByteArray());

    QWidget *panel = m_host->dock(QStringLiteral("Panel"))->widget()->layout()->itemAt(0)->widget();
    QCOMPARE(panel->objectName(), QStringLiteral("Form"));
    QCOMPARE(panel->windowTitle(), QStringLiteral("A title"));
    QCOMPARE(panel->layout()->objectName(), QStringLiteral("column"));
    QCOMPARE(panel->layout()->count(), 2);
    panel->findChild<QPushButton *>(QStringLiteral("button"))->click();
    QCOMPARE(panel->findChild<QLabel *>(QStringLiteral("label"))->text(), QStringLiteral("pressed"));
    QCOMPARE(value("panel.column is panel.layout() and panel.box.layout() is panel.inner"), QVariant(true));
    QCOMPARE(value("type(panel.size).__name__"), QVariant(QStringLiteral("QLineEdit")));
}

void tst_uiToolsPySide2::formFillsAnotherWidget()
{
    m_host->write(QStringLiteral("panel.ui"), designerForm("QWidget"));
    const Output output = load("import PySide2, uiTools\n"
                               "form = uiTools.loadUiType('panel.ui')[0]()\n"
                               "form.setupUi(TARNPluginWidget)\n"
                               "form.button.clicked.connect(lambda: form.label.setText('pressed'))\n");
    // The panel has a layout already, as Qt says.
    QVERIFY(!output.standardError.contains("python error"));
    QWidget *container = m_host->dock(QStringLiteral("Panel"))->widget();
    container->findChild<QPushButton *>(QStringLiteral("button"))->click();
    QCOMPARE(container->findChild<QLabel *>(QStringLiteral("label"))->text(), QStringLiteral("pressed"));
}

void tst_uiToolsPySide2::formFillsEachOfManyPanels()
{
    m_host->write(QStringLiteral("panel.ui"), designerForm("QFrame"));
    const Output output = load(panel
                               + "for i in range(100):\n"
                                 "    panel = Panel()\n"
                                 "panels = [Panel() for i in range(20)]\n"
                                 "children = [Panel(TARNPluginWidget) for i in range(20)]\n"
                                 "for panel in panels + children:\n"
                                 "    panel.on_button_clicked()\n"
                                 "owned = [shiboken2.ownedByPython(panel) for panel in (panels[0], children[0])]\n"
                                 "count = len(TARNPluginWidget.children())\n"
                                 "del children, panel\n"
                                 "import gc\n"
                                 "gc.collect()\n"
                                 "after = len(TARNPluginWidget.children())\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(value("owned == [True, False]"), QVariant(true));
    QCOMPARE(value("(count, after) == (21, 21)"), QVariant(true)); // with the layout
}

void tst_uiToolsPySide2::baseIsTheClassOfTheTopWidget_data()
{
    QTest::addColumn<QByteArray>("topWidget");
    for (const char *name : {"QWidget", "QDialog", "QGroupBox", "QFrame", "QWizardPage"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_uiToolsPySide2::baseIsTheClassOfTheTopWidget()
{
    QFETCH(QByteArray, topWidget);
    m_host->write(QStringLiteral("panel.ui"), designerForm(topWidget));
    QCOMPARE(load(panel + "panel = Panel()\nTARNPluginWidget.layout().addWidget(panel)\n").standardError, QByteArray());

    QCOMPARE(value("Base is getattr(QtWidgets, Base.__name__)"), QVariant(true));
    QCOMPARE(value("Base.__name__").toByteArray(), topWidget);
    QCOMPARE(value("Form.__name__").toByteArray(), "Ui_" + topWidget);
    QVERIFY(!m_host->dock(QStringLiteral("Panel"))->widget()->layout()->isEmpty());
}

void tst_uiToolsPySide2::objectMayHaveTheNameOfAMember_data()
{
    addNamesOfMembers();
}

void tst_uiToolsPySide2::objectMayHaveTheNameOfAMember()
{
    QFETCH(QByteArray, name);
    m_host->write(QStringLiteral("panel.ui"), formWithButton(name));
    const Output output = load(panel + "panel = Panel()\nTARNPluginWidget.layout().addWidget(panel)\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(value("type(panel." + name + ").__name__").toString(), QStringLiteral("QPushButton"));
    QCOMPARE(value("panel." + name + ".objectName()").toByteArray(), name);
}

void tst_uiToolsPySide2::memberThatAnObjectHidesIsStillThere()
{
    m_host->write(QStringLiteral("panel.ui"), formWithButton("accept"));
    load(panel + "panel = Panel()\nTARNPluginWidget.layout().addWidget(panel)\n");
    auto *dialog = m_host->dock(QStringLiteral("Panel"))->widget()->findChild<QDialog *>();
    QCOMPARE(outputOf([dialog] { dialog->accept(); }).standardError, QByteArray());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(value("Base.accept(panel)"), QVariant());
}

void tst_uiToolsPySide2::relativeFileIsFoundAfterTheFolderChanged()
{
    m_host->write(QStringLiteral("deep/panel.ui"), designerForm("QWidget"));
    m_host->write(QStringLiteral("deep/Panel.py"), panel + "os.chdir('/')\npanel = Panel()\n");
    QCOMPARE(outputOf([this] { m_host->scan(); }).standardError, QByteArray());
    QCOMPARE(value("panel.button.text()"), QVariant(QStringLiteral("Press")));
}

void tst_uiToolsPySide2::badFilesGiveOneClearError_data()
{
    addBadDesignerFiles("PySide2.QtWidgets");
    QTest::newRow("other version") << designerForm("QWidget").replace("4.0", "3.0") << QByteArray("ValueError: %1: ");
}

void tst_uiToolsPySide2::badFilesGiveOneClearError()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, error);
    const QString file = m_host->scripts() + QLatin1String("/panel.ui");
    if (!text.isEmpty())
        m_host->write(QStringLiteral("panel.ui"), text);
    const Output output = load(panel + "Panel()\n");
    const QByteArray last = output.standardError.trimmed().split('\n').last();
    QVERIFY2(last.startsWith("python error: '" + error.replace("%1", file.toUtf8())), output.standardError);
}

void tst_uiToolsPySide2::getWidgetGivesTheSameObjectEachTime()
{
    QWidget widget;
    PluginHost::run(QStringLiteral("first = ") + getWidget(&widget));
    QVERIFY(evaluate(QStringLiteral("first is ") + getWidget(&widget)));
    QVERIFY(evaluate(QStringLiteral("first is QLabel(first).parentWidget()")));
    QVERIFY(evaluate(QStringLiteral("type(first) is QWidget")));
    widget.setObjectName(QStringLiteral("named"));
    QCOMPARE(PluginHost::evaluate(QStringLiteral("first.objectName()")).toString(), QStringLiteral("named"));
}

// PySide2 came to know the widget in another way, as the parent of a child.
void tst_uiToolsPySide2::getWidgetGivesWhatPySide2Knows()
{
    auto *widget = new QWidget;
    auto *child = new QWidget(widget);
    PluginHost::run(QStringLiteral("parent = ") + getWidget(child) + QStringLiteral(".parentWidget()"));
    QVERIFY(evaluate(QStringLiteral("parent is ") + getWidget(widget)));
    QVERIFY(evaluate(QStringLiteral("parent.isVisible() == False")));
    delete widget;
    QVERIFY(!evaluate(QStringLiteral("shiboken2.isValid(parent)")));
}

void tst_uiToolsPySide2::getWidgetDoesNotOwnTheWidget()
{
    const QPointer<QWidget> widget = new QWidget;
    PluginHost::run(QStringLiteral("first = ") + getWidget(widget));
    QVERIFY(!evaluate(QStringLiteral("shiboken2.ownedByPython(first)")));
    PluginHost::run(QStringLiteral("del first\ngc.collect()\n"));
    QVERIFY(widget);
    delete widget;
}

void tst_uiToolsPySide2::objectIsInvalidOnceTheWidgetIsDeleted_data()
{
    QTest::addColumn<bool>("isSilent");

    QTest::newRow("plain") << false;
    QTest::newRow("with signals blocked") << true;
}

void tst_uiToolsPySide2::objectIsInvalidOnceTheWidgetIsDeleted()
{
    QFETCH(bool, isSilent);
    auto *widget = new QWidget;
    PluginHost::run(QStringLiteral("first = ") + getWidget(widget));
    QVERIFY(evaluate(QStringLiteral("shiboken2.isValid(first)")));
    widget->blockSignals(isSilent);
    delete widget;

    QVERIFY(!evaluate(QStringLiteral("shiboken2.isValid(first)")));
    const Output output = outputOf([] { PluginHost::run(QStringLiteral("first.size()")); });
    QCOMPARE(
        output.standardError.trimmed().split('\n').last(),
        QByteArray("python error: 'RuntimeError: Internal C++ object (PySide2.QtWidgets.QWidget) already deleted.'"));
}

void tst_uiToolsPySide2::nextWidgetAtTheAddressGetsAnObjectOfItsOwn()
{
    alignas(QLabel) char place[sizeof(QLabel)];
    auto *widget = new (place) QWidget;
    PluginHost::run(QStringLiteral("first = ") + getWidget(widget) + QStringLiteral("\nfirst.note = 'mine'\n"));
    widget->~QWidget();

    auto *label = new (place) QLabel(QStringLiteral("label"));
    PluginHost::run(QStringLiteral("second = ") + getWidget(label));
    QVERIFY(evaluate(QStringLiteral("second is not first and not hasattr(second, 'note')")));
    QVERIFY(evaluate(QStringLiteral("shiboken2.isValid(second) and not shiboken2.isValid(first)")));
    label->~QLabel();
    QVERIFY(!evaluate(QStringLiteral("shiboken2.isValid(second)")));
}

QTEST_MAIN(tst_uiToolsPySide2)
#include "tst_uiToolsPySide2.moc"
