#pragma once

#include <QWidget>

/// The place of the rendered picture: a floor grid under a horizon while no picture arrives.
///
/// Its object name "RenderWindow" is how the render service finds it.
class RenderView : public QWidget
{
    Q_OBJECT

public:
    explicit RenderView(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
