// The overlay and the panels as their users meet them: on an X server, with a window manager and a
// mouse. What comes of an operation is tested without a display, in tst_oxRenderServiceRemoteImpl.

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QMenu>
#include <QMenuBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include "Patience.h"
#include "PluginHost.h"
#include "Touch.h"
#include "XServer.h"
#include "oxKernelServiceFactory.h"
#include "oxRenderService.h"

namespace {

const QString tool = QStringLiteral("Tool");

// When the mouse came over a widget, double-clicked it and left, and how the widget moved.
class Watch : public QObject
{
public:
    explicit Watch(QWidget *widget)
    {
        m_clock.start();
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Enter)
            entered = m_clock.elapsed();
        else if (event->type() == QEvent::Leave)
            left = m_clock.elapsed();
        else if (event->type() == QEvent::MouseButtonDblClick)
            doubleClicked = m_clock.elapsed();
        else if (event->type() == QEvent::Move) {
            lastMove = m_clock.elapsed();
            if (moves.isEmpty())
                firstMove = lastMove;
            moves.append(static_cast<QMoveEvent *>(event)->pos().x());
        }
        return false;
    }

    qint64 entered = -1;
    qint64 left = -1;
    qint64 doubleClicked = -1;
    qint64 firstMove = -1;
    qint64 lastMove = -1;
    QVector<int> moves;

private:
    QElapsedTimer m_clock;
};

} // namespace

class tst_overlayOnX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void restingOnTheStripFor400MillisecondsOpens();
    void leavingTheStripAfter300MillisecondsDoesNot();
    void slideIsEvenAndTakesItsTime();
    void doubleClickCloses();
    void doubleClickOnTheStripDoesNotEndTheHover();
    void doubleClickBesideThePanelDoesNotClose();
    void swipeCloses();
    void nextShowFollowsAResizedWindow();
    void checkMarkFollowsTheCloseButton();
    void entryOfTheMenuOpensAndClosesThePanel();
    void contentThatComesBackIsVisibleInItsOpenDock();

private:
    QPoint inView(int x, int y) const { return m_view->mapToGlobal(QPoint(x, y)); }
    void indicate();
    void show();
    void openByMenu();

    PluginHost m_host;
    oxRenderService *m_service = nullptr;
    QWidget *m_view = nullptr;
    QTabWidget *m_panel = nullptr;
};

void tst_overlayOnX11::initTestCase()
{
    m_service = oxKernelServiceFactory::the()->getService<oxRenderService>();
    m_view = new QWidget;
    m_view->setObjectName(QStringLiteral("RenderWindow"));
    m_host.window.setCentralWidget(m_view);
    m_host.window.resize(800, 600);
    m_host.window.show();
    QVERIFY(QTest::qWaitForWindowActive(&m_host.window, 60000));
    QApplication::setDoubleClickInterval(10000); // also of a hand that is held up
}

void tst_overlayOnX11::init()
{
    m_host.write(QStringLiteral("Tool.py"),
                 "from PythonQt.QtGui import QLabel\n"
                 "TARNPluginWidget.layout().addWidget(QLabel('A tool for tests'))\n");
    m_host.scan();
    m_service->addOverlay(tool);
    Hand::moveTo(inView(500, 300));
}

void tst_overlayOnX11::cleanup()
{
    m_service->hideOverlay();
    if (m_panel)
        QTRY_VERIFY(m_panel->isHidden());
    m_service->subOverlay(tool);
    m_host.clear();
}

void tst_overlayOnX11::indicate()
{
    m_service->indicateOverlay(true);
    m_panel = m_view->findChild<QTabWidget *>();
    QVERIFY(m_panel);
    QTRY_COMPARE(m_panel->x(), 20 - m_panel->width());
}

void tst_overlayOnX11::show()
{
    m_service->showOverlay();
    m_panel = m_view->findChild<QTabWidget *>();
    QVERIFY(m_panel);
    QTRY_COMPARE(m_panel->x(), 0);
}

void tst_overlayOnX11::openByMenu()
{
    QMenu *menu = m_host.menu(QStringLiteral("Scripts"));
    QMenuBar *bar = m_host.window.menuBar();
    Hand::click(bar, bar->actionGeometry(menu->menuAction()).center());
    QTRY_VERIFY(menu->isVisible());
    Hand::click(menu, menu->actionGeometry(m_host.entry(tool)).center());
    QTRY_VERIFY(!menu->isVisible());
}

void tst_overlayOnX11::restingOnTheStripFor400MillisecondsOpens()
{
    indicate();
    const Watch watch(m_panel);
    Hand::moveTo(inView(10, 300));
    QTRY_COMPARE(m_panel->x(), 0);

    const qint64 rest = watch.firstMove - watch.entered;
    QVERIFY2(rest >= 380, qPrintable(QString::number(rest))); // Qt's timers are coarse by 5 per cent
    QVERIFY(m_panel->isVisible());
}

