#include "MainWindow.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

#include "RenderView.h"

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_message(new QLabel(tr("Open a panel in the menu Scripts; F5 reloads the plugins.")))
{
    m_message->setTextFormat(Qt::PlainText);
    setWindowTitle(tr("Secondary process"));
    setCentralWidget(new RenderView);
    resize(1100, 700);

    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Reload scripts"), this, &MainWindow::reloadRequested, QKeySequence::Refresh);
    file->addSeparator();
    file->addAction(tr("&Quit"), qApp, &QApplication::closeAllWindows, QKeySequence::Quit);

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About"), this, &MainWindow::showAbout);

    statusBar()->addWidget(m_message, 1); // stays, unlike a shown message, when a menu is opened
}

void MainWindow::showMessage(oxMessageService::Severity severity, const QString &text)
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

void MainWindow::showAbout()
{
    QMessageBox::about(this, tr("About"),
                       tr("A secondary process with script plugins.<br><br>Version %1, Qt %2")
                           .arg(QApplication::applicationVersion(), QLatin1String(qVersion())));
}
