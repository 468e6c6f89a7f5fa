#pragma once

#include <QDockWidget>
#include <QIcon>
#include <QTimer>

#include "oxqt4ext_export.h"

/// A dock widget that knows its icon and the menu that lists it.
///
/// As a tool window, it opens over its parent and inside the screen:
///
/// - The first time, it has the size that its content asks for and is wide enough for its title,
///   and takes a free place along the right edge of the parent's central area.
/// - Later, it has the size and the place that the user left it with. Where the parent has been
///   moved or resized meanwhile, a panel that stood over it keeps its distance to the nearest
///   corner of the central area; one that stood beside the parent keeps its place on the screen.
/// - While the window manager still places the parent, the panel goes with it: until neither has
///   been moved for a second. After that it stays where it is when the user moves the parent. What
///   the program or the user moves itself stays there at once.
///
/// A window manager that places all windows itself has its way.
///
/// GUI thread only. Owned by its parent, as every widget.
class OXQT4EXT_EXPORT QOXDockWidget : public QDockWidget
{
    Q_OBJECT

public:
    /// @param title    the window title, by which the dock is found again
    /// @param menuName the title of the menu that holds the dock's entry; kept, not interpreted
    /// @param icon     the window icon; may be empty
    QOXDockWidget(const QString &title, const QString &menuName, const QIcon &icon, QWidget *parent = nullptr,
                  Qt::WindowFlags flags = {});
    ~QOXDockWidget() override;

    /// With true, the dock becomes a tool window of its parent: now, if it is visible, or else
    /// when it is shown; a dock that waits for that stays hidden. The next time it is shown, it
    /// takes size and place as it does the first time, whatever it had. With false, it goes back
    /// to the dock area that it came from; one that was in none stays a tool window.
    virtual void setToolWindow(bool on);

    QString menuName() const;

    void setVisible(bool visible) override;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void prepareToShow();
    void prepareToHide();
    void takeSizeOfContent();
    int widthOfTitle() const;
    void takePlaceAtParent();
    const QOXDockWidget *openPanelAt(const QRect &place) const;
    void returnToPlace();
    void watchPlace();
    void endWatch();
    void endWatchWhenCalm();
    void followParent();
    void beMoved(bool byWindowSystem);
    void correctPlaceSoon();
    void setPlace(const QPoint &place);

    QString m_menuName;
    bool m_placeOnShow = false;
    bool m_floatOnShow = false;
    QRect m_areaWhenHidden; // the parent's central area, unless the panel stood beside the parent

    QPoint m_place; // where the panel ought to be

    // A window manager may move the parent and the panel after they are shown.
    QTimer m_watch;
    int m_calmIntervals = 0;
    QRect m_parentArea;
    bool m_isCorrected = false;
};
