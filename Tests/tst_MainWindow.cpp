#include "MainWindow.h"

#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QtTest>

#include <algorithm>

#include "Console.h"
#include "FileIOServiceMain.h"
#include "MainProcess.h"
#include "MainThread.h"
#include "Patience.h"
#include "PluginHost.h"
#include "RenderView.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"

/// The window of the secondary process with the library's real services.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void statusBarTellsWhatItIsConnectedTo();
    void filesAreOpenedOnlyWhereAMainProcessIs();
    void filesAreOpenedOneAfterTheOther();
    void fileThatCannotBeReadIsReported();
    void cancelledDialogOpensNothing();
    void consoleIsAPanelOfTheMenuView();
    void messagesAppearInTheStatusBar();
    void viewSaysHowToStartAMainProcess();
    void entriesOfTheMenuFileAskForWhatTheySay();
    void quitClosesTheWindow();

private:
    void startMain();
    QAction *entry(const QString &menu, const QString &text) const;
    QAction *openEntry() const { return entry(QStringLiteral("&File"), QStringLiteral("&Open…")); }
    // Chooses the entry "Open" and that file in its dialog; none where it is empty.
    void open(const QString &file);
    QStringList openedFiles();
    bool statusBarHas(const QString &text) const;

    PluginHost *m_host = nullptr;
    std::unique_ptr<MainProcess> m_mainProcess;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<MainThread> m_main;
    std::unique_ptr<FileIOServiceMain> m_files;
};

void tst_MainWindow::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python lives as long as the process
}

void tst_MainWindow::init()
{
    m_mainProcess = std::make_unique<MainProcess>(&m_host->client);
    m_window = std::make_unique<MainWindow>(m_mainProcess.get());
    m_window->setMainProcessHint(QStringLiteral("local:here"), QStringLiteral("oxMainProcess"));
    m_window->show();
}

void tst_MainWindow::cleanup()
{
    m_host->client.disconnectFromHost();
    m_window.reset();
    m_mainProcess.reset();
    m_main.reset();
    m_files.reset();
}

void tst_MainWindow::startMain()
{
    m_main = std::make_unique<MainThread>();
    m_files = std::make_unique<FileIOServiceMain>();
    m_main->offer(m_files.get());
    QVERIFY(m_host->client.connectToHost(m_main->address()));
}

QAction *tst_MainWindow::entry(const QString &menu, const QString &text) const
{
    const auto menus = m_window->menuBar()->actions();
    for (const QAction *action : menus) {
        if (action->text() != menu)
            continue;
        const auto entries = action->menu()->actions();
        for (QAction *found : entries) {
            if (found->text() == text)
                return found;
        }
    }
    return nullptr;
}

void tst_MainWindow::open(const QString &file)
{
    QTimer::singleShot(0, m_window.get(), [this, &file] {
        QDialog *dialog = m_window->findChild<QFileDialog *>();
        static_cast<QFileDialog *>(dialog)->selectFile(file);
        dialog->done(file.isEmpty() ? QDialog::Rejected : QDialog::Accepted);
    });
    openEntry()->trigger();
}

QStringList tst_MainWindow::openedFiles()
{
    QStringList files;
    m_main->run([this, &files] { files = m_files->files; });
    return files;
}

bool tst_MainWindow::statusBarHas(const QString &text) const
{
    const auto labels = m_window->statusBar()->findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) { return label->text() == text; });
}

void tst_MainWindow::statusBarTellsWhatItIsConnectedTo()
{
    QVERIFY(statusBarHas(QStringLiteral("not connected to local:here")));
    startMain();
    QTRY_VERIFY(statusBarHas(QStringLiteral("connected to local:here")));
    m_main.reset();
    QTRY_VERIFY(statusBarHas(QStringLiteral("not connected to local:here")));
}

void tst_MainWindow::filesAreOpenedOnlyWhereAMainProcessIs()
{
    const QAction *open = openEntry();
    QVERIFY(open);
    QVERIFY(!open->isEnabled());
    startMain();
    QTRY_VERIFY(open->isEnabled());
    m_main.reset();
    QTRY_VERIFY(!open->isEnabled());
}

