from PySide2.QtWidgets import (QGraphicsItemGroup, QGraphicsPolygonItem, QGraphicsRectItem, QGraphicsScene,
                               QGraphicsView, QPushButton)
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
group = scene.createItemGroup([scene.addRect(0, 0, 1, 1), scene.addLine(0, 0, 1, 1),
                               scene.addWidget(QPushButton("in a group"))])
lonelyGroup = QGraphicsItemGroup()
lonelyGroup.addToGroup(QGraphicsRectItem(0, 0, 2, 2))
polygon = QGraphicsPolygonItem()
lonelyGroup.addToGroup(polygon)
