#include "RenderView.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "FrameSource.h"
#include "MainProcess.h"
#include "oxRenderService.h"

namespace {

constexpr int resizeDelay = 100; // milliseconds: not each step of a drag

const QColor copper(0xe8, 0x8a, 0x3c);

void paintBackdrop(QPainter *painter, const QRect &area, int horizon)
{
    QLinearGradient sky(0, 0, 0, horizon);
    sky.setColorAt(0, QColor(0x1d, 0x24, 0x30));
    sky.setColorAt(1, QColor(0x58, 0x6b, 0x80));
    painter->fillRect(QRect(0, 0, area.width(), horizon), sky);

    QLinearGradient floor(0, horizon, 0, area.height());
    floor.setColorAt(0, QColor(0x58, 0x6b, 0x80));
    floor.setColorAt(1, QColor(0x23, 0x27, 0x2d));
    painter->fillRect(QRect(0, horizon, area.width(), area.height() - horizon), floor);
}

void paintFloorGrid(QPainter *painter, const QRect &area, int horizon)
{
    painter->setClipRect(QRect(0, horizon + 3, area.width(), area.height()));
    painter->setPen(QColor(255, 255, 255, 45));
    const QPointF vanishingPoint(area.width() / 2.0, horizon);
    for (int i = -24; i <= 24; ++i)
        painter->drawLine(vanishingPoint, QPointF(vanishingPoint.x() + i * area.width() / 8.0, area.height()));
    for (int i = 1; i <= 16; ++i) {
        const double y = horizon + (area.height() - horizon) / static_cast<double>(i);
        painter->drawLine(QPointF(0, y), QPointF(area.width(), y));
    }
    painter->setClipping(false);

    QLinearGradient haze(0, horizon, 0, horizon + area.height() / 5.0);
    haze.setColorAt(0, QColor(0x58, 0x6b, 0x80));
    haze.setColorAt(1, QColor(0x58, 0x6b, 0x80, 0));
    painter->fillRect(QRect(0, horizon, area.width(), area.height() / 5), haze);
}

void paintBall(QPainter *painter, const QPointF &centre, double radius, const QColor &color)
{
    painter->setPen(Qt::NoPen);
    QRadialGradient shadow(QPointF(0, 0), 1);
    shadow.setColorAt(0, QColor(0, 0, 0, 150));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    painter->save();
    painter->translate(centre + QPointF(radius * 0.25, radius));
    painter->scale(radius * 1.3, radius * 0.3);
    painter->setBrush(shadow);
    painter->drawEllipse(QPointF(0, 0), 1, 1);
    painter->restore();

    QRadialGradient ball(centre, radius * 1.6, centre - QPointF(radius * 0.4, radius * 0.5));
    ball.setColorAt(0, QColor::fromHslF(color.hslHueF(), color.hslSaturationF(), 0.91));
    ball.setColorAt(0.25, color);
    ball.setColorAt(0.7, color.darker(180));
    ball.setColorAt(1, color.darker(560));
    painter->setBrush(ball);
    painter->drawEllipse(centre, radius, radius);
}

} // namespace

RenderView::RenderView(QWidget *parent)
    : QWidget(parent)
    , m_ballColor(copper)
{
    setObjectName(QStringLiteral("RenderWindow"));
    setMinimumSize(320, 240);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

RenderView::RenderView(MainProcess *mainProcess, oxRenderService *service, QWidget *parent)
    : RenderView(parent)
{
    m_service = service;
    m_resizing.setSingleShot(true);
    m_resizing.setInterval(resizeDelay);
    connect(&m_resizing, &QTimer::timeout, this, &RenderView::requestSize);
    connect(mainProcess, &MainProcess::connected, this, &RenderView::requestSize);
    m_source = new FrameSource(mainProcess, service, this);
    connect(m_source, &FrameSource::frameAvailable, this, QOverload<>::of(&QWidget::update));
    connect(m_source, &FrameSource::ended, this, &RenderView::forgetFrame);
}

void RenderView::setCommandHint(const QString &command)
{
    m_command = command;
    update();
}

void RenderView::setPlainFloor(bool on)
{
    m_plainFloor = on;
    update();
}

void RenderView::setBallColor(const QColor &color)
{
    m_ballColor = color.isValid() ? color : copper;
    update();
}

bool RenderView::isConnected() const
{
    return m_service && m_service->isConnected();
}

void RenderView::forgetFrame()
{
    m_frame = QImage();
    m_isDragging = false;
    update();
}

void RenderView::requestSize()
{
    m_resizing.stop();
    const QSize pixels = size() * devicePixelRatioF();
    if (isConnected())
        m_service->resize(pixels.width(), pixels.height());
}

// As large as it fits in, in the middle: another secondary process may have asked for another size.
QRect RenderView::frameArea() const
{
    QRect area(QPoint(0, 0), m_frame.isNull() ? size() : m_frame.size().scaled(size(), Qt::KeepAspectRatio));
    area.moveCenter(rect().center());
    return area;
}

QPoint RenderView::toFrame(const QPoint &place) const
{
    const QRect area = frameArea();
    const QSize frame = m_frame.isNull() ? size() : m_frame.size();
    const QPoint inArea = place - area.topLeft();
    return {inArea.x() * frame.width() / area.width(), inArea.y() * frame.height() / area.height()};
}

// What a panel over the view has no use for comes here as well, but is not meant for the frame.
bool RenderView::isOnFrame(const QPoint &place) const
{
    return isConnected() && !childAt(place);
}

// A frame is taken no sooner than it is painted: those that come quicker are never copied.
void RenderView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_source)
        m_source->read(&m_frame);
    if (m_frame.isNull())
        paintPlaceholder(&painter);
    else
        paintFrame(&painter);
}

