#include "InterpreterLock.h"

#include "PluginHost.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDirIterator>
#include <QDockWidget>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QSet>
#include <QTabBar>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

#include <algorithm>

#include "OutputCapture.h"
#include "Patience.h"
#include "PrivateData.h"

namespace {

/// A program of PySide2's own, and why it is no plugin.
struct Program
{
    const char *path;
    const char *error = ""; ///< the last line that Python prints; none: it works
};

// All programs that make a window of the modules that are built, but for
//  - corelib/threads/mandelbrot.py, which never ends its thread: Qt ends the process,
//  - xml/dombookmarks/dombookmarks.py, which asks for a file before it shows anything,
//  - uiloader/uiloader.py, which needs an argument on its command line,
//  - widgets/state-machine/eventtrans.py and rogue.py, which show their windows themselves,
//  - widgets/systray/main.py, which needs a system tray,
//  - widgets/widgets/hellogl_openglwidget_legacy.py, which needs PyOpenGL.
const Program programs[] = {
    {"corelib/tools/codecs/codecs.py"},
    {"corelib/tools/regexp.py"},
    {"corelib/tools/settingseditor/settingseditor.py"},
    {"installer_test/hello.py"},
    {"tutorial/t1.py"},
    {"tutorial/t2.py"},
    {"tutorial/t3.py"},
    {"tutorial/t4.py"},
    {"tutorial/t5.py"},
    {"tutorial/t6.py"},
    {"tutorial/t7.py"},
    {"tutorial/t8.py"},
    {"tutorial/t9.py"},
    {"tutorial/t10.py"},
    {"tutorial/t11.py"},
    {"tutorial/t12.py"},
    {"tutorial/t13.py"},
    {"tutorial/t14.py"},
    {"widgets/animation/animatedtiles/animatedtiles.py"},
    {"widgets/animation/appchooser/appchooser.py"},
    {"widgets/animation/easing/easing.py"},
    {"widgets/animation/states/states.py"},
    {"widgets/codeeditor/main.py", "TypeError: super() takes at least 1 argument (0 given)"},
    {"widgets/dialogs/classwizard/classwizard.py"},
    {"widgets/dialogs/extension.py"},
    {"widgets/dialogs/findfiles.py"},
    {"widgets/dialogs/standarddialogs.py"},
    {"widgets/dialogs/trivialwizard.py"},
    {"widgets/draganddrop/draggabletext/draggabletext.py"},
    {"widgets/effects/lighting.py"},
    {"widgets/gallery/main.py", "AttributeError: 'NoneType' object has no attribute 'screenChanged'"},
    {"widgets/graphicsview/anchorlayout.py"},
    {"widgets/graphicsview/collidingmice/collidingmice.py"},
    {"widgets/graphicsview/diagramscene/diagramscene.py"},
    {"widgets/graphicsview/dragdroprobot/dragdroprobot.py"},
    {"widgets/graphicsview/elasticnodes.py"},
    {"widgets/itemviews/addressbook/addressbook.py"},
    {"widgets/itemviews/basicsortfiltermodel.py"},
    {"widgets/itemviews/fetchmore.py"},
    {"widgets/itemviews/stardelegate/stardelegate.py"},
    {"widgets/layouts/basiclayouts.py"},
    {"widgets/layouts/dynamiclayouts.py"},
    {"widgets/layouts/flowlayout.py"},
    {"widgets/mainwindows/application/application.py"},
    {"widgets/mainwindows/dockwidgets/dockwidgets.py", "ImportError: No module named QtPrintSupport"},
    {"widgets/mainwindows/mdi/mdi.py"},
    {"widgets/painting/basicdrawing/basicdrawing.py"},
    {"widgets/painting/concentriccircles.py"},
    {"widgets/richtext/orderform.py", "ImportError: cannot import name QtPrintSupport"},
    {"widgets/richtext/syntaxhighlighter.py"},
    {"widgets/richtext/syntaxhighlighter/syntaxhighlighter.py"},
    {"widgets/richtext/textobject/textobject.py", "ImportError: cannot import name QtSvg"},
    {"widgets/state-machine/trafficlight.py"},
    {"widgets/state-machine/twowaybutton.py"},
    {"widgets/threads/thread_signals.py"},
    {"widgets/tutorials/addressbook/part1.py"},
    {"widgets/tutorials/addressbook/part2.py"},
    {"widgets/tutorials/addressbook/part3.py"},
    {"widgets/tutorials/addressbook/part4.py"},
    {"widgets/tutorials/addressbook/part5.py"},
    {"widgets/tutorials/addressbook/part6.py"},
    {"widgets/tutorials/addressbook/part7.py"},
    {"widgets/widgets/tetrix.py"},
};

// Changes the lines that make the application object, show the window and run the event loop.
QByteArray asPlugin(const QByteArray &text)
{
    QByteArrayList lines = text.split('\n');
    bool isEntry = false;
    for (QByteArray &bytes : lines) {
        QString line = QString::fromUtf8(bytes);
        static const QRegularExpression start(QStringLiteral("^(if __name__ *== *['\"]__main__['\"]:|app = )"));
        static const QRegularExpression application(QStringLiteral("QApplication\\((sys.argv|\\[\\])?\\)"));
        static const QRegularExpression attribute(QStringLiteral("^(\\s*)QCoreApplication\\.setAttribute\\(.*"));
        static const QRegularExpression loop(
            QStringLiteral("^(\\s*)(r|res|retcode)? ?=? ?(sys\\.exit\\()?app\\.exec_\\(\\)\\)?"));
        static const QRegularExpression exit(QStringLiteral("sys\\.exit\\((r|res|retcode)\\)"));
        static const QRegularExpression window(
            QStringLiteral("^(\\s+|)(?:(\\w+)\\.show\\(\\)|(?:sys\\.exit\\()?(\\w+)\\.exec_\\(\\)\\)?)"));
        if (start.match(line).hasMatch()) {
            isEntry = true;
            line.replace(QRegularExpression(QStringLiteral("^if .*")), QStringLiteral("if True:"));
            line.prepend(QLatin1String("import uiTools\n"));
        }
        if (!isEntry)
            continue;
        line.replace(application, QStringLiteral("QApplication.instance()"));
        line.replace(QLatin1String("app = "), QLatin1String("app = qApp = "));
        line.replace(attribute, QStringLiteral("\\1pass"));
        line.replace(loop, QStringLiteral("\\1pass"));
        line.replace(exit, QStringLiteral("pass"));
        line.replace(window, QStringLiteral("\\1TARNPluginWidget.layout().addWidget(\\2\\3)"));
        bytes = line.toUtf8();
    }
    return lines.join('\n');
}

// Closes the menu or the dialog that a program waits for.
void closePopup()
{
    if (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
    else if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
        dialog->done(QDialog::Rejected);
}

// Clicks in an event loop, which a program may end.
void click(QWidget *widget, const QPoint &position)
{
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, qApp, closePopup);
    timer.start(10);
    QTimer::singleShot(0, qApp, [widget, position] {
        QTest::mouseClick(widget, Qt::LeftButton, {}, position);
        QCoreApplication::quit();
    });
    QApplication::exec();
}

// The first widget of that class that can be clicked and was not clicked yet.
template<class Widget>
Widget *next(const QWidget &panel, QSet<const QWidget *> *clicked)
{
    for (auto *widget : panel.findChildren<Widget *>()) {
        if (widget->isVisible() && widget->isEnabled() && !clicked->contains(widget)) {
            clicked->insert(widget);
            return widget;
        }
    }
    return nullptr;
}

void clickButtons(const QWidget &panel, QSet<const QWidget *> *clicked)
{
    while (auto *button = next<QAbstractButton>(panel, clicked)) {
        const int x = qMin(button->width(), button->height()) / 2; // the box of a check box
        click(button, {x, button->height() / 2});
    }
}

// Tabs, and the buttons of all pages.
void clickEverything(const QWidget &panel)
{
    QSet<const QWidget *> clicked;
    while (const QPointer<QTabBar> tabs = next<QTabBar>(panel, &clicked)) {
        for (int i = 0; tabs && i < tabs->count(); ++i) {
            click(tabs, tabs->tabRect(i).center());
            clickButtons(panel, &clicked);
        }
    }
    clickButtons(panel, &clicked);
}

bool hasThreads(const QWidget &panel)
{
    const auto threads = panel.findChildren<QThread *>();
    return std::any_of(threads.begin(), threads.end(), [](const QThread *thread) { return thread->isRunning(); });
}

} // namespace

