#pragma once

#include <QColor>
#include <QWidget>

/// The place of the rendered picture: a floor grid under a horizon while no picture arrives.
///
/// Its object name "RenderWindow" is how the render service finds it.
class RenderView : public QWidget
{
    Q_OBJECT

public:
    explicit RenderView(QWidget *parent = nullptr);

    void setPlainFloor(bool on);
    /// An invalid colour stands for the usual one.
    void setBallColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_plainFloor = false;
    QColor m_ballColor;
};
