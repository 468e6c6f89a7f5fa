from PythonQt.QtCore import QTimer
from PythonQt.QtGui import QLCDNumber


class Clock(object):
    def __init__(self, parent):
        self.display = QLCDNumber(parent)
        parent.layout().addWidget(self.display)
        self.timer = QTimer(self.display)
        self.timer.connect("timeout()", self.tick)
        self.timer.start(1)
        self.ticks = 0

    def tick(self):
        self.ticks += 1
        self.display.display(self.ticks)


clock = Clock(TARNPluginWidget)