Q_DECLARE_METATYPE(const Program *)

/// PySide2's own example programs, changed in nothing but the lines that start them, as plugins whose
/// panels are open and are clicked in.
class tst_pySide2Programs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void programIsAPlugin_data();
    void programIsAPlugin();
    void allLiveTogether();

private:
    QString install(const Program &program) const;
    QWidget *container(const QString &path) const;
    void show(const QString &path) const;

    PluginHost *m_host = nullptr;
};

void tst_pySide2Programs::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    m_host->window.show();
    PluginHost::run(QStringLiteral("sys.path[:0] = ['" PYSIDE2_DIR "', '" SOURCE_DIR "/Share/lib/python']\n"
                                   "before = sys.path[:], set(sys.modules)\n"));
}

void tst_pySide2Programs::cleanup()
{
    QCOMPARE(outputOf([this] { m_host->clear(); }).standardError, QByteArray());
    PluginHost::run(QStringLiteral("sys.path[:] = before[0]\n"
                                   "for name in set(sys.modules) - before[1]:\n"
                                   "    if not name.startswith('PySide2'):\n"
                                   "        del sys.modules[name]\n"));
}

// Copies the program's folder, with its modules and files, where the scan does not look.
QString tst_pySide2Programs::install(const Program &program) const
{
    const QFileInfo source(QLatin1String(PYSIDE2_EXAMPLES) + QLatin1Char('/') + QLatin1String(program.path));
    const QString name = QString::fromLatin1(program.path).section(QLatin1Char('/'), -2, -2) + QLatin1Char('_')
        + source.completeBaseName();
    const QString folder = QStringLiteral(".programs/") + name;
    QDirIterator files(source.absolutePath(), QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(file.fileName()));
        const bool isProgram = files.fileInfo() == source;
        const QByteArray content = file.readAll();
        m_host->write(folder + QLatin1Char('/') + (isProgram ? name + QLatin1String(".py") : files.fileName()),
                      isProgram ? asPlugin(content) : content);
    }
    return m_host->scripts() + QLatin1Char('/') + folder + QLatin1Char('/') + name + QLatin1String(".py");
}

