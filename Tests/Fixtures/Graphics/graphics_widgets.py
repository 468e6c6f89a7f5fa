from PySide2.QtWidgets import (QGraphicsLinearLayout, QGraphicsProxyWidget, QGraphicsScene, QGraphicsView,
                               QGraphicsWidget, QPushButton)
import uiTools


class Widget(QGraphicsWidget):
    def event(self, event):
        return QGraphicsWidget.event(self, event)

    def sizeHint(self, which, constraint):
        return QGraphicsWidget.sizeHint(self, which, constraint)


scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
form = Widget()
layout = QGraphicsLinearLayout(form)
proxy = QGraphicsProxyWidget(form)
proxy.setWidget(QPushButton("a child of a child"))
layout.addItem(proxy)
child = Widget(form)
scene.addItem(form)
lonelyWidget = Widget()
