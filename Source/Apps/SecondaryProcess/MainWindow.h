#pragma once

#include <QMainWindow>

#include "oxMessageService.h"

class MainProcess;
class OverlayMenu;
class QLabel;
class RenderView;

/// The window of the secondary process: the render view, the menus that call the services, the
/// console as a panel, and in the status bar messages and the state of the connection.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// After oxKernelInterface::init(); becomes the window of the main-window service.
    ///
    /// @param mainProcess has to outlive the window
    explicit MainWindow(MainProcess *mainProcess, QWidget *parent = nullptr);

    RenderView *renderView() const { return m_view; }
    OverlayMenu *overlayMenu() const { return m_overlay; }

    /// @param address what to connect to, as the user knows it
    /// @param command what starts a main process there
    void setMainProcessHint(const QString &address, const QString &command);

public Q_SLOTS:
    void showMessage(int severity, const QString &text);

Q_SIGNALS:
    void reloadRequested();
    void preferencesRequested();

private:
    void openFile();
    void showAbout();
    void showConnection();

    MainProcess *m_mainProcess;
    RenderView *m_view;
    QLabel *m_message;
    QLabel *m_connection;
    QString m_address;
    OverlayMenu *m_overlay;
    QAction *m_open;
    bool m_isLoading = false;
};
