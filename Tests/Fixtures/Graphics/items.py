# Items that Qt makes, items of Python's classes, with parents, in a scene and in none.
from PySide2.QtCore import QRectF
from PySide2.QtGui import QPainterPath, QPixmap
from PySide2.QtWidgets import (QGraphicsEllipseItem, QGraphicsItem, QGraphicsLineItem, QGraphicsObject,
                               QGraphicsRectItem, QGraphicsScene, QGraphicsTextItem, QGraphicsView)
import uiTools


class Item(QGraphicsItem):
    def boundingRect(self):
        return QRectF(0, 0, 9, 9)

    def paint(self, painter, option, widget):
        pass


class Object(QGraphicsObject):
    def boundingRect(self):
        return QRectF(0, 0, 9, 9)

    def paint(self, painter, option, widget):
        pass


scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
scene.addText("without a name")
made = [scene.addText("a"), scene.addSimpleText("b"), scene.addRect(0, 0, 1, 1), scene.addPath(QPainterPath()),
        scene.addPixmap(QPixmap(3, 3))]
rectangle = QGraphicsRectItem(0, 0, 5, 5)
ellipse = QGraphicsEllipseItem(rectangle)
scene.addItem(rectangle)
lonelyLine = QGraphicsLineItem(0, 0, 1, 1)
lonelyText = QGraphicsTextItem("in no scene")
item = Item()
child = Item(item)
scene.addItem(item)
graphicsObject = Object()
scene.addItem(graphicsObject)
lonelyItem = Item()
removed = Item()
scene.addItem(removed)
scene.removeItem(removed)
scene.keep = [Item(), Object()]
