#include <QApplication>
#include <QTest>
#include <QWidget>

#include "NextDefinition.h"
#include "oxPreferencesServiceRemoteImpl.h"

namespace {

struct Addition
{
    const oxPreferencesService *service;
    QString name;
    QString group;
    QWidget *page;
};

QVector<Addition> additions;
QVector<QPair<const oxPreferencesService *, QWidget *>> removals;

} // namespace

void oxPreferencesService::preferencesAdd(const QString &name, const QString &group, QWidget *page)
{
    additions.append({this, name, group, page});
    using Function = void(oxPreferencesService *, const QString &, const QString &, QWidget *);
    nextDefinition<Function>("_ZN20oxPreferencesService14preferencesAddERK7QStringS2_P7QWidget")(this, name, group,
                                                                                                 page);
}

void oxPreferencesService::preferencesSub(QWidget *page)
{
    removals.append({this, page});
    using Function = void(oxPreferencesService *, QWidget *);
    nextDefinition<Function>("_ZN20oxPreferencesService14preferencesSubEP7QWidget")(this, page);
}

class tst_oxPreferencesServiceRemoteImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void parentIsNotTaken();
    void windowIsNullAtFirst();
    void windowIsTheOneLastGiven();
    void windowThatIsDeletedIsForgotten();
    void setWidgetTouchesNoPage();
    void setWidgetShowsNothing();
    void addToPreferencesDropsTheSecondText();
    void subFromPreferencesPassesThePageOn();
    void nullPageIsPassedOnAndIgnored();
    void addedPageIsShownOverTheWindow();
};

void tst_oxPreferencesServiceRemoteImpl::init()
{
    additions.clear();
    removals.clear();
}

void tst_oxPreferencesServiceRemoteImpl::parentIsNotTaken()
{
    QObject parent;
    oxPreferencesServiceRemoteImpl service(&parent);

    QVERIFY(!service.parent());
    QVERIFY(parent.children().isEmpty());
}

void tst_oxPreferencesServiceRemoteImpl::windowIsNullAtFirst()
{
    QVERIFY(!oxPreferencesServiceRemoteImpl(nullptr).getWidget());
}

void tst_oxPreferencesServiceRemoteImpl::windowIsTheOneLastGiven()
{
    QMainWindow first;
    QMainWindow second;
    oxPreferencesServiceRemoteImpl service(nullptr);

    for (QMainWindow *window : {&first, &second, &first, static_cast<QMainWindow *>(nullptr)}) {
        service.setWidget(window);
        QCOMPARE(service.getWidget(), window);
    }
}

void tst_oxPreferencesServiceRemoteImpl::windowThatIsDeletedIsForgotten()
{
    oxPreferencesServiceRemoteImpl service(nullptr);
    {
        QMainWindow window;
        service.setWidget(&window);
    }

    QVERIFY(!service.getWidget());
}

void tst_oxPreferencesServiceRemoteImpl::setWidgetTouchesNoPage()
{
    QMainWindow window;
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.setWidget(&window);

    QVERIFY(additions.isEmpty());
    QVERIFY(removals.isEmpty());
}

void tst_oxPreferencesServiceRemoteImpl::setWidgetShowsNothing()
{
    QMainWindow window;
    QWidget page;
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.addToPreferences(QStringLiteral("Paths"), QString(), &page);
    const QWidgetList before = QApplication::allWidgets();
    service.setWidget(&window);

    QVERIFY(window.isHidden());
    QVERIFY(!window.testAttribute(Qt::WA_WState_Created));
    QVERIFY(!page.isVisible());
    QCOMPARE(QApplication::allWidgets().size(), before.size());
}

void tst_oxPreferencesServiceRemoteImpl::addToPreferencesDropsTheSecondText()
{
    QWidget page;
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.addToPreferences(QStringLiteral("Paths"), QStringLiteral("General"), &page);

    QCOMPARE(additions.size(), 1);
    const Addition &added = additions.first();
    QCOMPARE(added.service, &service);
    QCOMPARE(added.name, QStringLiteral("Paths"));
    QVERIFY(added.group.isEmpty());
    QVERIFY(!added.group.isNull());
    QCOMPARE(added.page, &page);
    QVERIFY(removals.isEmpty());
    QVERIFY(!page.parent());
}

void tst_oxPreferencesServiceRemoteImpl::subFromPreferencesPassesThePageOn()
{
    QWidget page;
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.subFromPreferences(&page);

    QCOMPARE(removals.size(), 1);
    QCOMPARE(removals.first().first, &service);
    QCOMPARE(removals.first().second, &page);
    QVERIFY(additions.isEmpty());
}

void tst_oxPreferencesServiceRemoteImpl::nullPageIsPassedOnAndIgnored()
{
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.addToPreferences(QStringLiteral("Paths"), QString(), nullptr);
    service.subFromPreferences(nullptr);

    QCOMPARE(additions.size(), 1);
    QVERIFY(!additions.first().page);
    QCOMPARE(removals.size(), 1);
    QVERIFY(!removals.first().second);
}

void tst_oxPreferencesServiceRemoteImpl::addedPageIsShownOverTheWindow()
{
    QMainWindow window;
    QWidget page;
    oxPreferencesServiceRemoteImpl service(nullptr);
    service.setWidget(&window);
    service.addToPreferences(QStringLiteral("Paths"), QStringLiteral("General"), &page);
    service.showPreferences();

    QVERIFY(page.isVisible());
    QVERIFY(page.window() != &page);
    QCOMPARE(page.window()->parentWidget(), &window);
    service.subFromPreferences(&page);
    QVERIFY(!page.parentWidget());
}

QTEST_MAIN(tst_oxPreferencesServiceRemoteImpl)
#include "tst_oxPreferencesServiceRemoteImpl.moc"
