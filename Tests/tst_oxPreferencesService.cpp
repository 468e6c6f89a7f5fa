#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

#include "OutputCapture.h"
#include "Patience.h"
#include "oxPreferencesService.h"
#include "oxQRPCClient.h"

namespace {

/// A page that counts what it is told.
class Page : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    int applied = 0;
    int defaulted = 0;
    int read = 0;
    int shown = 0;
    std::function<void()> whenTold;

public Q_SLOTS:
    void applyChanges()
    {
        ++applied;
        if (whenTold)
            whenTold();
    }
    void setDefault() { ++defaulted; }

public:
    Q_INVOKABLE void readValues() { ++read; }

protected:
    void showEvent(QShowEvent *) override { ++shown; }
};

/// Notes whether a widget is put into another one.
class Moves : public QObject
{
public:
    explicit Moves(QWidget *widget) { widget->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::ParentChange;
        return false;
    }
};

class WindowedService : public oxPreferencesService
{
    Q_OBJECT

public:
    QMainWindow *getWidget() override { return window; }

    QPointer<QMainWindow> window;
};

// The dialog as the user meets it: a window.
QDialog *openDialog()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

QTabWidget *tabs()
{
    return openDialog()->findChild<QTabWidget *>();
}

QStringList titles()
{
    QStringList titles;
    for (int i = 0; i < tabs()->count(); ++i)
        titles.append(tabs()->tabText(i));
    return titles;
}

QPushButton *button(QDialogButtonBox::StandardButton button)
{
    return openDialog()->findChild<QDialogButtonBox *>()->button(button);
}

void click(QDialogButtonBox::StandardButton which)
{
    QTest::mouseClick(button(which), Qt::LeftButton);
}

// Writes and reads a value of one type.
using RoundTrip = std::function<bool(oxPreferencesService *, bool write)>;

template<class T, class Setter, class Getter>
RoundTrip roundTrip(Setter set, Getter get, T value)
{
    return [=](oxPreferencesService *service, bool write) {
        if (write)
            (service->*set)(QStringLiteral("Page/Value"), value);
        return (service->*get)(QStringLiteral("Page/Value")) == value;
    };
}

} // namespace

Q_DECLARE_METATYPE(RoundTrip)

class tst_oxPreferencesService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void valueIsKept_data();
    void valueIsKept();
    void valueThatWasNeverSetIsADefault();
    void valueIsReadAsAnotherType();
    void emptyKeyNamesNothing();
    void valuesAreInTheFileOfTheApplication();
    void nameOfTheApplicationMayComeAfterTheService();
    void saveChangesWritesAtOnce();
    void valuesAreWrittenWithTheServicesEnd();
    void fileThatCannotBeWrittenIsReportedUntilItCan();
    void setDefaultOfAPageForgetsItsValues();
    void setDefaultForgetsAllValuesAndNothingElse();
    void setDefaultOfNoNameForgetsNothing();
    void forgottenValueIsNotTakenFromElsewhere();

    void pagesAreToldByName();
    void allPagesAreTold();
    void pageReadsValuesWheneverTheDialogOpens();
    void pageWithoutTheMethodsIsPassedOver();
    void pageMayLeaveWhenItIsTold();
    void nullPageIsIgnored();
    void pageThatIsNotThereIsNotTakenOut();

    void dialogShowsPagesInOrder();
    void dialogWithoutPagesSaysSo();
    void dialogIsOverTheWindow();
    void openDialogIsRaisedInsteadOfASecondOne();
    void openDialogComesToTheFront();
    void openDialogFollowsAddedAndRemovedPages();
    void pageAddedAgainIsRenamedAndLast();
    void pageDeletedByItsOwnerLeavesTheDialog();
    void pageReturnsToItsParentWhenTheDialogCloses();
    void pageReturnsWhenItIsTakenOut();
    void pageReturnsWhenTheServiceGoes();
    void pageOfTheWindowReturnsWhenTheServiceGoes();
    void pageReturnsWhenTheWindowGoes();
    void pageGoesWithItsOwnParent();
    void pageWhoseParentHasGoneIsNotGivenBack_data();
    void pageWhoseParentHasGoneIsNotGivenBack();
    void pageMayBeTakenElsewhere();
    void closingShowsNoOtherPage();
    void closedDialogOpensAgain();
    void okAppliesSavesAndCloses();
    void applyAppliesAndSaves();
    void cancelDoesNeither_data();
    void cancelDoesNeither();
    void restoreDefaultsIsForThePageInView();
    void basesOwnOperationsAddAndRemove();
    void noOperationNeedsAConnection();

