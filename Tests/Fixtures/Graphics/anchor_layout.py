from PySide2.QtCore import Qt
from PySide2.QtWidgets import (QGraphicsAnchorLayout, QGraphicsProxyWidget, QGraphicsScene, QGraphicsView,
                               QGraphicsWidget, QLabel, QPushButton)
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
layout = QGraphicsAnchorLayout()
first = scene.addWidget(QPushButton("first"))
second = QGraphicsProxyWidget()
second.setWidget(QLabel("second"))
layout.addAnchor(first, Qt.AnchorTop, layout, Qt.AnchorTop)
anchor = layout.addAnchor(second, Qt.AnchorTop, first, Qt.AnchorBottom)
anchor.setSpacing(3)
form = QGraphicsWidget(None, Qt.Window)
form.setLayout(layout)
scene.addItem(form)
lonelyLayout = QGraphicsAnchorLayout()
lonelyWidget = QGraphicsWidget()
lonelyLayout.addAnchor(lonelyWidget, Qt.AnchorTop, lonelyLayout, Qt.AnchorTop)
