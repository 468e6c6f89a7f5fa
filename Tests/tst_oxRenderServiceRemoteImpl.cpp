#include <QApplication>
#include <QGestureEvent>
#include <QLabel>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>

#include "NextDefinition.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "PluginHost.h"
#include "QOXDockWidget.h"
#include "Touch.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxRenderServiceRemoteImpl.h"

namespace {

// A slide of the panel as it was when it started, and the animation as long as it lives.
struct Slide
{
    QPointer<QPropertyAnimation> animation;
    QAbstractAnimation::DeletionPolicy policy;
};

QVector<Slide> slides;
QVector<QPointer<QTimer>> startedTimers;

const QString module = QStringLiteral("Module");
const QString other = QStringLiteral("Other");

} // namespace

void QAbstractAnimation::start(DeletionPolicy policy)
{
    auto *animation = qobject_cast<QPropertyAnimation *>(this);
    if (animation && qobject_cast<QTabWidget *>(animation->targetObject()))
        slides.append({animation, policy});
    nextDefinition<void(QAbstractAnimation *, DeletionPolicy)>("_ZN18QAbstractAnimation5startENS_14DeletionPolicyE")(
        this, policy);
}

void QTimer::start(int interval)
{
    startedTimers.append(this);
    nextDefinition<void(QTimer *, int)>("_ZN6QTimer5startEi")(this, interval);
}

namespace {

// A module's content that asks for a size.
class Content : public QLabel
{
public:
    explicit Content(int width = 130)
        : m_width(width)
    {}
    QSize sizeHint() const override { return {m_width, 50}; }
    QSize minimumSizeHint() const override { return {10, 10}; }
    void setWidthHint(int width)
    {
        m_width = width;
        updateGeometry();
    }

private:
    int m_width;
};

// The services of a process with a window and a render view in it.
class Stage
{
public:
    explicit Stage(const QSize &viewSize = {1000, 600})
        : Stage(new oxRenderServiceRemoteImpl)
    {
        addView(viewSize);
        window.show();
    }

    explicit Stage(oxRenderServiceRemoteImpl *renderService)
        : service(renderService)
        , panel(findPanel())
        , m_previous(oxKernelServiceFactory::the()->getService<oxMainWindowService>())
    {
        slides.clear();
        startedTimers.clear();
        oxKernelServiceFactory::the()->fileService<oxMainWindowService>(&mainWindowService);
        mainWindowService.setWidget(&window);
    }

    ~Stage() { oxKernelServiceFactory::the()->fileService<oxMainWindowService>(m_previous); }

    QWidget *addView(const QSize &size = {1000, 600})
    {
        view = new QWidget(&window);
        view->setObjectName(QStringLiteral("RenderWindow"));
        view->resize(size);
        view->move(50, 50);
        window.resize(size + QSize(100, 100));
        view->show();
        return view;
    }

    Content *addModule(const QString &name = module)
    {
        auto *content = new Content;
        mainWindowService.addModule(name, QStringLiteral("Tools"), content, QString(), QIcon(), QString(),
                                    Qt::NoDockWidgetArea);
        return content;
    }

    // Modules in the panel, from the first tab on.
    QVector<Content *> addTabs(const QStringList &names)
    {
        QVector<Content *> contents;
        for (const QString &name : names) {
            contents.append(addModule(name));
            service->addOverlay(name);
        }
        return contents;
    }

    QDockWidget *dock(const QString &name = module) { return mainWindowService.getModule(name); }

    QStringList tabs() const
    {
        QStringList texts;
        for (int i = 0; i < panel->count(); ++i)
            texts.append(panel->tabText(i));
        return texts;
    }

    QWidgetList tabContents() const
    {
        QWidgetList contents;
        for (int i = 0; i < panel->count(); ++i)
            contents.append(panel->widget(i));
        return contents;
    }

    // Makes the panel ask for this width.
    void setWidthHint(int width)
    {
        auto *content = new Content;
        panel->addTab(content, QStringLiteral("-"));
        content->setWidthHint(content->sizeHint().width() + width - panel->sizeHint().width());
        if (panel->sizeHint().width() != width)
            qFatal("the panel asks for %d", panel->sizeHint().width());
    }

    bool send(QEvent *event) { return service->eventFilter(panel, event); }
    bool send(QEvent::Type type)
    {
        QEvent event(type);
        return send(&event);
    }

    bool doubleClick()
    {
        QMouseEvent event(QEvent::MouseButtonDblClick, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        return send(&event);
    }

    void timeOut() { QMetaObject::invokeMethod(service.data(), "twTimerFinished", Qt::DirectConnection); }

    // From wherever, without waiting.
    void goTo(int state)
    {
        if (state == 1)
            service->indicateOverlay(true);
        else if (state == 2)
            service->showOverlay();
        endSlides();
    }

    // By what the operations do that depend on it; it is another one afterwards.
    int findState()
    {
        slides.clear();
        service->indicateOverlay(false);
        if (!slides.isEmpty())
            return 1;
        service->showOverlay();
        return slides.isEmpty() ? 2 : 0;
    }

    static void endSlides()
    {
        for (const Slide &slide : qAsConst(slides)) {
            if (slide.animation)
                slide.animation->setCurrentTime(slide.animation->duration());
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        slides.clear();
    }

    QMainWindow window;
    QPointer<QWidget> view;
    oxMainWindowServiceRemoteImpl mainWindowService;
    QScopedPointer<oxRenderServiceRemoteImpl> service;
    QPointer<QTabWidget> panel;

private:
    // A service has just made it; another one, of the process's own service, was seen before.
    static QTabWidget *findPanel()
    {
        const QWidgetList topLevels = QApplication::topLevelWidgets();
        QTabWidget *found = nullptr;
        for (QWidget *widget : topLevels) {
            if (auto *candidate = qobject_cast<QTabWidget *>(widget);
                candidate && !candidate->property("seen").isValid())
                found = candidate;
        }
        if (!found)
            qFatal("the service has made no panel");
        found->setProperty("seen", true);
        return found;
    }

    oxMainWindowService *m_previous;
};

class CountingService : public oxRenderServiceRemoteImpl
{
public:
    void hideOverlay() override
    {
        ++hidden;
        oxRenderServiceRemoteImpl::hideOverlay();
    }

    int hidden = 0;
};

// Keeps what became of the panel's swipes, from one state of the gesture to the next.
class WatchingService : public oxRenderServiceRemoteImpl
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isTaken = oxRenderServiceRemoteImpl::eventFilter(watched, event);
        if (event->type() == QEvent::Gesture) {
            const QGesture *swipe = static_cast<QGestureEvent *>(event)->gesture(Qt::SwipeGesture);
            swipes.append({swipe->state(), isTaken});
        }
        return isTaken;
    }

    QVector<QPair<Qt::GestureState, bool>> swipes;
};

// What a slide is to be, in widths of the panel: W times its factor, plus pixels.
struct Motion
{
    int startFactor;
    int startPixels;
    int endFactor;
    int endPixels;
    int duration;
};

using Operation = std::function<void(Stage *)>;
using MaybeMotion = QVector<Motion>;

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(Motion)
Q_DECLARE_METATYPE(std::function<void(Touch *)>)

#define COMPARE_SLIDE(slide, startX, endX, milliseconds)                                                               \
    do {                                                                                                               \
        QVERIFY((slide).animation);                                                                                    \
        QCOMPARE((slide).animation->state(), QAbstractAnimation::Running);                                             \
        QCOMPARE((slide).animation->startValue(), QVariant(QPoint(startX, 0)));                                        \
        QCOMPARE((slide).animation->endValue(), QVariant(QPoint(endX, 0)));                                            \
        QCOMPARE((slide).animation->duration(), milliseconds);                                                         \
    } while (false)

class tst_oxRenderServiceRemoteImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void panelIsHiddenAndHasNoParentAtFirst();
    void panelIsSeeThroughAndNoSmallerThan100();
    void panelGoesWithTheService_data();
    void panelGoesWithTheService();
    void timerGoesWithTheService();
    void twTimerFinishedIsItsOnlySlot();

