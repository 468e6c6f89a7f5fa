#include "MainWindow.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

#include "Console.h"
#include "EditMenu.h"
#include "MainProcess.h"
#include "OverlayMenu.h"
#include "RenderView.h"
#include "Scripting.h"
#include "oxFileIOService.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxRenderService.h"
#include "oxUndoService.h"

namespace {

template<class Service>
Service *service()
{
    return oxKernelServiceFactory::the()->getService<Service>();
}

} // namespace

MainWindow::MainWindow(MainProcess *mainProcess, QWidget *parent)
    : QMainWindow(parent)
    , m_mainProcess(mainProcess)
    , m_view(new RenderView(mainProcess, service<oxRenderService>()))
    , m_message(new QLabel(tr("Open a panel in the menu Scripts; F5 reloads the plugins.")))
    , m_connection(new QLabel)
    , m_overlay(new OverlayMenu(this))
{
    m_message->setTextFormat(Qt::PlainText);
    m_message->setContentsMargins(4, 0, 4, 0);
    setWindowTitle(tr("Secondary process"));
    setCentralWidget(m_view);
    resize(1100, 700);

    QMenu *file = menuBar()->addMenu(tr("&File"));
    m_open = file->addAction(tr("&Open…"), this, &MainWindow::openFile, QKeySequence::Open);
    file->addAction(tr("&Reload scripts"), this, &MainWindow::reloadRequested, QKeySequence::Refresh);
    file->addSeparator();
    file->addAction(tr("&Preferences…"), this, &MainWindow::preferencesRequested, tr("Ctrl+,"));
    file->addSeparator();
    file->addAction(tr("&Quit"), qApp, &QApplication::closeAllWindows, QKeySequence::Quit);

    menuBar()->addMenu(new EditMenu(mainProcess, service<oxUndoService>(), this));
    menuBar()->addMenu(m_overlay);

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About"), this, &MainWindow::showAbout);

    statusBar()->addWidget(m_message, 1); // stays, unlike a shown message, when a menu is opened
    m_connection->setTextFormat(Qt::PlainText);
    m_connection->setContentsMargins(4, 0, 4, 0);
    statusBar()->addPermanentWidget(m_connection);
    connect(mainProcess, &MainProcess::connected, this, &MainWindow::showConnection);
    connect(mainProcess, &MainProcess::disconnected, this, &MainWindow::showConnection);
    showConnection();

    auto *console = new Console;
    showScriptOutput(console);
    m_overlay->addSeparator();
    service<oxMainWindowService>()->setWidget(this);
    service<oxMainWindowService>()->addModule(tr("Console"), m_overlay->title(), console, QString(), QIcon(), QString(),
                                              Qt::NoDockWidgetArea);
    connect(service<oxMessageService>(), &oxMessageService::messageReceived, this, &MainWindow::showMessage);
}

void MainWindow::setMainProcessHint(const QString &address, const QString &command)
{
    m_address = address;
    m_view->setCommandHint(command);
    showConnection();
}

void MainWindow::showConnection()
{
    const bool isConnected = m_mainProcess->isConnected();
    m_connection->setText((isConnected ? tr("connected to %1") : tr("not connected to %1")).arg(m_address));
    m_open->setEnabled(isConnected && !m_isLoading);
}

void MainWindow::showMessage(int severity, const QString &text)
{
    switch (severity) {
    case oxMessageService::Information:
        m_message->setText(text);
        break;
    case oxMessageService::Warning:
        m_message->setText(tr("Warning: %1").arg(text));
        break;
    case oxMessageService::Error:
        m_message->setText(tr("Error: %1").arg(text));
        break;
    }
}

// One at a time: events are processed while a file loads.
void MainWindow::openFile()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Open"));
    if (file.isEmpty())
        return;
    m_isLoading = true;
    showConnection();
    const bool isLoaded = service<oxFileIOService>()->loadFile(file);
    m_isLoading = false;
    showConnection();
    if (isLoaded)
        showMessage(oxMessageService::Information, tr("Loaded %1").arg(file));
    else
        showMessage(oxMessageService::Error, tr("cannot read %1").arg(file));
}

void MainWindow::showAbout()
{
    QMessageBox::about(this, tr("About"),
                       tr("A secondary process with script plugins.<br><br>Version %1, Qt %2")
                           .arg(QApplication::applicationVersion(), QLatin1String(qVersion())));
}
