#include <QMainWindow>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

#include "QOXDockWidget.h"
#include "VirtualSlot.h"

namespace {

// A content that asks for a size.
class Panel : public QWidget
{
public:
    explicit Panel(const QSize &size)
        : m_size(size)
    {}
    QSize sizeHint() const override { return m_size; }

private:
    QSize m_size;
};

// Has its first operation where a subclass of QDockWidget has it.
class FirstOperationProbe : public QDockWidget
{
public:
    virtual void operation(bool) {}
};

class Window : public QMainWindow
{
public:
    Window()
    {
        setCentralWidget(new QWidget);
        setGeometry(50, 50, 700, 500);
        show();
    }

    QOXDockWidget *addPanel(const QSize &size = {200, 150})
    {
        auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon(), this);
        dock->setWidget(new Panel(size));
        dock->setToolWindow(true);
        dock->resize(0, 0);
        dock->hide();
        return dock;
    }

    QOXDockWidget *showPanel(const QSize &size = {200, 150})
    {
        QOXDockWidget *dock = addPanel(size);
        dock->show();
        return dock;
    }

    QRect centralArea() const { return QRect(centralWidget()->mapToGlobal(QPoint(0, 0)), centralWidget()->size()); }
};

QRect screen()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}

void moveAsAWindowManagerDoes(QWidget *widget, const QPoint &place)
{
    QWindowSystemInterface::handleGeometryChange(widget->windowHandle(), QRect(place, widget->size()));
    QWindowSystemInterface::flushWindowSystemEvents();
}

// Timers that are due earlier have come by then, also on a machine that is busy.
bool pass(int milliseconds)
{
    bool isDue = false;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, qApp, [&isDue] { isDue = true; });
    return QTest::qWaitFor([&isDue] { return isDue; }, 60000);
}

} // namespace

class tst_QOXDockWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void carriesTitleMenuNameAndIcon();
    void isAnOrdinaryDockWidgetAtFirst();
    void setToolWindowIsItsFirstOwnOperation();
    void toolWindowStaysHidden();
    void toolWindowFloatsWhenItIsShown();
    void visibleDockBecomesAToolWindowAtOnce();
    void toolWindowGoesBackToItsDockArea();
    void toolWindowThatWasInNoDockAreaStaysOne();
    void takesItsContentsSizeWhenFirstShown();
    void takesItsContentsSizeAlsoWithoutAParent();
    void tellsThatItIsVisibleWhenFirstShown_data();
    void tellsThatItIsVisibleWhenFirstShown();
    void keepsTheUsersSizeAndPlaceWhenShownAgain();
    void opensAgainOverAParentThatWasMoved();
    void keepsItsDistanceToTheNearestCorner_data();
    void keepsItsDistanceToTheNearestCorner();
    void panelBesideItsParentKeepsItsPlaceOnTheScreen();
    void opensInsideTheScreen();
    void opensAgainInsideTheScreen();
    void isNoLargerThanTheScreen();
    void isNoWiderThanTheScreenForItsTitle();
    void isWideEnoughForItsTitle_data();
    void isWideEnoughForItsTitle();
    void goesWithAParentThatIsStillPlaced();
    void goesWithAParentThatIsShownLater();
    void panelsThatGoWithTheirParentStayApart();
    void staysWhenTheParentMovesLater();
    void staysWhereTheProgramMovesIt();
    void returnsOnceWhenTheWindowManagerMovesItAtFirst();
    void staysWhereTheWindowManagerMovesItLater();
    void opensWhereItWasAlsoIfItMovedWhileHidden();
    void standsAtTheRightEdgeOfTheCentralArea();
    void takesAFreePlaceBesideOpenPanels();
    void takesThePlaceOfAClosedPanel();
    void standsInTheCornerWhereAllIsFull();
    void panelLargerThanTheWindowStandsInTheCorner();
};

void tst_QOXDockWidget::carriesTitleMenuNameAndIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::red);
    const QIcon icon(pixmap);
    QMainWindow window;
    auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), icon, &window);

    QCOMPARE(dock->windowTitle(), QStringLiteral("Panel"));
    QCOMPARE(dock->menuName(), QStringLiteral("Scripts"));
    QCOMPARE(dock->windowIcon().cacheKey(), icon.cacheKey());
    QCOMPARE(dock->parent(), &window);
    QCOMPARE(dock->metaObject()->className(), "QOXDockWidget");
}

