#include <QAbstractButton>
#include <QLabel>
#include <QMenuBar>
#include <QMetaProperty>
#include <QPointer>
#include <QTest>
#include <QTranslator>

#include <functional>
#include <thread>

#include <stdio_ext.h>

#include "OutputCapture.h"
#include "Patience.h"
#include "QOXDockWidget.h"
#include "oxMainWindowServiceRemoteImpl.h"

namespace {

const QString tools = QStringLiteral("Tools");
const QString scripts = QStringLiteral("Scripts");
const QString module = QStringLiteral("Module");

QIcon icon(Qt::GlobalColor colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(colour);
    return pixmap;
}

QStringList titles(const QList<QAction *> &actions)
{
    QStringList titles;
    for (const QAction *action : actions)
        titles.append(action->text());
    return titles;
}

// A window as processes have it, with the menus "&File" and "&Help", and its service.
class Window : public QMainWindow
{
public:
    Window()
    {
        addMenu(QStringLiteral("&File"))->addAction(QStringLiteral("Quit"));
        help = addMenu(QStringLiteral("&Help"));
        help->addAction(QStringLiteral("About"));
        service.setWidget(this);
        show();
    }

    QMenu *addMenu(const QString &title) { return menuBar()->addMenu(title); }

    void add(const QString &name, const QString &menu = tools, QWidget *content = new QLabel, const QIcon &icon = {})
    {
        service.addModule(name, menu, content, QString(), icon, QString(), Qt::NoDockWidgetArea);
    }

    QStringList menuTitles() const { return titles(menuBar()->actions()); }

    QList<QMenu *> menus(const QString &title) const
    {
        QList<QMenu *> found;
        const auto all = menuBar()->findChildren<QMenu *>();
        std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                     [&](const QMenu *menu) { return menu->title() == title; });
        return found;
    }

    QMenu *menu(const QString &title = tools) const { return menus(title).value(0); }

    // Of menus there are entries too, which are their own actions; these are not meant.
    QList<QAction *> entries(const QString &name = module) const
    {
        QList<QAction *> found;
        const auto all = menuBar()->findChildren<QAction *>();
        std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                     [&](const QAction *action) { return action->text() == name && !action->menu(); });
        return found;
    }

    QAction *entry(const QString &name = module) const { return entries(name).value(0); }
    QList<QOXDockWidget *> docks() const { return findChildren<QOXDockWidget *>(); }
    QOXDockWidget *dock(const QString &name = module) { return qobject_cast<QOXDockWidget *>(service.getModule(name)); }

    QMenu *help;
    oxMainWindowServiceRemoteImpl service;
};

class OneTextTranslator : public QTranslator
{
public:
    OneTextTranslator(const QByteArray &context, const QByteArray &text, const QString &translation)
        : m_context(context)
        , m_text(text)
        , m_translation(translation)
    {
        QCoreApplication::installTranslator(this);
    }

    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return m_context == context && m_text == text ? m_translation : QString();
    }

private:
    QByteArray m_context;
    QByteArray m_text;
    QString m_translation;
};

// Of an operation without a result the result is null, too.
using Operation = std::function<const void *(oxMainWindowServiceRemoteImpl *)>;

using Preparation = std::function<void(Window *)>;
using Parting = std::function<void(QScopedPointer<Window> *)>;

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(Preparation)
Q_DECLARE_METATYPE(Parting)

class tst_oxMainWindowServiceRemoteImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasNoWindowAtFirst();
    void constructionMakesNoWidget();
    void windowIsTheOneLastGiven();

    void newMenuStandsDirectlyBeforeHelp();
    void newMenusStandBeforeTheFirstOfTwoHelpMenus();
    void helpMenuIsFoundByItsTranslatedTitle();
    void translationInAnotherContextDoesNotCount();
    void helpEntryWithoutAMenuIsNotTheHelpMenu();
    void helpMenuInsideAnotherMenuIsNotTheHelpMenu();
    void helpMenuIsLookedForOnlyWhenTheWindowIsSet();
    void helpMenuOfALaterWindowIsTaken();
    void windowWithoutHelpMenuKeepsTheEarlierOne();
    void withoutHelpMenuANewMenuIsAppended();
    void helpMenuThatIsDeletedIsForgotten();
    void changeModuleFindsOrMakesItsMenuTheSameWay();

    void secondModuleReusesTheMenu();
    void menuInsideAnotherMenuIsReused();
    void firstOfTwoMenusInChildOrderIsTaken();
    void menuOutsideTheMenuBarIsLeftAlone();
    void menuTitlesAreCompared_data();
    void menuTitlesAreCompared();

    void newModuleIsHiddenAndItsEntryUnchecked();
    void dockHasTitleMenuIconAndContent();
    void dockIsAToolWindowOfNoSize();
    void dockIsInNoDockArea_data();
    void dockIsInNoDockArea();
    void entryHasTheModulesIconAndNoShortcut();
    void fourthAndSixthTextAreIgnored();
    void nullContentAddsNothing();
    void withoutAWindowNothingIsAdded();
    void sameNameTwiceMakesTwoModules();

    void showingTheModuleChecksItsEntry();
    void closingTheDockUnchecksItsEntry();
    void closeButtonOfTheDockUnchecksItsEntry();
    void entryShowsAndHidesTheDock();
    void checkMarkSetByTheProgramLeavesTheDockAlone();
    void entryAndDockAreConnectedEachInItsWay_data();
    void entryAndDockAreConnectedEachInItsWay();
    void signalsFromAnotherThreadWaitForTheWidgets_data();
    void signalsFromAnotherThreadWaitForTheWidgets();
    void showAndHideTakeTheFirstOfTwoDocks();
    void showAndHideOfAnUnknownModuleDoNothing();

    void moduleIsFoundByItsExactTitle_data();
    void moduleIsFoundByItsExactTitle();
    void dockOfAnotherClassIsNoModule();
    void dockInsideAnotherWindowIsFoundInChildOrder();
    void renamedDockIsFoundByItsNewTitle();

    void changedModuleMovesToTheNewMenu();
    void changedModuleKeepsIconCheckMarkAndVisibility_data();
    void changedModuleKeepsIconCheckMarkAndVisibility();
    void changedModuleGetsTheNewContent();
    void changedModuleMayHaveNoContentBefore();
    void contentThatTheDockHasAlreadyStays();
    void contentFromWithinTheOldOneIsTakenOutOfIt_data();
    void contentFromWithinTheOldOneIsTakenOutOfIt();
    void contentThatGoesMayDoAnything_data();
    void contentThatGoesMayDoAnything();
    void changeWhileTheContentIsDestroyed_data();
    void changeWhileTheContentIsDestroyed();
    void newEntryHasOnlyTheIconAndTheCheckMarkOfTheOldOne();
    void changedEntryStillFollowsTheDockAndDrivesIt();
    void changeInTheSameMenuPutsTheEntryLast();
    void changeWithNullContentDoesNothing();
    void changeOfAnUnknownModuleMakesAnEntryWithoutADock();
    void changeOfAModuleWithoutEntryMakesOne();
    void changeTakesTheFirstOfTwoModules();
    void changeFindsAnEntryInsideAnotherMenu();
    void menuThatChangeLeavesEmptyIsDeleted();
    void changeDeletesTheFirstEmptyMenuOnly();
    void firstEmptyMenuIsTheFirstInChildOrder();
    void changeDeletesAnEmptyMenuInsideAnotherMenu();
    void emptyHelpMenuIsDeletedLikeAnyOther();
    void moduleNamedLikeAMenuLeavesTheMenuAlone();

    void removedModuleLosesEntryDockAndContent();
    void removalLeavesAnEmptyMenu();
    void removalOfAnUnknownModuleDoesNothing();
    void removalTakesTheFirstOfTwoModules();
    void removalOfAModuleThatLostItsDockTakesTheEntry();
    void removalOfAModuleThatLostItsEntryTakesTheDock();

    void unavailableOperationPrintsItsLine_data();
    void unavailableOperationPrintsItsLine();
    void availableOperationsPrintNothing();

    void withoutAWindowNoOperationDoesAnything();
    void afterTheWindowIsGoneNoOperationDoesAnything();
};

