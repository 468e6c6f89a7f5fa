#pragma once

#include <QColor>
#include <QImage>
#include <QTimer>
#include <QWidget>

class FrameSource;
class MainProcess;
class oxRenderService;

/// Shows the frames that the main process renders, in the size that it asks for, and sends mouse and
/// keys there. While no main process is connected: a floor grid under a horizon, and what to do.
///
/// Its object name "RenderWindow" is how the render service finds it.
class RenderView : public QWidget
{
    Q_OBJECT

public:
    explicit RenderView(QWidget *parent = nullptr);
    /// Both have to outlive the view.
    RenderView(MainProcess *mainProcess, oxRenderService *service, QWidget *parent = nullptr);

    /// The command that starts a main process for this one.
    void setCommandHint(const QString &command);

    /// Whether there is a frame to be seen.
    bool hasFrame() const { return !m_frame.isNull(); }

    void setPlainFloor(bool on);
    /// An invalid colour stands for the usual one.
    void setBallColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    bool isConnected() const;
    void forgetFrame();
    void requestSize();
    QRect frameArea() const;
    QPoint toFrame(const QPoint &place) const;
    bool isOnFrame(const QPoint &place) const;
    void paintFrame(QPainter *painter) const;
    void paintPlaceholder(QPainter *painter) const;
    void paintHint(QPainter *painter) const;

    oxRenderService *m_service = nullptr;
    FrameSource *m_source = nullptr;
    QImage m_frame;
    QTimer m_resizing;
    bool m_isDragging = false;
    QString m_command;
    bool m_plainFloor = false;
    QColor m_ballColor;
};