void tst_QOXDockWidget::isAnOrdinaryDockWidgetAtFirst()
{
    Window window;
    auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon(), &window);

    QVERIFY(!dock->isFloating());
    QVERIFY(!dock->isVisible());
}

void tst_QOXDockWidget::setToolWindowIsItsFirstOwnOperation()
{
    QCOMPARE(virtualSlot(&QOXDockWidget::setToolWindow), virtualSlot(&FirstOperationProbe::operation));
}

void tst_QOXDockWidget::toolWindowStaysHidden()
{
    Window window;
    auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon(), &window);
    dock->setToolWindow(true);
    QVERIFY(dock->isHidden());

    window.hide();
    window.show();
    QVERIFY(dock->isHidden());
    QCOMPARE(dock->parent(), &window);
    QCOMPARE(window.dockWidgetArea(dock), Qt::NoDockWidgetArea);
}

void tst_QOXDockWidget::toolWindowFloatsWhenItIsShown()
{
    Window window;
    QOXDockWidget *dock = window.addPanel();
    dock->setVisible(true);

    QVERIFY(dock->isFloating());
    QCOMPARE(dock->windowType(), Qt::Tool);
    QVERIFY(dock->isVisible());
    QCOMPARE(dock->parent(), &window);
    QCOMPARE(window.dockWidgetArea(dock), Qt::NoDockWidgetArea);
}

void tst_QOXDockWidget::visibleDockBecomesAToolWindowAtOnce()
{
    Window window;
    auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon(), &window);
    dock->show();
    QVERIFY(!dock->isFloating());
    dock->setToolWindow(true);

    QVERIFY(dock->isFloating());
    QVERIFY(dock->isVisible());
}

void tst_QOXDockWidget::toolWindowGoesBackToItsDockArea()
{
    Window window;
    auto *dock = new QOXDockWidget(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon(), &window);
    window.addDockWidget(Qt::LeftDockWidgetArea, dock);
    dock->setToolWindow(true);
    dock->show();
    QVERIFY(dock->isFloating());
    dock->setToolWindow(false);

    QVERIFY(!dock->isFloating());
    QCOMPARE(dock->window(), &window);
    QCOMPARE(window.dockWidgetArea(dock), Qt::LeftDockWidgetArea);
}

void tst_QOXDockWidget::toolWindowThatWasInNoDockAreaStaysOne()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    dock->setToolWindow(false);

    QVERIFY(dock->isFloating());
    QVERIFY(dock->isVisible());
}

void tst_QOXDockWidget::takesItsContentsSizeWhenFirstShown()
{
    Window window;
    QOXDockWidget *dock = window.addPanel({240, 130});
    dock->show();

    QCOMPARE(dock->size(), dock->sizeHint());
    QCOMPARE(dock->widget()->size(), QSize(240, 130));
}

void tst_QOXDockWidget::takesItsContentsSizeAlsoWithoutAParent()
{
    QOXDockWidget dock(QStringLiteral("Panel"), QStringLiteral("Scripts"), QIcon());
    dock.setWidget(new Panel({240, 130}));
    dock.setToolWindow(true);
    dock.resize(0, 0);
    dock.show();

    QCOMPARE(dock.widget()->size(), QSize(240, 130));
}

void tst_QOXDockWidget::tellsThatItIsVisibleWhenFirstShown_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("of some size") << QSize(200, 150);
    QTest::newRow("of no size") << QSize(0, 0);
    QTest::newRow("that asks for no size") << QSize();
}

// QDockWidget takes a shown dock of no size for one that cannot be seen.
void tst_QOXDockWidget::tellsThatItIsVisibleWhenFirstShown()
{
    QFETCH(QSize, size);
    Window window;
    QOXDockWidget *dock = window.addPanel(size);
    QVector<bool> visibility;
    connect(dock, &QDockWidget::visibilityChanged, this,
            [&visibility](bool isVisible) { visibility.append(isVisible); });
    dock->show();
    dock->hide();

    QCOMPARE(visibility, QVector<bool>({true, false}));
}

void tst_QOXDockWidget::keepsTheUsersSizeAndPlaceWhenShownAgain()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    const QRect chosen(120, 140, 333, 222);
    dock->setGeometry(chosen);
    dock->hide();
    dock->show();

    QCOMPARE(dock->geometry(), chosen);
}

void tst_QOXDockWidget::opensAgainOverAParentThatWasMoved()
{
    Window window;
    window.resize(400, 300);
    QOXDockWidget *dock = window.showPanel();
    const QPoint place = dock->pos();
    dock->hide();
    window.move(window.pos() + QPoint(70, 90));
    dock->show();

    QCOMPARE(dock->pos(), place + QPoint(70, 90));
}

