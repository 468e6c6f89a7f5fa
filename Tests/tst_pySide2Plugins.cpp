#include "InterpreterLock.h"

#include "PluginHost.h"

#include <QAction>
#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

#include <cstdlib>
#include <new>
#include <utility>

#include "OutputCapture.h"
#include "Patience.h"
#include "PrivateData.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"

// What goes wrong when a container lies where an older one lay goes wrong now and then: it depends
// on what the memory was given to meanwhile. Here it is kept for the next container.
namespace {

struct Recycling
{
    void *container = nullptr; ///< to be kept when it is deleted
    void *kept = nullptr;
    bool isDue = false; ///< the next widget gets it
};
thread_local Recycling recycling;

} // namespace

void *operator new(std::size_t size)
{
    if (size == sizeof(QWidget) && std::exchange(recycling.isDue, false) && recycling.kept)
        return std::exchange(recycling.kept, nullptr);
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

// The standard library's calls the one above; a sanitizer's does not.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return std::malloc(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    if (memory && memory == recycling.container && !recycling.kept)
        recycling.kept = memory;
    else
        std::free(memory);
}

/// Plugins that use the real PySide2, alone and beside plugins that use PythonQt.
class tst_pySide2Plugins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void clickRunsTheSlot();
    void messageServiceIsThere();
    void panelIsOneObject();
    void errorInASlotIsPrinted();
    void errorInAVirtualFunctionIsPrinted();
    void exitInASlotDoesNotEndTheProcess();
    void exitInTheTextDoesNotEndTheProcess();

    void applicationIsThereAlready();

    void suffixIdIsATrap();
    void doubledSuffixIsATrap();
    void missingImportOfUiToolsIsATrap();
    void mixedBindingsAreRefused();

    void reloadThreeHundredTimes_data();
    void reloadThreeHundredTimes();
    void reloadOfBothBindingsInTurns();
    void reloadFromASlotOfThePlugin();
    void reloadWhileADialogIsOpen();
    void removedPluginLeavesNothingThatRuns();
    void containerDeletedUnderALivingReference();
    void containerDeletedByThePlugin_data();
    void containerDeletedByThePlugin();
    void closedWindowInvalidatesThePanel();
    void threadEndsWithThePlugin();

    void pythonQtHandlerInADialogOfPySide2();
    void pySide2SlotInADialogOfPythonQt();
    void objectsOfTheOtherBindingAreRefused();
    void pythonQtKnowsNoClassOfPySide2();
    void shortTypeNamesAreLeftToTheHost();
    void customWidgetOfPySide2InAFormOfPythonQt();

private:
    Output load(const QByteArray &text, const char *key = "Plugin");
    QWidget *container(const char *key = "Plugin") const;
    void click(const char *text, const char *key = "Plugin");
    QVariant value(const char *expression, const char *key = "Plugin") const;

    PluginHost *m_host = nullptr;
};

namespace {

enum State { Idle };

const QByteArray loaded("PythonQt: no PySide2: yes\nLoaded 'Plugin' python plugin.\n");

QByteArray info(const QByteArray &line)
{
    return "python info: '" + line + "'\n";
}

QByteArray lastError(const Output &output)
{
    return output.standardError.trimmed().split('\n').last();
}

/// A plugin with a button that says what it does.
QByteArray buttonPlugin(const QByteArray &text)
{
    return "from PySide2.QtWidgets import QPushButton\n"
           "import uiTools\n"
           "def press():\n    print '"
        + text
        + " is pressed'\n"
          "button = QPushButton('"
        + text
        + "')\n"
          "button.clicked.connect(press)\n"
          "TARNPluginWidget.layout().addWidget(button)\n";
}

QPushButton *button(const QWidget *parent, const char *text)
{
    const auto buttons = parent->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text() == QLatin1String(text))
            return button;
    }
    return nullptr;
}

