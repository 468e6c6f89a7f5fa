from PySide2.QtWidgets import QGraphicsGridLayout, QGraphicsScene, QGraphicsView, QGraphicsWidget, QPushButton
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
layout = QGraphicsGridLayout()
layout.addItem(scene.addWidget(QPushButton("a")), 0, 0)
widget = QGraphicsWidget()
layout.addItem(widget, 0, 1)
form = QGraphicsWidget()
form.setLayout(layout)
scene.addItem(form)
lonelyLayout = QGraphicsGridLayout()
lonelyLayout.addItem(QGraphicsWidget(), 0, 0)
