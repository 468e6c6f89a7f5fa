#include <QApplication>
#include <QGestureEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTouchEvent>
#include <QVBoxLayout>

#include <qpa/qwindowsysteminterface.h>

#include "Patience.h"
#include "QOXBorderSwipeGestureRecognizer.h"
#include "Touch.h"

namespace {

constexpr QPoint middle(200, 100);

// One recogniser for all: what is registered stays.
QOXBorderSwipeGestureRecognizer *recognizer()
{
    static auto *const recognizer = [] {
        auto *created = new QOXBorderSwipeGestureRecognizer;
        QGestureRecognizer::registerRecognizer(created);
        return created;
    }();
    return recognizer;
}

// Takes notes of the swipes that are delivered to it.
class Panel : public QWidget
{
public:
    explicit Panel(QWidget *parent = nullptr)
        : QWidget(parent)
    {
        resize(400, 300);
        grabGesture(Qt::SwipeGesture);
    }

    QVector<Qt::GestureState> states;
    QVector<QSwipeGesture::SwipeDirection> directions;
    QVector<qreal> angles;
    bool takesTouch = false;
    QVector<QEvent::Type> touches;

    // A drag to the left without an end may have many updates.
    QVector<Qt::GestureState> statesOnce() const
    {
        QVector<Qt::GestureState> once = states;
        once.erase(std::unique(once.begin(), once.end()), once.end());
        return once;
    }

    bool isSwiped() const { return states.contains(Qt::GestureFinished); }

protected:
    bool event(QEvent *event) override
    {
        const bool isTouch = event->type() == QEvent::TouchBegin || event->type() == QEvent::TouchUpdate
            || event->type() == QEvent::TouchEnd;
        if (isTouch && takesTouch) {
            touches.append(event->type());
            return true;
        }
        if (event->type() != QEvent::Gesture)
            return QWidget::event(event);
        const QGesture *gesture = static_cast<QGestureEvent *>(event)->gesture(Qt::SwipeGesture);
        const auto *swipe = static_cast<const QSwipeGesture *>(gesture);
        states.append(swipe->state());
        directions.append(swipe->horizontalDirection());
        angles.append(swipe->swipeAngle());
        return true;
    }
};

// A window with the panel in it, as wide again on both sides.
class Window : public QWidget
{
public:
    Window()
    {
        resize(1200, 300);
        panel = new Panel(this);
        panel->move(400, 0);
        recognizer()->setRightBorderWidget(panel);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("the window does not come up");
    }

    Panel *panel;
};

using States = QVector<Qt::GestureState>;

} // namespace

class tst_QOXBorderSwipeGestureRecognizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasNoWidgetAtFirst();
    void widgetIsTheOneLastGiven();
    void widgetThatIsDeletedIsForgotten();
    void makesSwipes();
    void registersAsTheStandardSwipe();

    void swipeToTheLeftIsStartedThenFinished();
    void swipePointsToTheLeft();
    void pressAndLiftAreEnough();
    void strokes_data();
    void strokes();
    void besideTheBorderAShortStrokeIsEnough_data();
    void besideTheBorderAShortStrokeIsEnough();
    void swipeMayEndOutsideTheWidget();
    void swipeOfAMovingWidgetIsMeasuredOnTheScreen();
    void oneSwipeAfterAnother();

    void nothingIsFinishedBeforeTheFingerLifts();
    void fingerThatComesBackCancels();
    void fingerThatComesBackAndGoesAgainSwipes();
    void secondFingerCancels();
    void secondFingerBeforeTheStrokeSuppressesIt();
    void calledOffTouchCancels();
    void twoFingersAreNoSwipeOfOurs();
    void mouseIsNoFinger();

    void swipeOnAChildIsTheWidgets();
    void buttonInTheWidgetStillTakesATap();
    void touchEventsReachTheWidget();
    void otherWidgetIsNotRecognised();
    void withoutAWidgetNothingIsRecognised();
    void widgetMayDieDuringASwipe();
};

