#include "RenderService.h"

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <cmath>

#include "Scene.h"

namespace {

constexpr qint64 frameTime = 1000000000 / 60; // in nanoseconds
constexpr int stillTime = 150;                // in milliseconds
constexpr double degreesPerPixel = 0.35;

} // namespace

RenderService::RenderService(Scene *scene, Renderer *renderer, const QSize &size, QObject *parent)
    : oxRenderService(parent)
    , m_scene(scene)
    , m_renderer(renderer)
    , m_size(size.expandedTo(QSize(1, 1)).boundedTo(largestSize()))
{
    m_nextFrame.setSingleShot(true);
    m_nextFrame.setTimerType(Qt::PreciseTimer);
    m_lastFrame.setSingleShot(true);
    m_lastFrame.setInterval(stillTime);
    m_clock.start();
    connect(&m_nextFrame, &QTimer::timeout, this, &RenderService::renderNextFrame);
    connect(&m_lastFrame, &QTimer::timeout, this, &RenderService::renderLastFrame);
    connect(m_scene, &Scene::materialsChanged, this, &RenderService::requestFrame);
    connect(m_scene, &Scene::nodesChanged, this, &RenderService::requestFrame);
    connect(m_scene, &Scene::cameraChanged, this, &RenderService::requestFrame);
}

RenderService::~RenderService() = default;

bool RenderService::shareFrames()
{
    const bool isOpen = m_frames.open(largestSize());
    requestFrame();
    return isOpen;
}

QString RenderService::errorString() const
{
    return m_frames.errorString();
}

bool RenderService::initialize(bool)
{
    return true;
}

bool RenderService::terminate(bool)
{
    return false; // others are looking
}

QString RenderService::getSharedMemoryName()
{
    return m_frames.name();
}

int RenderService::getWidth()
{
    return m_size.width();
}

int RenderService::getHeight()
{
    return m_size.height();
}

void RenderService::resize(int width, int height)
{
    const QSize size = QSize(width, height).expandedTo(QSize(1, 1)).boundedTo(largestSize());
    if (size == m_size)
        return;
    m_size = size;
    requestFrame();
}

void RenderService::setQuality(int quality)
{
    m_quality = std::clamp(quality, 0, 100);
}

int RenderService::getQuality() const
{
    return m_quality;
}

void RenderService::setBitrate(int bitrate)
{
    m_bitrate = std::max(bitrate, 0);
}

int RenderService::getBitrate() const
{
    return m_bitrate;
}

void RenderService::setCodec(int codec)
{
    m_codec = codec == 1 ? 1 : 0;
}

int RenderService::getCodec() const
{
    return m_codec;
}

QByteArray RenderService::getFrameBuffer()
{
    QByteArray pixels(4 * m_size.width() * m_size.height(), Qt::Uninitialized);
    if (!m_renderer->render(*m_scene, m_size, m_drawing, reinterpret_cast<uchar *>(pixels.data())))
        return {};
    return pixels;
}

QByteArray RenderService::getCompressedFrameBuffer()
{
    const QByteArray pixels = getFrameBuffer();
    if (pixels.isEmpty())
        return {};
    const QImage image(reinterpret_cast<const uchar *>(pixels.constData()), m_size.width(), m_size.height(),
                       QImage::Format_RGB32);
    QByteArray result;
    QBuffer buffer(&result);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, m_codec == 1 ? "PNG" : "JPG", m_codec == 1 ? -1 : m_quality);
    return result;
}

void RenderService::keyPress(int key, int, int, int)
{
    switch (key) {
    case Qt::Key_Left:
        return m_scene->orbit(-5, 0);
    case Qt::Key_Right:
        return m_scene->orbit(5, 0);
    case Qt::Key_Up:
        return m_scene->orbit(0, 5);
    case Qt::Key_Down:
        return m_scene->orbit(0, -5);
    case Qt::Key_Plus:
        return m_scene->zoom(1.1);
    case Qt::Key_Minus:
        return m_scene->zoom(1 / 1.1);
    case Qt::Key_Home:
        return m_scene->resetCamera();
    case Qt::Key_Space:
        return m_scene->setTurning(!m_scene->isTurning());
    default:
        break;
    }
}

void RenderService::keyRelease(int, int, int, int) {}

void RenderService::mouseDoubleClick(int, int, int, int)
{
    m_scene->resetCamera();
}

void RenderService::mousePress(int x, int y, int, int)
{
    m_mousePosition = QPoint(x, y);
    m_scene->setTurning(false);
}

void RenderService::mouseRelease(int, int, int, int) {}

void RenderService::mouseMove(int x, int y, int buttons, int)
{
    const QPoint way = QPoint(x, y) - m_mousePosition;
    m_mousePosition = QPoint(x, y);
    if (buttons & Qt::LeftButton)
        m_scene->orbit(-degreesPerPixel * way.x(), degreesPerPixel * way.y());
    else if (buttons & (Qt::RightButton | Qt::MiddleButton))
        m_scene->zoom(std::pow(1.005, -way.y()));
}

void RenderService::mouseWheel(int, int, int delta, int)
{
    m_scene->zoom(std::pow(1.15, delta / 120.0));
}

// The scene takes no touches, and overlays are the secondary process's own.
void RenderService::sendTouchEvent(QByteArray) {} // NOLINT(performance-unnecessary-value-param)
void RenderService::indicateOverlay(bool) {}
void RenderService::showOverlay() {}
void RenderService::hideOverlay() {}
void RenderService::addOverlay(const QString &) {}
void RenderService::subOverlay(const QString &) {}
void RenderService::updateOverlay(const QString &) {}

// As many frames as are due, but for those that are late already: they are left out.
void RenderService::requestFrame()
{
    if (m_nextFrame.isActive())
        return;
    const qint64 now = m_clock.nsecsElapsed();
    m_dueTime = std::max(m_dueTime + frameTime, now);
    m_nextFrame.start(static_cast<int>((m_dueTime - now + 999999) / 1000000));
}

void RenderService::renderNextFrame()
{
    m_scene->advanceTo(static_cast<double>(m_clock.nsecsElapsed()) / 1e9);
    m_drawing = Renderer::Draft;
    shareFrame();
    if (m_scene->isTurning()) {
        m_lastFrame.stop();
        requestFrame();
    } else {
        m_lastFrame.start();
    }
}

void RenderService::renderLastFrame()
{
    m_drawing = Renderer::Smooth;
    shareFrame();
}

void RenderService::shareFrame()
{
    uchar *pixels = m_frames.begin(m_size);
    if (pixels && m_renderer->render(*m_scene, m_size, m_drawing, pixels))
        Q_EMIT frameRendered(static_cast<int>(m_frames.finish()));
}