private:
    QByteArray fileContents() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<WindowedService> m_service;
};

void tst_oxPreferencesService::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Org"));
    QCoreApplication::setApplicationName(QStringLiteral("tst"));
}

void tst_oxPreferencesService::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder->path());
    m_service = std::make_unique<WindowedService>();
}

void tst_oxPreferencesService::cleanup()
{
    m_service.reset();
    QVERIFY(!openDialog());
}

QByteArray tst_oxPreferencesService::fileContents() const
{
    QFile file(m_folder->filePath(QStringLiteral("Org/tst.conf")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_oxPreferencesService::valueIsKept_data()
{
    QTest::addColumn<RoundTrip>("roundTrip");

    using S = oxPreferencesService;
    const QMap<const char *, QString> texts{
        {"text", QStringLiteral("as it is")},
        {"empty text", QString(QLatin1String(""))},
        {"blanks", QStringLiteral("  a b\t ")},
        {"lines", QStringLiteral("one\r\ntwo\n")},
        {"signs", QStringLiteral("@Invalid() \"a\", b; %1 \\n = [x]")},
        {"not ASCII", QStringLiteral("Gr\u00f6\u00dfe \u20ac \U0001F697")},
        {"NUL", QString::fromLatin1("a\0b", 3)},
    };
    for (auto text = texts.begin(); text != texts.end(); ++text)
        QTest::newRow(text.key()) << roundTrip(&S::setStringValue, &S::getStringValue, text.value());
    for (const int value : {0, -1, 42, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("int %d", value) << roundTrip(&S::setIntValue, &S::getIntValue, value);
    using Double = std::numeric_limits<double>;
    for (const double value : {0.0, -0.1, 1.0 / 3, Double::min(), Double::max(), Double::infinity()})
        QTest::addRow("double %g", value) << roundTrip(&S::setDoubleValue, &S::getDoubleValue, value);
    using Float = std::numeric_limits<float>;
    for (const float value : {0.0f, -0.1f, 1.0f / 3, Float::min(), Float::max(), Float::infinity()})
        QTest::addRow("float %g", static_cast<double>(value)) << roundTrip(&S::setFloatValue, &S::getFloatValue, value);
    for (const bool value : {false, true})
        QTest::addRow("bool %d", value) << roundTrip(&S::setBoolValue, &S::getBoolValue, value);
}

void tst_oxPreferencesService::valueIsKept()
{
    QFETCH(RoundTrip, roundTrip);

    QVERIFY(roundTrip(m_service.get(), true));
    m_service.reset();
    QVERIFY(!fileContents().isEmpty());
    oxPreferencesService next;
    QVERIFY(roundTrip(&next, false));
}

void tst_oxPreferencesService::valueThatWasNeverSetIsADefault()
{
    const QString key = QStringLiteral("Page/Nothing");
    QCOMPARE(m_service->getStringValue(key), QString());
    QCOMPARE(m_service->getIntValue(key), 0);
    QCOMPARE(m_service->getDoubleValue(key), 0.0);
    QCOMPARE(m_service->getFloatValue(key), 0.0f);
    QCOMPARE(m_service->getBoolValue(key), false);
}

void tst_oxPreferencesService::valueIsReadAsAnotherType()
{
    const QString key = QStringLiteral("Page/Value");
    m_service->setStringValue(key, QStringLiteral("12"));
    QCOMPARE(m_service->getIntValue(key), 12);
    QCOMPARE(m_service->getDoubleValue(key), 12.0);
    m_service->setIntValue(key, 5);
    QCOMPARE(m_service->getStringValue(key), QStringLiteral("5"));
    QCOMPARE(m_service->getBoolValue(key), true);
    m_service->setStringValue(key, QStringLiteral("no number"));
    QCOMPARE(m_service->getIntValue(key), 0);
    QCOMPARE(m_service->getFloatValue(key), 0.0f);
}

void tst_oxPreferencesService::emptyKeyNamesNothing()
{
    const Output output = outputOf([this] {
        m_service->setIntValue(QString(), 5);
        m_service->setStringValue(QStringLiteral(""), QStringLiteral("x"));
    });
    QCOMPARE(m_service->getIntValue(QString()), 0);
    QCOMPARE(m_service->getStringValue(QString()), QString());
    QCOMPARE(output.standardError, QByteArray());
}

void tst_oxPreferencesService::valuesAreInTheFileOfTheApplication()
{
    m_service->setBoolValue(QStringLiteral("View/Grid"), true);
    m_service->setFloatValue(QStringLiteral("View/Size"), 0.5f);
    m_service->saveChanges();
    QCOMPARE(fileContents(), QByteArray("[Preferences]\nView\\Grid=true\nView\\Size=0.5\n"));
}

void tst_oxPreferencesService::nameOfTheApplicationMayComeAfterTheService()
{
    QCoreApplication::setOrganizationName(QString());
    QCoreApplication::setApplicationName(QStringLiteral("later"));
    m_service->setIntValue(QStringLiteral("Page/Value"), 1);
    const Output output = outputOf([this] { m_service->saveChanges(); });
    initTestCase();

    QVERIFY(QFile::exists(m_folder->filePath(QStringLiteral("later/later.conf"))));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_oxPreferencesService::saveChangesWritesAtOnce()
{
    m_service->setIntValue(QStringLiteral("Page/Value"), 1);
    QVERIFY(fileContents().isEmpty());
    m_service->saveChanges();
    QVERIFY(fileContents().contains("Value=1"));
}

void tst_oxPreferencesService::valuesAreWrittenWithTheServicesEnd()
{
    m_service->setIntValue(QStringLiteral("Page/Value"), 1);
    m_service.reset();
    QVERIFY(fileContents().contains("Value=1"));
}

void tst_oxPreferencesService::fileThatCannotBeWrittenIsReportedUntilItCan()
{
    QFile inTheWay(m_folder->filePath(QStringLiteral("Org")));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    m_service->setIntValue(QStringLiteral("Page/Value"), 1);
    const Output failed = outputOf([this] { m_service->saveChanges(); });
    QVERIFY(inTheWay.remove());
    const Output saved = outputOf([this] { m_service->saveChanges(); });

    QCOMPARE(failed.standardError,
             "oxPreferencesService: couldn't save the preferences in '" + m_folder->path().toUtf8()
                 + "/Org/tst.conf'!\n");
    QCOMPARE(saved.standardError, QByteArray());
    QVERIFY(fileContents().contains("Value=1"));
}

void tst_oxPreferencesService::setDefaultOfAPageForgetsItsValues()
{
    for (const char *key : {"View/Grid", "View/Colours/Sky", "Viewer/Grid", "Paths/View"})
        m_service->setIntValue(QLatin1String(key), 1);
    m_service->saveChanges();
    m_service->setDefault(QStringLiteral("View"));

    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Grid")), 0);
    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Colours/Sky")), 0);
    QCOMPARE(m_service->getIntValue(QStringLiteral("Viewer/Grid")), 1);
    QCOMPARE(m_service->getIntValue(QStringLiteral("Paths/View")), 1);
}

void tst_oxPreferencesService::setDefaultForgetsAllValuesAndNothingElse()
{
    QSettings others(QStringLiteral("Org"), QStringLiteral("tst"));
    others.setValue(QStringLiteral("Window/Width"), 800);
    others.sync();
    for (const char *key : {"View/Grid", "Alone"})
        m_service->setIntValue(QLatin1String(key), 1);
    m_service->setDefault();
    m_service->saveChanges();

    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Grid")), 0);
    QCOMPARE(m_service->getIntValue(QStringLiteral("Alone")), 0);
    QCOMPARE(fileContents(), QByteArray("[Window]\nWidth=800\n"));
}

void tst_oxPreferencesService::setDefaultOfNoNameForgetsNothing()
{
    m_service->setIntValue(QStringLiteral("View/Grid"), 1);
    m_service->setDefault(QString());
    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Grid")), 1);
}

void tst_oxPreferencesService::forgottenValueIsNotTakenFromElsewhere()
{
    QSettings everywhere(QStringLiteral("Org"));
    everywhere.setValue(QStringLiteral("Preferences/View/Grid"), 7);
    everywhere.sync();
    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Grid")), 0);
}

void tst_oxPreferencesService::pagesAreToldByName()
{
    Page view;
    Page sameName;
    Page viewer;
    Page paths;
    m_service->preferencesAdd(QStringLiteral("View"), QString(), &view);
    m_service->preferencesAdd(QStringLiteral("View"), QString(), &sameName);
    m_service->preferencesAdd(QStringLiteral("Viewer"), QString(), &viewer);
    m_service->preferencesAdd(QStringLiteral("Paths"), QString(), &paths);
    m_service->applyChanges(QStringLiteral("View"));
    m_service->setDefault(QStringLiteral("View"));
    m_service->applyChanges(QStringLiteral("view"));

    for (const Page *page : {&view, &sameName}) {
        QCOMPARE(page->applied, 1);
        QCOMPARE(page->defaulted, 1);
    }
    QCOMPARE(viewer.applied + viewer.defaulted, 0);
    QCOMPARE(paths.applied + paths.defaulted, 0);
}

void tst_oxPreferencesService::allPagesAreTold()
{
    Page view;
    Page paths;
    m_service->preferencesAdd(QStringLiteral("View"), QString(), &view);
    m_service->preferencesAdd(QStringLiteral("Paths"), QString(), &paths);
    m_service->applyChanges();
    m_service->setDefault();
    m_service->setDefault();

    for (const Page *page : {&view, &paths}) {
        QCOMPARE(page->applied, 1);
        QCOMPARE(page->defaulted, 2);
    }
}

void tst_oxPreferencesService::pageReadsValuesWheneverTheDialogOpens()
{
    Page first;
    Page second;
    Page late;
    m_service->preferencesAdd(QStringLiteral("First"), QString(), &first);
    m_service->preferencesAdd(QStringLiteral("Second"), QString(), &second);
    QCOMPARE(first.read, 0);
    m_service->showPreferences();
    m_service->preferencesAdd(QStringLiteral("Late"), QString(), &late);
    tabs()->setCurrentIndex(1);
    m_service->showPreferences();
    for (const Page *page : {&first, &second, &late})
        QCOMPARE(page->read, 1);

    openDialog()->close();
    m_service->showPreferences();
    for (const Page *page : {&first, &second, &late})
        QCOMPARE(page->read, 2);
}

void tst_oxPreferencesService::pageWithoutTheMethodsIsPassedOver()
{
    QWidget plain;
    Page page;
    m_service->preferencesAdd(QStringLiteral("Plain"), QString(), &plain);
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    const Output output = outputOf([this] {
        m_service->applyChanges();
        m_service->setDefault();
        m_service->showPreferences();
    });

    QCOMPARE(page.applied, 1);
    QCOMPARE(page.defaulted, 1);
    QCOMPARE(page.read, 1);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_oxPreferencesService::pageMayLeaveWhenItIsTold()
{
    Page leaving;
    auto *deleted = new Page;
    Page last;
    for (Page *page : {&leaving, deleted, &last})
        m_service->preferencesAdd(QStringLiteral("Page"), QString(), page);
    leaving.whenTold = [&] {
        m_service->preferencesSub(&leaving);
        delete deleted;
    };
    m_service->applyChanges();
    m_service->applyChanges();

    QCOMPARE(leaving.applied, 1);
    QCOMPARE(last.applied, 2);
}

void tst_oxPreferencesService::nullPageIsIgnored()
{
    m_service->preferencesAdd(QStringLiteral("Null"), QString(), nullptr);
    m_service->preferencesSub(nullptr);
    m_service->showPreferences();
    m_service->preferencesAdd(QStringLiteral("Null"), QString(), nullptr);
    m_service->preferencesSub(nullptr);
    QVERIFY(titles().isEmpty());
}

void tst_oxPreferencesService::pageThatIsNotThereIsNotTakenOut()
{
    Page page;
    QWidget other;
    QWidget child(&other);
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->preferencesSub(&child);
    QCOMPARE(child.parentWidget(), &other);

    m_service->showPreferences();
    m_service->preferencesSub(&child);
    QCOMPARE(child.parentWidget(), &other);
    QCOMPARE(titles(), QStringList{QStringLiteral("Page")});
}

void tst_oxPreferencesService::dialogShowsPagesInOrder()
{
    Page view;
    Page grouped;
    Page signs;
    m_service->preferencesAdd(QStringLiteral("View"), QString(), &view);
    m_service->preferencesAdd(QStringLiteral("Paths"), QStringLiteral("General"), &grouped);
    m_service->preferencesAdd(QStringLiteral("Load & save"), QString(), &signs);
    m_service->showPreferences();

    QCOMPARE(titles(),
             QStringList({QStringLiteral("View"), QStringLiteral("General: Paths"), QStringLiteral("Load && save")}));
    QVERIFY(view.isVisible());
    QVERIFY(!grouped.isVisible());
    tabs()->setCurrentIndex(1);
    QVERIFY(grouped.isVisible());
    QVERIFY(!openDialog()->isModal());
    QCOMPARE(openDialog()->windowTitle(), QStringLiteral("Preferences"));
}

void tst_oxPreferencesService::dialogWithoutPagesSaysSo()
{
    m_service->showPreferences();
    const auto *label = openDialog()->findChild<QLabel *>();
    QVERIFY(label->isVisible());
    QVERIFY(!tabs()->isVisible());
    QVERIFY(!button(QDialogButtonBox::Apply)->isEnabled());
    QVERIFY(!button(QDialogButtonBox::RestoreDefaults)->isEnabled());

    Page page;
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    QVERIFY(!label->isVisible());
    QVERIFY(page.isVisible());
    QVERIFY(button(QDialogButtonBox::Apply)->isEnabled());
    QVERIFY(button(QDialogButtonBox::RestoreDefaults)->isEnabled());
}

void tst_oxPreferencesService::dialogIsOverTheWindow()
{
    QMainWindow window;
    m_service->window = &window;
    m_service->showPreferences();
    QCOMPARE(openDialog()->parentWidget(), &window);
    QVERIFY(openDialog()->isWindow());
}

void tst_oxPreferencesService::openDialogIsRaisedInsteadOfASecondOne()
{
    Page page;
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->showPreferences();
    const QPointer<QDialog> dialog = openDialog();
    m_service->showPreferences();

    QVERIFY(dialog);
    QCOMPARE(openDialog(), dialog.data());
    QCOMPARE(titles().size(), 1);
    const auto isDialog = [](const QWidget *window) { return qobject_cast<const QDialog *>(window) != nullptr; };
    const QWidgetList windows = QApplication::topLevelWidgets();
    QCOMPARE(std::count_if(windows.begin(), windows.end(), isDialog), std::ptrdiff_t(1));
}

void tst_oxPreferencesService::openDialogComesToTheFront()
{
    m_service->showPreferences();
    QMainWindow other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(other.isActiveWindow());
    m_service->showPreferences();
    QTRY_VERIFY(openDialog()->isActiveWindow());
}

void tst_oxPreferencesService::openDialogFollowsAddedAndRemovedPages()
{
    Page first;
    Page second;
    m_service->showPreferences();
    m_service->preferencesAdd(QStringLiteral("First"), QString(), &first);
    m_service->preferencesAdd(QStringLiteral("Second"), QString(), &second);
    QCOMPARE(titles(), QStringList({QStringLiteral("First"), QStringLiteral("Second")}));

    m_service->preferencesSub(&first);
    QCOMPARE(titles(), QStringList{QStringLiteral("Second")});
    QVERIFY(second.isVisible());
}

void tst_oxPreferencesService::pageAddedAgainIsRenamedAndLast()
{
    Page first;
    Page second;
    m_service->preferencesAdd(QStringLiteral("First"), QString(), &first);
    m_service->preferencesAdd(QStringLiteral("Second"), QString(), &second);
    m_service->preferencesAdd(QStringLiteral("Third"), QString(), &first);
    m_service->showPreferences();
    QCOMPARE(titles(), QStringList({QStringLiteral("Second"), QStringLiteral("Third")}));

    m_service->preferencesAdd(QStringLiteral("Last"), QString(), &second);
    QCOMPARE(titles(), QStringList({QStringLiteral("Third"), QStringLiteral("Last")}));
}

void tst_oxPreferencesService::pageDeletedByItsOwnerLeavesTheDialog()
{
    Page stays;
    auto *before = new Page;
    auto *during = new Page;
    for (Page *page : {before, during, &stays})
        m_service->preferencesAdd(QStringLiteral("Page"), QString(), page);
    delete before;
    m_service->showPreferences();
    QCOMPARE(titles().size(), 2);
    delete during;

    QCOMPARE(titles().size(), 1);
    QVERIFY(stays.isVisible());
    click(QDialogButtonBox::Ok);
    QCOMPARE(stays.applied, 1);
}

void tst_oxPreferencesService::pageReturnsToItsParentWhenTheDialogCloses()
{
    QWidget owner;
    Page child(&owner);
    Page alone(nullptr, Qt::Tool);
    m_service->preferencesAdd(QStringLiteral("Child"), QString(), &child);
    m_service->preferencesAdd(QStringLiteral("Alone"), QString(), &alone);
    QCOMPARE(child.parentWidget(), &owner);
    m_service->showPreferences();
    QVERIFY(owner.children().isEmpty());
    QVERIFY(openDialog()->close());

    QCOMPARE(child.parentWidget(), &owner);
    QVERIFY(child.isHidden());
    QVERIFY(!alone.parentWidget());
    QVERIFY(alone.isHidden());
    QCOMPARE(alone.windowType(), Qt::Tool);
}

void tst_oxPreferencesService::pageReturnsWhenItIsTakenOut()
{
    QWidget owner;
    Page child(&owner);
    m_service->preferencesAdd(QStringLiteral("Child"), QString(), &child);
    m_service->showPreferences();
    m_service->preferencesSub(&child);
    QCOMPARE(child.parentWidget(), &owner);
}

void tst_oxPreferencesService::pageReturnsWhenTheServiceGoes()
{
    QWidget owner;
    Page child(&owner);
    m_service->preferencesAdd(QStringLiteral("Child"), QString(), &child);
    m_service->showPreferences();
    m_service.reset();
    QCOMPARE(child.parentWidget(), &owner);
    QVERIFY(!openDialog());
}

void tst_oxPreferencesService::pageOfTheWindowReturnsWhenTheServiceGoes()
{
    QMainWindow window;
    m_service->window = &window;
    const QPointer<Page> page = new Page(&window);
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), page);
    m_service->showPreferences();
    m_service.reset();
    QVERIFY(page);
    QCOMPARE(page->parentWidget(), &window);
}

void tst_oxPreferencesService::pageReturnsWhenTheWindowGoes()
{
    auto window = std::make_unique<QMainWindow>();
    m_service->window = window.get();
    Page page;
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->showPreferences();
    window.reset();
    QVERIFY(!page.parentWidget());

    m_service->showPreferences();
    QVERIFY(page.isVisible());
}

void tst_oxPreferencesService::pageGoesWithItsOwnParent()
{
    auto window = std::make_unique<QMainWindow>();
    m_service->window = window.get();
    QPointer<Page> page = new Page(window.get());
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), page);
    m_service->showPreferences();
    const Moves moves(page);
    window.reset();

    QVERIFY(!page);
    QCOMPARE(moves.count, 0); // not into a window that is half gone
    m_service->showPreferences();
    QVERIFY(titles().isEmpty());
}

void tst_oxPreferencesService::pageWhoseParentHasGoneIsNotGivenBack_data()
{
    QTest::addColumn<QByteArray>("end");
    for (const char *end : {"closed", "taken out", "service goes", "window goes"})
        QTest::newRow(end) << QByteArray(end);
}

// It would have gone with its parent, and it must not become a window that belongs to nobody.
void tst_oxPreferencesService::pageWhoseParentHasGoneIsNotGivenBack()
{
    QFETCH(QByteArray, end);
    auto window = std::make_unique<QMainWindow>();
    m_service->window = window.get();
    auto owner = std::make_unique<QWidget>();
    const QPointer<Page> page = new Page(owner.get());
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), page);
    m_service->showPreferences();
    owner.reset();
    QVERIFY(page);
    QVERIFY(page->isVisible()); // until the dialog closes

    if (end == "closed")
        openDialog()->close();
    else if (end == "taken out")
        m_service->preferencesSub(page);
    else if (end == "service goes")
        m_service.reset();
    else
        window.reset();
    QVERIFY(!page);
}

void tst_oxPreferencesService::pageMayBeTakenElsewhere()
{
    QWidget elsewhere;
    Page page;
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->showPreferences();
    page.setParent(&elsewhere);
    QVERIFY(titles().isEmpty());
    openDialog()->close();
    QCOMPARE(page.parentWidget(), &elsewhere);
}

void tst_oxPreferencesService::closingShowsNoOtherPage()
{
    Page first;
    Page second;
    m_service->preferencesAdd(QStringLiteral("First"), QString(), &first);
    m_service->preferencesAdd(QStringLiteral("Second"), QString(), &second);
    m_service->showPreferences();
    openDialog()->close();
    QCOMPARE(first.shown, 1);
    QCOMPARE(second.shown, 0);
}

void tst_oxPreferencesService::closedDialogOpensAgain()
{
    Page page;
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    for (int i = 0; i < 3; ++i) {
        m_service->showPreferences();
        QVERIFY(page.isVisible());
        const QPointer<QDialog> dialog = openDialog();
        dialog->close();
        m_service->showPreferences(); // before the closed one is deleted
        QVERIFY(page.isVisible());
        QTRY_VERIFY(!dialog);
        QVERIFY(page.isVisible());
        openDialog()->close();
    }
}

void tst_oxPreferencesService::okAppliesSavesAndCloses()
{
    Page page;
    page.whenTold = [this] { m_service->setIntValue(QStringLiteral("Page/Value"), 3); };
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->showPreferences();
    click(QDialogButtonBox::Ok);

    QCOMPARE(page.applied, 1);
    QVERIFY(fileContents().contains("Value=3"));
    QVERIFY(!openDialog());
}

void tst_oxPreferencesService::applyAppliesAndSaves()
{
    Page page;
    page.whenTold = [this] { m_service->setIntValue(QStringLiteral("Page/Value"), 3); };
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->showPreferences();
    click(QDialogButtonBox::Apply);

    QCOMPARE(page.applied, 1);
    QVERIFY(fileContents().contains("Value=3"));
    QVERIFY(page.isVisible());
}

void tst_oxPreferencesService::cancelDoesNeither_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("button") << 0;
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void tst_oxPreferencesService::cancelDoesNeither()
{
    QFETCH(int, key);
    QWidget owner;
    Page page(&owner);
    m_service->preferencesAdd(QStringLiteral("Page"), QString(), &page);
    m_service->setIntValue(QStringLiteral("Page/Value"), 3);
    m_service->showPreferences();
    if (key)
        QTest::keyClick(openDialog(), static_cast<Qt::Key>(key));
    else
        click(QDialogButtonBox::Cancel);

    QCOMPARE(page.applied, 0);
    QVERIFY(fileContents().isEmpty());
    QVERIFY(!openDialog());
    QCOMPARE(page.parentWidget(), &owner);
}

void tst_oxPreferencesService::restoreDefaultsIsForThePageInView()
{
    Page view;
    Page paths;
    m_service->preferencesAdd(QStringLiteral("View"), QString(), &view);
    m_service->preferencesAdd(QStringLiteral("Paths"), QString(), &paths);
    m_service->setIntValue(QStringLiteral("View/Grid"), 1);
    m_service->setIntValue(QStringLiteral("Paths/Depth"), 2);
    m_service->showPreferences();
    tabs()->setCurrentIndex(1);
    click(QDialogButtonBox::RestoreDefaults);

    QCOMPARE(paths.defaulted, 1);
    QCOMPARE(view.defaulted, 0);
    QCOMPARE(m_service->getIntValue(QStringLiteral("Paths/Depth")), 0);
    QCOMPARE(m_service->getIntValue(QStringLiteral("View/Grid")), 1);
    QVERIFY(paths.isVisible());
}

void tst_oxPreferencesService::basesOwnOperationsAddAndRemove()
{
    Page page;
    m_service->addToPreferences(QStringLiteral("Paths"), QStringLiteral("General"), &page);
    m_service->showPreferences();
    QCOMPARE(titles(), QStringList{QStringLiteral("General: Paths")});
    m_service->subFromPreferences(&page);
    QVERIFY(titles().isEmpty());
}

void tst_oxPreferencesService::noOperationNeedsAConnection()
{
    oxQRPCClient client;
    m_service->setClient(&client);
    const Output output = outputOf([this] {
        m_service->setStringValue(QStringLiteral("Page/Value"), QStringLiteral("x"));
        m_service->getStringValue(QStringLiteral("Page/Value"));
        m_service->applyChanges();
        m_service->saveChanges();
        m_service->setDefault();
        m_service->showPreferences();
    });
    m_service->setClient(nullptr);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

QTEST_MAIN(tst_oxPreferencesService)
#include "tst_oxPreferencesService.moc"