    void states_data();
    void states();
    void slideIsAnAnimationThatDeletesItself();
    void slideStartsWhereThePanelIs_data();
    void slideStartsWhereThePanelIs();
    void stripSlidesOutFromItsPlaceWhereverThePanelIs();
    void slideMovesThePanelAllTheWay();
    void timeOutOpensThePanelInAnyState();
    void panelIsHiddenWhenItHasSlidOut_data();
    void panelIsHiddenWhenItHasSlidOut();
    void panelStaysVisibleWhenItHasSlidIn_data();
    void panelStaysVisibleWhenItHasSlidIn();
    void newSlideTakesOver();
    void interruptedSlideOutDoesNotHideThePanel();

    void indicatedPanelHasItsSizeHintsWidthAndTheViewsHeight();
    void shownPanelsWidth_data();
    void shownPanelsWidth();
    void shownPanelHasTheViewsHeight();
    void panelSlidesInFromOutsideTheView_data();
    void panelSlidesInFromOutsideTheView();
    void nextShowFollowsTheViewsSize_data();
    void nextShowFollowsTheViewsSize();
    void visiblePanelKeepsItsSizeAsTheViewChanges_data();
    void visiblePanelKeepsItsSizeAsTheViewChanges();
    void indicatedPanelIsRaised();
    void shownPanelIsNotRaised();
    void newContentMakesTheNextIndicatedPanelWider();

    void viewIsTheFirstInChildOrder();
    void viewIsFoundByItsExactName_data();
    void viewIsFoundByItsExactName();
    void topLevelViewIsTakenWhenTheWindowHasNone();
    void firstOfTheTopLevelViewsIsTaken();
    void viewInTheWindowIsPreferredToATopLevel();
    void panelMovesToTheViewThatIsThereNow();
    void contentNamedLikeTheViewIsNotTaken();
    void withoutAViewNothingHappens_data();
    void withoutAViewNothingHappens();

    void eventResults_data();
    void eventResults();
    void hoverStartsTheTimer();
    void restingOnTheStripOpensThePanel();
    void leavingStopsTheTimer();
    void slidingOutLeavesTheTimerRunning_data();
    void slidingOutLeavesTheTimerRunning();
    void hoverBringsThePanelBack_data();
    void hoverBringsThePanelBack();
    void showingLeavesTheTimerRunning();
    void enteringAgainStartsTheTimerAnew();
    void enteringElsewhereThanOnTheStripStartsNoTimer_data();
    void enteringElsewhereThanOnTheStripStartsNoTimer();
    void timerRunsOnlyOnce();
    void doubleClickOnAContentClosesThePanel();
    void doubleClickThatAContentTakesDoesNotClose();
    void doubleClickWhileHiddenStillSlidesOut();
    void swipes_data();
    void swipes();
    void swipeCallsHideOverlayThroughTheVirtualTable();
    void swipeClosesOnlyWhenItIsFinished();
    void cancelledSwipeDoesNotClose_data();
    void cancelledSwipeDoesNotClose();
    void swipeOnAContentClosesThePanel();
    void gestureIsTakenOnlyWhenItIsAFinishedSwipeToTheLeft_data();
    void gestureIsTakenOnlyWhenItIsAFinishedSwipeToTheLeft();

    void contentMovesIntoATab();
    void addedContentIsVisibleInTheShownPanel();
    void addLeavesTheDockAsItIs_data();
    void addLeavesTheDockAsItIs();
    void secondContentGoesBehindTheFirst();
    void addReplacesATabOfThatNameInPlace_data();
    void addReplacesATabOfThatNameInPlace();
    void addReplacesTheFirstOfTwoTabs();
    void addKeepsTheCurrentIndex();
    void addOfWhatIsNotThereDoesNothing_data();
    void addOfWhatIsNotThereDoesNothing();
    void addOfADockWithoutContentDoesNothing();
    void addTakesTheFirstModuleInChildOrder();

    void contentMovesBackIntoItsDock();
    void subGivesBackTheContentOfAVisibleDockVisibly();
    void subOfWhatIsNotThereDoesNothing_data();
    void subOfWhatIsNotThereDoesNothing();
    void subSkipsTheSecondOfTwoAdjacentTabs();
    void subTakesTwoTabsThatAreNotAdjacent();

    void updateReplacesTheTabsContent_data();
    void updateReplacesTheTabsContent();
    void updateKeepsTheCurrentIndex();
    void updateTakesTheFirstOfTwoTabs();
    void updateWithoutATabChangesNothing();
    void updateOfADockWithoutContentDoesNothing();
    void updateOfWhatIsNotThereDoesNothing();

    void tabIsKnownByItsExactText_data();
    void tabIsKnownByItsExactText();

    void withoutAMainWindowNothingHappens();
    void withoutAMainWindowServiceNothingHappens();
    void afterTheMainWindowIsGoneNothingHappens();
    void panelOutlivesItsRenderView_data();
    void panelOutlivesItsRenderView();
    void panelOutlivesTheWindow();
    void deletedFormerViewLeavesThePanelWhereItIs();
    void hoverEndsWithTheRenderView();
    void afterThePanelIsGoneNothingHappens();
    void panelMayGoInTheMiddleOfASlide();
    void dockMayGoWhileItsContentIsInATab();
    void contentThatIsDeletedTakesItsTabAlong();
    void reloadedPluginLeavesTheOverlay();
    void removedPluginLeavesItsContentInTheOverlay();
    void nothingIsPrinted();

private:
    PluginHost m_host;
};

void tst_oxRenderServiceRemoteImpl::initTestCase()
{
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    for (QWidget *widget : topLevels)
        widget->setProperty("seen", true);
}

// Construction and destruction

void tst_oxRenderServiceRemoteImpl::panelIsHiddenAndHasNoParentAtFirst()
{
    const Stage stage;

    QVERIFY(stage.panel);
    QVERIFY(!stage.panel->parent());
    QVERIFY(stage.panel->isHidden());
    QCOMPARE(stage.panel->count(), 0);
}

void tst_oxRenderServiceRemoteImpl::panelIsSeeThroughAndNoSmallerThan100()
{
    const Stage stage;

    QCOMPARE(stage.panel->styleSheet(), QStringLiteral("background-color: rgba(75, 75, 75, 60%)"));
    QCOMPARE(stage.panel->minimumSize(), QSize(100, 100));
}

void tst_oxRenderServiceRemoteImpl::panelGoesWithTheService_data()
{
    QTest::addColumn<int>("state");
    QTest::newRow("hidden") << 0;
    QTest::newRow("indicated") << 1;
    QTest::newRow("shown") << 2;
}

void tst_oxRenderServiceRemoteImpl::panelGoesWithTheService()
{
    QFETCH(int, state);
    Stage stage;
    stage.goTo(state);
    stage.service.reset();

    QVERIFY(!stage.panel);
    QVERIFY(stage.view);
}

void tst_oxRenderServiceRemoteImpl::timerGoesWithTheService()
{
    Stage stage;
    stage.goTo(1);
    stage.send(QEvent::Enter);
    const QPointer<QTimer> timer = startedTimers.value(0);
    QVERIFY(timer);
    stage.service.reset();

    QVERIFY(!timer);
}

void tst_oxRenderServiceRemoteImpl::twTimerFinishedIsItsOnlySlot()
{
    const QMetaObject &meta = oxRenderServiceRemoteImpl::staticMetaObject;

    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("twTimerFinished()"));
    QCOMPARE(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Slot);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

// The table of states: where each operation and event leads, and by which motion

namespace {

const Operation indicate = [](Stage *stage) { stage->service->indicateOverlay(true); };
const Operation indicateNot = [](Stage *stage) { stage->service->indicateOverlay(false); };
const Operation showPanel = [](Stage *stage) { stage->service->showOverlay(); };
const Operation hidePanel = [](Stage *stage) { stage->service->hideOverlay(); };
const Operation enter = [](Stage *stage) { stage->send(QEvent::Enter); };
const Operation leave = [](Stage *stage) { stage->send(QEvent::Leave); };
const Operation timeOut = [](Stage *stage) { stage->timeOut(); };
const Operation doubleClick = [](Stage *stage) { stage->doubleClick(); };
const Operation swipeLeft = [](Stage *stage) { Touch(stage->panel).swipe({95, 50}, {5, 50}); };

const MaybeMotion none;
const MaybeMotion stripIn = {{-1, 0, -1, 20, 200}};
const MaybeMotion stripOut = {{-1, 20, -1, 0, 200}};
const MaybeMotion fullyIn = {{-1, 0, 0, 0, 500}};
const MaybeMotion fullyOut = {{0, 0, -1, 0, 500}};
const MaybeMotion stripToOut = {{-1, 20, -1, 0, 500}};
const MaybeMotion stripToFull = {{-1, 20, 0, 0, 300}};

} // namespace

