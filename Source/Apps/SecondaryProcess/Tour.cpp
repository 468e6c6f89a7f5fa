#include "Tour.h"

#include <QDockWidget>
#include <QEventLoop>
#include <QTemporaryFile>
#include <QTimer>

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
}

void Tour::start()
{
    goOn();
}

void Tour::goOn()
{
    if (m_stops.isEmpty()) {
        Q_EMIT finished(m_allSaved);
        return;
    }
    const Stop stop = m_stops.takeFirst();
    stop.arrive();
    QTimer::singleShot(stop.milliseconds, this, [this, stop] {
        if (!stop.picture.isEmpty())
            save(stop.picture);
        goOn();
    });
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
    int uploads = 0;
    const auto *fileIO = service<oxFileIOService>();
    const auto connection = connect(fileIO, &oxFileIOService::progress, this, [this, &uploads](int percent) {
        if (percent == 65)
            pauseAndSave(QStringLiteral("loading.png"));
        if (percent == 100 && ++uploads == 50)
            pauseAndSave(QStringLiteral("uploading.png"));
    });
    service<oxFileIOService>()->loadFile(scene.fileName());
    disconnect(connection);
}

void Tour::pauseAndSave(const QString &picture)
{
    QEventLoop pause;
    QTimer::singleShot(500, &pause, &QEventLoop::quit);
    pause.exec();
    save(picture);
}

void Tour::save(const QString &picture)
{
    m_allSaved &= saveScreenshot(m_window, m_folder + QLatin1Char('/') + picture);
}