void RenderView::paintFrame(QPainter *painter) const
{
    const QRect area = frameArea();
    if (area != rect())
        painter->fillRect(rect(), QColor(0x1d, 0x24, 0x30));
    painter->setRenderHint(QPainter::SmoothPixmapTransform, area.size() * devicePixelRatioF() != m_frame.size());
    painter->drawImage(area, m_frame);
}

void RenderView::paintPlaceholder(QPainter *painter) const
{
    painter->setRenderHint(QPainter::Antialiasing);
    const int horizon = height() * 45 / 100;
    paintBackdrop(painter, rect(), horizon);
    if (!m_plainFloor)
        paintFloorGrid(painter, rect(), horizon);
    paintBall(painter, QPointF(width() * 0.36, height() * 0.56), height() * 0.2, m_ballColor);
    if (!isConnected())
        paintHint(painter);
}

void RenderView::paintHint(QPainter *painter) const
{
    const QString title = tr("No main process is connected");
    const QString command = m_command.isEmpty() ? QString() : tr("Start one:  %1").arg(m_command);
    const QString comfort = tr("It is picked up as soon as it is there.");

    QFont bold = font();
    bold.setBold(true);
    const int lineHeight = fontMetrics().height() + 6;
    const int widest = std::max({QFontMetrics(bold).horizontalAdvance(title), fontMetrics().horizontalAdvance(command),
                                 fontMetrics().horizontalAdvance(comfort)});
    QRect card(0, 0, widest + 36, 3 * lineHeight + 20);
    card.moveCenter(rect().center());
    card.moveBottom(rect().bottom() - 20);
    painter->setPen(QColor(255, 255, 255, 40));
    painter->setBrush(QColor(0x21, 0x24, 0x2a, 200));
    painter->drawRoundedRect(QRectF(card).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);

    QRect line = card.adjusted(18, 10, -18, 0);
    line.setHeight(lineHeight);
    const auto write = [&](const QString &text, const QFont &textFont, const QColor &color) {
        painter->setFont(textFont);
        painter->setPen(color);
        painter->drawText(line, Qt::AlignCenter, text);
        line.translate(0, lineHeight);
    };
    write(title, bold, Qt::white);
    write(command, font(), QColor(0xf0, 0xa3, 0x5e));
    write(comfort, font(), QColor(255, 255, 255, 150));
}

void RenderView::resizeEvent(QResizeEvent *)
{
    if (m_service)
        m_resizing.start();
}

void RenderView::mousePressEvent(QMouseEvent *event)
{
    if (!isOnFrame(event->pos()))
        return event->ignore();
    m_isDragging = true;
    const QPoint place = toFrame(event->pos());
    m_service->mousePress(place.x(), place.y(), event->button(), int(event->modifiers()));
}

void RenderView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_isDragging || !isConnected())
        return event->ignore();
    m_isDragging = event->buttons() != Qt::NoButton;
    const QPoint place = toFrame(event->pos());
    m_service->mouseRelease(place.x(), place.y(), event->button(), int(event->modifiers()));
}

void RenderView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!isOnFrame(event->pos()))
        return event->ignore();
    m_isDragging = true; // the second click may become a drag, and is released like one
    const QPoint place = toFrame(event->pos());
    m_service->mouseDoubleClick(place.x(), place.y(), event->button(), int(event->modifiers()));
}

void RenderView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_isDragging || !isConnected())
        return event->ignore();
    const QPoint place = toFrame(event->pos());
    m_service->mouseMove(place.x(), place.y(), int(event->buttons()), int(event->modifiers()));
}

void RenderView::wheelEvent(QWheelEvent *event)
{
    if (!isOnFrame(event->position().toPoint()))
        return event->ignore();
    const QPoint place = toFrame(event->position().toPoint());
    m_service->mouseWheel(place.x(), place.y(), event->angleDelta().y(), int(event->modifiers()));
}

void RenderView::keyPressEvent(QKeyEvent *event)
{
    if (!hasFocus() || !isConnected())
        return event->ignore();
    const QPoint place = toFrame(mapFromGlobal(QCursor::pos()));
    m_service->keyPress(event->key(), int(event->modifiers()), place.x(), place.y());
}

void RenderView::keyReleaseEvent(QKeyEvent *event)
{
    if (!hasFocus() || !isConnected())
        return event->ignore();
    const QPoint place = toFrame(mapFromGlobal(QCursor::pos()));
    m_service->keyRelease(event->key(), int(event->modifiers()), place.x(), place.y());
}
