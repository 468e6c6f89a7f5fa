#include "QOXBorderSwipeGestureRecognizer.h"

#include <QApplication>
#include <QGesture>
#include <QLineF>
#include <QTouchEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal swipeLength = 50;

// Has no hot spot: Qt would give the gesture to the widget there, which may be a child, and not to
// the one that grabbed it.
class BorderSwipe : public QSwipeGesture
{
public:
    bool isTracked = false;
    QPointF start;
};

} // namespace

QOXBorderSwipeGestureRecognizer::QOXBorderSwipeGestureRecognizer() = default;

QOXBorderSwipeGestureRecognizer::~QOXBorderSwipeGestureRecognizer() = default;

void QOXBorderSwipeGestureRecognizer::setRightBorderWidget(QWidget *widget)
{
    m_rightBorderWidget = widget;
}

QWidget *QOXBorderSwipeGestureRecognizer::rightBorderWidget() const
{
    return m_rightBorderWidget;
}

QGesture *QOXBorderSwipeGestureRecognizer::create(QObject *)
{
    return new BorderSwipe;
}

QGestureRecognizer::Result QOXBorderSwipeGestureRecognizer::recognize(QGesture *gesture, QObject *watched,
                                                                      QEvent *event)
{
    auto *swipe = static_cast<BorderSwipe *>(gesture);
    const bool isTouch = event->type() == QEvent::TouchBegin || event->type() == QEvent::TouchUpdate
        || event->type() == QEvent::TouchEnd || event->type() == QEvent::TouchCancel;
    if (watched != m_rightBorderWidget || !isTouch)
        return Ignore;

    const QList<QTouchEvent::TouchPoint> fingers = static_cast<QTouchEvent *>(event)->touchPoints();
    if (fingers.size() != 1) // none when touch is called off
        return CancelGesture;
    const QPointF place = fingers.first().screenPos();
    if (event->type() == QEvent::TouchBegin) {
        swipe->isTracked = true;
        swipe->start = place;
        return MayBeGesture;
    }
    if (!swipe->isTracked)
        return Ignore;

    const bool isFarEnough = isSwipe(swipe->start, place);
    if (isFarEnough)
        swipe->setSwipeAngle(QLineF(swipe->start, place).angle());
    if (event->type() == QEvent::TouchEnd)
        return isFarEnough ? FinishGesture : CancelGesture;
    if (isFarEnough)
        return TriggerGesture;
    return swipe->state() == Qt::NoGesture ? MayBeGesture : Ignore;
}

void QOXBorderSwipeGestureRecognizer::reset(QGesture *gesture)
{
    static_cast<BorderSwipe *>(gesture)->isTracked = false;
    QGestureRecognizer::reset(gesture);
}

bool QOXBorderSwipeGestureRecognizer::isSwipe(const QPointF &start, const QPointF &end) const
{
    const QWidget *parent = m_rightBorderWidget->parentWidget();
    int border = m_rightBorderWidget->mapToGlobal(QPoint(0, 0)).x();
    if (parent)
        border = std::max(border, parent->mapToGlobal(QPoint(0, 0)).x());
    const auto tremble = static_cast<qreal>(QApplication::startDragDistance());
    const qreal wayToBorder = start.x() - border;
    const qreal length = std::max(tremble, std::min(swipeLength, wayToBorder / 2));

    const qreal toTheLeft = start.x() - end.x();
    return toTheLeft >= length && std::abs(end.y() - start.y()) <= toTheLeft / 2;
}
