#include "ViewPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include "RenderView.h"
#include "oxPreferencesServiceRemoteImpl.h"

/// The page of the demo process, in the real preferences and on the real view.
class tst_ViewPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void changesWaitForTheirApplication();
    void appliedChangesAreShownAndKept();
    void defaultsAreShownAgain();
    void fieldsAreReadWheneverTheDialogOpens();
    void colourThatIsNotOfferedIsTheFirst();

private:
    void change();
    void makePage();
    QImage picture() { return m_view->grab().toImage(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<RenderView> m_view;
    std::unique_ptr<oxPreferencesServiceRemoteImpl> m_preferences;
    ViewPage *m_page = nullptr;
    QImage m_usual;
};

void tst_ViewPage::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder->path());
    m_preferences = std::make_unique<oxPreferencesServiceRemoteImpl>(nullptr);
    m_view = std::make_unique<RenderView>();
    m_usual = picture();
    m_parent = std::make_unique<QWidget>();
    makePage();
}

void tst_ViewPage::makePage()
{
    m_page = new ViewPage(m_preferences.get(), m_view.get(), m_parent.get());
    m_preferences->addToPreferences(QStringLiteral("View"), QString(), m_page);
}

void tst_ViewPage::change()
{
    m_page->findChild<QCheckBox *>()->setChecked(true);
    m_page->findChild<QComboBox *>()->setCurrentIndex(1);
}

void tst_ViewPage::changesWaitForTheirApplication()
{
    QVERIFY(m_page->isHidden());
    change();
    QCOMPARE(picture(), m_usual);
    m_preferences->applyChanges();
    QVERIFY(picture() != m_usual);
}

void tst_ViewPage::appliedChangesAreShownAndKept()
{
    change();
    m_preferences->applyChanges();
    const QImage changed = picture();
    m_view = std::make_unique<RenderView>();
    QCOMPARE(picture(), m_usual);
    makePage(); // as the next start does
    QCOMPARE(picture(), changed);
}

void tst_ViewPage::defaultsAreShownAgain()
{
    change();
    m_preferences->applyChanges();
    m_preferences->setDefault(QStringLiteral("View"));

    QCOMPARE(picture(), m_usual);
    QVERIFY(!m_page->findChild<QCheckBox *>()->isChecked());
    QCOMPARE(m_page->findChild<QComboBox *>()->currentIndex(), 0);
}

void tst_ViewPage::fieldsAreReadWheneverTheDialogOpens()
{
    m_preferences->showPreferences();
    change();
    QVERIFY(m_page->isVisible());
    m_page->window()->close();
    m_preferences->showPreferences();
    QVERIFY(!m_page->findChild<QCheckBox *>()->isChecked());
    QCOMPARE(picture(), m_usual);
}

void tst_ViewPage::colourThatIsNotOfferedIsTheFirst()
{
    m_preferences->setStringValue(QStringLiteral("View/Ball"), QStringLiteral("#123456"));
    makePage();
    QCOMPARE(m_page->findChild<QComboBox *>()->currentIndex(), 0);
    QCOMPARE(picture(), m_usual);
}

QTEST_MAIN(tst_ViewPage)
#include "tst_ViewPage.moc"