void tst_oxMainWindowServiceRemoteImpl::hasNoWindowAtFirst()
{
    QVERIFY(!oxMainWindowServiceRemoteImpl().getWidget());
}

void tst_oxMainWindowServiceRemoteImpl::constructionMakesNoWidget()
{
    const QWidgetList before = QApplication::allWidgets();
    oxMainWindowServiceRemoteImpl service;

    QCOMPARE(QApplication::allWidgets().size(), before.size());
}

void tst_oxMainWindowServiceRemoteImpl::windowIsTheOneLastGiven()
{
    QMainWindow first;
    QMainWindow second;
    oxMainWindowServiceRemoteImpl service;

    for (QMainWindow *window : {&first, &second, &first}) {
        service.setWidget(window);
        QCOMPARE(service.getWidget(), window);
    }
}

// The menu "&Help" and where new menus go

void tst_oxMainWindowServiceRemoteImpl::newMenuStandsDirectlyBeforeHelp()
{
    Window window;
    window.addMenu(QStringLiteral("Last"));
    window.add(module, tools);
    window.add(QStringLiteral("Other"), scripts);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "Scripts", "&Help", "Last"}));
    QCOMPARE(window.menu()->parent(), window.menuBar());
    QCOMPARE(window.menu()->actions(), window.entries());
}

