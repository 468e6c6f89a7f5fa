# The view owns the scene, and Python has names for what is in it.
from PySide2.QtWidgets import QGraphicsLinearLayout, QGraphicsScene, QGraphicsView, QGraphicsWidget, QPushButton
import uiTools

view = QGraphicsView(TARNPluginWidget)
scene = QGraphicsScene(view)
view.setScene(scene)
TARNPluginWidget.layout().addWidget(view)
button = QPushButton("a")
proxy = scene.addWidget(button)
form = QGraphicsWidget()
layout = QGraphicsLinearLayout(form)
layout.addItem(proxy)
scene.addItem(form)
rectangle = scene.addRect(0, 0, 1, 1)
