# Effects of items, proxies and widgets, and one of nothing.
from PySide2.QtWidgets import (QGraphicsBlurEffect, QGraphicsColorizeEffect, QGraphicsDropShadowEffect,
                               QGraphicsEffect, QGraphicsOpacityEffect, QGraphicsScene, QGraphicsView, QLabel,
                               QPushButton)
import uiTools


class Effect(QGraphicsEffect):
    def draw(self, painter):
        self.drawSource(painter)


scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
rectangle = scene.addRect(0, 0, 5, 5)
blur = QGraphicsBlurEffect()
rectangle.setGraphicsEffect(blur)
proxy = scene.addWidget(QPushButton("with a shadow"))
proxy.setGraphicsEffect(QGraphicsDropShadowEffect())
text = scene.addText("with an effect of Python's")
effect = Effect()
text.setGraphicsEffect(effect)
label = QLabel("pale")
opacity = QGraphicsOpacityEffect()
label.setGraphicsEffect(opacity)
TARNPluginWidget.layout().addWidget(label)
lonelyEffect = QGraphicsColorizeEffect()
window = QLabel("a window with an effect")
window.setGraphicsEffect(QGraphicsBlurEffect())