Q_DECLARE_METATYPE(MaybeMotion)

void tst_oxRenderServiceRemoteImpl::states_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<MaybeMotion>("motion");
    QTest::addColumn<int>("to");

    QTest::newRow("hidden, indicate") << 0 << indicate << stripIn << 1;
    QTest::newRow("indicated, indicate") << 1 << indicate << none << 1;
    QTest::newRow("shown, indicate") << 2 << indicate << none << 2;

    QTest::newRow("hidden, indicate no more") << 0 << indicateNot << none << 0;
    QTest::newRow("indicated, indicate no more") << 1 << indicateNot << stripOut << 0;
    QTest::newRow("shown, indicate no more") << 2 << indicateNot << none << 2;

    QTest::newRow("hidden, show") << 0 << showPanel << fullyIn << 2;
    QTest::newRow("indicated, show") << 1 << showPanel << fullyIn << 2;
    QTest::newRow("shown, show") << 2 << showPanel << none << 2;

    QTest::newRow("hidden, hide") << 0 << hidePanel << none << 0;
    QTest::newRow("indicated, hide") << 1 << hidePanel << stripToOut << 0;
    QTest::newRow("shown, hide") << 2 << hidePanel << fullyOut << 0;

    QTest::newRow("indicated, enter") << 1 << enter << none << 1;
    QTest::newRow("shown, enter") << 2 << enter << none << 2;
    QTest::newRow("indicated, leave") << 1 << leave << none << 1;
    QTest::newRow("shown, leave") << 2 << leave << none << 2;

    QTest::newRow("indicated, time-out") << 1 << timeOut << stripToFull << 2;

    QTest::newRow("indicated, double click") << 1 << doubleClick << stripToOut << 0;
    QTest::newRow("shown, double click") << 2 << doubleClick << fullyOut << 0;

    QTest::newRow("shown, swipe") << 2 << swipeLeft << fullyOut << 0;
}

void tst_oxRenderServiceRemoteImpl::states()
{
    QFETCH(int, from);
    QFETCH(Operation, operation);
    QFETCH(MaybeMotion, motion);
    QFETCH(int, to);
    Stage stage;
    stage.setWidthHint(150);
    stage.goTo(from);
    operation(&stage);

    QCOMPARE(slides.size(), motion.size());
    const int width = stage.panel->width();
    for (const Motion &expected : motion) {
        COMPARE_SLIDE(slides.first(), expected.startFactor * width + expected.startPixels,
                      expected.endFactor * width + expected.endPixels, expected.duration);
    }
    QCOMPARE(stage.findState(), to); // at once, not when the slide ends
}

void tst_oxRenderServiceRemoteImpl::slideIsAnAnimationThatDeletesItself()
{
    Stage stage;
    stage.service->showOverlay();
    const Slide slide = slides.value(0);

    QCOMPARE(slide.animation->targetObject(), stage.panel.data());
    QCOMPARE(slide.animation->propertyName(), QByteArray("pos"));
    QVERIFY(!slide.animation->parent());
    QCOMPARE(slide.policy, QAbstractAnimation::DeleteWhenStopped);
    QTRY_VERIFY(!slide.animation);
}

void tst_oxRenderServiceRemoteImpl::slideStartsWhereThePanelIs_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<int>("endFactor");
    QTest::addColumn<int>("duration");
    QTest::newRow("hide") << hidePanel << -1 << 500;
    QTest::newRow("double click") << doubleClick << -1 << 500;
    QTest::newRow("time-out") << timeOut << 0 << 300;
}

void tst_oxRenderServiceRemoteImpl::slideStartsWhereThePanelIs()
{
    QFETCH(Operation, operation);
    QFETCH(int, endFactor);
    QFETCH(int, duration);
    Stage stage;
    stage.goTo(2);
    stage.panel->move(-37, 11);
    operation(&stage);

    COMPARE_SLIDE(slides.value(0), -37, endFactor * stage.panel->width(), duration);
}

void tst_oxRenderServiceRemoteImpl::stripSlidesOutFromItsPlaceWhereverThePanelIs()
{
    Stage stage;
    stage.goTo(1);
    stage.panel->move(-37, 11);
    stage.service->indicateOverlay(false);

    const int width = stage.panel->width();
    COMPARE_SLIDE(slides.value(0), 20 - width, -width, 200);
}

void tst_oxRenderServiceRemoteImpl::slideMovesThePanelAllTheWay()
{
    Stage stage;
    const auto isBetween = [&stage] { return stage.panel->x() > -stage.panel->width() && stage.panel->x() < 0; };
    stage.service->showOverlay();
    slides.first().animation->setCurrentTime(250);
    QVERIFY(isBetween());
    QTRY_COMPARE(stage.panel->pos(), QPoint(0, 0));

    stage.service->hideOverlay();
    slides.last().animation->setCurrentTime(250);
    QVERIFY(isBetween());
    QTRY_COMPARE(stage.panel->pos(), QPoint(-stage.panel->width(), 0));
}

void tst_oxRenderServiceRemoteImpl::timeOutOpensThePanelInAnyState()
{
    for (int state = 0; state < 3; ++state) {
        Stage stage;
        stage.goTo(state);
        const int x = stage.panel->x();
        stage.timeOut();

        COMPARE_SLIDE(slides.value(0), x, 0, 300);
        QCOMPARE(stage.findState(), 2);
    }
}

void tst_oxRenderServiceRemoteImpl::panelIsHiddenWhenItHasSlidOut_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate no more") << 1 << indicateNot;
    QTest::newRow("hide the strip") << 1 << hidePanel;
    QTest::newRow("hide") << 2 << hidePanel;
    QTest::newRow("double click") << 2 << doubleClick;
    QTest::newRow("swipe") << 2 << swipeLeft;
}

void tst_oxRenderServiceRemoteImpl::panelIsHiddenWhenItHasSlidOut()
{
    QFETCH(int, from);
    QFETCH(Operation, operation);
    Stage stage;
    stage.goTo(from);
    operation(&stage);

    QVERIFY(stage.panel->isVisible());
    QTRY_VERIFY(stage.panel->isHidden());
    QCOMPARE(stage.panel->pos(), QPoint(-stage.panel->width(), 0));
}

void tst_oxRenderServiceRemoteImpl::panelStaysVisibleWhenItHasSlidIn_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate") << 0 << indicate;
    QTest::newRow("show") << 0 << showPanel;
    QTest::newRow("time-out") << 1 << timeOut;
}

void tst_oxRenderServiceRemoteImpl::panelStaysVisibleWhenItHasSlidIn()
{
    QFETCH(int, from);
    QFETCH(Operation, operation);
    Stage stage;
    stage.goTo(from);
    operation(&stage);
    QVERIFY(stage.panel->isVisible());
    Stage::endSlides();

    QVERIFY(stage.panel->isVisible());
    QCOMPARE(stage.panel->parent(), stage.view.data());
}

// By Qt: one animation at a time drives a property of an object.
void tst_oxRenderServiceRemoteImpl::newSlideTakesOver()
{
    Stage stage;
    stage.service->showOverlay();
    stage.service->hideOverlay();

    QCOMPARE(slides.size(), 2);
    QCOMPARE(slides.first().animation->state(), QAbstractAnimation::Stopped);
    QCOMPARE(slides.last().animation->state(), QAbstractAnimation::Running);
}

void tst_oxRenderServiceRemoteImpl::interruptedSlideOutDoesNotHideThePanel()
{
    Stage stage;
    stage.goTo(2);
    stage.service->hideOverlay();
    QTRY_VERIFY(stage.panel->x() < 0);
    stage.service->showOverlay();
    QTRY_VERIFY(!slides.last().animation);

    QVERIFY(stage.panel->isVisible());
    QCOMPARE(stage.panel->pos(), QPoint(0, 0));
}

// Geometry

void tst_oxRenderServiceRemoteImpl::indicatedPanelHasItsSizeHintsWidthAndTheViewsHeight()
{
    Stage stage;
    stage.setWidthHint(150);
    stage.service->indicateOverlay(true);

    QCOMPARE(stage.panel->size(), QSize(150, 600));
    COMPARE_SLIDE(slides.value(0), -150, -130, 200);
}