// Runs the action once a modal dialog is open.
template<class Action>
void whenADialogIsOpen(QObject *context, const Action &action)
{
    auto *timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [timer, action] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        action(dialog);
    });
    timer->start(1);
}

} // namespace

void tst_pySide2Plugins::initTestCase()
{
    qRegisterMetaType<State>("State"); // as another library of the process may do
    qRegisterMetaType<oxMessageService::Severity>("oxMessageService::Severity");
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path[:0] = ['" PYSIDE2_DIR "', '" SOURCE_DIR "/Share/lib/python']\n"
                                   "kept = []\n"));
}

void tst_pySide2Plugins::cleanup()
{
    outputOf([this] { m_host->clear(); });
    PluginHost::run(QStringLiteral("import gc\n"
                                   "kept = []\n"
                                   "gc.collect()\n"));
    QVERIFY(InterpreterLock::isFree());
}

Output tst_pySide2Plugins::load(const QByteArray &text, const char *key)
{
    const QString path = m_host->write(QLatin1String(key) + QLatin1String(".py"), text);
    return outputOf([this, &path] { m_host->load(path); });
}

QWidget *tst_pySide2Plugins::container(const char *key) const
{
    return privateData(oxKernelInterface::the())->plugins.value(QLatin1String(key), {0, nullptr, nullptr}).widget;
}

void tst_pySide2Plugins::click(const char *text, const char *key)
{
    button(container(key), text)->click();
}

QVariant tst_pySide2Plugins::value(const char *expression, const char *key) const
{
    return m_host->evaluateIn(QLatin1String(key), QLatin1String(expression));
}

void tst_pySide2Plugins::clickRunsTheSlot()
{
    const Output output = load(buttonPlugin("Start"));
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(output.standardOutput, loaded);

    m_host->window.show();
    m_host->entry(QStringLiteral("Plugin"))->trigger();
    QPushButton *start = button(container(), "Start");
    QVERIFY(start);
    QTRY_VERIFY(start->isVisible());
    const Output clicked = outputOf([start] { QTest::mouseClick(start, Qt::LeftButton); });
    QCOMPARE(clicked.standardOutput, info("Start is pressed"));
    QCOMPARE(clicked.standardError, QByteArray());
    m_host->window.hide();
}

