#include "RenderView.h"

#include <QPainter>

namespace {

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

void RenderView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int horizon = height() * 45 / 100;
    paintBackdrop(&painter, rect(), horizon);
    if (!m_plainFloor)
        paintFloorGrid(&painter, rect(), horizon);
    paintBall(&painter, QPointF(width() * 0.36, height() * 0.56), height() * 0.2, m_ballColor);

    painter.setPen(QColor(255, 255, 255, 170));
    painter.drawText(rect().adjusted(14, 14, -14, -14), Qt::AlignRight | Qt::AlignBottom,
                     tr("No main process is connected: this picture stands in for the rendered one."));
}