void tst_QOXDockWidget::keepsItsDistanceToTheNearestCorner_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QPoint>("moved");
    QTest::newRow("upper left") << QPoint(60, 90) << QPoint(60, 90);
    QTest::newRow("upper right") << QPoint(300, 90) << QPoint(500, 90);
    QTest::newRow("lower left") << QPoint(60, 300) << QPoint(60, 400);
    QTest::newRow("lower right") << QPoint(300, 300) << QPoint(500, 400);
}

void tst_QOXDockWidget::keepsItsDistanceToTheNearestCorner()
{
    QFETCH(QPoint, place);
    Window window;
    window.setGeometry(50, 50, 400, 400);
    QOXDockWidget *dock = window.showPanel({120, 50});
    dock->move(place);
    dock->hide();
    window.resize(600, 500);
    dock->show();

    QTEST(dock->pos(), "moved");
}

void tst_QOXDockWidget::panelBesideItsParentKeepsItsPlaceOnTheScreen()
{
    Window window;
    window.setGeometry(50, 50, 300, 300);
    QOXDockWidget *dock = window.showPanel();
    dock->move(500, 400);
    dock->hide();
    window.move(10, 10);
    dock->show();

    QCOMPARE(dock->pos(), QPoint(500, 400));
}

void tst_QOXDockWidget::opensInsideTheScreen()
{
    Window window;
    window.move(400, -100);
    QVERIFY(window.centralArea().right() > screen().right());
    const QRect first = window.showPanel()->geometry();
    const QRect second = window.showPanel()->geometry();

    QVERIFY(screen().contains(first));
    QVERIFY(screen().contains(second));
    QVERIFY(!first.intersects(second));
}

void tst_QOXDockWidget::opensAgainInsideTheScreen()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    dock->hide();
    window.move(600, 450);
    dock->show();

    QVERIFY(screen().contains(dock->geometry()));
}

void tst_QOXDockWidget::isNoLargerThanTheScreen()
{
    Window window;
    QOXDockWidget *dock = window.addPanel({3000, 2000});
    dock->show();

    QCOMPARE(dock->size(), screen().size());
}

void tst_QOXDockWidget::isNoWiderThanTheScreenForItsTitle()
{
    Window window;
    QOXDockWidget *dock = window.addPanel();
    dock->setWindowTitle(QString(1000, QLatin1Char('M')));
    dock->widget()->setFixedSize(20, 20);
    dock->show();

    QCOMPARE(dock->width(), screen().width());
}

void tst_QOXDockWidget::isWideEnoughForItsTitle_data()
{
    QTest::addColumn<QSize>("fixedSize");
    QTest::newRow("content that may be wider") << QSize();
    QTest::newRow("content that may not") << QSize(20, 20);
}

// How the title looks is tested on an X server, where Qt draws it.
void tst_QOXDockWidget::isWideEnoughForItsTitle()
{
    QFETCH(QSize, fixedSize);
    Window window;
    QOXDockWidget *dock = window.addPanel({20, 20});
    dock->setWindowTitle(QStringLiteral("A panel that has a long title"));
    if (fixedSize.isValid())
        dock->widget()->setFixedSize(fixedSize);
    dock->show();
    QCoreApplication::processEvents();

    QVERIFY(dock->width() > dock->fontMetrics().horizontalAdvance(dock->windowTitle()));
}

void tst_QOXDockWidget::goesWithAParentThatIsStillPlaced()
{
    Window window;
    window.setGeometry(50, 50, 400, 300);
    QOXDockWidget *dock = window.showPanel();
    const QPoint fromCorner = dock->geometry().topRight() - window.centralArea().topRight();
    window.setGeometry(100, 120, 500, 350);

    QCOMPARE(dock->geometry().topRight() - window.centralArea().topRight(), fromCorner);
}

void tst_QOXDockWidget::goesWithAParentThatIsShownLater()
{
    Window window;
    window.hide();
    QOXDockWidget *dock = window.showPanel();
    for (int i = 0; i < 4; ++i)
        QVERIFY(pass(550));
    const QPoint place = dock->pos();
    window.show();
    window.move(window.pos() + QPoint(20, 30));

    QCOMPARE(dock->pos(), place + QPoint(20, 30));
}

