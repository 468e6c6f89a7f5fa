#pragma once

#include <QGestureRecognizer>
#include <QPointF>
#include <QPointer>
#include <QWidget>

#include "oxqt4ext_export.h"

/// Recognises the swipe by which one finger pushes a widget out over the left border of its
/// parent: the widget's right border is what moves in.
///
/// The swipe is a QSwipeGesture, as of Qt's own recogniser, which asks for three fingers. It starts
/// on the widget, goes 50 pixels to the left, or half of the way to the border where that is less,
/// and keeps clear of a slant. It is started when it got that far, and finished when the finger
/// lifts there; a finger that came back, a second one, or touch that is called off cancels it.
/// The touch events themselves go on to the widget as ever.
///
/// Give it to QGestureRecognizer::registerRecognizer(), which owns it from then on. GUI thread only.
class OXQT4EXT_EXPORT QOXBorderSwipeGestureRecognizer : public QGestureRecognizer
{
public:
    QOXBorderSwipeGestureRecognizer();
    ~QOXBorderSwipeGestureRecognizer() override;

    /// The only widget whose swipes are recognised, once it grabs Qt::SwipeGesture. Not owned; may
    /// be null or die at any time.
    void setRightBorderWidget(QWidget *widget);
    QWidget *rightBorderWidget() const;

    QGesture *create(QObject *target) override;
    Result recognize(QGesture *gesture, QObject *watched, QEvent *event) override;
    void reset(QGesture *gesture) override;

private:
    bool isSwipe(const QPointF &start, const QPointF &end) const;

    QPointer<QWidget> m_rightBorderWidget;
};