void tst_pySide2Plugins::messageServiceIsThere()
{
    const QSignalSpy messages(oxKernelServiceFactory::the()->getService<oxMessageService>(),
                              &oxMessageService::messageReceived);
    const Output output = load("import PySide2\n"
                               "oxMessageService.warning('from PySide2')\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().value(1).toString(), QStringLiteral("from PySide2"));
}

void tst_pySide2Plugins::panelIsOneObject()
{
    load("import PySide2.QtWidgets, uiTools\n"
         "label = PySide2.QtWidgets.QLabel('label', TARNPluginWidget)\n"
         "found = (TARNPluginWidget is TARNPluginWidget, label.parentWidget() is TARNPluginWidget,\n"
         "         TARNPluginWidget.layout().parentWidget() is TARNPluginWidget)\n"
         "kind = type(TARNPluginWidget).__name__\n");
    QCOMPARE(value("found == (True, True, True)"), QVariant(true));
    QCOMPARE(value("kind"), QVariant(QStringLiteral("QWidget")));
}

void tst_pySide2Plugins::errorInASlotIsPrinted()
{
    load("from PySide2.QtWidgets import QPushButton\n"
         "import uiTools\n"
         "button = QPushButton('Fail', TARNPluginWidget)\n"
         "button.clicked.connect(lambda: {}['nothing'])\n");
    const Output output = outputOf([this] { click("Fail"); });
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(lastError(output), QByteArray("python error: 'KeyError: 'nothing''"));
}

void tst_pySide2Plugins::errorInAVirtualFunctionIsPrinted()
{
    load("from PySide2.QtWidgets import QWidget\n"
         "import uiTools\n"
         "class Painter(QWidget):\n"
         "    def paintEvent(self, event):\n"
         "        raise ValueError('no brush')\n"
         "painter = Painter(TARNPluginWidget)\n"
         "painter.setObjectName('painter')\n");
    const Output output = outputOf([this] { container()->findChild<QWidget *>(QStringLiteral("painter"))->grab(); });
    QCOMPARE(lastError(output), QByteArray("python error: 'ValueError: no brush'"));
}

// PySide2 prints what a slot raises, and Python's own printing ends the process for this one.
void tst_pySide2Plugins::exitInASlotDoesNotEndTheProcess()
{
    load("from PySide2.QtWidgets import QPushButton\n"
         "import sys, uiTools\n"
         "button = QPushButton('Exit', TARNPluginWidget)\n"
         "button.clicked.connect(lambda: sys.exit(3))\n");
    const Output output = outputOf([this] { click("Exit"); });
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(lastError(output), QByteArray("python error: 'SystemExit: 3'"));
}

void tst_pySide2Plugins::exitInTheTextDoesNotEndTheProcess()
{
    const Output output = load("import PySide2, sys\n"
                               "sys.exit(3)\n"
                               "print 'not reached'\n");
    QCOMPARE(output.standardOutput, loaded);
    QCOMPARE(output.standardError, QByteArray());
}

// What a program that is not quite a plugin yet does first.
void tst_pySide2Plugins::applicationIsThereAlready()
{
    const Output output = load("import sys\n"
                               "from PySide2.QtWidgets import QApplication\n"
                               "print type(QApplication.instance()).__name__\n"
                               "application = QApplication(sys.argv)\n");
    QVERIFY(output.standardOutput.contains(info("QApplication")));
    QVERIFY2(lastError(output).startsWith("python error: 'RuntimeError: Please destroy the "), output.standardError);
    QVERIFY(qobject_cast<QApplication *>(qApp));
}

void tst_pySide2Plugins::suffixIdIsATrap()
{
    const Output output = load("import PySide2, uiTools\n"
                               "print 'not reached'\n"
                               "address = TARNPluginWidgetId\n");
    QCOMPARE(output.standardOutput, loaded);
    QCOMPARE(output.standardError,
             QByteArray("python error: '  File \"<string>\", line 3'\n"
                        "python error: '    address = uiTools.getWidget(TARNPluginWidgetId)Id'\n"
                        "python error: '                                                    ^'\n"
                        "python error: 'SyntaxError: invalid syntax'\n"));
}

void tst_pySide2Plugins::doubledSuffixIsATrap()
{
    const Output output = load("import PySide2, uiTools\n"
                               "print 'reached'\n"
                               "Form, Base = uiTools.loadUiTypePySide('panel.ui')\n");
    QCOMPARE(output.standardOutput,
             "PythonQt: no PySide2: yes\n" + info("reached") + "Loaded 'Plugin' python plugin.\n");
    QCOMPARE(lastError(output),
             QByteArray("python error: 'AttributeError: 'module' object has no attribute "
                        "'loadUiTypePySidePySide''"));
}

void tst_pySide2Plugins::missingImportOfUiToolsIsATrap()
{
    const Output output = load("import PySide2\n"
                               "TARNPluginWidget.layout()\n");
    QCOMPARE(output.standardOutput, loaded);
    QCOMPARE(lastError(output), QByteArray("python error: 'NameError: name 'uiTools' is not defined'"));
}

void tst_pySide2Plugins::mixedBindingsAreRefused()
{
    const Output output = load("import PySide2\n"
                               "import PythonQt\n"
                               "print 'not reached'\n");
    QCOMPARE(output.standardOutput, QByteArray("PythonQt: yes PySide2: yes\n"));
    QCOMPARE(output.standardError,
             "Couldn't load plugin '" + m_host->scripts().toUtf8()
                 + "/Plugin.py', it seems to use PythonQt annd PySide2!\n");
    QVERIFY(container() && container()->layout()->isEmpty());

    QCOMPARE(load(buttonPlugin("Start")).standardError, QByteArray());
    QVERIFY(button(container(), "Start"));
}

void tst_pySide2Plugins::reloadThreeHundredTimes_data()
{
    QTest::addColumn<QByteArray>("keep");

    QTest::newRow("nothing survives") << QByteArray();
    QTest::newRow("panels survive") << QByteArray("__main__.kept.append(TARNPluginWidget)\n");
    QTest::newRow("all survives") << QByteArray("__main__.kept += [TARNPluginWidget, layout, button, line, panel]\n");
}

// A container lies where an older one lay. What Python keeps of that one must not be taken for it.
void tst_pySide2Plugins::reloadThreeHundredTimes()
{
    QFETCH(QByteArray, keep);
    const QString path = m_host->write(QStringLiteral("Plugin.py"),
                                       "import __main__\n"
                                       "from PySide2.QtCore import QTimer, Signal\n"
                                       "from PySide2.QtWidgets import QLineEdit, QPushButton, QVBoxLayout, QWidget\n"
                                       "import uiTools\n"
                                       "class Panel(QWidget):\n"
                                       "    pressed = Signal(str)\n"
                                       "    def __init__(self, parent):\n"
                                       "        QWidget.__init__(self, parent)\n"
                                       "        self.timer = QTimer(self)\n"
                                       "        self.timer.timeout.connect(self.update)\n"
                                       "        self.timer.start(1)\n"
                                       "    def sizeHint(self):\n"
                                       "        return QWidget.sizeHint(self)\n"
                                       "panel = Panel(TARNPluginWidget)\n"
                                       "layout = QVBoxLayout(panel)\n"
                                       "button = QPushButton('Press')\n"
                                       "line = QLineEdit('text')\n"
                                       "layout.addWidget(button)\n"
                                       "layout.addWidget(line)\n"
                                       "button.clicked.connect(lambda: panel.pressed.emit(line.text()))\n"
                                       "panel.pressed.connect(line.setText)\n"
                                       "TARNPluginWidget.layout().addWidget(panel)\n"
                                           + keep);
    QSet<const QWidget *> addresses;
    int reused = 0;
    QByteArray errors;
    for (int i = 0; i < 300; ++i) {
        recycling.container = container();
        recycling.isDue = true;
        errors += outputOf([this, &path] { m_host->load(path); }).standardError;
        QVERIFY2(errors.isEmpty(), errors);
        reused += addresses.contains(container()) ? 1 : 0;
        addresses.insert(container());
        QVERIFY(button(container(), "Press"));
        errors += outputOf([this] {
                      click("Press");
                      QCoreApplication::processEvents();
                  }).standardError;
        QVERIFY2(errors.isEmpty(), errors);
    }
    QCOMPARE(reused, 298); // all but the first two
    QCOMPARE(m_host->window.findChildren<QDockWidget *>().size(), 1);
    QCOMPARE(m_host->window.findChildren<QPushButton *>().size(), 1);
    if (!keep.isEmpty()) {
        const int perReload = PluginHost::evaluate(QStringLiteral("len(kept)")).toInt() / 300;
        PluginHost::run(QStringLiteral("import shiboken2\n"
                                       "valid = [shiboken2.isValid(old) for old in kept]\n"));
        QCOMPARE(PluginHost::evaluate(QStringLiteral("sum(valid)")).toInt(), perReload);
        QCOMPARE(PluginHost::evaluate(QStringLiteral("sum(valid[-%1:])").arg(perReload)).toInt(), perReload);
    }
}

void tst_pySide2Plugins::reloadOfBothBindingsInTurns()
{
    for (int i = 0; i < 30; ++i) {
        const bool isPySide2 = i % 2;
        QByteArray text = buttonPlugin("Turn");
        if (!isPySide2)
            text.replace("PySide2.QtWidgets", "PythonQt.QtGui");
        QCOMPARE(load(text).standardError, QByteArray());
        const Output output = outputOf([this] { click("Turn"); });
        QCOMPARE(output.standardOutput, info("Turn is pressed"));
        QCOMPARE(output.standardError, QByteArray());
    }
}

// The button, its slot and its module go while the click is on its way.
void tst_pySide2Plugins::reloadFromASlotOfThePlugin()
{
    const QMetaObject::Connection scanning =
        connect(oxKernelServiceFactory::the()->getService<oxMessageService>(), &oxMessageService::messageReceived, this,
                [this] { m_host->scan(); });
    m_host->write(QStringLiteral("Plugin.py"),
                  "from PySide2.QtCore import Qt\n"
                  "from PySide2.QtWidgets import QPushButton\n"
                  "import uiTools\n"
                  "button = QPushButton('Reload')\n"
                  "button.clicked.connect(lambda: oxMessageService.information('reload'), Qt.QueuedConnection)\n"
                  "TARNPluginWidget.layout().addWidget(button)\n");
    outputOf([this] { m_host->scan(); });
    for (int i = 0; i < 20; ++i) {
        const QPointer<QWidget> before = container();
        const Output output = outputOf([this, &before] {
            click("Reload");
            while (before)
                QCoreApplication::processEvents();
        });
        QCOMPARE(output.standardError, QByteArray());
        QCOMPARE(output.standardOutput, loaded);
    }
    disconnect(scanning);
}

void tst_pySide2Plugins::reloadWhileADialogIsOpen()
{
    const QByteArray text("from PySide2.QtWidgets import QDialog, QPushButton\n"
                          "import uiTools\n"
                          "def ask():\n"
                          "    answer = dialog.exec_()\n"
                          "    print 'answer', answer\n"
                          "dialog = QDialog(TARNPluginWidget)\n"
                          "button = QPushButton('Ask')\n"
                          "button.clicked.connect(ask)\n"
                          "TARNPluginWidget.layout().addWidget(button)\n");
    QCOMPARE(load(text).standardError, QByteArray());
    for (int i = 0; i < 10; ++i) {
        whenADialogIsOpen(this, [this](QDialog *) { m_host->scan(); });
        const Output output = outputOf([this] { click("Ask"); });
        QCOMPARE(output.standardOutput, loaded + info("answer 0"));
        QCOMPARE(output.standardError, QByteArray());
        QVERIFY(button(container(), "Ask"));
    }
}

void tst_pySide2Plugins::removedPluginLeavesNothingThatRuns()
{
    const QString path = m_host->write(QStringLiteral("Plugin.py"),
                                       "import __main__\n"
                                       "from PySide2.QtCore import QTimer\n"
                                       "import uiTools\n"
                                       "timer = QTimer(TARNPluginWidget)\n"
                                       "timer.timeout.connect(lambda: __main__.kept.append('tick'))\n"
                                       "timer.start(1)\n");
    outputOf([this] { m_host->scan(); });
    QTRY_VERIFY(PluginHost::evaluate(QStringLiteral("len(kept)")).toInt() > 0);

    QVERIFY(QFile::remove(path));
    m_host->scan();
    QVERIFY(!m_host->dock(QStringLiteral("Plugin")));
    PluginHost::run(QStringLiteral("kept = []"));
    QTimer after;
    const QSignalSpy spy(&after, &QTimer::timeout);
    after.start(1);
    QTRY_VERIFY(spy.size() > 20);
    QCOMPARE(PluginHost::evaluate(QStringLiteral("len(kept)")).toInt(), 0);
}

void tst_pySide2Plugins::containerDeletedUnderALivingReference()
{
    load("from PySide2.QtWidgets import QLabel\n"
         "import uiTools\n"
         "panel = TARNPluginWidget\n"
         "layout = panel.layout()\n"
         "label = QLabel('label')\n"
         "layout.addWidget(label)\n"
         "def size():\n"
         "    return panel.size()\n"
         "import shiboken2\n");
    QCOMPARE(value("[shiboken2.isValid(o) for o in (panel, layout, label)] == [True] * 3"), QVariant(true));
    delete container();

    QCOMPARE(value("[shiboken2.isValid(o) for o in (panel, layout, label)] == [False] * 3"), QVariant(true));
    const Output output = outputOf([this] { value("size()"); });
    QCOMPARE(lastError(output),
             QByteArray("python error: 'RuntimeError: Internal C++ object (PySide2.QtWidgets.QWidget) "
                        "already deleted.'"));
    QCOMPARE(load(buttonPlugin("Start")).standardError, QByteArray());
    QVERIFY(button(container(), "Start"));
}

void tst_pySide2Plugins::containerDeletedByThePlugin_data()
{
    QTest::addColumn<QByteArray>("statement");

    QTest::newRow("at once") << QByteArray("shiboken2.delete(panel)");
    QTest::newRow("later") << QByteArray("panel.deleteLater()");
    QTest::newRow("with its dock") << QByteArray("shiboken2.delete(panel.parentWidget())");
}

void tst_pySide2Plugins::containerDeletedByThePlugin()
{
    QFETCH(QByteArray, statement);
    for (int i = 0; i < 5; ++i) {
        outputOf([this] { m_host->clear(); }); // a deleted dock does not come back by a reload
        const Output output = load("import PySide2.QtWidgets, shiboken2, uiTools\n"
                                   "panel = TARNPluginWidget\n"
                                   "label = PySide2.QtWidgets.QLabel('label', panel)\n"
                                   + statement + '\n');
        QCOMPARE(output.standardError, QByteArray());
        QTRY_VERIFY(!container());
        QCOMPARE(value("shiboken2.isValid(panel) or shiboken2.isValid(label)"), QVariant(false));
    }
    QCOMPARE(load(buttonPlugin("Start")).standardError, QByteArray());
    QVERIFY(button(container(), "Start"));
}

void tst_pySide2Plugins::closedWindowInvalidatesThePanel()
{
    load("import PySide2, shiboken2, uiTools\n"
         "panel = TARNPluginWidget\n");
    delete m_host->dock(QStringLiteral("Plugin"));
    QCOMPARE(value("shiboken2.isValid(panel)"), QVariant(false));
}

void tst_pySide2Plugins::threadEndsWithThePlugin()
{
    const QByteArray text("from PySide2.QtCore import QThread, Signal\n"
                          "from PySide2.QtWidgets import QLabel\n"
                          "import uiTools\n"
                          "class Worker(QThread):\n"
                          "    counted = Signal(int)\n"
                          "    def run(self):\n"
                          "        count = 0\n"
                          "        while not self.isInterruptionRequested():\n"
                          "            count += 1\n"
                          "            self.counted.emit(count)\n"
                          "            self.msleep(1)\n"
                          "label = QLabel('0', TARNPluginWidget)\n"
                          "worker = Worker()\n"
                          "worker.counted.connect(label.setNum)\n"
                          "def end():\n"
                          "    worker.requestInterruption()\n"
                          "    worker.wait()\n"
                          "TARNPluginWidget.destroyed.connect(end)\n"
                          "worker.start()\n");
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(load(text).standardError, QByteArray());
        QTRY_VERIFY(container()->findChild<QLabel *>()->text() != QLatin1String("0"));
    }
    QCOMPARE(outputOf([this] { m_host->clear(); }).standardError, QByteArray());
}