void tst_QOXBorderSwipeGestureRecognizer::hasNoWidgetAtFirst()
{
    QVERIFY(!QOXBorderSwipeGestureRecognizer().rightBorderWidget());
}

void tst_QOXBorderSwipeGestureRecognizer::widgetIsTheOneLastGiven()
{
    QWidget first;
    QWidget second;
    QOXBorderSwipeGestureRecognizer recognizer;

    for (QWidget *widget : {&first, &second, static_cast<QWidget *>(nullptr)}) {
        recognizer.setRightBorderWidget(widget);
        QCOMPARE(recognizer.rightBorderWidget(), widget);
    }
}

void tst_QOXBorderSwipeGestureRecognizer::widgetThatIsDeletedIsForgotten()
{
    QOXBorderSwipeGestureRecognizer recognizer;
    {
        QWidget widget;
        recognizer.setRightBorderWidget(&widget);
    }
    QVERIFY(!recognizer.rightBorderWidget());
}

void tst_QOXBorderSwipeGestureRecognizer::makesSwipes()
{
    QOXBorderSwipeGestureRecognizer recognizer;
    const QScopedPointer<QGesture> gesture(recognizer.create(nullptr));

    QVERIFY(qobject_cast<QSwipeGesture *>(gesture.data()));
    QCOMPARE(gesture->state(), Qt::NoGesture);
}

void tst_QOXBorderSwipeGestureRecognizer::registersAsTheStandardSwipe()
{
    QCOMPARE(QGestureRecognizer::registerRecognizer(new QOXBorderSwipeGestureRecognizer), Qt::SwipeGesture);
}

// What is a swipe

void tst_QOXBorderSwipeGestureRecognizer::swipeToTheLeftIsStartedThenFinished()
{
    const Window window;
    Touch(window.panel).swipe(middle, middle - QPoint(120, 0));

    QCOMPARE(window.panel->statesOnce(), States({Qt::GestureStarted, Qt::GestureUpdated, Qt::GestureFinished}));
    QCOMPARE(window.panel->states.count(Qt::GestureStarted), 1);
    QCOMPARE(window.panel->states.count(Qt::GestureFinished), 1);
}

void tst_QOXBorderSwipeGestureRecognizer::swipePointsToTheLeft()
{
    const Window window;
    Touch(window.panel).swipe(middle, middle - QPoint(120, 0));

    QCOMPARE(window.panel->directions.count(QSwipeGesture::Left), window.panel->directions.size());
    QCOMPARE(window.panel->angles.last(), 180.0);
}

void tst_QOXBorderSwipeGestureRecognizer::pressAndLiftAreEnough()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.lift(middle - QPoint(120, 0));

    QCOMPARE(window.panel->states, States({Qt::GestureStarted, Qt::GestureFinished}));
    QCOMPARE(window.panel->directions.last(), QSwipeGesture::Left);
}

void tst_QOXBorderSwipeGestureRecognizer::strokes_data()
{
    QTest::addColumn<QPoint>("stroke");
    QTest::addColumn<bool>("isSwipe");
    QTest::newRow("to the left") << QPoint(-120, 0) << true;
    QTest::newRow("long enough") << QPoint(-50, 0) << true;
    QTest::newRow("too short") << QPoint(-49, 0) << false;
    QTest::newRow("up a little") << QPoint(-80, -40) << true;
    QTest::newRow("down a little") << QPoint(-80, 40) << true;
    QTest::newRow("up too much") << QPoint(-80, -41) << false;
    QTest::newRow("down too much") << QPoint(-80, 41) << false;
    QTest::newRow("to the right") << QPoint(120, 0) << false;
    QTest::newRow("up") << QPoint(0, -90) << false;
    QTest::newRow("down") << QPoint(0, 90) << false;
    QTest::newRow("tap") << QPoint(0, 0) << false;
}

