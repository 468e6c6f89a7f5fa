# Widgets in a scene, with and without names for them and for their proxies.
from PySide2.QtWidgets import QComboBox, QGraphicsProxyWidget, QGraphicsScene, QGraphicsView, QLineEdit, QPushButton
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
scene.addWidget(QPushButton("neither has a name"))
proxy = scene.addWidget(QPushButton("the proxy has a name"))
button = QPushButton("both have a name")
ownProxy = QGraphicsProxyWidget()
ownProxy.setWidget(button)
scene.addItem(ownProxy)
lonelyProxy = QGraphicsProxyWidget()
lonelyProxy.setWidget(QLineEdit("in no scene"))
box = QComboBox()
scene.addWidget(box)