// The dialog's loop runs without the interpreter lock; the handler of the other binding takes it.
void tst_pySide2Plugins::pythonQtHandlerInADialogOfPySide2()
{
    load("from PySide2.QtWidgets import QDialog, QPushButton\n"
         "import uiTools\n"
         "dialog = QDialog(TARNPluginWidget)\n"
         "def ask():\n"
         "    answer = dialog.exec_()\n"
         "    print 'answer', answer\n"
         "button = QPushButton('Ask')\n"
         "button.clicked.connect(ask)\n"
         "TARNPluginWidget.layout().addWidget(button)\n");
    load("from PythonQt.QtCore import QTimer\n"
         "from PythonQt.QtGui import QPushButton\n"
         "ticks = []\n"
         "def tick():\n"
         "    ticks.append('tick')\n"
         "timer = QTimer()\n"
         "timer.connect('timeout()', tick)\n"
         "timer.start(1)\n"
         "button = QPushButton('Other', TARNPluginWidget)\n"
         "def press():\n"
         "    print 'other is pressed'\n"
         "button.connect('clicked()', press)\n",
         "Other");

    bool isLockFree = false;
    whenADialogIsOpen(this, [this, &isLockFree](QDialog *dialog) {
        isLockFree = InterpreterLock::isFree();
        PluginHost::run(QStringLiteral("1 + 1"));
        const int ticks = value("len(ticks)", "Other").toInt();
        QTRY_VERIFY(value("len(ticks)", "Other").toInt() > ticks + 3);
        click("Other", "Other");
        dialog->accept();
    });
    const Output output = outputOf([this] { click("Ask"); });
    QCOMPARE(output.standardOutput, info("other is pressed") + info("answer 1"));
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(isLockFree);
}

