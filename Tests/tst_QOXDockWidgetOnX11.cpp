// Panels on an X server, where they are as the screen shows them. Without a window manager all is where the program
// puts it. openbox places windows in the middle, in frames that it moves afterwards; icewm places them in the upper
// left corner, above a task bar.

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include "Patience.h"
#include "QOXDockWidget.h"
#include "XServer.h"

namespace {

const QStringList colors = {QStringLiteral("#c91f5b"), QStringLiteral("#1fc95b"), QStringLiteral("#5b1fc9")};

// Where the screen shows that color, whatever Qt believes.
QRect shown(const QColor &color)
{
    const QImage image =
        QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
    QRect found;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (line[x] == color.rgb())
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

void fill(QWidget *widget, const QColor &color)
{
    widget->setAutoFillBackground(true);
    widget->setPalette(QPalette(color));
}

class Panel : public QWidget
{
public:
    explicit Panel(const QColor &color) { fill(this, color); }
    QSize sizeHint() const override { return {150, 60}; }
};

// Timers that are due earlier have come by then, also on a machine that is busy.
bool pass(int milliseconds)
{
    bool isDue = false;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, qApp, [&isDue] { isDue = true; });
    return QTest::qWaitFor([&isDue] { return isDue; }, 60000);
}

class Window : public QMainWindow
{
public:
    Window()
    {
        setCentralWidget(new QWidget);
        fill(centralWidget(), m_color);
        menuBar()->addMenu(QStringLiteral("File"));
        resize(600, 400);
        for (const QString &color : colors) {
            auto *dock = new QOXDockWidget(color, QStringLiteral("Scripts"), QIcon(), this);
            dock->setWidget(new Panel(color));
            dock->setToolWindow(true);
            dock->resize(0, 0);
            dock->hide();
            panels.append(dock);
        }
    }

    void showAndSettle()
    {
        show();
        QVERIFY(QTest::qWaitForWindowExposed(this, 60000));
        QTRY_VERIFY(area().isValid());
        QVERIFY(pass(300));
    }

    bool isUnmanaged() const { return frameGeometry() == geometry(); }

    QRect area() const { return shown(m_color); }

    QVector<QRect> places() const
    {
        QVector<QRect> places;
        for (const QOXDockWidget *panel : panels)
            places.append(shown(panel->windowTitle()));
        return places;
    }

    // As the user does, where there is a title bar. Returns how far it went.
    QPoint drag(const QPoint &step)
    {
        const QPoint from = pos();
        if (isUnmanaged()) {
            move(from + step);
        } else {
            const QPoint title(geometry().center().x(), (frameGeometry().top() + geometry().top()) / 2);
            Hand::drag(title, title + step);
        }
        pass(300);
        return pos() - from;
    }

    void open()
    {
        for (QOXDockWidget *panel : qAsConst(panels))
            panel->show();
    }

    void close()
    {
        for (QOXDockWidget *panel : qAsConst(panels)) {
            panel->close();
            QTRY_COMPARE(shown(panel->windowTitle()), QRect());
        }
    }

    // Says what is wrong.
    QString misplacedPanel() const
    {
        const QRect window = area();
        for (const QOXDockWidget *panel : panels) {
            const QRect place = shown(panel->windowTitle());
            const QRect known(panel->widget()->mapToGlobal(QPoint(0, 0)), panel->widget()->size());
            QString text;
            QDebug(&text) << panel->windowTitle() << "is at" << place << "in" << window << "and takes itself to be at"
                          << known;
            if (place != known || !window.contains(place))
                return text;
        }
        return QString();
    }

    QVector<QOXDockWidget *> panels;

private:
    const QColor m_color{0x7b, 0x6c, 0x5d};
};

} // namespace

#define VERIFY_PANELS(window)                                                                                          \
    QTRY_COMPARE((window).misplacedPanel(), QString());                                                                \
    QVERIFY(pass(300));                                                                                                \
    QCOMPARE((window).misplacedPanel(), QString())

class tst_QOXDockWidgetOnX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensOverTheWindow();
    void opensWithTheWindow();
    void opensAgainWhereTheUserLeftIt();
    void opensOverAWindowThatTheUserHasDragged();
    void opensOverAWindowThatWasMaximizedMeanwhile();
    void staysWhenTheUserDragsTheWindow();
    void titleOfASmallPanelIsReadable_data();
    void titleOfASmallPanelIsReadable();
};

void tst_QOXDockWidgetOnX11::opensOverTheWindow()
{
    Window window;
    window.showAndSettle();
    window.open();

    VERIFY_PANELS(window);
}

