# Qt lets the event be sent again and again; Python's limit ends it.
from PythonQt.QtGui import QWidget


class Canvas(QWidget):
    isPainted = False

    def paintEvent(self, event):
        if not self.isPainted:
            self.paint(event)
            self.isPainted = True

    def paint(self, event):
        self.paint(event)


canvas = Canvas()
canvas.setMinimumSize(50, 50)
TARNPluginWidget.layout().addWidget(canvas)