void tst_pySide2Plugins::pySide2SlotInADialogOfPythonQt()
{
    load("from PythonQt.QtGui import QDialog, QPushButton\n"
         "dialog = QDialog(TARNPluginWidget)\n"
         "button = QPushButton('Ask', TARNPluginWidget)\n"
         "def ask():\n"
         "    answer = dialog.exec_()\n"
         "    print 'answer', answer\n"
         "button.connect('clicked()', ask)\n",
         "Other");
    load(buttonPlugin("Start"));
    whenADialogIsOpen(this, [this](QDialog *dialog) {
        click("Start");
        dialog->accept();
    });
    const Output output = outputOf([this] { click("Ask", "Other"); });
    QCOMPARE(output.standardOutput, info("Start is pressed") + info("answer 1"));
    QCOMPARE(output.standardError, QByteArray());
}

// Plugins can share objects in a module of their own.
void tst_pySide2Plugins::objectsOfTheOtherBindingAreRefused()
{
    load("import __main__\n"
         "from PythonQt.QtGui import QLabel\n"
         "__main__.fromPythonQt = QLabel('label', TARNPluginWidget)\n"
         "__main__.pythonQtLayout = TARNPluginWidget.layout()\n",
         "Other");
    const Output output = load("import __main__\n"
                               "from PySide2.QtWidgets import QLabel\n"
                               "import uiTools\n"
                               "def attempt(call, *arguments):\n"
                               "    try:\n"
                               "        call(*arguments)\n"
                               "    except (TypeError, ValueError) as error:\n"
                               "        print type(error).__name__\n"
                               "attempt(TARNPluginWidget.layout().addWidget, __main__.fromPythonQt)\n"
                               "attempt(__main__.pythonQtLayout.addWidget, QLabel('label'))\n"
                               "attempt(QLabel, __main__.fromPythonQt)\n");
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(output.standardOutput.count("Error'\n"), 3);
    QVERIFY(container()->layout()->isEmpty());
    PluginHost::run(QStringLiteral("del fromPythonQt, pythonQtLayout"));
}

