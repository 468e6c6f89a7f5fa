#pragma once

#include <QMainWindow>

#include "oxMessageService.h"

class OverlayMenu;
class QLabel;
class RenderView;

/// The window of the secondary process: the render view, the menus that call the services, and
/// the messages of scripts in the status bar.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    RenderView *renderView() const { return m_view; }
    OverlayMenu *overlayMenu() const { return m_overlay; }

public Q_SLOTS:
    void showMessage(int severity, const QString &text);

Q_SIGNALS:
    void reloadRequested();
    void preferencesRequested();

private:
    void openFile();
    void showAbout();

    RenderView *m_view;
    QLabel *m_message;
    OverlayMenu *m_overlay;
    QAction *m_open;
};
