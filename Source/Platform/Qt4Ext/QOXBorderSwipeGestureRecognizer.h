#pragma once

#include <QGestureRecognizer>
#include <QPointer>
#include <QWidget>

#include "oxqt4ext_export.h"

/// Recognises a swipe towards the border of a widget.
///
/// Give it to QGestureRecognizer::registerRecognizer(), which owns it from then on. GUI thread only.
class OXQT4EXT_EXPORT QOXBorderSwipeGestureRecognizer : public QGestureRecognizer
{
public:
    QOXBorderSwipeGestureRecognizer();
    ~QOXBorderSwipeGestureRecognizer() override;

    /// The widget whose right border takes the swipe. Not owned; may be null or die at any time.
    void setRightBorderWidget(QWidget *widget);
    QWidget *rightBorderWidget() const;

    /// This implementation leaves recognition to Qt's own swipe recogniser and ignores each event.
    Result recognize(QGesture *gesture, QObject *watched, QEvent *event) override;

private:
    QPointer<QWidget> m_rightBorderWidget;
};