// The class ends with its plugin, and the next load makes another one of its name.
void tst_pySide2Plugins::pythonQtKnowsNoClassOfPySide2()
{
    const QByteArray text("from PySide2.QtCore import Signal, Slot\n"
                          "from PySide2.QtWidgets import QFrame\n"
                          "import uiTools\n"
                          "class Gadget(QFrame):\n"
                          "    %1 = Signal(int)\n"
                          "    @Slot()\n"
                          "    def %2(self): pass\n"
                          "gadget = Gadget(TARNPluginWidget)\n"
                          "gadget.setObjectName('gadget')\n");
    for (int i = 0; i < 20; ++i) {
        QByteArray changed = text;
        changed.replace("%1", i % 2 ? "changed" : "moved").replace("%2", i % 2 ? "rest" : "turn");
        QCOMPARE(load(changed).standardError, QByteArray());
        QCOMPARE(container()->findChild<QFrame *>(QStringLiteral("gadget"))->metaObject()->className(), "Gadget");

        const Output output = load("from PythonQt.QtGui import QApplication\n"
                                   "import PythonQt\n"
                                   "gadgets = [w for w in QApplication.allWidgets() if w.objectName == 'gadget']\n"
                                   "gadgets[0].setFrameShape(gadgets[0].Box)\n"
                                   "gadgets[0].connect('customContextMenuRequested(QPoint)', lambda point: None)\n"
                                   "print len(gadgets), gadgets[0].className(), gadgets[0].frameShape\n"
                                   "print type(gadgets[0]).__name__, hasattr(PythonQt.private, 'Gadget')\n"
                                   "print hasattr(gadgets[0], 'turn') or hasattr(gadgets[0], 'rest')\n",
                                   "Other");
        QCOMPARE(output.standardError, QByteArray());
        QCOMPARE(output.standardOutput.split('\n').mid(1, 3).join('\n'),
                 QByteArray("python info: '1 QFrame 1'\n"
                            "python info: 'QFrame False'\n"
                            "python info: 'False'"));
    }
}

