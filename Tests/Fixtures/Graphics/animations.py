# Animations, transformations and states of a proxy.
from PySide2.QtCore import QParallelAnimationGroup, QPropertyAnimation, QState, QStateMachine
from PySide2.QtWidgets import QGraphicsRotation, QGraphicsScale, QGraphicsScene, QGraphicsView, QPushButton
import uiTools

scene = QGraphicsScene()
TARNPluginWidget.layout().addWidget(QGraphicsView(scene))
proxy = scene.addWidget(QPushButton("fades"))
fading = QPropertyAnimation(proxy, b"opacity")
fading.setEndValue(0.1)
fading.setDuration(100000)
fading.start()
group = QParallelAnimationGroup()
group.addAnimation(QPropertyAnimation(proxy, b"pos"))
machine = QStateMachine()
state = QState(machine)
state.assignProperty(proxy, "opacity", 1.0)
machine.setInitialState(state)
machine.start()
rotation = QGraphicsRotation(proxy)
proxy.setTransformations([rotation])
lonelyScale = QGraphicsScale()
