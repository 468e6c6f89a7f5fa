# Widgets and items that are held by nothing but functions that are connected.
from PySide2.QtCore import QCoreApplication
from PySide2.QtWidgets import QGraphicsScene, QGraphicsView, QLabel, QPushButton
import uiTools


def build():
    window = QLabel("a window")
    view = QGraphicsView()
    scene = QGraphicsScene(view)
    view.setScene(scene)
    scene.addWidget(QPushButton("in the view"))
    button = QPushButton("in the panel")
    button.clicked.connect(lambda: (window, view))
    TARNPluginWidget.layout().addWidget(button)
    QCoreApplication.instance().aboutToQuit.connect(lambda: window)


build()
