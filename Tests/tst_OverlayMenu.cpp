#include "OverlayMenu.h"

#include <QDockWidget>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QSet>
#include <QTabWidget>
#include <QTest>

#include "Patience.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxRenderServiceRemoteImpl.h"

class tst_OverlayMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void movedPanelIsATabOfTheOverlayAndClosed();
    void panelTakenBackIsOpenAgain();
    void panelOpenedAgainTakesItsContentBack();
    void panelIsListedOpenOrInTheOverlay();
    void entryOfAPanelMovesItThereAndBack();
    void entriesAreListedAnew();
    void allOpenPanelsMoveAtOnceAndTheOverlayIsShown();
    void overlayStaysHiddenWhereNoPanelMoves();
    void overlayPeeksInShowsAndHides();
    void shortcutsDiffer();
    void takesModulesAndOutlivesTheirChanges();
    void listedPanelIsNotTakenForItsModulesEntry();

private:
    QDockWidget *open(const QString &name);
    QTabWidget *overlay() const { return m_view->findChild<QTabWidget *>(); }
    QStringList tabs() const;
    QAction *command(const char *text) const;
    QMenu *panelsMenu() const { return m_menu->findChild<QMenu *>(); }
    // The entries as the user finds them: "+" where checked.
    QStringList entries() const;

    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<oxMainWindowServiceRemoteImpl> m_mainWindowService;
    std::unique_ptr<oxRenderServiceRemoteImpl> m_renderService;
    QWidget *m_view = nullptr;
    OverlayMenu *m_menu = nullptr;
};

void tst_OverlayMenu::init()
{
    m_window = std::make_unique<QMainWindow>();
    m_view = new QWidget;
    m_view->setObjectName(QStringLiteral("RenderWindow"));
    m_window->setCentralWidget(m_view);
    m_menu = new OverlayMenu(m_window.get());
    m_window->menuBar()->addMenu(m_menu);
    m_window->resize(800, 600);
    m_window->show();

    m_mainWindowService = std::make_unique<oxMainWindowServiceRemoteImpl>();
    m_renderService = std::make_unique<oxRenderServiceRemoteImpl>();
    m_mainWindowService->setWidget(m_window.get());
    auto *factory = oxKernelServiceFactory::the();
    factory->fileService<oxMainWindowService>(m_mainWindowService.get());
    factory->fileService<oxRenderService>(m_renderService.get());
}

void tst_OverlayMenu::cleanup()
{
    m_renderService.reset();
    m_window.reset();
}

QDockWidget *tst_OverlayMenu::open(const QString &name)
{
    m_mainWindowService->addModule(name, QStringLiteral("Scripts"), new QLabel(name), QString(), QIcon(), QString(),
                                   Qt::NoDockWidgetArea);
    m_mainWindowService->showModule(name);
    return m_mainWindowService->getModule(name);
}

QStringList tst_OverlayMenu::tabs() const
{
    QStringList tabs;
    for (int i = 0; overlay() && i < overlay()->count(); ++i)
        tabs.append(overlay()->tabText(i));
    return tabs;
}

QAction *tst_OverlayMenu::command(const char *text) const
{
    const QList<QAction *> actions = m_menu->actions();
    for (QAction *action : actions) {
        if (action->text() == QLatin1String(text))
            return action;
    }
    qFatal("no command '%s'", text);
}

QStringList tst_OverlayMenu::entries() const
{
    Q_EMIT panelsMenu()->aboutToShow();
    QStringList entries;
    const QList<QAction *> actions = panelsMenu()->actions();
    for (const QAction *action : actions)
        entries.append((action->isChecked() ? QStringLiteral("+") : QString()) + action->text());
    return entries;
}

void tst_OverlayMenu::movedPanelIsATabOfTheOverlayAndClosed()
{
    QDockWidget *panel = open(QStringLiteral("Clock"));
    const QPointer<QWidget> content = panel->widget();
    m_menu->moveToOverlay(panel);
    m_renderService->showOverlay();

    QCOMPARE(tabs(), QStringList{QStringLiteral("Clock")});
    QCOMPARE(overlay()->widget(0), content.data());
    QVERIFY(content->isVisible());
    QVERIFY(!panel->isVisible());
}

void tst_OverlayMenu::panelTakenBackIsOpenAgain()
{
    QDockWidget *panel = open(QStringLiteral("Clock"));
    QWidget *content = panel->widget();
    for (int i = 0; i < 2; ++i) {
        m_menu->moveToOverlay(panel);
        m_renderService->showOverlay();
        m_menu->takeBack(panel);
        QCOMPARE(panel->widget(), content);
        QVERIFY(content->isVisible());
        QVERIFY(tabs().isEmpty());
    }
}

void tst_OverlayMenu::panelOpenedAgainTakesItsContentBack()
{
    QDockWidget *panel = open(QStringLiteral("Clock"));
    QWidget *content = panel->widget();
    m_menu->moveToOverlay(panel);
    m_mainWindowService->showModule(QStringLiteral("Clock"));

    QCOMPARE(panel->widget(), content);
    QVERIFY(content->isVisible());
    QVERIFY(m_menu->panelsInOverlay().isEmpty());
}

