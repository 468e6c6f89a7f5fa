#include "Tour.h"

#include <QDockWidget>
#include <QEventLoop>
#include <QTemporaryFile>

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

} // namespace

Tour::Tour(MainWindow *window, const QString &folder)
    : QObject(window)
    , m_window(window)
    , m_folder(folder)
    , m_stops({
          {[this] { movePanelsToOverlay(); }, animationTime, QStringLiteral("overlay-peeking.png")},
          {[] { service<oxRenderService>()->showOverlay(); }, animationTime, QStringLiteral("overlay-shown.png")},
          {[] { service<oxRenderService>()->hideOverlay(); }, animationTime, QString()},
          {[this] { loadFile(); }, 0, QString()},
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
        Q_EMIT finished(m_allSaved);
    else
        start();
}

void Tour::movePanelsToOverlay()
{
    OverlayMenu *overlay = m_window->overlayMenu();
    QList<QDockWidget *> panels = overlay->openPanels();
    while (panels.size() > 1)
        overlay->moveToOverlay(panels.takeLast());
    service<oxRenderService>()->indicateOverlay(true);
}

// A picture in the middle of each phase.
void Tour::loadFile()
{
    QTemporaryFile scene;
    if (!scene.open() || !scene.resize(50000000))
        return;
    auto *fileIO = service<oxFileIOService>();
    const auto connection = connect(fileIO, &oxFileIOService::progress, this, [this, uploads = 0](int percent) mutable {
        if (percent == 65)
            pauseAndSave(QStringLiteral("loading.png"));
        if (percent == 100 && ++uploads == 50)
            pauseAndSave(QStringLiteral("uploading.png"));
    });
    fileIO->loadFile(scene.fileName());
    disconnect(connection);
}

void Tour::pauseAndSave(const QString &picture)
{
    QEventLoop pause;
    QTimer end;
    connect(&end, &QTimer::timeout, &pause, &QEventLoop::quit);
    end.start(500);
    pause.exec();
    save(picture);
}

void Tour::save(const QString &picture)
{
    m_allSaved &= saveScreenshot(m_window, m_folder + QLatin1Char('/') + picture);
}