QWidget *tst_pySide2Programs::container(const QString &path) const
{
    return privateData(oxKernelInterface::the())
        ->plugins.value(QFileInfo(path).baseName(), {0, nullptr, nullptr})
        .widget;
}

// Opens the panel, unless it is open already, at a size that shows something.
void tst_pySide2Programs::show(const QString &path) const
{
    QAction *entry = m_host->entry(QFileInfo(path).baseName());
    if (!entry->isChecked())
        entry->trigger();
    QWidget *dock = container(path)->window();
    dock->resize(dock->size().expandedTo({400, 300}));
    container(path)->grab();
}

void tst_pySide2Programs::programIsAPlugin_data()
{
    QTest::addColumn<const Program *>("program");

    for (const Program &program : programs)
        QTest::newRow(program.path) << &program;
}

void tst_pySide2Programs::programIsAPlugin()
{
    QFETCH(const Program *, program);
    const QString path = install(*program);
    const QByteArray error(program->error);
    PluginHost::run(QStringLiteral("sys.path.insert(0, '%1')").arg(QFileInfo(path).absolutePath()));
    for (int i = 0; i < 3; ++i) {
        const Output shown = outputOf([this, &path] {
            m_host->load(path);
            show(path);
            for (int turn = 0; turn < 10; ++turn)
                QCoreApplication::processEvents();
        });
        if (!error.isEmpty()) {
            QCOMPARE(shown.standardError.trimmed().split('\n').last(), "python error: '" + error + '\'');
            continue;
        }
        QCOMPARE(shown.standardError, QByteArray());
        QVERIFY(!container(path)->layout()->isEmpty());
        QTRY_VERIFY(container(path)->layout()->itemAt(0)->widget()->isVisible());

        const Output clicked = outputOf([this, &path] { clickEverything(*container(path)); });
        QCOMPARE(clicked.standardError, QByteArray());
        QTRY_VERIFY(!hasThreads(*container(path))); // Qt ends the process when the next load deletes one that runs
    }
}

void tst_pySide2Programs::allLiveTogether()
{
    QStringList paths;
    for (const Program &program : programs) {
        if (!*program.error)
            paths << install(program);
    }
    QCOMPARE(paths.size(), 58);
    for (int i = 0; i < 2; ++i) {
        for (const QString &path : qAsConst(paths)) {
            PluginHost::run(QStringLiteral("sys.path.insert(0, '%1')").arg(QFileInfo(path).absolutePath()));
            const Output output = outputOf([this, &path] {
                m_host->load(path);
                show(path);
                QCoreApplication::processEvents();
            });
            QCOMPARE(output.standardError, QByteArray());
        }
    }
    QCOMPARE(m_host->window.findChildren<QDockWidget *>().size(), paths.size());
}

QTEST_MAIN(tst_pySide2Programs)
#include "tst_pySide2Programs.moc"