void tst_QOXBorderSwipeGestureRecognizer::strokes()
{
    QFETCH(QPoint, stroke);
    QFETCH(bool, isSwipe);
    const Window window;
    Touch(window.panel).swipe(middle, middle + stroke);

    QCOMPARE(window.panel->isSwiped(), isSwipe);
    QCOMPARE(window.panel->states.isEmpty(), !isSwipe);
}

void tst_QOXBorderSwipeGestureRecognizer::besideTheBorderAShortStrokeIsEnough_data()
{
    QTest::addColumn<int>("panelX");
    QTest::addColumn<int>("pressX");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isSwipe");
    QTest::newRow("half of the way") << 0 << 60 << 30 << true;
    QTest::newRow("less than half of the way") << 0 << 60 << 29 << false;
    QTest::newRow("from the strip that peeks in") << -380 << 390 << 10 << true;
    QTest::newRow("tremble on the strip") << -380 << 390 << QApplication::startDragDistance() - 1 << false;
    QTest::newRow("the panel's own border, inside the parent") << 400 << 60 << 30 << true;
}

void tst_QOXBorderSwipeGestureRecognizer::besideTheBorderAShortStrokeIsEnough()
{
    QFETCH(int, panelX);
    QFETCH(int, pressX);
    QFETCH(int, length);
    QFETCH(bool, isSwipe);
    const Window window;
    window.panel->move(panelX, 0);
    Touch(window.panel).swipe({pressX, 100}, {pressX - length, 100});

    QCOMPARE(window.panel->isSwiped(), isSwipe);
}

void tst_QOXBorderSwipeGestureRecognizer::swipeMayEndOutsideTheWidget()
{
    const Window window;
    Touch(window.panel).swipe({10, 100}, {-200, 100});

    QVERIFY(window.panel->isSwiped());
}

void tst_QOXBorderSwipeGestureRecognizer::swipeOfAMovingWidgetIsMeasuredOnTheScreen()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    window.panel->move(300, 0);
    touch.lift(middle + QPoint(100, 0)); // the same place of the screen

    QVERIFY(!window.panel->isSwiped());
}

void tst_QOXBorderSwipeGestureRecognizer::oneSwipeAfterAnother()
{
    const Window window;
    Touch touch(window.panel);
    for (int i = 1; i <= 3; ++i) {
        touch.swipe(middle, middle - QPoint(120, 0));
        QCOMPARE(window.panel->states.count(Qt::GestureFinished), i);
    }
}

// What ends one

void tst_QOXBorderSwipeGestureRecognizer::nothingIsFinishedBeforeTheFingerLifts()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    QVERIFY(window.panel->states.isEmpty());
    touch.moveTo(middle - QPoint(120, 0));
    QCOMPARE(window.panel->states, States({Qt::GestureStarted}));
    touch.lift(middle - QPoint(120, 0));
    QCOMPARE(window.panel->states.last(), Qt::GestureFinished);
}

void tst_QOXBorderSwipeGestureRecognizer::fingerThatComesBackCancels()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.moveTo(middle - QPoint(120, 0));
    touch.moveTo(middle);
    touch.lift(middle);

    QCOMPARE(window.panel->states, States({Qt::GestureStarted, Qt::GestureCanceled}));
}

void tst_QOXBorderSwipeGestureRecognizer::fingerThatComesBackAndGoesAgainSwipes()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    for (const int x : {-120, 0, -60})
        touch.moveTo(middle + QPoint(x, 0));
    touch.lift(middle - QPoint(60, 0));

    QVERIFY(window.panel->isSwiped());
}

void tst_QOXBorderSwipeGestureRecognizer::secondFingerCancels()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.moveTo(middle - QPoint(120, 0));
    touch.pressAnother({300, 200});
    touch.liftAnother({300, 200});
    touch.lift(middle - QPoint(120, 0));

    QCOMPARE(window.panel->states, States({Qt::GestureStarted, Qt::GestureCanceled}));
}

void tst_QOXBorderSwipeGestureRecognizer::secondFingerBeforeTheStrokeSuppressesIt()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.pressAnother({300, 200});
    touch.liftAnother({300, 200});
    touch.moveTo(middle - QPoint(120, 0));
    touch.lift(middle - QPoint(120, 0));
    QCOMPARE(window.panel->states, States());

    touch.swipe(middle, middle - QPoint(120, 0));
    QVERIFY(window.panel->isSwiped());
}