void tst_oxMainWindowServiceRemoteImpl::newMenusStandBeforeTheFirstOfTwoHelpMenus()
{
    Window window;
    window.addMenu(QStringLiteral("&Help"));
    window.service.setWidget(&window);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::helpMenuIsFoundByItsTranslatedTitle()
{
    const OneTextTranslator translator("oxMainWindowServiceRemoteImpl", "&Help", QStringLiteral("&Hilfe"));
    Window window;
    window.help->setTitle(QStringLiteral("&Hilfe"));
    window.addMenu(QStringLiteral("&Help"));
    window.service.setWidget(&window);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Hilfe", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::translationInAnotherContextDoesNotCount()
{
    const OneTextTranslator translator("oxMainWindowService", "&Help", QStringLiteral("&File"));
    Window window;
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::helpEntryWithoutAMenuIsNotTheHelpMenu()
{
    Window window;
    window.menuBar()->insertAction(window.menuBar()->actions().first(), new QAction(QStringLiteral("&Help"), &window));
    window.service.setWidget(&window);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&Help", "&File", "Tools", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::helpMenuInsideAnotherMenuIsNotTheHelpMenu()
{
    Window window;
    window.menu(QStringLiteral("&File"))->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("About"));
    window.service.setWidget(&window);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::helpMenuIsLookedForOnlyWhenTheWindowIsSet()
{
    Window window;
    window.help->setTitle(QStringLiteral("About"));
    window.addMenu(QStringLiteral("&Help"));
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "About", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::helpMenuOfALaterWindowIsTaken()
{
    Window window;
    Window later;
    later.addMenu(QStringLiteral("Last"));
    window.service.setWidget(&later);
    window.add(module, tools);

    QCOMPARE(later.menuTitles(), QStringList({"&File", "Tools", "&Help", "Last"}));
    QCOMPARE(window.menuTitles(), QStringList({"&File", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::windowWithoutHelpMenuKeepsTheEarlierOne()
{
    Window window;
    window.help->setTitle(QStringLiteral("About"));
    window.addMenu(QStringLiteral("Last"));
    window.service.setWidget(&window);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "About", "Last"}));
}

void tst_oxMainWindowServiceRemoteImpl::withoutHelpMenuANewMenuIsAppended()
{
    QMainWindow window;
    window.menuBar()->addMenu(QStringLiteral("&File"));
    oxMainWindowServiceRemoteImpl service;
    service.setWidget(&window);
    service.addModule(module, tools, new QLabel, QString(), QIcon(), QString(), Qt::NoDockWidgetArea);

    const QList<QAction *> menus = window.menuBar()->actions();
    QCOMPARE(titles(menus), QStringList({"&File", "Tools"}));
    QCOMPARE(titles(menus.last()->menu()->actions()), QStringList({"Module"}));
    menus.last()->menu()->actions().first()->trigger();
    QVERIFY(service.getModule(module)->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::helpMenuThatIsDeletedIsForgotten()
{
    Window window;
    delete window.help;
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools"}));
    QCOMPARE(window.menu()->actions(), window.entries());
}

void tst_oxMainWindowServiceRemoteImpl::changeModuleFindsOrMakesItsMenuTheSameWay()
{
    Window window;
    window.add(module, tools);
    window.service.changeModule(module, scripts, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Scripts", "&Help"}));

    window.service.changeModule(module, QStringLiteral("&File"), new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "&Help"}));
    QCOMPARE(titles(window.menu(QStringLiteral("&File"))->actions()), QStringList({"Quit", "Module"}));

    delete window.help;
    window.service.changeModule(module, scripts, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Scripts"}));
    QCOMPARE(window.menu(scripts)->actions(), window.entries());
}

void tst_oxMainWindowServiceRemoteImpl::secondModuleReusesTheMenu()
{
    Window window;
    window.add(QStringLiteral("One"), tools);
    window.add(QStringLiteral("Two"), tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    QCOMPARE(titles(window.menu()->actions()), QStringList({"One", "Two"}));
}

void tst_oxMainWindowServiceRemoteImpl::menuInsideAnotherMenuIsReused()
{
    Window window;
    QMenu *inner = window.menu(QStringLiteral("&File"))->addMenu(QStringLiteral("Recent"))->addMenu(tools);
    window.add(module, tools);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "&Help"}));
    QCOMPARE(inner->actions(), window.entries());
}

void tst_oxMainWindowServiceRemoteImpl::firstOfTwoMenusInChildOrderIsTaken()
{
    Window window;
    QMenu *olderChild = window.addMenu(tools);
    auto *firstInTheBar = new QMenu(tools, window.menuBar());
    window.menuBar()->insertMenu(window.menuBar()->actions().first(), firstInTheBar);
    window.add(module, tools);
    QCOMPARE(olderChild->actions(), window.entries());
    QVERIFY(firstInTheBar->isEmpty());

    QMenu *inside = window.menu(QStringLiteral("&File"))->addMenu(tools);
    window.add(QStringLiteral("Other"), tools);
    QCOMPARE(titles(inside->actions()), QStringList({"Other"}));
}

void tst_oxMainWindowServiceRemoteImpl::menuOutsideTheMenuBarIsLeftAlone()
{
    Window window;
    const QPointer<QMenu> outside = new QMenu(tools, &window);
    window.add(module, tools);
    QVERIFY(outside->isEmpty());
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));

    window.service.changeModule(module, tools, new QLabel);
    QVERIFY(outside);
    QVERIFY(outside->isEmpty());
}

void tst_oxMainWindowServiceRemoteImpl::menuTitlesAreCompared_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("case") << QStringLiteral("tools");
    QTest::newRow("mnemonic") << QStringLiteral("&Tools");
    QTest::newRow("blank") << QStringLiteral("Tools ");
    QTest::newRow("part") << QStringLiteral("Tool");
    QTest::newRow("empty") << QString();
}

void tst_oxMainWindowServiceRemoteImpl::menuTitlesAreCompared()
{
    QFETCH(QString, title);
    Window window;
    window.add(QStringLiteral("Other"), tools);
    window.add(module, title);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", title, "&Help"}));
    QCOMPARE(window.menu(title)->actions(), window.entries());
}

// addModule

void tst_oxMainWindowServiceRemoteImpl::newModuleIsHiddenAndItsEntryUnchecked()
{
    Window window;
    window.add(module);

    QVERIFY(window.dock()->isHidden());
    QCOMPARE(window.entries().size(), 1);
    QVERIFY(window.entry()->isCheckable());
    QVERIFY(!window.entry()->isChecked());
    window.hide();
    window.show();
    QVERIFY(!window.dock()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::dockHasTitleMenuIconAndContent()
{
    const QIcon red = icon(Qt::red);
    Window window;
    auto *content = new QLabel;
    window.add(module, tools, content, red);

    QCOMPARE(window.docks().size(), 1);
    const QOXDockWidget *dock = window.docks().first();
    QCOMPARE(dock->windowTitle(), module);
    QCOMPARE(dock->menuName(), tools);
    QCOMPARE(dock->windowIcon().cacheKey(), red.cacheKey());
    QCOMPARE(dock->parent(), &window);
    QCOMPARE(dock->widget(), content);
}

void tst_oxMainWindowServiceRemoteImpl::dockIsAToolWindowOfNoSize()
{
    Window window;
    auto *content = new QLabel;
    content->setFixedSize(300, 200);
    window.add(module, tools, content);
    QCOMPARE(window.dock()->size(), QSize(0, 0));

    window.service.showModule(module);
    QCOMPARE(window.dock()->windowType(), Qt::Tool);
    QCOMPARE(content->size(), QSize(300, 200));
}

void tst_oxMainWindowServiceRemoteImpl::dockIsInNoDockArea_data()
{
    QTest::addColumn<int>("area");
    QTest::newRow("left") << int(Qt::LeftDockWidgetArea);
    QTest::newRow("right") << int(Qt::RightDockWidgetArea);
    QTest::newRow("top") << int(Qt::TopDockWidgetArea);
    QTest::newRow("bottom") << int(Qt::BottomDockWidgetArea);
    QTest::newRow("all") << int(Qt::AllDockWidgetAreas);
    QTest::newRow("none") << int(Qt::NoDockWidgetArea);
}

void tst_oxMainWindowServiceRemoteImpl::dockIsInNoDockArea()
{
    QFETCH(int, area);
    Window window;
    window.service.addModule(module, tools, new QLabel, QString(), QIcon(), QString(), Qt::DockWidgetArea(area));
    QCOMPARE(window.dockWidgetArea(window.dock()), Qt::NoDockWidgetArea);

    window.service.showModule(module);
    QVERIFY(window.dock()->isFloating());
    QCOMPARE(window.dockWidgetArea(window.dock()), Qt::NoDockWidgetArea);
}

void tst_oxMainWindowServiceRemoteImpl::entryHasTheModulesIconAndNoShortcut()
{
    const QIcon red = icon(Qt::red);
    Window window;
    window.add(module, tools, new QLabel, red);
    window.add(QStringLiteral("Plain"));

    QCOMPARE(window.entry()->icon().cacheKey(), red.cacheKey());
    QVERIFY(window.entry()->shortcut().isEmpty());
    QVERIFY(window.entry(QStringLiteral("Plain"))->icon().isNull());
}

void tst_oxMainWindowServiceRemoteImpl::fourthAndSixthTextAreIgnored()
{
    Window window;
    window.add(QStringLiteral("Plain"));
    window.service.addModule(module, tools, new QLabel, QStringLiteral("Ctrl+M"), QIcon(), QStringLiteral("Tip"),
                             Qt::NoDockWidgetArea);

    QVERIFY(window.entry()->shortcut().isEmpty());
    QCOMPARE(window.entry()->toolTip(), module);
    QCOMPARE(window.entry()->statusTip(), QString());
    QCOMPARE(window.entry()->whatsThis(), QString());
    QCOMPARE(window.dock()->toolTip(), window.dock(QStringLiteral("Plain"))->toolTip());
}

void tst_oxMainWindowServiceRemoteImpl::nullContentAddsNothing()
{
    Window window;
    window.add(module, tools, nullptr);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "&Help"}));
    QVERIFY(window.docks().isEmpty());
    QVERIFY(window.entries().isEmpty());
}

void tst_oxMainWindowServiceRemoteImpl::withoutAWindowNothingIsAdded()
{
    QLabel content;
    const int before = QApplication::allWidgets().size();
    oxMainWindowServiceRemoteImpl service;
    service.addModule(module, tools, &content, QString(), QIcon(), QString(), Qt::NoDockWidgetArea);

    QCOMPARE(QApplication::allWidgets().size(), before);
    QVERIFY(!content.parent());
}

void tst_oxMainWindowServiceRemoteImpl::sameNameTwiceMakesTwoModules()
{
    Window window;
    auto *content = new QLabel;
    window.add(module, tools, content);
    window.add(module, tools);

    QCOMPARE(window.docks().size(), 2);
    QCOMPARE(window.entries().size(), 2);
    QCOMPARE(window.dock()->widget(), content);
    window.entries().last()->trigger();
    QVERIFY(!window.docks().first()->isVisible());
    QVERIFY(window.docks().last()->isVisible());
}

// The tie between dock and entry

void tst_oxMainWindowServiceRemoteImpl::showingTheModuleChecksItsEntry()
{
    Window window;
    window.add(module);
    window.service.showModule(module);
    QVERIFY(window.dock()->isVisible());
    QVERIFY(window.entry()->isChecked());

    window.service.hideModule(module);
    QVERIFY(!window.dock()->isVisible());
    QVERIFY(!window.entry()->isChecked());
}

void tst_oxMainWindowServiceRemoteImpl::closingTheDockUnchecksItsEntry()
{
    Window window;
    window.add(module);
    window.service.showModule(module);
    window.dock()->close();

    QVERIFY(!window.entry()->isChecked());
    QVERIFY(window.dock());
}

void tst_oxMainWindowServiceRemoteImpl::closeButtonOfTheDockUnchecksItsEntry()
{
    Window window;
    window.add(module);
    window.service.showModule(module);
    auto *button = window.dock()->findChild<QAbstractButton *>(QStringLiteral("qt_dockwidget_closebutton"));
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);

    QTRY_VERIFY(!window.dock()->isVisible());
    QVERIFY(!window.entry()->isChecked());
}

void tst_oxMainWindowServiceRemoteImpl::entryShowsAndHidesTheDock()
{
    Window window;
    window.add(module);
    for (const bool isShown : {true, false, true}) {
        window.entry()->trigger();
        QCOMPARE(window.dock()->isVisible(), isShown);
        QCOMPARE(window.entry()->isChecked(), isShown);
    }
}

void tst_oxMainWindowServiceRemoteImpl::checkMarkSetByTheProgramLeavesTheDockAlone()
{
    Window window;
    window.add(module);
    window.entry()->setChecked(true);
    QVERIFY(!window.dock()->isVisible());

    window.service.changeModule(module, scripts, new QLabel);
    QVERIFY(window.entry()->isChecked());
    QVERIFY(!window.dock()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::entryAndDockAreConnectedEachInItsWay_data()
{
    QTest::addColumn<Preparation>("prepare");
    QTest::newRow("added") << Preparation([](Window *window) { window->add(module); });
    QTest::newRow("changed") << Preparation([](Window *window) {
        window->add(module);
        window->service.changeModule(module, scripts, new QLabel);
    });
}

// Qt ends a connection by signal and slot in the way it was made, by text or by pointer, and in no other.
void tst_oxMainWindowServiceRemoteImpl::entryAndDockAreConnectedEachInItsWay()
{
    QFETCH(Preparation, prepare);
    Window window;
    prepare(&window);

    QVERIFY(disconnect(window.entry(), SIGNAL(triggered(bool)), window.dock(), SLOT(setVisible(bool))));
    QVERIFY(disconnect(window.dock(), &QDockWidget::visibilityChanged, window.entry(), &QAction::setChecked));
    window.entry()->trigger();
    QVERIFY(!window.dock()->isVisible());
    window.entry()->setChecked(false);
    window.dock()->show();
    QVERIFY(!window.entry()->isChecked());
}

void tst_oxMainWindowServiceRemoteImpl::signalsFromAnotherThreadWaitForTheWidgets_data()
{
    entryAndDockAreConnectedEachInItsWay_data();
}

void tst_oxMainWindowServiceRemoteImpl::signalsFromAnotherThreadWaitForTheWidgets()
{
    QFETCH(Preparation, prepare);
    Window window;
    prepare(&window);
    const auto emitInThread = [](const auto &emission) { std::thread(emission).join(); };

    emitInThread([dock = window.dock()] { Q_EMIT dock->visibilityChanged(true); });
    QVERIFY(!window.entry()->isChecked());
    QTRY_VERIFY(window.entry()->isChecked());

    emitInThread([entry = window.entry()] { Q_EMIT entry->triggered(true); });
    QVERIFY(!window.dock()->isVisible());
    QTRY_VERIFY(window.dock()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::showAndHideTakeTheFirstOfTwoDocks()
{
    Window window;
    window.add(module);
    window.add(module);
    window.service.showModule(module);
    QVERIFY(window.docks().first()->isVisible());
    QVERIFY(!window.docks().last()->isVisible());

    window.docks().last()->show();
    window.service.hideModule(module);
    QVERIFY(!window.docks().first()->isVisible());
    QVERIFY(window.docks().last()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::showAndHideOfAnUnknownModuleDoNothing()
{
    const QString shown = QStringLiteral("Shown");
    Window window;
    window.add(module);
    window.add(shown);
    window.service.showModule(shown);
    window.service.showModule(QStringLiteral("unknown"));
    window.service.hideModule(QStringLiteral("unknown"));

    QVERIFY(!window.dock()->isVisible());
    QVERIFY(window.dock(shown)->isVisible());
}

// Searches

void tst_oxMainWindowServiceRemoteImpl::moduleIsFoundByItsExactTitle_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("same") << QStringLiteral("Module") << true;
    QTest::newRow("case") << QStringLiteral("module") << false;
    QTest::newRow("part") << QStringLiteral("Modul") << false;
    QTest::newRow("longer") << QStringLiteral("Modules") << false;
    QTest::newRow("empty") << QString() << false;
}

void tst_oxMainWindowServiceRemoteImpl::moduleIsFoundByItsExactTitle()
{
    QFETCH(QString, name);
    QFETCH(bool, isFound);
    Window window;
    window.add(module);
    QOXDockWidget *dock = window.docks().first();
    QCOMPARE(window.service.getModule(name), isFound ? dock : nullptr);

    window.service.showModule(name);
    QCOMPARE(dock->isVisible(), isFound);

    window.service.subModule(name);
    QCOMPARE(window.docks().isEmpty(), isFound);
    QCOMPARE(window.entries().isEmpty(), isFound);
}

void tst_oxMainWindowServiceRemoteImpl::dockOfAnotherClassIsNoModule()
{
    Window window;
    auto *plain = new QDockWidget(module, &window);
    QVERIFY(!window.service.getModule(module));

    window.service.subModule(module);
    QCOMPARE(window.findChildren<QDockWidget *>(), QList<QDockWidget *>{plain});
}

void tst_oxMainWindowServiceRemoteImpl::dockInsideAnotherWindowIsFoundInChildOrder()
{
    Window window;
    auto *inside = new QOXDockWidget(module, tools, QIcon(), new QMainWindow(&window));
    window.add(module);

    QCOMPARE(window.dock(), inside);
}

void tst_oxMainWindowServiceRemoteImpl::renamedDockIsFoundByItsNewTitle()
{
    Window window;
    window.add(module);
    QOXDockWidget *dock = window.dock();
    dock->setWindowTitle(QStringLiteral("Renamed"));

    QVERIFY(!window.dock());
    QCOMPARE(window.dock(QStringLiteral("Renamed")), dock);
}

// changeModule

void tst_oxMainWindowServiceRemoteImpl::changedModuleMovesToTheNewMenu()
{
    Window window;
    window.add(module, tools);
    window.add(QStringLiteral("Other"), tools);
    const QPointer<QAction> oldEntry = window.entry();
    window.service.changeModule(module, scripts, new QLabel);

    QVERIFY(!oldEntry);
    QCOMPARE(titles(window.menu(tools)->actions()), QStringList({"Other"}));
    QCOMPARE(window.menu(scripts)->actions(), window.entries());
    QVERIFY(window.entry()->isCheckable());
    QVERIFY(window.entry()->shortcut().isEmpty());
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "Scripts", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::changedModuleKeepsIconCheckMarkAndVisibility_data()
{
    QTest::addColumn<bool>("isShown");
    QTest::newRow("shown") << true;
    QTest::newRow("hidden") << false;
}

void tst_oxMainWindowServiceRemoteImpl::changedModuleKeepsIconCheckMarkAndVisibility()
{
    QFETCH(bool, isShown);
    const QIcon red = icon(Qt::red);
    Window window;
    window.add(module, tools, new QLabel, red);
    if (isShown)
        window.service.showModule(module);
    window.service.changeModule(module, scripts, new QLabel);

    QCOMPARE(window.entry()->icon().cacheKey(), red.cacheKey());
    QCOMPARE(window.entry()->isChecked(), isShown);
    QCOMPARE(window.dock()->isVisible(), isShown);
}

void tst_oxMainWindowServiceRemoteImpl::changedModuleGetsTheNewContent()
{
    Window window;
    const QPointer<QWidget> oldContent = new QLabel;
    window.add(module, tools, oldContent);
    window.service.showModule(module);
    const QPointer<QOXDockWidget> dock = window.dock();
    auto *content = new QLabel;
    window.service.changeModule(module, scripts, content);

    QVERIFY(!oldContent);
    QVERIFY(dock);
    QCOMPARE(window.docks(), QList<QOXDockWidget *>{dock});
    QCOMPARE(dock->widget(), content);
    QCOMPARE(dock->windowTitle(), module);
    QTRY_VERIFY(content->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::changedModuleMayHaveNoContentBefore()
{
    Window window;
    window.add(module);
    delete window.dock()->widget();
    auto *content = new QLabel;
    window.service.changeModule(module, tools, content);

    QCOMPARE(window.dock()->widget(), content);
}

void tst_oxMainWindowServiceRemoteImpl::contentThatTheDockHasAlreadyStays()
{
    Window window;
    const QPointer<QWidget> content = new QLabel;
    window.add(module, tools, content);
    window.service.changeModule(module, scripts, content);

    QVERIFY(content);
    QCOMPARE(window.dock()->widget(), content.data());
    QCOMPARE(window.menu(scripts)->actions(), window.entries());
}

void tst_oxMainWindowServiceRemoteImpl::contentFromWithinTheOldOneIsTakenOutOfIt_data()
{
    QTest::addColumn<bool>("isDeeper");
    QTest::addColumn<bool>("isWindow");
    QTest::newRow("child") << false << false;
    QTest::newRow("grandchild") << true << false;
    QTest::newRow("window") << false << true;
}

void tst_oxMainWindowServiceRemoteImpl::contentFromWithinTheOldOneIsTakenOutOfIt()
{
    QFETCH(bool, isDeeper);
    QFETCH(bool, isWindow);
    Window window;
    const QPointer<QWidget> old = new QWidget;
    QWidget *parent = isDeeper ? new QWidget(old) : old.data();
    const QPointer<QWidget> content = new QWidget(parent, isWindow ? Qt::Window : Qt::Widget);
    window.add(module, tools, old);
    window.service.showModule(module);
    window.service.changeModule(module, tools, content);

    QVERIFY(!old);
    QVERIFY(content);
    QCOMPARE(window.dock()->widget(), content.data());
    QTRY_VERIFY(content->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::contentThatGoesMayDoAnything_data()
{
    QTest::addColumn<Parting>("parting");
    QTest::addColumn<QString>("menu");
    const auto addRow = [](const char *name, const QString &menu, const Parting &parting) {
        QTest::newRow(name) << parting << menu;
    };

    addRow("change the module again", tools,
           [](QScopedPointer<Window> *window) { (*window)->service.changeModule(module, tools, new QLabel); });
    addRow("change it into another menu", tools,
           [](QScopedPointer<Window> *window) { (*window)->service.changeModule(module, scripts, new QLabel); });
    addRow("remove the module", tools, [](QScopedPointer<Window> *window) { (*window)->service.subModule(module); });
    addRow("delete the menu", tools, [](QScopedPointer<Window> *window) { delete (*window)->menu(tools); });
    addRow("delete the window", tools, [](QScopedPointer<Window> *window) { window->reset(); });
}

// A child of the content says that it goes, and so the content is still a widget, in parts.
void tst_oxMainWindowServiceRemoteImpl::contentThatGoesMayDoAnything()
{
    QFETCH(Parting, parting);
    QFETCH(QString, menu);
    QScopedPointer<Window> window(new Window);
    auto *old = new QWidget;
    auto *child = new QLabel(old);
    window->add(module, tools, old);
    window->service.showModule(module);
    int count = 0;
    connect(child, &QObject::destroyed, this, [&] {
        ++count;
        parting(&window);
    });
    const QPointer<QLabel> content = new QLabel;
    oxMainWindowServiceRemoteImpl service; // outlives the window
    service.setWidget(window.get());
    service.changeModule(module, tools, content);

    QCOMPARE(count, 1);
    QVERIFY(content);
    QVERIFY(!window || !window->menu(menu)->isEmpty());
    const QOXDockWidget *dock = window ? window->dock() : nullptr;
    if (!dock) {
        delete content;
        return;
    }
    QCOMPARE(dock->widget(), content.data());
    QCOMPARE(dock->findChildren<QLabel *>(), QList<QLabel *>{content}); // no other is left behind
}

void tst_oxMainWindowServiceRemoteImpl::changeWhileTheContentIsDestroyed_data()
{
    QTest::addColumn<bool>("isChild");
    QTest::addColumn<bool>("isShown");
    QTest::newRow("content, hidden") << false << false;
    QTest::newRow("content, shown") << false << true;
    QTest::newRow("child of it, hidden") << true << false;
    QTest::newRow("child of it, shown") << true << true;
}

// Its owner deletes it, and the dock still has it.
void tst_oxMainWindowServiceRemoteImpl::changeWhileTheContentIsDestroyed()
{
    QFETCH(bool, isChild);
    QFETCH(bool, isShown);
    Window window;
    auto *old = new QWidget;
    window.add(module, tools, old);
    if (isShown)
        window.service.showModule(module);
    const QPointer<QWidget> content = new QLabel;
    connect(isChild ? new QLabel(old) : old, &QObject::destroyed, this, [&] {
        QVERIFY(window.dock()->widget());
        window.service.changeModule(module, scripts, content);
        QCOMPARE(window.dock()->widget(), content.data());
    });
    delete old;

    QCOMPARE(window.dock()->widget(), content.data());
    QCOMPARE(window.entries(), window.menu(scripts)->actions());
    window.service.showModule(module);
    QTRY_VERIFY(content->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::newEntryHasOnlyTheIconAndTheCheckMarkOfTheOldOne()
{
    Window window;
    window.add(QStringLiteral("New"), scripts);
    window.add(module, tools, new QLabel, icon(Qt::red));
    QAction *old = window.entry();
    old->setShortcut(Qt::CTRL + Qt::Key_M);
    old->setToolTip(QStringLiteral("Tip"));
    old->setStatusTip(QStringLiteral("Status"));
    old->setWhatsThis(QStringLiteral("What"));
    old->setIconText(QStringLiteral("Icon"));
    old->setData(1);
    old->setEnabled(false);
    old->setObjectName(QStringLiteral("name"));
    window.service.changeModule(module, scripts, new QLabel);

    QAction *entry = window.entry();
    entry->setIcon(QIcon());
    entry->setText(QStringLiteral("New"));
    const QAction *asNew = window.entry(QStringLiteral("New"));
    QVERIFY(asNew != entry);
    for (int i = 0; i < entry->metaObject()->propertyCount(); ++i) {
        const QMetaProperty property = entry->metaObject()->property(i);
        QVERIFY2(property.name() == QByteArray("icon") || property.read(entry) == property.read(asNew),
                 property.name());
    }
    QVERIFY(entry->data().isNull());
}

void tst_oxMainWindowServiceRemoteImpl::changedEntryStillFollowsTheDockAndDrivesIt()
{
    Window window;
    window.add(module);
    window.service.changeModule(module, scripts, new QLabel);
    window.service.showModule(module);
    QVERIFY(window.entry()->isChecked());

    window.dock()->close();
    QVERIFY(!window.entry()->isChecked());

    window.entry()->trigger();
    QVERIFY(window.dock()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::changeInTheSameMenuPutsTheEntryLast()
{
    Window window;
    window.add(module);
    window.add(QStringLiteral("Other"));
    const QPointer<QMenu> menu = window.menu();
    window.service.changeModule(module, tools, new QLabel);

    QVERIFY(menu);
    QCOMPARE(window.menu(), menu.data());
    QCOMPARE(titles(menu->actions()), QStringList({"Other", "Module"}));
}

void tst_oxMainWindowServiceRemoteImpl::changeWithNullContentDoesNothing()
{
    Window window;
    const QPointer<QWidget> content = new QLabel;
    window.add(module, tools, content);
    QMenu *empty = window.addMenu(QStringLiteral("Empty"));
    const QList<QAction *> entries = window.entries();
    window.service.changeModule(module, scripts, nullptr);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help", "Empty"}));
    QCOMPARE(window.entries(), entries);
    QCOMPARE(window.dock()->widget(), content.data());
    QVERIFY(empty->isEmpty());
}

void tst_oxMainWindowServiceRemoteImpl::changeOfAnUnknownModuleMakesAnEntryWithoutADock()
{
    Window window;
    window.addMenu(QStringLiteral("Empty"));
    QLabel content;
    window.service.changeModule(module, tools, &content);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    QVERIFY(window.docks().isEmpty());
    QVERIFY(!content.parent());
    QCOMPARE(window.menu()->actions(), window.entries());
    QCOMPARE(window.entries().size(), 1);
    QVERIFY(window.entry()->icon().isNull());
    QVERIFY(window.entry()->isCheckable());
    QVERIFY(!window.entry()->isChecked());
    window.entry()->trigger();
    QVERIFY(!content.isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::changeOfAModuleWithoutEntryMakesOne()
{
    Window window;
    window.add(module, tools, new QLabel, icon(Qt::red));
    window.service.showModule(module);
    delete window.entry();
    window.service.changeModule(module, tools, new QLabel);

    QCOMPARE(window.entries().size(), 1);
    QVERIFY(window.entry()->icon().isNull());
    QVERIFY(!window.entry()->isChecked());
    QVERIFY(window.dock()->isVisible());
}

void tst_oxMainWindowServiceRemoteImpl::changeTakesTheFirstOfTwoModules()
{
    Window window;
    const QPointer<QWidget> first = new QLabel;
    const QPointer<QWidget> second = new QLabel;
    window.add(module, tools, first, icon(Qt::red));
    window.add(module, tools, second);
    QAction *secondEntry = window.entries().last();
    auto *content = new QLabel;
    window.service.changeModule(module, scripts, content);

    QVERIFY(!first);
    QCOMPARE(window.docks().first()->widget(), content);
    QCOMPARE(window.docks().last()->widget(), second.data());
    QCOMPARE(window.menu(tools)->actions(), QList<QAction *>{secondEntry});
    QCOMPARE(titles(window.menu(scripts)->actions()), QStringList({"Module"}));
}

void tst_oxMainWindowServiceRemoteImpl::changeFindsAnEntryInsideAnotherMenu()
{
    const QIcon red = icon(Qt::red);
    Window window;
    QMenu *inside = window.menu(QStringLiteral("&File"))->addMenu(scripts);
    window.add(module, scripts, new QLabel, red);
    QCOMPARE(inside->actions(), window.entries());
    window.service.changeModule(module, tools, new QLabel);

    QCOMPARE(window.menu(tools)->actions(), window.entries());
    QCOMPARE(window.entry()->icon().cacheKey(), red.cacheKey());
}

void tst_oxMainWindowServiceRemoteImpl::menuThatChangeLeavesEmptyIsDeleted()
{
    Window window;
    window.add(module, tools);
    window.service.changeModule(module, scripts, new QLabel);

    QVERIFY(!window.menu(tools));
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Scripts", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::changeDeletesTheFirstEmptyMenuOnly()
{
    Window window;
    window.addMenu(QStringLiteral("Empty"));
    window.add(module, tools);
    window.service.changeModule(module, scripts, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "Scripts", "&Help"}));

    window.service.changeModule(module, scripts, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Scripts", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::firstEmptyMenuIsTheFirstInChildOrder()
{
    Window window;
    window.addMenu(QStringLiteral("First child"));
    window.menuBar()->insertMenu(window.menuBar()->actions().first(),
                                 new QMenu(QStringLiteral("First in the bar"), window.menuBar()));
    window.add(module, tools);
    window.service.changeModule(module, tools, new QLabel);

    QCOMPARE(window.menuTitles(), QStringList({"First in the bar", "&File", "Tools", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::changeDeletesAnEmptyMenuInsideAnotherMenu()
{
    Window window;
    window.menu(QStringLiteral("&File"))->addMenu(QStringLiteral("Recent"));
    window.addMenu(QStringLiteral("Empty"));
    window.add(module, tools);
    window.service.changeModule(module, tools, new QLabel);

    QCOMPARE(titles(window.menu(QStringLiteral("&File"))->actions()), QStringList({"Quit"}));
    QVERIFY(window.menu(QStringLiteral("Empty")));
}

void tst_oxMainWindowServiceRemoteImpl::emptyHelpMenuIsDeletedLikeAnyOther()
{
    Window window;
    window.help->clear();
    window.add(module, tools);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    window.service.changeModule(module, tools, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools"}));

    window.add(QStringLiteral("Other"), scripts);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "Scripts"}));
}

// A menu's own action has the menu's title for its text.
void tst_oxMainWindowServiceRemoteImpl::moduleNamedLikeAMenuLeavesTheMenuAlone()
{
    Window window;
    window.add(tools, tools);
    window.add(QStringLiteral("Other"), tools);
    window.service.changeModule(tools, tools, new QLabel);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    QCOMPARE(titles(window.menu()->actions()), QStringList({"Other", "Tools"}));

    window.service.subModule(tools);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    QCOMPARE(titles(window.menu()->actions()), QStringList({"Other"}));

    window.service.subModule(QStringLiteral("&Help"));
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
}

// subModule

void tst_oxMainWindowServiceRemoteImpl::removedModuleLosesEntryDockAndContent()
{
    Window window;
    const QPointer<QWidget> content = new QLabel;
    window.add(module, tools, content);
    window.add(QStringLiteral("Other"), tools);
    window.service.showModule(module);
    const QPointer<QWidget> dock = window.dock();
    window.service.subModule(module);

    QVERIFY(!dock);
    QVERIFY(!content);
    QVERIFY(window.entries().isEmpty());
    QCOMPARE(titles(window.menu()->actions()), QStringList({"Other"}));
    QCOMPARE(window.docks().size(), 1);
}

void tst_oxMainWindowServiceRemoteImpl::removalLeavesAnEmptyMenu()
{
    Window window;
    window.add(module, tools);
    window.service.subModule(module);

    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
    QVERIFY(window.menu()->isEmpty());
}

void tst_oxMainWindowServiceRemoteImpl::removalOfAnUnknownModuleDoesNothing()
{
    Window window;
    window.add(module);
    window.service.subModule(QStringLiteral("unknown"));

    QCOMPARE(window.docks().size(), 1);
    QCOMPARE(window.entries().size(), 1);
    QCOMPARE(window.menuTitles(), QStringList({"&File", "Tools", "&Help"}));
}

void tst_oxMainWindowServiceRemoteImpl::removalTakesTheFirstOfTwoModules()
{
    Window window;
    window.add(module);
    window.add(module);
    QOXDockWidget *second = window.docks().last();
    QAction *secondEntry = window.entries().last();
    window.service.subModule(module);

    QCOMPARE(window.docks(), QList<QOXDockWidget *>{second});
    QCOMPARE(window.entries(), QList<QAction *>{secondEntry});
}

void tst_oxMainWindowServiceRemoteImpl::removalOfAModuleThatLostItsDockTakesTheEntry()
{
    Window window;
    window.add(module);
    delete window.dock();
    window.service.subModule(module);

    QVERIFY(window.entries().isEmpty());
}

void tst_oxMainWindowServiceRemoteImpl::removalOfAModuleThatLostItsEntryTakesTheDock()
{
    Window window;
    window.add(module);
    delete window.entry();
    window.service.subModule(module);

    QVERIFY(window.docks().isEmpty());
}

// What is not available

void tst_oxMainWindowServiceRemoteImpl::unavailableOperationPrintsItsLine_data()
{
    using Service = oxMainWindowServiceRemoteImpl;
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("line");
    const auto addRow = [](const char *name, const Operation &operation, const QByteArray &line) {
        QTest::newRow(name) << operation << line;
    };

    addRow(
        "addSeparator",
        [](Service *service) {
            service->addSeparator(tools);
            return nullptr;
        },
        "oxMainWindowService: addSeparator not implemented for Remote Service\n");
    addRow(
        "setModuleWidget",
        [](Service *service) {
            service->setModuleWidget("Module", nullptr);
            return nullptr;
        },
        "oxMainWindowService: setModuleWidget not implemented for Remote Service\n");
    addRow(
        "getSceneMenu", [](Service *service) { return service->getSceneMenu(); },
        "oxMainWindowService: getSceneMenu not implemented for Remote Service\n");
    addRow(
        "getSimpleSceneMenu", [](Service *service) { return service->getSimpleSceneMenu(); },
        "oxMainWindowService: getSimpleSceneMenu not implemented for Remote Service\n");
    addRow(
        "getViewMenu", [](Service *service) { return service->getViewMenu(); },
        "oxMainWindowService: getViewMenu not implemented for Remote Service\n");
    addRow(
        "getImportMenu", [](Service *service) { return service->getImportMenu(); },
        "oxMainWindowService: getImportMenu not implemented for Remote Service\n");
    addRow(
        "getExportMenu, without the blank", [](Service *service) { return service->getExportMenu(); },
        "oxMainWindowService: getExportMenu not implemented for RemoteService\n");
    addRow(
        "getSynchronisationToolBar, nothing", [](Service *service) { return service->getSynchronisationToolBar(); },
        "");
}

void tst_oxMainWindowServiceRemoteImpl::unavailableOperationPrintsItsLine()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, line);
    Window window;
    window.add(module);
    const int widgets = QApplication::allWidgets().size();
    const void *result = &window;
    size_t notFlushed = 1;
    const Output output = outputOf([&] {
        result = operation(&window.service);
        notFlushed = __fpending(stdout);
    });

    QCOMPARE(output.standardOutput, line);
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(notFlushed, size_t(0));
    QVERIFY(!result);
    QCOMPARE(QApplication::allWidgets().size(), widgets);
    QCOMPARE(titles(window.menu()->actions()), QStringList({"Module"}));
}

void tst_oxMainWindowServiceRemoteImpl::availableOperationsPrintNothing()
{
    Window window;
    // What Qt itself warns of, and Qt Test prints, is not meant.
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const Output output = outputOf([&window] {
        window.add(module);
        window.add(module, scripts, nullptr);
        window.service.showModule(module);
        window.service.changeModule(module, scripts, new QLabel);
        window.service.changeModule(QStringLiteral("unknown"), scripts, new QLabel(&window));
        window.service.getModule(QStringLiteral("unknown"));
        window.service.hideModule(module);
        window.service.subModule(module);
        window.service.subModule(module);
        window.service.getWidget();
    });
    qInstallMessageHandler(handler);

    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

// Without a window

namespace {

void tryAllOnModules(oxMainWindowServiceRemoteImpl *service, QWidget *content)
{
    service->addModule(module, tools, content, QString(), QIcon(), QString(), Qt::LeftDockWidgetArea);
    service->changeModule(module, tools, content);
    service->showModule(module);
    service->hideModule(module);
    service->subModule(module);
}

} // namespace

void tst_oxMainWindowServiceRemoteImpl::withoutAWindowNoOperationDoesAnything()
{
    oxMainWindowServiceRemoteImpl service;
    QLabel content;
    const int widgets = QApplication::allWidgets().size();
    tryAllOnModules(&service, &content);

    QVERIFY(!service.getModule(module));
    QVERIFY(!content.parent());
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

void tst_oxMainWindowServiceRemoteImpl::afterTheWindowIsGoneNoOperationDoesAnything()
{
    oxMainWindowServiceRemoteImpl service;
    {
        QMainWindow window;
        service.setWidget(&window);
        service.addModule(module, tools, new QLabel, QString(), QIcon(), QString(), Qt::NoDockWidgetArea);
        QVERIFY(service.getModule(module));
    }
    QLabel content;
    tryAllOnModules(&service, &content);

    QVERIFY(!service.getWidget());
    QVERIFY(!service.getModule(module));
    QVERIFY(!content.parent());
}

QTEST_MAIN(tst_oxMainWindowServiceRemoteImpl)
#include "tst_oxMainWindowServiceRemoteImpl.moc"