void tst_QOXDockWidget::panelsThatGoWithTheirParentStayApart()
{
    Window window;
    QVector<QRect> places;
    QVector<QOXDockWidget *> docks;
    for (int i = 0; i < 3; ++i) {
        docks.append(window.showPanel());
        places.append(docks.last()->geometry());
    }
    window.move(window.pos() + QPoint(20, 10));

    for (int i = 0; i < 3; ++i)
        QCOMPARE(docks.at(i)->geometry(), places.at(i).translated(20, 10));
}

void tst_QOXDockWidget::staysWhenTheParentMovesLater()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    QVERIFY(QTest::qWaitForWindowExposed(dock, 60000));
    for (int i = 0; i < 4; ++i)
        QVERIFY(pass(550)); // more than the half second after which the panel looks twice
    const QPoint place = dock->pos();
    window.move(window.pos() + QPoint(20, 10));

    QCOMPARE(dock->pos(), place);
}

void tst_QOXDockWidget::staysWhereTheProgramMovesIt()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    dock->move(130, 140);
    window.move(window.pos() + QPoint(20, 10));
    QCoreApplication::processEvents();

    QCOMPARE(dock->pos(), QPoint(130, 140));
}

void tst_QOXDockWidget::returnsOnceWhenTheWindowManagerMovesItAtFirst()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    const QRect place = dock->geometry();
    moveAsAWindowManagerDoes(dock, {10, 20});
    QTRY_COMPARE(dock->geometry(), place);

    moveAsAWindowManagerDoes(dock, {10, 20});
    QVERIFY(pass(1));
    QCOMPARE(dock->geometry().topLeft(), QPoint(10, 20));
}

void tst_QOXDockWidget::staysWhereTheWindowManagerMovesItLater()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    QVERIFY(QTest::qWaitForWindowExposed(dock, 60000));
    for (int i = 0; i < 4; ++i)
        QVERIFY(pass(550));
    moveAsAWindowManagerDoes(dock, {10, 20});
    QVERIFY(pass(1));

    QCOMPARE(dock->geometry().topLeft(), QPoint(10, 20));
}

// Some window managers move what was in a frame that they take away.
void tst_QOXDockWidget::opensWhereItWasAlsoIfItMovedWhileHidden()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    const QRect place = dock->geometry();
    dock->hide();
    moveAsAWindowManagerDoes(dock, {10, 20});
    dock->show();

    QCOMPARE(dock->geometry(), place);
}

void tst_QOXDockWidget::standsAtTheRightEdgeOfTheCentralArea()
{
    Window window;
    QOXDockWidget *dock = window.showPanel();
    const QRect area = window.centralArea();

    QVERIFY(area.contains(dock->geometry()));
    QVERIFY(dock->geometry().center().x() > area.center().x());
    QVERIFY(area.right() - dock->geometry().right() < 20);
    QVERIFY(dock->geometry().top() - area.top() < 20);
}

void tst_QOXDockWidget::takesAFreePlaceBesideOpenPanels()
{
    Window window;
    QVector<QOXDockWidget *> docks;
    for (int i = 0; i < 6; ++i)
        docks.append(window.showPanel());

    for (const QOXDockWidget *dock : qAsConst(docks)) {
        QVERIFY(window.centralArea().contains(dock->geometry()));
        for (const QOXDockWidget *other : qAsConst(docks))
            QVERIFY(dock == other || !dock->geometry().intersects(other->geometry()));
    }
}

void tst_QOXDockWidget::takesThePlaceOfAClosedPanel()
{
    Window window;
    QOXDockWidget *first = window.showPanel();
    const QPoint place = first->pos();
    QVERIFY(window.showPanel()->pos() != place);
    first->close();

    QCOMPARE(window.showPanel()->pos(), place);
}

void tst_QOXDockWidget::standsInTheCornerWhereAllIsFull()
{
    Window window;
    const QPoint corner = window.showPanel({400, 400})->pos();

    QCOMPARE(window.showPanel({400, 400})->pos(), corner);
}

void tst_QOXDockWidget::panelLargerThanTheWindowStandsInTheCorner()
{
    Window window;
    window.setGeometry(50, 50, 400, 200);
    QOXDockWidget *dock = window.showPanel({300, 400});

    QVERIFY(dock->height() > window.centralArea().height());
    QVERIFY(dock->geometry().top() >= window.centralArea().top());
    QVERIFY(dock->geometry().right() <= window.centralArea().right());
}

QTEST_MAIN(tst_QOXDockWidget)
#include "tst_QOXDockWidget.moc"
