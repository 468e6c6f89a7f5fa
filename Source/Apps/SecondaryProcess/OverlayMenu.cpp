#include "OverlayMenu.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QMenuBar>

#include "Appearance.h"
#include "oxKernelServiceFactory.h"
#include "oxRenderService.h"

namespace {

oxRenderService *renderService()
{
    return oxKernelServiceFactory::the()->getService<oxRenderService>();
}

template<class Condition>
QList<QDockWidget *> panelsOf(const QMainWindow *window, const Condition &condition)
{
    QList<QDockWidget *> panels;
    const auto all = window->findChildren<QDockWidget *>();
    for (QDockWidget *panel : all) {
        if (condition(panel))
            panels.append(panel);
    }
    return panels;
}

} // namespace

OverlayMenu::OverlayMenu(QMainWindow *window)
    : QMenu(tr("&View"), window->menuBar()) // where the main-window service finds it by its title
    , m_window(window)
    , m_panels(addMenu(tr("&Panels in the overlay")))
{
    const auto addCommand = [this](const QString &text, const QKeySequence &shortcut, const auto &command) {
        addAction(text, this, command, shortcut);
    };
    addCommand(tr("&Move open panels to the overlay"), tr("Ctrl+F6"), [this] { moveAllToOverlay(); });
    addCommand(tr("&Take panels back"), tr("Ctrl+Shift+F6"), [this] { takeAllBack(); });
    addSeparator();
    addCommand(tr("&Let the overlay peek in"), Qt::Key_F6, [] { renderService()->indicateOverlay(true); });
    addCommand(tr("&Show the overlay"), Qt::Key_F7, [] { renderService()->showOverlay(); });
    addCommand(tr("&Hide the overlay"), Qt::Key_F8, [] { renderService()->hideOverlay(); });
    connect(m_panels, &QMenu::aboutToShow, this, &OverlayMenu::listPanels);
    listPanels(); // an empty menu would go with the next module that is changed
}

void OverlayMenu::moveToOverlay(QDockWidget *panel)
{
    QWidget *content = panel->widget();
    panel->hide();
    renderService()->addOverlay(panel->windowTitle());
    applyOverlayAppearance(content->parentWidget());
    connect(panel, &QDockWidget::visibilityChanged, this, [this, panel](bool isVisible) {
        if (isVisible)
            takeBack(panel);
    });
}

void OverlayMenu::takeBack(QDockWidget *panel)
{
    disconnect(panel, &QDockWidget::visibilityChanged, this, nullptr);
    renderService()->subOverlay(panel->windowTitle());
    panel->show();
}

QList<QDockWidget *> OverlayMenu::openPanels() const
{
    return panelsOf(m_window, [](const QDockWidget *panel) { return panel->widget() && panel->isVisible(); });
}

// A panel's content is in one place: a panel without it has lent it to the overlay.
QList<QDockWidget *> OverlayMenu::panelsInOverlay() const
{
    return panelsOf(m_window, [](const QDockWidget *panel) { return !panel->widget(); });
}

void OverlayMenu::moveAllToOverlay()
{
    const QList<QDockWidget *> panels = openPanels();
    for (QDockWidget *panel : panels)
        moveToOverlay(panel);
    if (!panels.isEmpty())
        renderService()->showOverlay();
}

void OverlayMenu::takeAllBack()
{
    const QList<QDockWidget *> panels = panelsInOverlay();
    for (QDockWidget *panel : panels)
        takeBack(panel);
    renderService()->hideOverlay();
}

void OverlayMenu::listPanels()
{
    qDeleteAll(m_panels->actions());
    const QList<QDockWidget *> open = openPanels();
    for (QDockWidget *panel : open)
        addEntry(panel, false);
    const QList<QDockWidget *> moved = panelsInOverlay();
    for (QDockWidget *panel : moved)
        addEntry(panel, true);
    if (m_panels->isEmpty())
        m_panels->addAction(tr("No panel is open"))->setEnabled(false);
}

// Owned by the window: inside the menu bar the main-window service would take it for the module's
// own entry, which has the same text.
void OverlayMenu::addEntry(QDockWidget *panel, bool isInOverlay)
{
    auto *entry = new QAction(panel->windowTitle(), m_window);
    m_panels->addAction(entry);
    entry->setCheckable(true);
    entry->setChecked(isInOverlay);
    connect(entry, &QAction::toggled, panel, [this, panel](bool on) { on ? moveToOverlay(panel) : takeBack(panel); });
}
