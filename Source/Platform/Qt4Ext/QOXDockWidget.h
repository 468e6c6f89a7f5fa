#pragma once

#include <QDockWidget>
#include <QIcon>

#include "oxqt4ext_export.h"

/// A dock widget that knows its icon and the menu that lists it.
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
    /// when it is shown; a dock that waits for that stays hidden. The first time it is shown it
    /// takes the size that its content asks for, whatever size it had, and a free place along
    /// the right edge of the parent's central area. With false, it goes back to the dock area
    /// that it came from; one that was in none stays a tool window.
    virtual void setToolWindow(bool on);

    QString menuName() const;

    void setVisible(bool visible) override;

protected:
    bool event(QEvent *event) override;

private:
    void takePlaceAtParent();
    const QOXDockWidget *openPanelAt(const QRect &place) const;

    QString m_menuName;
    bool m_placeOnShow = false;
    bool m_floatOnShow = false;
};
