#pragma once

#include <QElapsedTimer>
#include <QPoint>
#include <QSize>
#include <QTimer>

#include "Renderer.h"
#include "oxFrameWriter.h"
#include "oxRenderService.h"

class Scene;

/// Renders the scene whenever it changed and turns its camera with the mouse: at most 60 frames in a
/// second, into the shared memory. When nothing has changed for a while, a last frame has smooth
/// edges.
class RenderService : public oxRenderService
{
    Q_OBJECT

public:
    /// @param scene, renderer not owned; the renderer is initialised
    /// @param size            of the picture, at first
    RenderService(Scene *scene, Renderer *renderer, const QSize &size, QObject *parent = nullptr);
    ~RenderService() override;

    /// Opens the memory that frames go to.
    /// @return false when that is not possible, errorString() says why; frames are then only for
    ///         those who ask for them
    bool shareFrames();
    QString errorString() const;

    static QSize largestSize() { return {3840, 2160}; }

public Q_SLOTS:
    bool initialize(bool master) override;
    bool terminate(bool force) override;
    QString getSharedMemoryName() override;
    int getWidth() override;
    int getHeight() override;
    void resize(int width, int height) override;
    void setQuality(int quality) override;
    int getQuality() const override;
    void setBitrate(int bitrate) override;
    int getBitrate() const override;
    void setCodec(int codec) override;
    int getCodec() const override;
    QByteArray getFrameBuffer() override;
    QByteArray getCompressedFrameBuffer() override;
    void keyPress(int key, int modifiers, int x, int y) override;
    void keyRelease(int key, int modifiers, int x, int y) override;
    void mouseDoubleClick(int x, int y, int button, int modifiers) override;
    void mousePress(int x, int y, int button, int modifiers) override;
    void mouseRelease(int x, int y, int button, int modifiers) override;
    void mouseMove(int x, int y, int buttons, int modifiers) override;
    void mouseWheel(int x, int y, int delta, int modifiers) override;
    void sendTouchEvent(QByteArray event) override;
    void indicateOverlay(bool on) override;
    void showOverlay() override;
    void hideOverlay() override;
    void addOverlay(const QString &name) override;
    void subOverlay(const QString &name) override;
    void updateOverlay(const QString &name) override;

private:
    void requestFrame();
    void renderNextFrame();
    void renderLastFrame();
    void shareFrame();

    Scene *m_scene;
    Renderer *m_renderer;
    oxFrameWriter m_frames;
    QSize m_size;
    QTimer m_nextFrame;
    QTimer m_lastFrame;
    QElapsedTimer m_clock;
    Renderer::Quality m_drawing = Renderer::Draft;
    qint64 m_dueTime = 0; // of the next frame, in nanoseconds
    QPoint m_mousePosition;
    int m_quality = 80;
    int m_bitrate = 0;
    int m_codec = 0;
};
