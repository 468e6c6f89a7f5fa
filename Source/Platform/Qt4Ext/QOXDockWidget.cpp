#include "QOXDockWidget.h"

#include <QGuiApplication>
#include <QLayout>
#include <QMainWindow>
#include <QMoveEvent>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionDockWidget>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int margin = 12;
constexpr int watchInterval = 500; // milliseconds
constexpr int calmIntervals = 2;

QRect centralArea(const QWidget *parent)
{
    const auto *window = qobject_cast<const QMainWindow *>(parent);
    const QWidget *area = window && window->centralWidget() ? window->centralWidget() : parent;
    return QRect(area->mapToGlobal(QPoint(0, 0)), area->size()).adjusted(margin, margin, -margin, -margin);
}

QRect screenAt(const QPoint &point, const QWidget *widget)
{
    const QScreen *screen = QGuiApplication::screenAt(point);
    return (screen ? screen : widget->screen())->availableGeometry();
}

// The upper left part of what is larger than the bounds stays inside.
QPoint placeInside(const QRect &bounds, const QRect &rect)
{
    return {std::max(std::min(rect.left(), bounds.right() - rect.width() + 1), bounds.left()),
            std::max(std::min(rect.top(), bounds.bottom() - rect.height() + 1), bounds.top())};
}

// How the corner of the area that is the nearest to the rectangle has moved.
QPoint nearestCornersMove(const QRect &rect, const QRect &from, const QRect &to)
{
    const bool isRight = rect.center().x() > from.center().x();
    const bool isBelow = rect.center().y() > from.center().y();
    return {isRight ? to.right() - from.right() : to.left() - from.left(),
            isBelow ? to.bottom() - from.bottom() : to.top() - from.top()};
}

bool isOnScreen(const QWidget *widget)
{
    const QWindow *window = widget->window()->windowHandle();
    return window && window->isExposed();
}

} // namespace

QOXDockWidget::QOXDockWidget(const QString &title, const QString &menuName, const QIcon &icon, QWidget *parent,
                             Qt::WindowFlags flags)
    : QDockWidget(title, parent, flags)
    , m_menuName(menuName)
{
    setWindowIcon(icon);
    m_watch.setInterval(watchInterval);
    connect(&m_watch, &QTimer::timeout, this, &QOXDockWidget::endWatchWhenCalm);
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

// Size and place are set before Qt creates the native window. If they change while a window is being mapped, Qt asks
// the X server where it is, perhaps just when the window manager has moved it into a frame that is still in the
// screen's corner. Some window managers never tell Qt otherwise, as the window ends up where it was asked for.
void QOXDockWidget::setVisible(bool visible)
{
    if (visible && isHidden())
        prepareToShow();
    else if (!visible && isVisible())
        prepareToHide();
    QDockWidget::setVisible(visible);
}

bool QOXDockWidget::event(QEvent *event)
{
    if (event->type() == QEvent::Move && isFloating() && geometry().topLeft() != m_place)
        beMoved(event->spontaneous());
    return QDockWidget::event(event);
}

bool QOXDockWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        followParent();
    return QDockWidget::eventFilter(watched, event);
}

void QOXDockWidget::prepareToShow()
{
    // To make a window of a dock takes as long as to make the dock, and most are never shown.
    if (m_floatOnShow) {
        m_floatOnShow = false;
        setFloating(true);
    }
    if (!isFloating())
        return;
    if (m_placeOnShow) {
        m_placeOnShow = false;
        takeSizeOfContent();
        takePlaceAtParent();
    } else {
        returnToPlace();
    }
    watchPlace();
}

void QOXDockWidget::prepareToHide()
{
    endWatch();
    m_place = geometry().topLeft();
    m_areaWhenHidden = QRect();
    if (isFloating() && parentWidget() && parentWidget()->window()->frameGeometry().intersects(frameGeometry()))
        m_areaWhenHidden = centralArea(parentWidget());
}

void QOXDockWidget::takeSizeOfContent()
{
    ensurePolished();
    layout()->activate();
    const QWidget *place = parentWidget() ? parentWidget() : this;
    const QSize screen = place->screen()->availableGeometry().size();
    const int titleWidth = std::min(widthOfTitle(), screen.width());
    if (maximumWidth() < titleWidth) {
        setMinimumWidth(titleWidth); // which the layout takes for the least maximum as well
        layout()->invalidate();
        layout()->activate();
    }
    resize(sizeHint().expandedTo(QSize(titleWidth, 0)).boundedTo(screen));
}

