#include "oxRenderServiceRemoteImpl.h"

#include <QApplication>
#include <QEvent>
#include <QGestureEvent>
#include <QMainWindow>
#include <QPropertyAnimation>
#include <QTimer>

#include <algorithm>

#include "FirstDescendant.h"
#include "QOXBorderSwipeGestureRecognizer.h"
#include "QOXDockWidget.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"

namespace {

constexpr int indicatedWidth = 20;

QMainWindow *mainWindow()
{
    const auto *service = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    return service ? service->getWidget() : nullptr;
}

// Whatever the contents of the panel are named, the panel cannot go into one of them.
QWidget *findRenderView(const QWidget *panel)
{
    const QMainWindow *window = mainWindow();
    if (!window)
        return nullptr;
    const auto isRenderView = [panel](const QWidget *widget) {
        return widget->objectName() == QLatin1String("RenderWindow") && widget != panel && !panel->isAncestorOf(widget);
    };
    if (auto *view = firstDescendant<QWidget>(window, isRenderView))
        return view;
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    const auto view = std::find_if(topLevels.begin(), topLevels.end(), isRenderView);
    return view == topLevels.end() ? nullptr : *view;
}

bool isFinishedSwipeToTheLeft(QEvent *event)
{
    const QGesture *gesture = static_cast<QGestureEvent *>(event)->gesture(Qt::SwipeGesture);
    if (!gesture || gesture->state() != Qt::GestureFinished)
        return false;
    return static_cast<const QSwipeGesture *>(gesture)->horizontalDirection() == QSwipeGesture::Left;
}

} // namespace

oxRenderServiceRemoteImpl::oxRenderServiceRemoteImpl()
{
    hoverTimer = new QTimer;
    panel = new QTabWidget;
    panel->installEventFilter(this);
    panel->setStyleSheet(QStringLiteral("background-color: rgba(75, 75, 75, 60%)"));
    panel->setMinimumSize(100, 100);
    swipeRecognizer = new QOXBorderSwipeGestureRecognizer;
    swipeRecognizer->setRightBorderWidget(panel);
    QGestureRecognizer::registerRecognizer(swipeRecognizer);
    panel->grabGesture(Qt::SwipeGesture);
    connect(hoverTimer, SIGNAL(timeout(void)), this, SLOT(twTimerFinished(void)));
}

oxRenderServiceRemoteImpl::~oxRenderServiceRemoteImpl()
{
    delete panel;
    delete hoverTimer;
}

void oxRenderServiceRemoteImpl::indicateOverlay(bool on)
{
    if (!panel)
        return;
    if (!on) {
        if (overlayState != Indicated)
            return;
        slideOut(indicatedWidth - panel->width(), 200);
        return;
    }

    if (overlayState > Hidden)
        return;
    QWidget *view = findRenderView(panel);
    if (!view)
        return;
    putOver(view);
    panel->resize(panel->sizeHint().width(), view->height());
    panel->move(-panel->width(), 0);
    panel->show();
    panel->raise();
    animateOverlay(-panel->width(), indicatedWidth - panel->width(), 200);
    overlayState = Indicated;
}

void oxRenderServiceRemoteImpl::showOverlay()
{
    if (!panel || overlayState == Shown)
        return;
    QWidget *view = findRenderView(panel);
    if (!view)
        return;
    putOver(view);
    panel->resize(std::max(panel->sizeHint().width(), view->width() / 5), view->height());
    panel->move(-panel->width(), 0);
    panel->show(); // Deliberate: not raised, unlike when it is indicated
    animateOverlay(-panel->width(), 0, 500);
    overlayState = Shown;
}

void oxRenderServiceRemoteImpl::hideOverlay()
{
    if (!panel || overlayState == Hidden)
        return;
    slideOut(panel->x(), 500);
}

void oxRenderServiceRemoteImpl::addOverlay(const QString &name)
{
    QOXDockWidget *dock = getDockWidget(name);
    QWidget *content = dock ? dock->widget() : nullptr;
    if (!content || !panel)
        return;
    dock->setWidget(nullptr);
    const int current = panel->currentIndex();
    const int tab = findTab(name);
    if (tab >= 0) {
        panel->removeTab(tab);
        panel->insertTab(tab, content, dock->windowTitle());
    } else {
        panel->addTab(content, dock->windowTitle());
    }
    panel->setCurrentIndex(current);
}