void tst_QOXBorderSwipeGestureRecognizer::calledOffTouchCancels()
{
    const Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.moveTo(middle - QPoint(120, 0));
    QWindowSystemInterface::handleTouchCancelEvent<QWindowSystemInterface::SynchronousDelivery>(window.windowHandle(),
                                                                                                Touch::device());

    QCOMPARE(window.panel->states, States({Qt::GestureStarted, Qt::GestureCanceled}));
}

void tst_QOXBorderSwipeGestureRecognizer::twoFingersAreNoSwipeOfOurs()
{
    const Window window;
    Touch(window.panel).swipe(middle, middle - QPoint(120, 0), 2);

    QCOMPARE(window.panel->states, States());
}

void tst_QOXBorderSwipeGestureRecognizer::mouseIsNoFinger()
{
    const Window window;
    QTest::mousePress(window.panel, Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseMove(window.panel, middle - QPoint(120, 0));
    QTest::mouseRelease(window.panel, Qt::LeftButton, Qt::NoModifier, middle - QPoint(120, 0));

    QCOMPARE(window.panel->states, States());
}

// Whose it is

void tst_QOXBorderSwipeGestureRecognizer::swipeOnAChildIsTheWidgets()
{
    const Window window;
    auto *child = new QWidget(window.panel);
    child->setGeometry(50, 50, 300, 200);
    child->show();
    Touch(child).swipe(middle, middle - QPoint(120, 0));

    QCOMPARE(window.panel->states.last(), Qt::GestureFinished);
}

void tst_QOXBorderSwipeGestureRecognizer::buttonInTheWidgetStillTakesATap()
{
    const Window window;
    auto *button = new QPushButton(window.panel);
    button->setGeometry(50, 50, 300, 200);
    button->show();
    const QSignalSpy clicked(button, &QPushButton::clicked);
    Touch touch(button);
    touch.press({20, 20});
    touch.lift({20, 20});

    QTRY_COMPARE(clicked.count(), 1);
    QVERIFY(!button->isDown());
    QCOMPARE(window.panel->states, States());
}

void tst_QOXBorderSwipeGestureRecognizer::touchEventsReachTheWidget()
{
    const Window window;
    window.panel->takesTouch = true;
    Touch touch(window.panel);
    touch.press(middle);
    touch.moveTo(middle - QPoint(120, 0));
    touch.lift(middle - QPoint(120, 0));

    QCOMPARE(window.panel->touches, QVector<QEvent::Type>({QEvent::TouchBegin, QEvent::TouchUpdate, QEvent::TouchEnd}));
    QVERIFY(window.panel->isSwiped());
}

void tst_QOXBorderSwipeGestureRecognizer::otherWidgetIsNotRecognised()
{
    Window window;
    Panel other(&window);
    other.show();
    Touch(&other).swipe(middle, middle - QPoint(120, 0));

    QCOMPARE(other.states, States());
    QCOMPARE(window.panel->states, States());
}

void tst_QOXBorderSwipeGestureRecognizer::withoutAWidgetNothingIsRecognised()
{
    const Window window;
    recognizer()->setRightBorderWidget(nullptr);
    Touch(window.panel).swipe(middle, middle - QPoint(120, 0));

    QCOMPARE(window.panel->states, States());
}

void tst_QOXBorderSwipeGestureRecognizer::widgetMayDieDuringASwipe()
{
    Window window;
    Touch touch(window.panel);
    touch.press(middle);
    touch.moveTo(middle - QPoint(120, 0));
    delete window.panel;
    Touch(&window).lift({480, 100});

    QVERIFY(!recognizer()->rightBorderWidget());
}

QTEST_MAIN(tst_QOXBorderSwipeGestureRecognizer)
#include "tst_QOXBorderSwipeGestureRecognizer.moc"