void tst_oxRenderServiceRemoteImpl::shownPanelsWidth_data()
{
    QTest::addColumn<int>("viewWidth");
    QTest::addColumn<int>("widthHint");
    QTest::addColumn<int>("width");
    QTest::newRow("a fifth of the view") << 1000 << 150 << 200;
    QTest::newRow("the size hint") << 1000 << 250 << 250;
    QTest::newRow("both the same") << 1000 << 200 << 200;
    QTest::newRow("a fifth is cut") << 1004 << 150 << 200;
    QTest::newRow("one pixel more than the hint") << 1005 << 200 << 201;
    QTest::newRow("neither reaches the minimum") << 300 << 70 << 100;
}

void tst_oxRenderServiceRemoteImpl::shownPanelsWidth()
{
    QFETCH(int, viewWidth);
    QFETCH(int, widthHint);
    QFETCH(int, width);
    Stage stage({viewWidth, 600});
    stage.setWidthHint(widthHint);
    stage.service->showOverlay();

    QCOMPARE(stage.panel->width(), width);
    COMPARE_SLIDE(slides.value(0), -width, 0, 500);
}

void tst_oxRenderServiceRemoteImpl::shownPanelHasTheViewsHeight()
{
    Stage stage({1000, 444});
    stage.service->showOverlay();

    QCOMPARE(stage.panel->height(), 444);
}

void tst_oxRenderServiceRemoteImpl::panelSlidesInFromOutsideTheView_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate") << indicate;
    QTest::newRow("show") << showPanel;
}

void tst_oxRenderServiceRemoteImpl::panelSlidesInFromOutsideTheView()
{
    QFETCH(Operation, operation);
    Stage stage;
    operation(&stage);

    QCOMPARE(stage.panel->parent(), stage.view.data());
    QCOMPARE(stage.panel->pos(), QPoint(-stage.panel->width(), 0));
    QVERIFY(stage.panel->isVisible());
}

void tst_oxRenderServiceRemoteImpl::nextShowFollowsTheViewsSize_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QSize>("size");
    QTest::newRow("indicate") << indicate << QSize(150, 700);
    QTest::newRow("show") << showPanel << QSize(300, 700);
}

void tst_oxRenderServiceRemoteImpl::nextShowFollowsTheViewsSize()
{
    QFETCH(Operation, operation);
    QFETCH(QSize, size);
    Stage stage;
    stage.setWidthHint(150);
    stage.goTo(2);
    stage.service->hideOverlay();
    Stage::endSlides();
    stage.view->resize(1500, 700);
    operation(&stage);

    QCOMPARE(stage.panel->size(), size);
}

void tst_oxRenderServiceRemoteImpl::visiblePanelKeepsItsSizeAsTheViewChanges_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate") << indicate;
    QTest::newRow("show") << showPanel;
}

void tst_oxRenderServiceRemoteImpl::visiblePanelKeepsItsSizeAsTheViewChanges()
{
    QFETCH(Operation, operation);
    Stage stage;
    operation(&stage);
    Stage::endSlides();
    const QRect before = stage.panel->geometry();
    stage.view->resize(1500, 700);
    stage.view->move(20, 20);
    stage.window.resize(1600, 900);
    QCoreApplication::processEvents();

    QCOMPARE(stage.panel->geometry(), before);
    QVERIFY(slides.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::indicatedPanelIsRaised()
{
    Stage stage;
    stage.goTo(1);
    stage.service->indicateOverlay(false);
    auto *sibling = new QWidget(stage.view);
    stage.service->indicateOverlay(true);

    const QObjectList &order = stage.view->children();
    QVERIFY(order.indexOf(stage.panel) > order.indexOf(sibling));
}

void tst_oxRenderServiceRemoteImpl::shownPanelIsNotRaised()
{
    Stage stage;
    stage.goTo(1);
    auto *sibling = new QWidget(stage.view);
    stage.service->showOverlay();

    const QObjectList &order = stage.view->children();
    QVERIFY(order.indexOf(stage.panel) < order.indexOf(sibling));
}

void tst_oxRenderServiceRemoteImpl::newContentMakesTheNextIndicatedPanelWider()
{
    Stage stage;
    stage.addTabs({module});
    stage.goTo(1);
    const int before = stage.panel->width();
    stage.service->indicateOverlay(false);
    Stage::endSlides();
    stage.addModule(other)->setWidthHint(300);
    stage.service->addOverlay(other);
    stage.goTo(1);

    QVERIFY(before < 300);
    QVERIFY(stage.panel->width() >= 300);
}

// The render view

void tst_oxRenderServiceRemoteImpl::viewIsTheFirstInChildOrder()
{
    Stage stage(new oxRenderServiceRemoteImpl);
    auto *frame = new QWidget(&stage.window);
    QWidget *outer = stage.addView();
    QWidget *inner = stage.addView();
    inner->setParent(frame);
    stage.service->showOverlay();

    QCOMPARE(stage.panel->parent(), inner);
    QVERIFY(outer->children().isEmpty());
}

void tst_oxRenderServiceRemoteImpl::viewIsFoundByItsExactName_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"renderwindow", "RenderWindow ", "RenderWindow2", "Render", ""})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_oxRenderServiceRemoteImpl::viewIsFoundByItsExactName()
{
    QFETCH(QString, name);
    Stage stage;
    stage.view->setObjectName(name);
    stage.service->showOverlay();

    QVERIFY(slides.isEmpty());
    QVERIFY(!stage.panel->parent());
}

void tst_oxRenderServiceRemoteImpl::topLevelViewIsTakenWhenTheWindowHasNone()
{
    for (const Operation &operation : {indicate, showPanel}) {
        Stage stage(new oxRenderServiceRemoteImpl);
        QWidget view;
        view.setObjectName(QStringLiteral("RenderWindow"));
        view.resize(1000, 600);
        operation(&stage);

        QCOMPARE(stage.panel->parent(), &view);
        QCOMPARE(stage.panel->height(), 600);
        QCOMPARE(slides.size(), 1);
    }
}

void tst_oxRenderServiceRemoteImpl::firstOfTheTopLevelViewsIsTaken()
{
    Stage stage(new oxRenderServiceRemoteImpl);
    QWidget views[5];
    for (QWidget &view : views)
        view.setObjectName(QStringLiteral("RenderWindow"));
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    const auto first = std::find_if(topLevels.begin(), topLevels.end(), [](const QWidget *widget) {
        return widget->objectName() == QStringLiteral("RenderWindow");
    });
    stage.service->showOverlay();

    QCOMPARE(stage.panel->parent(), *first);
}

void tst_oxRenderServiceRemoteImpl::viewInTheWindowIsPreferredToATopLevel()
{
    QWidget topLevel;
    topLevel.setObjectName(QStringLiteral("RenderWindow"));
    Stage stage;
    stage.service->showOverlay();

    QCOMPARE(stage.panel->parent(), stage.view.data());
}

void tst_oxRenderServiceRemoteImpl::panelMovesToTheViewThatIsThereNow()
{
    Stage stage;
    stage.goTo(1);
    stage.view->setObjectName(QString());
    stage.addView({500, 333});
    stage.service->showOverlay();

    QCOMPARE(stage.panel->parent(), stage.view.data());
    QCOMPARE(stage.panel->height(), 333);
    QVERIFY(stage.panel->isVisible());
}

void tst_oxRenderServiceRemoteImpl::contentNamedLikeTheViewIsNotTaken()
{
    Stage stage;
    stage.addTabs({module});
    stage.goTo(2); // from now on the panel and its content are in the window
    stage.panel->widget(0)->setObjectName(QStringLiteral("RenderWindow"));
    stage.view->setObjectName(QString());
    stage.service->hideOverlay();
    Stage::endSlides();
    stage.service->showOverlay();
    QVERIFY(slides.isEmpty());

    stage.view->setObjectName(QStringLiteral("RenderWindow"));
    stage.service->showOverlay();
    QCOMPARE(stage.panel->parent(), stage.view.data());
    QCOMPARE(slides.size(), 1);
}

void tst_oxRenderServiceRemoteImpl::withoutAViewNothingHappens_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate") << indicate;
    QTest::newRow("show") << showPanel;
}