void oxRenderServiceRemoteImpl::subOverlay(const QString &name)
{
    QOXDockWidget *dock = getDockWidget(name);
    if (!dock || !panel)
        return;
    // Deliberate: the tab drops out as its widget moves, and the loop goes on with the next
    // index: the second of two adjacent tabs of the same text is skipped.
    for (int i = 0; i < panel->count(); ++i) {
        if (panel->tabText(i) == name && panel->widget(i))
            dock->setWidget(panel->widget(i));
    }
}

void oxRenderServiceRemoteImpl::updateOverlay(const QString &name)
{
    // First, as each reload of a plugin comes here and the search for the dock takes longer.
    const int tab = mainWindow() && panel ? findTab(name) : -1;
    if (tab < 0)
        return;
    QOXDockWidget *dock = getDockWidget(name);
    QWidget *content = dock ? dock->widget() : nullptr;
    if (!content)
        return;
    const int current = panel->currentIndex();
    panel->removeTab(tab);
    dock->setWidget(nullptr);
    panel->insertTab(tab, content, dock->windowTitle());
    panel->setCurrentIndex(current);
}

bool oxRenderServiceRemoteImpl::eventFilter(QObject *watched, QEvent *event)
{
    // As it is deleted, the panel still gets events when it is no QTabWidget any more.
    if (!qobject_cast<QTabWidget *>(watched) || watched != panel)
        return oxRenderService::eventFilter(watched, event);

    switch (event->type()) {
    case QEvent::MouseButtonDblClick:
        slideOut(panel->x(), 500);
        return true;
    case QEvent::Enter:
        if (overlayState != Indicated)
            break;
        hoverTimer->start(400);
        return true;
    case QEvent::Leave:
        hoverTimer->stop();
        return true;
    case QEvent::Gesture:
        if (!isFinishedSwipeToTheLeft(event))
            break;
        hideOverlay();
        return true;
    default:
        break;
    }
    return oxRenderService::eventFilter(watched, event);
}

void oxRenderServiceRemoteImpl::twTimerFinished()
{
    hoverTimer->stop();
    if (!panel)
        return;
    animateOverlay(panel->x(), 0, 300);
    overlayState = Shown;
}

void oxRenderServiceRemoteImpl::putOver(QWidget *view)
{
    panel->setParent(view);
    connect(view, &QObject::destroyed, this, &oxRenderServiceRemoteImpl::leaveRenderView, Qt::UniqueConnection);
}

// The view is about to delete its children, but the panel is the service's and holds modules. A hover
// timer must not take it for shown, with no view to be seen in: showOverlay() would do nothing then.
void oxRenderServiceRemoteImpl::leaveRenderView(const QObject *view)
{
    if (!panel || panel->parent() != view)
        return;
    panel->setParent(nullptr);
    hoverTimer->stop();
    overlayState = Hidden;
}

// Deliberate: a hover timer runs on, and brings the panel back unless the mouse leaves it in time.
void oxRenderServiceRemoteImpl::slideOut(int startX, int durationMs)
{
    animateOverlay(startX, -panel->width(), durationMs);
    overlayState = Hidden;
}

// No slide is stopped here. Qt itself lets one animation at a time drive a property: a new slide
// takes over, and the earlier one ends without finished().
void oxRenderServiceRemoteImpl::animateOverlay(int startX, int endX, int durationMs)
{
    auto *slide = new QPropertyAnimation(panel, "pos");
    slide->setDuration(durationMs);
    slide->setStartValue(QPoint(startX, 0));
    slide->setEndValue(QPoint(endX, 0));
    slide->start(QAbstractAnimation::DeleteWhenStopped);
    if (endX == -panel->width())
        connect(slide, &QAbstractAnimation::finished, panel, &QWidget::hide);
}

QOXDockWidget *oxRenderServiceRemoteImpl::getDockWidget(const QString &name) const
{
    const QMainWindow *window = mainWindow();
    if (!window)
        return nullptr;
    return firstDescendant<QOXDockWidget>(window,
                                          [&name](const QOXDockWidget *dock) { return dock->windowTitle() == name; });
}

int oxRenderServiceRemoteImpl::findTab(const QString &name) const
{
    for (int i = 0; i < panel->count(); ++i) {
        if (panel->tabText(i) == name)
            return i;
    }
    return -1;
}
