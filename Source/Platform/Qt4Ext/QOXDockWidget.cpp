#include "QOXDockWidget.h"

#include <QEvent>
#include <QMainWindow>

#include <algorithm>

namespace {

constexpr int margin = 12;

QRect centralArea(const QWidget *parent)
{
    const auto *window = qobject_cast<const QMainWindow *>(parent);
    const QWidget *area = window && window->centralWidget() ? window->centralWidget() : parent;
    return QRect(area->mapToGlobal(QPoint(0, 0)), area->size()).adjusted(margin, margin, -margin, -margin);
}

} // namespace

QOXDockWidget::QOXDockWidget(const QString &title, const QString &menuName, const QIcon &icon, QWidget *parent,
                             Qt::WindowFlags flags)
    : QDockWidget(title, parent, flags)
    , m_menuName(menuName)
{
    setWindowIcon(icon);
}

QOXDockWidget::~QOXDockWidget() = default;

void QOXDockWidget::setToolWindow(bool on)
{
    m_placeOnShow = on;
    m_floatOnShow = on && !isVisible();
    if (m_floatOnShow)
        hide(); // or else it comes up with its parent, and Qt shows it as it floats
    else
        setFloating(on);
}

QString QOXDockWidget::menuName() const
{
    return m_menuName;
}

// To make a window of a dock takes as long as to make the dock, and most are never shown.
void QOXDockWidget::setVisible(bool visible)
{
    if (visible && m_floatOnShow) {
        m_floatOnShow = false;
        setFloating(true);
    }
    QDockWidget::setVisible(visible);
}

// Ahead of QDockWidget, which takes a shown dock of no size for one that cannot be seen.
bool QOXDockWidget::event(QEvent *event)
{
    if (m_placeOnShow && event->type() == QEvent::Show && !event->spontaneous()) {
        m_placeOnShow = false;
        takePlaceAtParent();
    }
    return QDockWidget::event(event);
}

// In columns from the right, below the panels that are open; in the corner where all is full.
void QOXDockWidget::takePlaceAtParent()
{
    resize(sizeHint());
    if (!parentWidget())
        return;

    const QRect area = centralArea(parentWidget());
    const QPoint corner(area.right() - width() + 1, area.top());
    QRect place(corner, size());
    int columnLeft = place.left();
    while (const QOXDockWidget *dock = openPanelAt(place)) {
        columnLeft = std::min(columnLeft, dock->x());
        place.moveTop(dock->geometry().bottom() + margin);
        if (place.bottom() > area.bottom()) {
            place.moveTopRight(QPoint(columnLeft - margin, area.top()));
            columnLeft = place.left();
        }
    }
    move(area.contains(place) ? place.topLeft() : corner);
}

const QOXDockWidget *QOXDockWidget::openPanelAt(const QRect &place) const
{
    const auto docks = parentWidget()->findChildren<QOXDockWidget *>(QString(), Qt::FindDirectChildrenOnly);
    const auto found = std::find_if(docks.begin(), docks.end(), [this, &place](const QOXDockWidget *dock) {
        return dock != this && dock->isVisible() && dock->isFloating() && dock->geometry().intersects(place);
    });
    return found == docks.end() ? nullptr : *found;
}
