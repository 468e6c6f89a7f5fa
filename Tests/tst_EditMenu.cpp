#include "EditMenu.h"

#include <QtTest>

#include "MainProcess.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxQRPCClient.h"
#include "oxUndoService.h"

namespace {

/// What can be undone in the main process: steps with a name each.
class UndoMain : public oxUndoService
{
public:
    explicit UndoMain(const QStringList &steps)
        : m_steps(steps)
        , m_done(steps.size())
    {}

    bool canUndo() override { return m_done > 0; }
    bool canRedo() override
    {
        if (std::exchange(m_isAboutToUndo, false))
            undo();
        return m_done < m_steps.size();
    }
    QString undoText() override { return m_steps.value(m_done - 1); }
    QString redoText() override { return m_steps.value(m_done); }
    void undo() override { set(m_done - 1); }
    void redo() override { set(m_done + 1); }

    /// The next time that it is asked whether it can redo, it undoes first.
    void undoWhenAsked() { m_isAboutToUndo = true; }

private:
    void set(int done)
    {
        m_done = done;
        Q_EMIT changed();
    }

    QStringList m_steps;
    int m_done;
    bool m_isAboutToUndo = false;
};

} // namespace

/// The menu with a main process in another thread, over a real connection.
class tst_EditMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void entriesRestWithoutAMainProcess();
    void entriesTellWhatTheyDo();
    void stepWithoutANameHasOnlyTheVerb();
    void entriesUndoAndRedo();
    void changeDuringAnUpdateCountsToo();
    void entriesRestAgainWhenTheMainProcessGoes();
    void entriesHaveTheUsualShortcuts();

private:
    void startMain(const QStringList &steps);
    // Text and whether it is enabled, as "+Undo" or "-Undo".
    QStringList entries() const;

    std::unique_ptr<MainThread> m_main;
    std::unique_ptr<UndoMain> m_undoMain;
    std::unique_ptr<oxUndoService> m_service;
    std::unique_ptr<oxQRPCClient> m_client;
    std::unique_ptr<MainProcess> m_mainProcess;
    std::unique_ptr<EditMenu> m_menu;
};

void tst_EditMenu::init()
{
    m_service = std::make_unique<oxUndoService>();
    m_client = std::make_unique<oxQRPCClient>();
    m_service->setClient(m_client.get());
    m_client->registerService(m_service.get());
    m_mainProcess = std::make_unique<MainProcess>(m_client.get());
    m_menu = std::make_unique<EditMenu>(m_mainProcess.get(), m_service.get(), nullptr);
}

void tst_EditMenu::cleanup()
{
    m_menu.reset();
    m_mainProcess.reset();
    m_client.reset();
    m_main.reset();
    m_undoMain.reset();
}

void tst_EditMenu::startMain(const QStringList &steps)
{
    m_main = std::make_unique<MainThread>();
    m_undoMain = std::make_unique<UndoMain>(steps);
    m_main->offer(m_undoMain.get());
    QVERIFY(m_client->connectToHost(m_main->address()));
}

QStringList tst_EditMenu::entries() const
{
    QStringList texts;
    const auto actions = m_menu->actions();
    for (const QAction *action : actions)
        texts.append((action->isEnabled() ? QLatin1Char('+') : QLatin1Char('-')) + action->text());
    return texts;
}

void tst_EditMenu::entriesRestWithoutAMainProcess()
{
    const QStringList resting{QStringLiteral("-&Undo"), QStringLiteral("-&Redo")};
    QCOMPARE(entries(), resting);
    const Output output = outputOf([this] { Q_EMIT m_service->changed(); });
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(entries(), resting);
}

void tst_EditMenu::entriesTellWhatTheyDo()
{
    startMain({QStringLiteral("Colour"), QStringLiteral("Cut & paste")});
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo Cut && paste"), QStringLiteral("-&Redo")}));
}

void tst_EditMenu::stepWithoutANameHasOnlyTheVerb()
{
    startMain({QString()});
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo"), QStringLiteral("-&Redo")}));
}

void tst_EditMenu::entriesUndoAndRedo()
{
    startMain({QStringLiteral("Colour"), QStringLiteral("Gloss")});
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo Gloss"), QStringLiteral("-&Redo")}));
    m_menu->actions().at(0)->trigger();
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo Colour"), QStringLiteral("+&Redo Gloss")}));
    m_menu->actions().at(0)->trigger();
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("-&Undo"), QStringLiteral("+&Redo Colour")}));
    m_menu->actions().at(1)->trigger();
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo Colour"), QStringLiteral("+&Redo Gloss")}));
}

void tst_EditMenu::changeDuringAnUpdateCountsToo()
{
    startMain({QStringLiteral("Colour"), QStringLiteral("Gloss")});
    m_main->run([this] { m_undoMain->undoWhenAsked(); });
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("+&Undo Colour"), QStringLiteral("+&Redo Gloss")}));
}

void tst_EditMenu::entriesRestAgainWhenTheMainProcessGoes()
{
    startMain({QStringLiteral("Colour")});
    QTRY_COMPARE(entries().value(0), QStringLiteral("+&Undo Colour"));
    m_main.reset();
    QTRY_COMPARE(entries(), QStringList({QStringLiteral("-&Undo"), QStringLiteral("-&Redo")}));
}

void tst_EditMenu::entriesHaveTheUsualShortcuts()
{
    QCOMPARE(m_menu->actions().at(0)->shortcut(), QKeySequence(QKeySequence::Undo));
    QCOMPARE(m_menu->actions().at(1)->shortcut(), QKeySequence(QKeySequence::Redo));
}

QTEST_MAIN(tst_EditMenu)
#include "tst_EditMenu.moc"