void tst_oxRenderServiceRemoteImpl::withoutAViewNothingHappens()
{
    QFETCH(Operation, operation);
    Stage stage(new oxRenderServiceRemoteImpl);
    const QRect geometry = stage.panel->geometry();
    operation(&stage);

    QVERIFY(slides.isEmpty());
    QVERIFY(!stage.panel->parent());
    QVERIFY(stage.panel->isHidden());
    QCOMPARE(stage.panel->geometry(), geometry);
    stage.addView();
    QCOMPARE(stage.findState(), 0);
}

// Events

void tst_oxRenderServiceRemoteImpl::eventResults_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<bool>("result");
    const struct
    {
        const char *name;
        QEvent::Type type;
        bool results[3];
    } rows[] = {
        {"double click", QEvent::MouseButtonDblClick, {true, true, true}},
        {"enter", QEvent::Enter, {false, true, false}},
        {"leave", QEvent::Leave, {true, true, true}},
        {"press", QEvent::MouseButtonPress, {false, false, false}},
        {"release", QEvent::MouseButtonRelease, {false, false, false}},
        {"move", QEvent::MouseMove, {false, false, false}},
        {"touch", QEvent::TouchBegin, {false, false, false}},
        {"resize", QEvent::Resize, {false, false, false}},
        {"paint", QEvent::Paint, {false, false, false}},
    };
    for (const auto &row : rows) {
        for (int state = 0; state < 3; ++state)
            QTest::addRow("%s in state %d", row.name, state) << state << row.type << row.results[state];
    }
}

void tst_oxRenderServiceRemoteImpl::eventResults()
{
    QFETCH(int, state);
    QFETCH(QEvent::Type, type);
    QFETCH(bool, result);
    Stage stage;
    stage.goTo(state);

    QEvent event(type);
    QCOMPARE(stage.send(&event), result);
    QVERIFY(!stage.service->eventFilter(stage.view, &event));
    QVERIFY(!stage.service->eventFilter(stage.panel->tabBar(), &event));
}

