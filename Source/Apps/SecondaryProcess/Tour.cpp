#include "Tour.h"

#include <QAbstractSlider>
#include <QCoreApplication>
#include <QDir>
#include <QDockWidget>
#include <QMouseEvent>
#include <QPushButton>

#include <algorithm>
#include <cstdio>

#include "MainWindow.h"
#include "OverlayMenu.h"
#include "Screenshot.h"
#include "oxFileIOService.h"
#include "oxKernelServiceFactory.h"
#include "oxPreferencesService.h"
#include "oxRenderService.h"

namespace {

template<class Service>
Service *service()
{
    return oxKernelServiceFactory::the()->getService<Service>();
}

constexpr int animationTime = 1000; // longer than any slide

void click(QWidget *widget)
{
    const QPoint place(widget->width() * 3 / 4, widget->height() / 2);
    QWidget *target = widget->childAt(place) ? widget->childAt(place) : widget;
    const QPointF inTarget = target->mapFrom(widget, place);
    QMouseEvent press(QEvent::MouseButtonPress, inTarget, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, inTarget, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &press);
    QCoreApplication::sendEvent(target, &release);
}

} // namespace

Tour::Tour(MainWindow *window, const QString &folder)
    : QObject(window)
    , m_window(window)
    , m_folder(folder)
    , m_stops({
          {[this] { clickPanels(); }, 2 * animationTime, QStringLiteral("panels.png")},
          {[this] { loadModel(); }, animationTime, QStringLiteral("loaded.png")},
          {[this] { movePanelsToOverlay(); }, animationTime, QStringLiteral("overlay-peeking.png")},
          {[] { service<oxRenderService>()->showOverlay(); }, animationTime, QStringLiteral("overlay-shown.png")},
          {[] { service<oxRenderService>()->hideOverlay(); }, animationTime, QString()},
          {[] { service<oxPreferencesService>()->showPreferences(); }, animationTime,
           QStringLiteral("preferences.png")},
      })
{
    m_settling.setSingleShot(true);
    connect(&m_settling, &QTimer::timeout, this, &Tour::goOn);
}

void Tour::start()
{
    m_stops.first().arrive();
    m_settling.start(m_stops.first().milliseconds);
}

void Tour::goOn()
{
    const Stop stop = m_stops.takeFirst();
    if (!stop.picture.isEmpty())
        save(stop.picture);
    if (m_stops.isEmpty())
        Q_EMIT finished(m_allDone);
    else
        start();
}

// As a mouse does, each on its first button; on its first slider or itself where there is none.
void Tour::clickPanels()
{
    const QList<QDockWidget *> panels = m_window->overlayMenu()->openPanels();
    for (const QDockWidget *panel : panels) {
        QWidget *target = panel->widget();
        if (auto *button = target->findChild<QPushButton *>())
            target = button;
        else if (auto *slider = target->findChild<QAbstractSlider *>())
            target = slider;
        click(target);
    }
}

// All but one, by their names.
void Tour::movePanelsToOverlay()
{
    OverlayMenu *overlay = m_window->overlayMenu();
    QList<QDockWidget *> panels = overlay->openPanels();
    std::sort(panels.begin(), panels.end(),
              [](const QDockWidget *a, const QDockWidget *b) { return a->windowTitle() > b->windowTitle(); });
    const QList<QDockWidget *> moved = panels.mid(1);
    for (QDockWidget *panel : moved)
        overlay->moveToOverlay(panel);
    service<oxRenderService>()->indicateOverlay(true);
}

// The largest of the main process's examples; a picture of each phase of the load.
void Tour::loadModel()
{
    auto *fileIO = service<oxFileIOService>();
    const QDir models(fileIO->getTARNExamplesDir() + QStringLiteral("/models"));
    const QString model = models.entryList(QDir::Files, QDir::Size).value(0);
    const auto connection =
        connect(fileIO, &oxFileIOService::progress, this, [this, loading = 0, uploading = 0](int percent) mutable {
            // The dialog shows what was told before.
            if (percent < 100 && percent >= 30 && ++loading == 2)
                save(QStringLiteral("loading.png"));
            if (percent == 100 && ++uploading == 3)
                save(QStringLiteral("uploading.png"));
        });
    if (!fileIO->loadFile(models.filePath(model))) {
        fprintf(stderr, "oxSecondaryProcess: the main process has no model in '%s'\n", qPrintable(models.path()));
        m_allDone = false;
    }
    disconnect(connection);
}

void Tour::save(const QString &picture)
{
    m_allDone &= saveScreenshot(m_window, m_folder + QLatin1Char('/') + picture);
}
