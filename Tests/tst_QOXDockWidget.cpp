#include <QMainWindow>
#include <QTest>

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
        setGeometry(50, 50, 700, 600);
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
    QOXDockWidget *dock = window.showPanel({300, 900});

    QVERIFY(dock->height() > window.centralArea().height());
    QVERIFY(dock->geometry().top() >= window.centralArea().top());
    QVERIFY(dock->geometry().right() <= window.centralArea().right());
}

QTEST_MAIN(tst_QOXDockWidget)
#include "tst_QOXDockWidget.moc"