void tst_OverlayMenu::panelIsListedOpenOrInTheOverlay()
{
    QDockWidget *clock = open(QStringLiteral("Clock"));
    QDockWidget *mixer = open(QStringLiteral("Mixer"));
    open(QStringLiteral("Closed"))->hide();
    QCOMPARE(m_menu->openPanels(), QList<QDockWidget *>({clock, mixer}));
    QVERIFY(m_menu->panelsInOverlay().isEmpty());

    m_menu->moveToOverlay(clock);
    QCOMPARE(m_menu->openPanels(), QList<QDockWidget *>{mixer});
    QCOMPARE(m_menu->panelsInOverlay(), QList<QDockWidget *>{clock});
}

void tst_OverlayMenu::entryOfAPanelMovesItThereAndBack()
{
    QDockWidget *panel = open(QStringLiteral("Clock"));
    QCOMPARE(entries(), QStringList{QStringLiteral("Clock")});
    panelsMenu()->actions().first()->trigger();
    QCOMPARE(m_menu->panelsInOverlay(), QList<QDockWidget *>{panel});

    QCOMPARE(entries(), QStringList{QStringLiteral("+Clock")});
    panelsMenu()->actions().first()->trigger();
    QCOMPARE(m_menu->openPanels(), QList<QDockWidget *>{panel});
}

void tst_OverlayMenu::entriesAreListedAnew()
{
    QCOMPARE(entries(), QStringList{QStringLiteral("No panel is open")});
    QVERIFY(!panelsMenu()->actions().first()->isEnabled());
    open(QStringLiteral("Clock"));
    QCOMPARE(entries(), QStringList{QStringLiteral("Clock")});
    m_menu->moveToOverlay(open(QStringLiteral("Mixer")));
    QCOMPARE(entries(), QStringList({QStringLiteral("Clock"), QStringLiteral("+Mixer")}));
    m_mainWindowService->subModule(QStringLiteral("Clock"));
    QCOMPARE(entries(), QStringList{QStringLiteral("+Mixer")});

    const int count = m_window->findChildren<QAction *>().size();
    QCOMPARE(entries(), QStringList{QStringLiteral("+Mixer")});
    QCOMPARE(m_window->findChildren<QAction *>().size(), count); // the earlier ones are gone
}

void tst_OverlayMenu::allOpenPanelsMoveAtOnceAndTheOverlayIsShown()
{
    open(QStringLiteral("Clock"));
    open(QStringLiteral("Mixer"));
    command("&Move open panels to the overlay")->trigger();
    QCOMPARE(tabs(), QStringList({QStringLiteral("Clock"), QStringLiteral("Mixer")}));
    QTRY_COMPARE(overlay()->pos(), QPoint(0, 0));

    command("&Take panels back")->trigger();
    QCOMPARE(m_menu->openPanels().size(), 2);
    QVERIFY(tabs().isEmpty());
    QTRY_VERIFY(!overlay()->isVisible());
}

void tst_OverlayMenu::overlayStaysHiddenWhereNoPanelMoves()
{
    open(QStringLiteral("Closed"))->hide();
    command("&Move open panels to the overlay")->trigger();
    QVERIFY(!overlay() || !overlay()->isVisible());
}

void tst_OverlayMenu::overlayPeeksInShowsAndHides()
{
    command("&Let the overlay peek in")->trigger();
    QTRY_COMPARE(overlay()->geometry().right() + 1, 20);
    command("&Show the overlay")->trigger();
    QTRY_COMPARE(overlay()->x(), 0);
    command("&Hide the overlay")->trigger();
    QTRY_VERIFY(!overlay()->isVisible());
}

void tst_OverlayMenu::shortcutsDiffer()
{
    QSet<QString> shortcuts;
    int commands = 0;
    const QList<QAction *> actions = m_menu->actions();
    for (const QAction *action : actions) {
        if (action->menu() || action->isSeparator())
            continue;
        ++commands;
        shortcuts.insert(action->shortcut().toString());
    }
    QCOMPARE(commands, 5);
    QCOMPARE(shortcuts.size(), 5);
    QVERIFY(!shortcuts.contains(QString()));
}

void tst_OverlayMenu::takesModulesAndOutlivesTheirChanges()
{
    const QPointer<QMenu> panels = panelsMenu();
    m_mainWindowService->addModule(QStringLiteral("Log"), QStringLiteral("&View"), new QWidget, QString(), QIcon(),
                                   QString(), Qt::NoDockWidgetArea);
    QVERIFY(command("Log"));
    m_mainWindowService->changeModule(QStringLiteral("Log"), QStringLiteral("&View"), new QWidget);
    QVERIFY(panels);
    QVERIFY(command("Log"));
}

void tst_OverlayMenu::listedPanelIsNotTakenForItsModulesEntry()
{
    const QString clock = QStringLiteral("Clock");
    open(clock);
    const QMenu *scripts = m_window->menuBar()->actions().last()->menu();
    QCOMPARE(entries(), QStringList{clock});
    m_mainWindowService->changeModule(clock, QStringLiteral("Scripts"), new QLabel);
    QCOMPARE(scripts->actions().size(), 1);

    m_mainWindowService->subModule(clock);
    QVERIFY(scripts->isEmpty());
}

QTEST_MAIN(tst_OverlayMenu)
#include "tst_OverlayMenu.moc"
