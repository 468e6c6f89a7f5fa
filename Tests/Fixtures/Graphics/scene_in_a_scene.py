# A scene with a view of another scene, a dialog and a menu in it, and a second view in a window of its own.
from PySide2.QtCore import Qt
from PySide2.QtWidgets import (QComboBox, QDialog, QGraphicsScene, QGraphicsView, QMenu, QSpinBox, QVBoxLayout,
                               QWidget)
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
widget = QWidget()
layout = QVBoxLayout(widget)
innerView = QGraphicsView()
layout.addWidget(innerView)
innerScene = QGraphicsScene()
innerView.setScene(innerScene)
innerScene.addWidget(QComboBox())
proxy = scene.addWidget(widget)
dialog = QDialog()
dialogProxy = scene.addWidget(dialog, Qt.Window)
dialog.show()
menu = QMenu("a menu", widget)
windowScene = QGraphicsScene()
windowScene.addWidget(QSpinBox())
window = QGraphicsView(windowScene)
window.show()
