#pragma once

#include <QMenu>

class QDockWidget;
class QMainWindow;

/// The menu "View": moves open panels into the overlay over the render view and back, and lets
/// the overlay peek in, slide in and slide out.
class OverlayMenu : public QMenu
{
    Q_OBJECT

public:
    explicit OverlayMenu(QMainWindow *window);

    /// Moves the panel's content into the overlay and closes the panel. Opening the panel again,
    /// for example in the menu Scripts, takes the content back.
    void moveToOverlay(QDockWidget *panel);
    void takeBack(QDockWidget *panel);

    QList<QDockWidget *> openPanels() const;
    QList<QDockWidget *> panelsInOverlay() const;

private:
    void moveAllToOverlay();
    void takeAllBack();
    void listPanels();
    void addEntry(QDockWidget *panel, bool isInOverlay);

    QMainWindow *m_window;
    QMenu *m_panels;
};