void tst_QOXDockWidgetOnX11::opensWithTheWindow()
{
    Window window;
    window.show();
    window.open();

    VERIFY_PANELS(window);
}

void tst_QOXDockWidgetOnX11::opensAgainWhereTheUserLeftIt()
{
    Window window;
    window.showAndSettle();
    window.open();
    VERIFY_PANELS(window);
    const QOXDockWidget *panel = window.panels.first();
    const QRect place = shown(panel->windowTitle());
    // Far from the edges, where Qt would dock it.
    const QPoint title = panel->mapToGlobal(QPoint(20, 8));
    const QPoint step = window.mapToGlobal(window.rect().center()) - title;
    Hand::drag(title, title + step);
    QTRY_COMPARE(shown(panel->windowTitle()), place.translated(step));

    for (int i = 0; i < 3; ++i) {
        window.close();
        window.open();
        VERIFY_PANELS(window);
        QCOMPARE(shown(panel->windowTitle()), place.translated(step));
    }
}

void tst_QOXDockWidgetOnX11::opensOverAWindowThatTheUserHasDragged()
{
    Window window;
    window.showAndSettle();
    window.open();
    VERIFY_PANELS(window);
    const QVector<QRect> places = window.places();
    window.close();
    const QPoint step = window.drag({300, 200});
    window.open();

    VERIFY_PANELS(window);
    for (int i = 0; i < places.size(); ++i)
        QCOMPARE(window.places().at(i), places.at(i).translated(step));
}

void tst_QOXDockWidgetOnX11::opensOverAWindowThatWasMaximizedMeanwhile()
{
    Window window;
    window.showAndSettle();
    window.open();
    VERIFY_PANELS(window);
    window.close();
    window.showMaximized();
    if (!window.isUnmanaged())
        QTRY_VERIFY(window.width() > 1200);
    window.open();

    VERIFY_PANELS(window);
    for (const QRect &place : window.places())
        QVERIFY(window.area().right() - place.right() < 20);
}

void tst_QOXDockWidgetOnX11::staysWhenTheUserDragsTheWindow()
{
    Window window;
    window.showAndSettle();
    window.open();
    VERIFY_PANELS(window);
    for (int i = 0; i < 4; ++i)
        QVERIFY(pass(550)); // until the panel trusts the window's place
    const QVector<QRect> places = window.places();
    window.drag({-40, 50});

    QCOMPARE(window.places(), places);
}

void tst_QOXDockWidgetOnX11::titleOfASmallPanelIsReadable_data()
{
    QTest::addColumn<QString>("styleSheet");
    QTest::addColumn<bool>("isFixed");
    const QString none;
    const QString padded =
        QStringLiteral("QDockWidget { font-weight: bold } QDockWidget::title { background: gray; padding: 5px 8px }");
    QTest::newRow("of the style") << none << false;
    QTest::newRow("of a style sheet") << padded << false;
    QTest::newRow("content of a fixed size") << none << true;
    QTest::newRow("content of a fixed size, style sheet") << padded << true;
}

void tst_QOXDockWidgetOnX11::titleOfASmallPanelIsReadable()
{
    QFETCH(QString, styleSheet);
    QFETCH(bool, isFixed);
    QMainWindow window;
    window.setStyleSheet(styleSheet);
    window.show();
    const auto titleOf = [&window](QWidget *content, int width) {
        auto *dock =
            new QOXDockWidget(QStringLiteral("Brushes and colors"), QStringLiteral("Scripts"), QIcon(), &window);
        dock->setWidget(content);
        dock->setToolWindow(true);
        dock->show();
        if (!QTest::qWaitForWindowExposed(dock, 60000))
            qFatal("no panel on the screen");
        const QWidget *leftmostButton = dock->findChild<QWidget *>(QStringLiteral("qt_dockwidget_floatbutton"));
        return dock->grab(QRect(0, 0, width > 0 ? width : leftmostButton->x(), content->y())).toImage();
    };
    auto *small = new QWidget;
    small->setMinimumSize(20, 20);
    if (isFixed)
        small->setFixedSize(20, 20);
    const QImage title = titleOf(small, 0);
    auto *large = new QWidget;
    large->setMinimumSize(600, 20);

    QCOMPARE(title, titleOf(large, title.width()));
}

int main(int argc, char **argv)
{
    const XServer server(qEnvironmentVariable("TEST_WINDOW_MANAGER"));
    const QApplication application(argc, argv);
    tst_QOXDockWidgetOnX11 test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_QOXDockWidgetOnX11.moc"
