#pragma once

#include <QTest>
#include <QWidget>

/// Fingers on a widget, by way of the window system's touch events.
class Touch
{
public:
    explicit Touch(QWidget *widget)
        : m_widget(widget)
    {}

    /// The fingers lie side by side, from @p place downwards.
    void press(const QPoint &place, int fingers = 1)
    {
        m_fingers = fingers;
        send(&QTest::QTouchEventSequence::press, place);
    }

    void moveTo(const QPoint &place) { send(&QTest::QTouchEventSequence::move, place); }
    void lift(const QPoint &place) { send(&QTest::QTouchEventSequence::release, place); }

    /// One more finger, while the first rests.
    void pressAnother(const QPoint &place)
    {
        QTest::touchEvent(m_widget->window(), device()).stationary(0).press(m_fingers, place, m_widget);
    }

    void liftAnother(const QPoint &place)
    {
        QTest::touchEvent(m_widget->window(), device()).stationary(0).release(m_fingers, place, m_widget);
    }

    /// From press to lift, in steps.
    void swipe(const QPoint &from, const QPoint &to, int fingers = 1)
    {
        press(from, fingers);
        constexpr int steps = 8;
        for (int i = 1; i <= steps; ++i)
            moveTo(from + (to - from) * i / steps);
        lift(to);
    }

    static QTouchDevice *device()
    {
        static QTouchDevice *const device = QTest::createTouchDevice();
        return device;
    }

private:
    using Step = QTest::QTouchEventSequence &(QTest::QTouchEventSequence::*)(int, const QPoint &, QWidget *);

    void send(Step step, const QPoint &place)
    {
        QTest::QTouchEventSequence sequence = QTest::touchEvent(m_widget->window(), device(), false);
        for (int i = 0; i < m_fingers; ++i)
            (sequence.*step)(i, place + QPoint(0, 30 * i), m_widget);
        sequence.commit();
    }

    QWidget *m_widget;
    int m_fingers = 1;
};
