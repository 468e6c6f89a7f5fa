# Proxies, widgets and scenes of classes that override virtual functions.
from PySide2.QtWidgets import QGraphicsProxyWidget, QGraphicsScene, QGraphicsView, QPushButton, QTextEdit
import uiTools


class Scene(QGraphicsScene):
    def event(self, event):
        return QGraphicsScene.event(self, event)

    def eventFilter(self, watched, event):
        return QGraphicsScene.eventFilter(self, watched, event)


class Proxy(QGraphicsProxyWidget):
    def eventFilter(self, watched, event):
        return QGraphicsProxyWidget.eventFilter(self, watched, event)


class Button(QPushButton):
    def event(self, event):
        return QPushButton.event(self, event)

    def hideEvent(self, event):
        QPushButton.hideEvent(self, event)


scene = Scene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
button = Button("a button")
scene.addWidget(button)
proxy = Proxy()
proxy.setWidget(QTextEdit("a text"))
scene.addItem(proxy)
