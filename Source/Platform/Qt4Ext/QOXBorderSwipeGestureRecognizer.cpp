#include "QOXBorderSwipeGestureRecognizer.h"

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

QGestureRecognizer::Result QOXBorderSwipeGestureRecognizer::recognize(QGesture *, QObject *, QEvent *)
{
    return Ignore;
}