int QOXDockWidget::widthOfTitle() const
{
    QStyleOptionDockWidget option;
    initStyleOption(&option);
    if (titleBarWidget() || option.verticalTitleBar)
        return 0;
    const int height = option.fontMetrics.height();
    option.rect = QRect(0, 0, 1000, height);
    const int textWidth = style()->subElementRect(QStyle::SE_DockWidgetTitleBarText, &option, this).width();
    const int frameWidth = style()->pixelMetric(QStyle::PM_DockWidgetFrameWidth, &option, this);
    // The style does not tell how a style sheet pads the text.
    const int padding = height;
    return option.rect.width() - textWidth + option.fontMetrics.horizontalAdvance(option.title)
        + 2 * (frameWidth + padding);
}

// In columns from the right, below the panels that are open; in the corner where all is full.
void QOXDockWidget::takePlaceAtParent()
{
    if (!parentWidget())
        return;

    const QRect screen = parentWidget()->screen()->availableGeometry();
    const QRect area = centralArea(parentWidget()) & screen;
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
    if (!area.contains(place))
        place.moveTo(corner);
    setPlace(placeInside(screen, place));
}

const QOXDockWidget *QOXDockWidget::openPanelAt(const QRect &place) const
{
    const auto docks = parentWidget()->findChildren<QOXDockWidget *>(QString(), Qt::FindDirectChildrenOnly);
    const auto found = std::find_if(docks.begin(), docks.end(), [this, &place](const QOXDockWidget *dock) {
        return dock != this && dock->isVisible() && dock->isFloating() && dock->geometry().intersects(place);
    });
    return found == docks.end() ? nullptr : *found;
}

void QOXDockWidget::returnToPlace()
{
    QRect place = geometry();
    if (parentWidget() && m_areaWhenHidden.isValid())
        place.translate(nearestCornersMove(place, m_areaWhenHidden, centralArea(parentWidget())));
    setPlace(placeInside(screenAt(place.center(), this), place));
}

void QOXDockWidget::watchPlace()
{
    m_place = geometry().topLeft();
    m_isCorrected = false;
    m_calmIntervals = 0;
    m_watch.start();
    if (!parentWidget())
        return;
    m_parentArea = centralArea(parentWidget());
    parentWidget()->window()->installEventFilter(this);
}

void QOXDockWidget::endWatch()
{
    m_watch.stop();
    if (parentWidget())
        parentWidget()->window()->removeEventFilter(this);
}

void QOXDockWidget::endWatchWhenCalm()
{
    if (!isOnScreen(this) || (parentWidget() && !isOnScreen(parentWidget())))
        m_calmIntervals = 0;
    else if (++m_calmIntervals == calmIntervals)
        endWatch();
}

void QOXDockWidget::followParent()
{
    const QRect area = centralArea(parentWidget());
    const QPoint step = area.topRight() - m_parentArea.topRight();
    m_parentArea = area;
    m_calmIntervals = 0;
    setPlace(placeInside(parentWidget()->screen()->availableGeometry(), QRect(m_place + step, size())));
}

void QOXDockWidget::beMoved(bool byWindowSystem)
{
    if (!byWindowSystem)
        endWatch();
    else if (m_watch.isActive() && !m_isCorrected)
        correctPlaceSoon();
    else if (isHidden())
        setPlace(m_place); // a window manager that takes its frame away moves what was in it
}

// The same can happen when a panel is shown again, as Qt raises it: a window manager that is asked to move it to where
// it is tells where that is. Once only: a tiling window manager insists on its own place.
void QOXDockWidget::correctPlaceSoon()
{
    m_isCorrected = true;
    m_calmIntervals = 0;
    QTimer::singleShot(0, this, [this] {
        if (m_watch.isActive())
            setPlace(m_place);
    });
}

// Without the frame that some window managers put around it, and which is not known before the panel is shown.
void QOXDockWidget::setPlace(const QPoint &place)
{
    m_place = place;
    setGeometry(QRect(place, size()));
}