void tst_oxRenderServiceRemoteImpl::hoverStartsTheTimer()
{
    Stage stage;
    stage.goTo(1);
    stage.send(QEvent::Enter);

    QCOMPARE(startedTimers.size(), 1);
    QCOMPARE(startedTimers.first()->interval(), 400);
    QVERIFY(startedTimers.first()->isActive());
    QVERIFY(!startedTimers.first()->parent());
    QVERIFY(slides.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::restingOnTheStripOpensThePanel()
{
    Stage stage;
    stage.goTo(1);
    QElapsedTimer clock;
    clock.start();
    QEvent event(QEvent::Enter);
    QCoreApplication::sendEvent(stage.panel, &event);
    QSignalSpy rested(startedTimers.value(0), &QTimer::timeout);
    QVERIFY(rested.wait(60000)); // and no longer, so that the slide still runs

    QCOMPARE(slides.size(), 1);
    QVERIFY2(clock.elapsed() >= 380, qPrintable(QString::number(clock.elapsed()))); // coarse by 5 per cent
    COMPARE_SLIDE(slides.first(), 20 - stage.panel->width(), 0, 300);
    QCOMPARE(stage.findState(), 2);
}

void tst_oxRenderServiceRemoteImpl::leavingStopsTheTimer()
{
    Stage stage;
    stage.goTo(1);
    for (const QEvent::Type type : {QEvent::Enter, QEvent::Leave}) {
        QEvent event(type);
        QCoreApplication::sendEvent(stage.panel, &event);
        QCOMPARE(startedTimers.value(0)->isActive(), type == QEvent::Enter);
    }
    QCOMPARE(stage.findState(), 1);
}

void tst_oxRenderServiceRemoteImpl::slidingOutLeavesTheTimerRunning_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("indicate no more") << indicateNot;
    QTest::newRow("hide") << hidePanel;
    QTest::newRow("double click") << doubleClick;
}

void tst_oxRenderServiceRemoteImpl::slidingOutLeavesTheTimerRunning()
{
    QFETCH(Operation, operation);
    Stage stage;
    stage.setWidthHint(150);
    stage.goTo(1);
    stage.send(QEvent::Enter);
    operation(&stage);

    QCOMPARE(slides.size(), 1); // it is on its way out
    QCOMPARE(startedTimers.size(), 1);
    QVERIFY(startedTimers.first()->isActive());
    stage.send(QEvent::Leave);
    QVERIFY(!startedTimers.first()->isActive());
}

void tst_oxRenderServiceRemoteImpl::hoverBringsThePanelBack_data()
{
    slidingOutLeavesTheTimerRunning_data();
}

void tst_oxRenderServiceRemoteImpl::hoverBringsThePanelBack()
{
    QFETCH(Operation, operation);
    Stage stage;
    stage.setWidthHint(150);
    stage.goTo(1);
    stage.send(QEvent::Enter);
    operation(&stage);
    slides.clear();
    QSignalSpy rested(startedTimers.value(0), &QTimer::timeout);
    QVERIFY(rested.wait(60000));

    QCOMPARE(slides.size(), 1);
    QCOMPARE(slides.first().animation->endValue(), QVariant(QPoint(0, 0)));
    QCOMPARE(slides.first().animation->duration(), 300);
    QVERIFY(!startedTimers.first()->isActive());
    QTRY_COMPARE(stage.panel->pos(), QPoint(0, 0));
    QCOMPARE(stage.findState(), 2);
}

void tst_oxRenderServiceRemoteImpl::showingLeavesTheTimerRunning()
{
    Stage stage;
    stage.goTo(1);
    stage.send(QEvent::Enter);
    stage.service->showOverlay();
    QVERIFY(startedTimers.value(0)->isActive());
    slides.clear();
    QSignalSpy rested(startedTimers.first(), &QTimer::timeout);
    QVERIFY(rested.wait(60000));

    QCOMPARE(slides.size(), 1);
    QCOMPARE(slides.first().animation->endValue(), QVariant(QPoint(0, 0)));
    QCOMPARE(slides.first().animation->duration(), 300);
    QCOMPARE(stage.findState(), 2);
}

void tst_oxRenderServiceRemoteImpl::enteringAgainStartsTheTimerAnew()
{
    Stage stage;
    stage.goTo(1);
    for (const QEvent::Type type : {QEvent::Enter, QEvent::Leave, QEvent::Enter})
        stage.send(type);

    QCOMPARE(startedTimers.size(), 2);
    QCOMPARE(startedTimers.first(), startedTimers.last());
    QVERIFY(startedTimers.first()->isActive());
}

void tst_oxRenderServiceRemoteImpl::enteringElsewhereThanOnTheStripStartsNoTimer_data()
{
    QTest::addColumn<int>("state");
    QTest::newRow("hidden") << 0;
    QTest::newRow("shown") << 2;
}

void tst_oxRenderServiceRemoteImpl::enteringElsewhereThanOnTheStripStartsNoTimer()
{
    QFETCH(int, state);
    Stage stage;
    stage.goTo(state);
    startedTimers.clear();
    stage.send(QEvent::Enter);

    QVERIFY(startedTimers.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::timerRunsOnlyOnce()
{
    Stage stage;
    stage.goTo(1);
    stage.send(QEvent::Enter);
    stage.timeOut();

    QVERIFY(!startedTimers.first()->isActive());
}

void tst_oxRenderServiceRemoteImpl::doubleClickOnAContentClosesThePanel()
{
    Stage stage;
    stage.addTabs({module});
    stage.goTo(2);
    QTest::mouseDClick(stage.panel->widget(0), Qt::LeftButton);

    QCOMPARE(slides.size(), 1);
    QCOMPARE(stage.findState(), 0);
}

void tst_oxRenderServiceRemoteImpl::doubleClickThatAContentTakesDoesNotClose()
{
    Stage stage;
    auto *button = new QPushButton(stage.addTabs({module}).first());
    stage.goTo(2);
    QTest::mouseDClick(button, Qt::LeftButton);

    QVERIFY(slides.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::doubleClickWhileHiddenStillSlidesOut()
{
    Stage stage;
    stage.goTo(2);
    stage.service->hideOverlay();
    Stage::endSlides();
    const int width = stage.panel->width();
    QVERIFY(stage.doubleClick());

    QCOMPARE(slides.size(), 1);
    COMPARE_SLIDE(slides.first(), -width, -width, 500);
    QCOMPARE(stage.findState(), 0);
}

void tst_oxRenderServiceRemoteImpl::swipes_data()
{
    QTest::addColumn<QPoint>("stroke");
    QTest::addColumn<int>("fingers");
    QTest::addColumn<bool>("closes");
    QTest::newRow("to the left") << QPoint(-150, 0) << 1 << true;
    QTest::newRow("to the right") << QPoint(150, 0) << 1 << false;
    QTest::newRow("up") << QPoint(0, -150) << 1 << false;
    QTest::newRow("down") << QPoint(0, 150) << 1 << false;
    QTest::newRow("to the left, three fingers") << QPoint(-150, 0) << 3 << true;
    QTest::newRow("to the right, three fingers") << QPoint(150, 0) << 3 << false;
    QTest::newRow("up, three fingers") << QPoint(0, -150) << 3 << false;
}

// With three fingers the swipe is one of Qt's own.
void tst_oxRenderServiceRemoteImpl::swipes()
{
    QFETCH(QPoint, stroke);
    QFETCH(int, fingers);
    QFETCH(bool, closes);
    Stage stage({2000, 600});
    stage.goTo(2);
    Touch(stage.panel).swipe({200, 300}, QPoint(200, 300) + stroke, fingers);

    QCOMPARE(slides.size(), closes ? 1 : 0);
    QCOMPARE(stage.findState(), closes ? 0 : 2);
}

void tst_oxRenderServiceRemoteImpl::swipeCallsHideOverlayThroughTheVirtualTable()
{
    auto *service = new CountingService;
    Stage stage(service);
    stage.addView();
    stage.window.show();
    stage.goTo(2);
    swipeLeft(&stage);

    QCOMPARE(service->hidden, 1);
    stage.doubleClick();
    QCOMPARE(service->hidden, 1);
}

void tst_oxRenderServiceRemoteImpl::swipeClosesOnlyWhenItIsFinished()
{
    Stage stage;
    stage.goTo(2);
    Touch touch(stage.panel);
    touch.press({150, 300});
    touch.moveTo({50, 300});
    touch.moveTo({40, 300});
    QVERIFY(slides.isEmpty());
    touch.lift({40, 300});
    QCOMPARE(slides.size(), 1);
}

void tst_oxRenderServiceRemoteImpl::cancelledSwipeDoesNotClose_data()
{
    using Stroke = std::function<void(Touch *)>;
    QTest::addColumn<Stroke>("stroke");
    QTest::newRow("second finger") << Stroke([](Touch *touch) {
        touch->pressAnother({50, 400});
        touch->liftAnother({50, 400});
        touch->lift({40, 300});
    });
    QTest::newRow("finger that comes back") << Stroke([](Touch *touch) {
        touch->moveTo({150, 300});
        touch->lift({150, 300});
    });
}

void tst_oxRenderServiceRemoteImpl::cancelledSwipeDoesNotClose()
{
    QFETCH(std::function<void(Touch *)>, stroke);
    auto *service = new WatchingService;
    Stage stage(service);
    stage.addView();
    stage.window.show();
    stage.goTo(2);
    Touch touch(stage.panel);
    touch.press({150, 300});
    touch.moveTo({50, 300});
    touch.moveTo({40, 300});
    stroke(&touch);

    const QVector<QPair<Qt::GestureState, bool>> expected{{Qt::GestureStarted, false}, {Qt::GestureCanceled, false}};
    QCOMPARE(service->swipes.first(), expected.first());
    QCOMPARE(service->swipes.last(), expected.last());
    QVERIFY(slides.isEmpty());
    QCOMPARE(stage.findState(), 2);
}

void tst_oxRenderServiceRemoteImpl::swipeOnAContentClosesThePanel()
{
    Stage stage;
    Content *content = stage.addTabs({module}).first();
    stage.goTo(2);
    Touch(content).swipe({120, 50}, {20, 50});

    QCOMPARE(slides.size(), 1);
    QCOMPARE(stage.findState(), 0);
}

void tst_oxRenderServiceRemoteImpl::gestureIsTakenOnlyWhenItIsAFinishedSwipeToTheLeft_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QPoint>("stroke");
    QTest::addColumn<int>("fingers");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("to the left") << 2 << QPoint(-150, 0) << 1 << true;
    QTest::newRow("to the left, on the way out") << 0 << QPoint(-150, 0) << 1 << true;
    QTest::newRow("to the right") << 2 << QPoint(150, 0) << 3 << false;
}

void tst_oxRenderServiceRemoteImpl::gestureIsTakenOnlyWhenItIsAFinishedSwipeToTheLeft()
{
    QFETCH(int, state);
    QFETCH(QPoint, stroke);
    QFETCH(int, fingers);
    QFETCH(bool, isTaken);
    auto *service = new WatchingService;
    Stage stage(service);
    stage.addView({2000, 600});
    stage.window.show();
    stage.goTo(2);
    if (state == 0) {
        service->hideOverlay();
        slides.first().animation->pause();
    }
    Touch(stage.panel).swipe({200, 300}, QPoint(200, 300) + stroke, fingers);
    Stage::endSlides();

    QVERIFY(service->swipes.size() >= 2);
    const auto end = service->swipes.takeLast();
    QCOMPARE(end.first, Qt::GestureFinished);
    QCOMPARE(end.second, isTaken);
    for (const auto &swipe : qAsConst(service->swipes))
        QVERIFY(!swipe.second);
}

// addOverlay()

void tst_oxRenderServiceRemoteImpl::contentMovesIntoATab()
{
    Stage stage;
    QWidget *content = stage.addModule();
    stage.service->addOverlay(module);

    QCOMPARE(stage.tabs(), QStringList({module}));
    QCOMPARE(stage.panel->widget(0), content);
    QVERIFY(!stage.dock()->widget());
    QVERIFY(slides.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::addedContentIsVisibleInTheShownPanel()
{
    Stage stage;
    QWidget *content = stage.addTabs({module}).first();
    stage.goTo(2);

    QVERIFY(content->isVisible());
    QVERIFY(stage.panel->isAncestorOf(content));
}

void tst_oxRenderServiceRemoteImpl::addLeavesTheDockAsItIs_data()
{
    QTest::addColumn<bool>("isShown");
    QTest::newRow("shown") << true;
    QTest::newRow("hidden") << false;
}

void tst_oxRenderServiceRemoteImpl::addLeavesTheDockAsItIs()
{
    QFETCH(bool, isShown);
    Stage stage;
    stage.addModule();
    if (isShown)
        stage.mainWindowService.showModule(module);
    const QSignalSpy changes(stage.dock(), &QDockWidget::visibilityChanged);
    stage.service->addOverlay(module);

    QCOMPARE(stage.dock()->isVisible(), isShown);
    QCOMPARE(changes.size(), 0);
}

void tst_oxRenderServiceRemoteImpl::secondContentGoesBehindTheFirst()
{
    Stage stage;
    stage.addTabs({module, other});

    QCOMPARE(stage.tabs(), QStringList({module, other}));
    QCOMPARE(stage.panel->currentIndex(), 0);
}

void tst_oxRenderServiceRemoteImpl::addReplacesATabOfThatNameInPlace_data()
{
    QTest::addColumn<int>("replaced");
    QTest::addColumn<int>("current");
    for (int replaced = 0; replaced < 3; ++replaced) {
        for (int current = 0; current < 3; ++current)
            QTest::addRow("tab %d while %d is current", replaced, current) << replaced << current;
    }
}

void tst_oxRenderServiceRemoteImpl::addReplacesATabOfThatNameInPlace()
{
    QFETCH(int, replaced);
    QFETCH(int, current);
    Stage stage;
    const QStringList names = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")};
    const QVector<Content *> before = stage.addTabs(names);
    stage.panel->setCurrentIndex(current);
    auto *content = new Content;
    const QPointer<QWidget> former = before.at(replaced);
    stage.dock(names.at(replaced))->setWidget(content);
    stage.service->addOverlay(names.at(replaced));

    QVERIFY(former); // it is no tab any more, but whose it is may still use it
    QCOMPARE(stage.tabs(), names);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(stage.panel->widget(i), i == replaced ? content : before.at(i));
    QCOMPARE(stage.panel->currentIndex(), current);
}

void tst_oxRenderServiceRemoteImpl::addReplacesTheFirstOfTwoTabs()
{
    Stage stage;
    auto *second = new QWidget;
    stage.panel->addTab(new QWidget, module);
    stage.panel->addTab(second, module);
    QWidget *content = stage.addTabs({module}).first();

    QCOMPARE(stage.tabContents(), QWidgetList({content, second}));
}

void tst_oxRenderServiceRemoteImpl::addKeepsTheCurrentIndex()
{
    Stage stage;
    stage.addTabs({module, other});
    stage.panel->setCurrentIndex(1);
    stage.addTabs({QStringLiteral("Third")});

    QCOMPARE(stage.panel->currentIndex(), 1);
}

void tst_oxRenderServiceRemoteImpl::addOfWhatIsNotThereDoesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("other name") << other;
    QTest::newRow("other case") << QStringLiteral("module");
    QTest::newRow("part of the name") << QStringLiteral("Modul");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("null") << QString();
}

void tst_oxRenderServiceRemoteImpl::addOfWhatIsNotThereDoesNothing()
{
    QFETCH(QString, name);
    Stage stage;
    const QWidget *content = stage.addModule();
    stage.service->addOverlay(name);

    QCOMPARE(stage.panel->count(), 0);
    QCOMPARE(stage.dock()->widget(), content);
}

void tst_oxRenderServiceRemoteImpl::addOfADockWithoutContentDoesNothing()
{
    Stage stage;
    const QVector<Content *> contents = stage.addTabs({module, other});
    stage.service->addOverlay(module); // its content is in the tab already

    QCOMPARE(stage.tabContents(), QWidgetList({contents[0], contents[1]}));
}

void tst_oxRenderServiceRemoteImpl::addTakesTheFirstModuleInChildOrder()
{
    Stage stage;
    auto *plain = new QDockWidget(module, &stage.window);
    plain->setWidget(new QWidget);
    auto *inside = new QOXDockWidget(module, QStringLiteral("Tools"), QIcon(), new QMainWindow(&stage.window));
    auto *content = new QWidget;
    inside->setWidget(content);
    stage.addModule();
    stage.service->addOverlay(module);

    QCOMPARE(stage.tabContents(), QWidgetList({content}));
}

// subOverlay()

void tst_oxRenderServiceRemoteImpl::contentMovesBackIntoItsDock()
{
    Stage stage;
    const QVector<Content *> contents = stage.addTabs({module, other});
    stage.service->subOverlay(module);

    QCOMPARE(stage.tabs(), QStringList({other}));
    QCOMPARE(stage.dock()->widget(), contents[0]);
    QCOMPARE(stage.panel->widget(0), contents[1]);
}

void tst_oxRenderServiceRemoteImpl::subGivesBackTheContentOfAVisibleDockVisibly()
{
    Stage stage;
    const Content *content = stage.addTabs({module}).first();
    stage.mainWindowService.showModule(module);
    stage.service->subOverlay(module);

    QVERIFY(content->isVisible());
    QVERIFY(stage.dock()->isAncestorOf(content));
}

void tst_oxRenderServiceRemoteImpl::subOfWhatIsNotThereDoesNothing_data()
{
    addOfWhatIsNotThereDoesNothing_data();
}

void tst_oxRenderServiceRemoteImpl::subOfWhatIsNotThereDoesNothing()
{
    QFETCH(QString, name);
    Stage stage;
    const Content *content = stage.addTabs({module}).first();
    stage.addModule(other);
    stage.service->subOverlay(name);

    QCOMPARE(stage.tabContents(), QWidgetList({stage.panel->widget(0)}));
    QCOMPARE(stage.panel->widget(0), content);
    QVERIFY(!stage.dock()->widget());
    QVERIFY(stage.dock(other)->widget());
}

void tst_oxRenderServiceRemoteImpl::subSkipsTheSecondOfTwoAdjacentTabs()
{
    Stage stage;
    const Content *first = stage.addTabs({module}).first();
    auto *second = new QWidget;
    stage.panel->addTab(second, module);
    stage.service->subOverlay(module);

    QCOMPARE(stage.dock()->widget(), first);
    QCOMPARE(stage.tabContents(), QWidgetList({second}));
}

void tst_oxRenderServiceRemoteImpl::subTakesTwoTabsThatAreNotAdjacent()
{
    Stage stage;
    stage.addTabs({module, other});
    auto *last = new QWidget;
    stage.panel->addTab(last, module);
    stage.service->subOverlay(module);

    QCOMPARE(stage.tabs(), QStringList({other}));
    QCOMPARE(stage.dock()->widget(), last);
}

// updateOverlay()

void tst_oxRenderServiceRemoteImpl::updateReplacesTheTabsContent_data()
{
    addReplacesATabOfThatNameInPlace_data();
}

void tst_oxRenderServiceRemoteImpl::updateReplacesTheTabsContent()
{
    QFETCH(int, replaced);
    QFETCH(int, current);
    Stage stage;
    const QStringList names = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")};
    const QVector<Content *> before = stage.addTabs(names);
    stage.panel->setCurrentIndex(current);
    auto *content = new Content;
    const QPointer<QWidget> former = before.at(replaced);
    stage.mainWindowService.changeModule(names.at(replaced), QStringLiteral("Tools"), content);
    stage.service->updateOverlay(names.at(replaced));

    QVERIFY(former);
    QCOMPARE(stage.tabs(), names);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(stage.panel->widget(i), i == replaced ? content : before.at(i));
    QCOMPARE(stage.panel->currentIndex(), current);
    QVERIFY(!stage.dock(names.at(replaced))->widget());
}

void tst_oxRenderServiceRemoteImpl::updateKeepsTheCurrentIndex()
{
    Stage stage;
    stage.addTabs({module});
    stage.goTo(2);
    auto *content = new Content;
    stage.dock()->setWidget(content);
    stage.service->updateOverlay(module);

    QCOMPARE(stage.panel->currentIndex(), 0);
    QVERIFY(content->isVisible());
}

void tst_oxRenderServiceRemoteImpl::updateTakesTheFirstOfTwoTabs()
{
    Stage stage;
    stage.addTabs({module});
    auto *second = new QWidget;
    stage.panel->addTab(second, module);
    auto *content = new Content;
    stage.dock()->setWidget(content);
    stage.service->updateOverlay(module);

    QCOMPARE(stage.tabContents(), QWidgetList({content, second}));
}

void tst_oxRenderServiceRemoteImpl::updateWithoutATabChangesNothing()
{
    Stage stage;
    stage.addTabs({other, QStringLiteral("Third")});
    stage.panel->setCurrentIndex(1);
    const QWidget *content = stage.addModule();
    stage.service->updateOverlay(module);

    QCOMPARE(stage.tabs(), QStringList({other, QStringLiteral("Third")}));
    QCOMPARE(stage.panel->currentIndex(), 1);
    QCOMPARE(stage.dock()->widget(), content);
}

void tst_oxRenderServiceRemoteImpl::updateOfADockWithoutContentDoesNothing()
{
    Stage stage;
    QWidget *content = stage.addTabs({module}).first();
    stage.service->updateOverlay(module);

    QCOMPARE(stage.tabContents(), QWidgetList({content}));
}

void tst_oxRenderServiceRemoteImpl::updateOfWhatIsNotThereDoesNothing()
{
    Stage stage;
    QWidget *content = stage.addTabs({module}).first();
    for (const QString &name : {other, QStringLiteral("module"), QString()})
        stage.service->updateOverlay(name);

    QCOMPARE(stage.tabContents(), QWidgetList({content}));
}

void tst_oxRenderServiceRemoteImpl::tabIsKnownByItsExactText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("longer") << QStringLiteral("Modules");
    QTest::newRow("shorter") << QStringLiteral("Modul");
    QTest::newRow("other case") << QStringLiteral("MODULE");
}

void tst_oxRenderServiceRemoteImpl::tabIsKnownByItsExactText()
{
    QFETCH(QString, text);
    Stage stage;
    stage.addTabs({text});
    const QWidget *content = stage.addModule();
    stage.service->updateOverlay(module);
    stage.service->subOverlay(module);
    QCOMPARE(stage.dock()->widget(), content);

    stage.service->addOverlay(module);
    QCOMPARE(stage.tabs(), QStringList({text, module}));
}

// Bad input

namespace {

void callEverything(Stage *stage)
{
    for (const Operation &operation : {indicate, showPanel, hidePanel, indicateNot})
        operation(stage);
    stage->service->addOverlay(module);
    stage->service->updateOverlay(module);
    stage->service->subOverlay(module);
}

} // namespace

void tst_oxRenderServiceRemoteImpl::withoutAMainWindowNothingHappens()
{
    QWidget topLevel;
    topLevel.setObjectName(QStringLiteral("RenderWindow"));
    Stage stage;
    oxMainWindowServiceRemoteImpl withoutWindow;
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(&withoutWindow);
    callEverything(&stage);

    QVERIFY(slides.isEmpty());
    QVERIFY(!stage.panel->parent());
}

void tst_oxRenderServiceRemoteImpl::withoutAMainWindowServiceNothingHappens()
{
    Stage stage;
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(nullptr);
    const Output output = outputOf([&stage] { callEverything(&stage); });

    QVERIFY(slides.isEmpty());
    QVERIFY(!stage.panel->parent());
    QCOMPARE(output.standardError,
             QByteArray("oxKernelServiceFactory: service '19oxMainWindowService' is NULL!\n").repeated(5));
}

void tst_oxRenderServiceRemoteImpl::afterTheMainWindowIsGoneNothingHappens()
{
    Stage stage;
    {
        QMainWindow later;
        stage.mainWindowService.setWidget(&later);
    }
    callEverything(&stage);

    QVERIFY(slides.isEmpty());
}

void tst_oxRenderServiceRemoteImpl::panelOutlivesItsRenderView_data()
{
    panelGoesWithTheService_data();
    QTest::newRow("sliding in") << 3;
    QTest::newRow("sliding out") << 4;
}

void tst_oxRenderServiceRemoteImpl::panelOutlivesItsRenderView()
{
    QFETCH(int, state);
    Stage stage;
    QWidget *content = stage.addTabs({module}).first();
    stage.goTo(state > 2 ? 2 : state);
    if (state > 2)
        stage.service->hideOverlay();
    if (state == 3)
        stage.service->showOverlay();
    delete stage.view;
    QVERIFY(stage.panel);
    QVERIFY(!stage.panel->parent());
    QVERIFY(!stage.panel->isVisible());

    stage.addView({700, 350});
    QCOMPARE(stage.findState(), 0);
    QCOMPARE(stage.panel->parent(), stage.view.data());
    QCOMPARE(stage.panel->height(), 350);
    QCOMPARE(stage.tabContents(), QWidgetList({content}));
    QVERIFY(content->isVisible());
}

void tst_oxRenderServiceRemoteImpl::panelOutlivesTheWindow()
{
    Stage stage(new oxRenderServiceRemoteImpl);
    auto *window = new QMainWindow;
    auto *view = new QWidget;
    view->setObjectName(QStringLiteral("RenderWindow"));
    window->setCentralWidget(view);
    window->show();
    stage.mainWindowService.setWidget(window);
    QPointer<Content> content = stage.addTabs({module}).first();
    stage.goTo(2);
    delete window;

    QVERIFY(content);
    stage.mainWindowService.setWidget(&stage.window);
    stage.addView();
    QCOMPARE(stage.findState(), 0);
}

void tst_oxRenderServiceRemoteImpl::deletedFormerViewLeavesThePanelWhereItIs()
{
    Stage stage;
    stage.goTo(1);
    QWidget *former = stage.view;
    former->setObjectName(QString());
    stage.addView();
    stage.goTo(2);
    delete former;

    QCOMPARE(stage.panel->parent(), stage.view.data());
    QVERIFY(stage.panel->isVisible());
    QCOMPARE(stage.findState(), 2);
}

void tst_oxRenderServiceRemoteImpl::hoverEndsWithTheRenderView()
{
    Stage stage;
    stage.goTo(1);
    stage.send(QEvent::Enter);
    delete stage.view;

    QVERIFY(!startedTimers.first()->isActive());
    stage.addView();
    bool isLater = false;
    QTimer::singleShot(500, Qt::PreciseTimer, this, [&isLater] { isLater = true; }); // a hover would be over
    QTRY_VERIFY(isLater);
    stage.service->showOverlay(); // not taken for shown already
    QVERIFY(stage.panel->isVisible());
    QCOMPARE(stage.panel->parent(), stage.view.data());
}

void tst_oxRenderServiceRemoteImpl::afterThePanelIsGoneNothingHappens()
{
    for (int state = 0; state < 3; ++state) {
        Stage stage;
        const QWidget *content = stage.addModule();
        stage.goTo(state);
        delete stage.panel;
        callEverything(&stage);
        stage.timeOut();

        QVERIFY(slides.isEmpty());
        QCOMPARE(stage.dock()->widget(), content);
    }
}

void tst_oxRenderServiceRemoteImpl::panelMayGoInTheMiddleOfASlide()
{
    Stage stage;
    stage.service->showOverlay();
    const QPointer<QPropertyAnimation> slide = slides.first().animation;
    QTRY_VERIFY(stage.panel->x() > -stage.panel->width());
    stage.service.reset();

    QTRY_VERIFY(!slide);
}

void tst_oxRenderServiceRemoteImpl::dockMayGoWhileItsContentIsInATab()
{
    Stage stage;
    QWidget *content = stage.addTabs({module}).first();
    stage.mainWindowService.subModule(module);
    callEverything(&stage);
    QCOMPARE(stage.tabContents(), QWidgetList({content}));

    QWidget *later = stage.addTabs({module}).first();
    QCOMPARE(stage.tabContents(), QWidgetList({later}));
}

void tst_oxRenderServiceRemoteImpl::contentThatIsDeletedTakesItsTabAlong()
{
    Stage stage;
    delete stage.addTabs({module, other}).first();
    QCOMPARE(stage.tabs(), QStringList({other}));

    stage.service->subOverlay(module);
    QVERIFY(!stage.dock()->widget());
}

// A plugin's content is deleted before the new one is there: the tab goes with it.
void tst_oxRenderServiceRemoteImpl::reloadedPluginLeavesTheOverlay()
{
    Stage stage;
    m_host.write(QStringLiteral("Tool.py"), "text = 'first'\n");
    m_host.scan();
    const QString tool = QStringLiteral("Tool");
    const QPointer<QWidget> content = stage.dock(tool)->widget();
    stage.service->addOverlay(tool);
    stage.goTo(2);
    QCOMPARE(stage.tabContents(), QWidgetList({content}));

    m_host.write(QStringLiteral("Tool.py"), "text = 'second'\n");
    m_host.scan();
    QVERIFY(!content);
    QCOMPARE(stage.panel->count(), 0);
    QVERIFY(stage.dock(tool)->widget());
    QCOMPARE(m_host.evaluateIn(tool, QStringLiteral("text")), QVariant("second"));
    stage.service->addOverlay(tool);
    QCOMPARE(stage.tabs(), QStringList({tool}));
    m_host.clear();
}

void tst_oxRenderServiceRemoteImpl::removedPluginLeavesItsContentInTheOverlay()
{
    Stage stage;
    m_host.write(QStringLiteral("Tool.py"), "");
    m_host.scan();
    const QString tool = QStringLiteral("Tool");
    QWidget *content = stage.dock(tool)->widget();
    stage.service->addOverlay(tool);
    m_host.clear();

    QVERIFY(!stage.dock(tool));
    QCOMPARE(stage.tabContents(), QWidgetList({content}));
    stage.service->subOverlay(tool);
    QCOMPARE(stage.tabContents(), QWidgetList({content}));
    stage.goTo(2);
    QVERIFY(content->isVisible());

    m_host.write(QStringLiteral("Tool.py"), "");
    m_host.scan();
    QCOMPARE(stage.tabContents(), QWidgetList({content}));
    QWidget *later = stage.dock(tool)->widget();
    stage.service->addOverlay(tool);
    QCOMPARE(stage.tabContents(), QWidgetList({later}));
    m_host.clear();
}

void tst_oxRenderServiceRemoteImpl::nothingIsPrinted()
{
    Stage stage;
    stage.addModule();
    const Output output = outputOf([&stage] {
        callEverything(&stage);
        stage.service->addOverlay(other);
        swipeLeft(&stage);
        delete stage.view;
        callEverything(&stage);
        QTest::qWait(1); // lets slides run on
    });

    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(output.standardError, QByteArray());
}

QTEST_MAIN(tst_oxRenderServiceRemoteImpl)
#include "tst_oxRenderServiceRemoteImpl.moc"
