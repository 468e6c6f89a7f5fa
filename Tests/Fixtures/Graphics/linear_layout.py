from PySide2.QtWidgets import QGraphicsLinearLayout, QGraphicsScene, QGraphicsView, QGraphicsWidget, QPushButton
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
layout = QGraphicsLinearLayout()
for text in "abc":
    layout.addItem(scene.addWidget(QPushButton(text)))
inner = QGraphicsLinearLayout()
inner.addItem(QGraphicsWidget())
layout.addItem(inner)
form = QGraphicsWidget()
form.setLayout(layout)
scene.addItem(form)
lonelyLayout = QGraphicsLinearLayout()
lonelyLayout.addItem(QGraphicsWidget())