// A hand that is held up on a busy machine leaves too late: that says nothing, and it tries again.
void tst_overlayOnX11::leavingTheStripAfter300MillisecondsDoesNot()
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        indicate();
        const Watch watch(m_panel);
        Hand::moveToAndOn(inView(10, 300), 300, inView(500, 300));
        QTRY_VERIFY(watch.left >= watch.entered);
        QVERIFY(watch.entered >= 0);
        if (watch.left - watch.entered < 370) {
            // A timer that still runs comes due before one that is started now.
            bool isDue = false;
            QTimer::singleShot(500, Qt::PreciseTimer, this, [&isDue] { isDue = true; });
            QTRY_VERIFY(isDue);
            QCOMPARE(watch.moves, QVector<int>());
            return;
        }
        cleanup();
        init();
    }
    QFAIL("the hand never left in time");
}

// On a busy machine it may be jerky now and then.
void tst_overlayOnX11::slideIsEvenAndTakesItsTime()
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        indicate();
        m_service->indicateOverlay(false);
        QTRY_VERIFY(m_panel->isHidden());
        const Watch watch(m_panel);
        show();

        QVERIFY(std::is_sorted(watch.moves.begin(), watch.moves.end()));
        QVERIFY2(watch.lastMove >= 490, qPrintable(QString::number(watch.lastMove)));
        if (watch.moves.size() >= 5)
            return;
        cleanup();
        init();
    }
    QFAIL("the slide was never even");
}

void tst_overlayOnX11::doubleClickCloses()
{
    show();
    Hand::doubleClick(inView(50, 300));

    QTRY_VERIFY(m_panel->isHidden());
    QCOMPARE(m_panel->x(), -m_panel->width());
}

// The panel goes, and comes back while the mouse rests. A hand that is held up clicks when it is open already.
void tst_overlayOnX11::doubleClickOnTheStripDoesNotEndTheHover()
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        indicate();
        const Watch watch(m_panel);
        Hand::doubleClick(inView(10, 300));
        QTRY_VERIFY(watch.doubleClicked >= 0);
        QVERIFY(watch.entered >= 0);
        if (watch.doubleClicked - watch.entered < 370) {
            QTRY_COMPARE(m_panel->x(), 0);
            QVERIFY(m_panel->isVisible());
            QVERIFY(watch.left < 0);
            return;
        }
        cleanup();
        init();
    }
    QFAIL("the hand was never in time");
}

void tst_overlayOnX11::doubleClickBesideThePanelDoesNotClose()
{
    show();
    const Watch watch(m_panel);
    Hand::doubleClick(inView(500, 300));
    Hand::click(m_panel, {50, 300}); // comes after it
    QTRY_VERIFY(watch.entered >= 0);

    QCOMPARE(watch.moves, QVector<int>());
    QVERIFY(m_panel->isVisible());
}

// The X server's test extension has no fingers: these come from Qt.
void tst_overlayOnX11::swipeCloses()
{
    show();
    Touch(m_panel).swipe({140, 300}, {40, 300});

    QTRY_VERIFY(m_panel->isHidden());
}

void tst_overlayOnX11::nextShowFollowsAResizedWindow()
{
    show();
    m_service->hideOverlay();
    QTRY_VERIFY(m_panel->isHidden());
    Hand::perform({QStringLiteral("windowsize"), QString::number(m_host.window.winId()), QStringLiteral("1100"),
                   QStringLiteral("700")});
    QTRY_COMPARE(m_host.window.size(), QSize(1100, 700));
    show();

    QCOMPARE(m_panel->size(), QSize(1100 / 5, m_view->height()));
    m_host.window.resize(800, 600);
    QTRY_COMPARE(m_host.window.size(), QSize(800, 600));
}

void tst_overlayOnX11::checkMarkFollowsTheCloseButton()
{
    openByMenu();
    const QDockWidget *dock = m_host.dock(tool);
    QTRY_VERIFY(dock->isVisible());
    QVERIFY(m_host.entry(tool)->isChecked());
    auto *button = dock->findChild<QAbstractButton *>(QStringLiteral("qt_dockwidget_closebutton"));
    QVERIFY(button->isVisible());
    Hand::click(button, button->rect().center());

    QTRY_VERIFY(dock->isHidden());
    QVERIFY(!m_host.entry(tool)->isChecked());
}

void tst_overlayOnX11::entryOfTheMenuOpensAndClosesThePanel()
{
    for (const bool opens : {true, false, true, false}) {
        openByMenu();
        QTRY_COMPARE(m_host.dock(tool)->isVisible(), opens);
        QCOMPARE(m_host.entry(tool)->isChecked(), opens);
    }
}

void tst_overlayOnX11::contentThatComesBackIsVisibleInItsOpenDock()
{
    show();
    openByMenu();
    QTRY_VERIFY(m_host.dock(tool)->isVisible());
    m_service->subOverlay(tool);
    const QWidget *content = m_host.dock(tool)->widget();
    QVERIFY(content);
    QVERIFY(content->isVisible());
    QCOMPARE(content->window(), m_host.dock(tool));
}

int main(int argc, char **argv)
{
    const XServer server;
    const QApplication application(argc, argv);
    tst_overlayOnX11 test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_overlayOnX11.moc"
