# Out of reach: Qt itself goes round in a circle until the stack is full.
from PythonQt.QtGui import QWidget


class Canvas(QWidget):
    def paintEvent(self, event):
        self.repaint()


canvas = Canvas()
canvas.setMinimumSize(50, 50)
TARNPluginWidget.layout().addWidget(canvas)