// Qt ends the process when two types of different sizes have one name.
void tst_pySide2Plugins::shortTypeNamesAreLeftToTheHost()
{
    QCOMPARE(load("from PySide2 import QtCore, QtGui, QtWidgets, QtXml, QtUiTools\n").standardError, QByteArray());
    QCOMPARE(QMetaType::sizeOf(QMetaType::type("State")), int(sizeof(State)));
    QCOMPARE(QMetaType::type("FormatRange"), int(QMetaType::UnknownType));
    QVERIFY(QMetaType::isRegistered(QMetaType::type("QTextLayout::FormatRange")));
}

// What PySide2 registers for forms is there for all forms of the process.
void tst_pySide2Plugins::customWidgetOfPySide2InAFormOfPythonQt()
{
    m_host->write(QStringLiteral("panel.ui"),
                  "<ui version=\"4.0\"><class>Form</class><widget class=\"QWidget\" name=\"Form\">"
                  "<layout class=\"QVBoxLayout\" name=\"column\"><item>"
                  "<widget class=\"Dial\" name=\"dial\"/></item></layout></widget>"
                  "<customwidgets><customwidget><class>Dial</class><extends>QLabel</extends>"
                  "<header>dial</header></customwidget></customwidgets></ui>");
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(load("from PySide2.QtUiTools import QUiLoader\n"
                      "from PySide2.QtWidgets import QLabel\n"
                      "class Dial(QLabel):\n"
                      "    def __init__(self, parent=None):\n"
                      "        QLabel.__init__(self, 'dial', parent)\n"
                      "QUiLoader().registerCustomWidget(Dial)\n")
                     .standardError,
                 QByteArray());
        const Output output = load("import PythonQt.QtGui, uiTools\n"
                                   "Form, Base = uiTools.loadUiType('panel.ui')\n"
                                   "class Panel(Form, Base):\n"
                                   "    def __init__(self, parent=None):\n"
                                   "        Base.__init__(self, parent)\n"
                                   "        self.setupUi(self)\n"
                                   "panel = Panel()\n"
                                   "TARNPluginWidget.layout().addWidget(panel)\n"
                                   "print type(panel.dial).__name__, panel.dial.text\n",
                                   "Other");
        QCOMPARE(output.standardError, QByteArray());
        QVERIFY(output.standardOutput.contains("python info: 'QLabel dial'\n"));
    }
}

QTEST_MAIN(tst_pySide2Plugins)
#include "tst_pySide2Plugins.moc"
