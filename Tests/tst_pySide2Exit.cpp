#include "InterpreterLock.h"

#include "PluginHost.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <cstdlib>
#include <memory>

#include "PrivateData.h"

/// A process with panels of both bindings ends as it should, in whichever order its things go.
class tst_pySide2Exit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endIsClean_data();
    void endIsClean();
    void endWithGraphicsIsClean_data();
    void endWithGraphicsIsClean();

private:
    static void checkChild(const QStringList &arguments);
};

namespace {

const QString childOption = QStringLiteral("--child");
const QDir fixtures(QStringLiteral(FIXTURES "/Graphics"));

void press(const char *key)
{
    privateData(oxKernelInterface::the())
        ->plugins.value(QLatin1String(key))
        .widget->findChild<QPushButton *>()
        ->click();
}

void writePlugins(const PluginHost &host)
{
    host.write(QStringLiteral("Side.py"),
               "from PySide2.QtCore import QObject, QStringListModel, QThread, QTimer, Signal\n"
               "from PySide2.QtWidgets import (QApplication, QDialog, QGraphicsScene, QGraphicsView, QLabel,\n"
               "                               QPushButton, QTableView, QWidget)\n"
               "import sys, uiTools\n"
               "class Panel(QWidget):\n"
               "    pressed = Signal(str)\n"
               "    def paintEvent(self, event):\n"
               "        QWidget.paintEvent(self, event)\n"
               "    def hideEvent(self, event):\n"
               "        QWidget.hideEvent(self, event)\n"
               "    def eventFilter(self, watched, event):\n"
               "        return False\n"
               "panel = Panel(TARNPluginWidget)\n"
               "container = TARNPluginWidget\n"
               "application = QApplication.instance()\n"
               "application.installEventFilter(panel)\n"
               "application.aboutToQuit.connect(panel.update)\n"
               "window = QLabel('a window of its own')\n"
               "dialog = QDialog(panel)\n"
               "button = QPushButton('Ask', panel)\n"
               "button.clicked.connect(dialog.exec_)\n"
               "panel.pressed.connect(button.setText)\n"
               "timer = QTimer()\n"
               "timer.timeout.connect(panel.update)\n"
               "timer.start(1)\n"
               "model = QStringListModel(['a', 'b'])\n"
               "view = QTableView(panel)\n"
               "view.setModel(model)\n"
               "scene = QGraphicsScene()\n"
               "scene.addText('text')\n"
               "graphics = QGraphicsView(scene, panel)\n"
               "scene.keep = [scene, panel, container]\n"
               "for widget in application.allWidgets():\n"
               "    widget.note = widget\n");
    host.write(QStringLiteral("Other.py"),
               "from PythonQt.QtCore import QTimer\n"
               "from PythonQt.QtGui import QApplication, QDialog, QPushButton, QWidget\n"
               "class Panel(QWidget):\n"
               "    def paintEvent(self, event):\n"
               "        pass\n"
               "    def hideEvent(self, event):\n"
               "        pass\n"
               "panel = Panel(TARNPluginWidget)\n"
               "container = TARNPluginWidget\n"
               "dialog = QDialog(TARNPluginWidget)\n"
               "button = QPushButton('Ask', TARNPluginWidget)\n"
               "button.connect('clicked()', dialog.exec_)\n"
               "timer = QTimer()\n"
               "timer.connect('timeout()', panel.update)\n"
               "timer.start(1)\n"
               "everything = QApplication.allWidgets()\n");
}

// Loads the plugins twice, shows their panels, does what the way says, and ends in main().
int runChild(int argc, char *argv[], const QString &way, const QString &fixture)
{
    auto *application = new QApplication(argc, argv);
    auto *host = new PluginHost;
    PluginHost::run(QStringLiteral("sys.path[:0] = ['" PYSIDE2_DIR "', '" SOURCE_DIR "/Share/lib/python']"));
    if (fixture.isEmpty())
        writePlugins(*host);
    else
        QFile::copy(fixtures.filePath(fixture), host->scripts() + QLatin1Char('/') + fixture);
    host->scan();
    host->scan();
    host->window.show();
    for (QAction *entry : host->menu(QStringLiteral("Scripts"))->actions())
        entry->trigger();

    QTimer::singleShot(50, application, [&way, host] {
        if (way == QLatin1String("dialog of PySide2 is open"))
            QTimer::singleShot(50, QCoreApplication::quit);
        if (way == QLatin1String("dialog of PythonQt is open"))
            QTimer::singleShot(50, QCoreApplication::quit);
        if (way == QLatin1String("dialog of PySide2 is open"))
            press("Side");
        else if (way == QLatin1String("dialog of PythonQt is open"))
            press("Other");
        else if (way == QLatin1String("exit in the loop"))
            std::exit(0);
        else if (way == QLatin1String("window is closed"))
            host->window.close();
        QCoreApplication::quit();
    });
    QApplication::exec();

    if (way == QLatin1String("plugins are removed first"))
        host->clear();
    if (way == QLatin1String("nothing is deleted"))
        return 0;
    if (way == QLatin1String("only the application is deleted")) {
        delete application;
        return 0;
    }
    delete host;
    if (way == QLatin1String("only the window is deleted"))
        return 0;
    delete application;
    return 0;
}

} // namespace

void tst_pySide2Exit::endIsClean_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"window, then application", "window is closed", "plugins are removed first",
                            "only the window is deleted", "only the application is deleted", "nothing is deleted",
                            "exit in the loop", "dialog of PySide2 is open", "dialog of PythonQt is open"}) {
        QTest::newRow(way) << QString::fromLatin1(way);
    }
}

void tst_pySide2Exit::endIsClean()
{
    QFETCH(QString, way);
    checkChild({way});
}

void tst_pySide2Exit::endWithGraphicsIsClean_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<QString>("way");
    for (const QString &fixture : fixtures.entryList({QStringLiteral("*.py")}, QDir::Files)) {
        for (const char *way : {"window, then application", "only the application is deleted", "exit in the loop"}) {
            const QByteArray name = QFileInfo(fixture).baseName().toUtf8() + ", " + way;
            QTest::newRow(name) << fixture << QString::fromLatin1(way);
        }
    }
}

void tst_pySide2Exit::endWithGraphicsIsClean()
{
    QFETCH(QString, fixture);
    QFETCH(QString, way);
    checkChild({way, fixture});
}

void tst_pySide2Exit::checkChild(const QStringList &arguments)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), QStringList{childOption} + arguments);
    QVERIFY(child.waitForFinished(60000));
    QByteArray errors;
    for (const QByteArray &line : child.readAllStandardError().split('\n')) {
        if (!line.isEmpty() && !line.startsWith("This plugin does not support") && !line.contains("XDG_RUNTIME_DIR"))
            errors += line + '\n';
    }
    QCOMPARE(errors, QByteArray());
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
}

int main(int argc, char *argv[])
{
    if (argc > 2 && argv[1] == childOption)
        return runChild(argc, argv, QString::fromLatin1(argv[2]), QString::fromLatin1(argc > 3 ? argv[3] : ""));
    const QCoreApplication application(argc, argv);
    tst_pySide2Exit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pySide2Exit.moc"