void tst_MainWindow::filesAreOpenedOneAfterTheOther()
{
    startMain();
    m_files->values = {50};
    QTRY_VERIFY(openEntry()->isEnabled());
    QVector<bool> enabledMeanwhile;
    auto *service = oxKernelServiceFactory::the()->getService<oxFileIOService>();
    connect(service, &oxFileIOService::progress, m_window.get(),
            [&] { enabledMeanwhile.append(openEntry()->isEnabled()); });

    const QString file = QCoreApplication::applicationFilePath(); // one that is there
    for (int i = 1; i <= 2; ++i) {
        open(file);
        QCOMPARE(openedFiles().size(), i);
        QCOMPARE(openedFiles().last(), file);
        QVERIFY(statusBarHas(QStringLiteral("Loaded ") + file));
        QVERIFY(openEntry()->isEnabled());
    }
    QCOMPARE(enabledMeanwhile, QVector<bool>({false, false}));
}

void tst_MainWindow::fileThatCannotBeReadIsReported()
{
    startMain();
    m_files->result = false;
    QTRY_VERIFY(openEntry()->isEnabled());
    open(QCoreApplication::applicationFilePath());
    QVERIFY(statusBarHas(QStringLiteral("Error: cannot read ") + QCoreApplication::applicationFilePath()));
    QVERIFY(openEntry()->isEnabled());
}

void tst_MainWindow::cancelledDialogOpensNothing()
{
    startMain();
    QTRY_VERIFY(openEntry()->isEnabled());
    open(QString());
    QCOMPARE(openedFiles(), QStringList());
    QVERIFY(openEntry()->isEnabled());
}

void tst_MainWindow::consoleIsAPanelOfTheMenuView()
{
    QAction *console = entry(QStringLiteral("&View"), QStringLiteral("Console"));
    QVERIFY(console);
    console->trigger();
    auto *modules = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    QVERIFY(modules->getModule(QStringLiteral("Console"))->isVisible());
    QVERIFY(m_window->findChild<Console *>()->isVisible());
}

void tst_MainWindow::messagesAppearInTheStatusBar()
{
    auto *messages = oxKernelServiceFactory::the()->getService<oxMessageService>();
    messages->information(QStringLiteral("<b>done</b>"));
    QVERIFY(statusBarHas(QStringLiteral("<b>done</b>")));
    messages->warning(QStringLiteral("hot"));
    QVERIFY(statusBarHas(QStringLiteral("Warning: hot")));
    messages->error(QStringLiteral("broken"));
    QVERIFY(statusBarHas(QStringLiteral("Error: broken")));
}

void tst_MainWindow::viewSaysHowToStartAMainProcess()
{
    const QImage before = m_window->renderView()->grab().toImage();
    m_window->setMainProcessHint(QStringLiteral("local:here"), QStringLiteral("oxMainProcess --session here"));
    QVERIFY(m_window->renderView()->grab().toImage() != before);
}

void tst_MainWindow::entriesOfTheMenuFileAskForWhatTheySay()
{
    QSignalSpy reload(m_window.get(), &MainWindow::reloadRequested);
    QSignalSpy preferences(m_window.get(), &MainWindow::preferencesRequested);
    QAction *reloadEntry = entry(QStringLiteral("&File"), QStringLiteral("&Reload scripts"));
    QCOMPARE(reloadEntry->shortcut(), QKeySequence(Qt::Key_F5)); // as the status bar says at first
    reloadEntry->trigger();
    QCOMPARE(reload.count(), 1);
    QCOMPARE(preferences.count(), 0);
    entry(QStringLiteral("&File"), QStringLiteral("&Preferences…"))->trigger();
    QCOMPARE(reload.count(), 1);
    QCOMPARE(preferences.count(), 1);
}

void tst_MainWindow::quitClosesTheWindow()
{
    QVERIFY(m_window->isVisible());
    entry(QStringLiteral("&File"), QStringLiteral("&Quit"))->trigger();
    QVERIFY(!m_window->isVisible());
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
