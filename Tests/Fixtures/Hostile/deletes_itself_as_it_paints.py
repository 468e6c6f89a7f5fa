# Out of reach: Qt still paints the widget that is gone.
from PythonQt.QtGui import QWidget


class Canvas(QWidget):
    def paintEvent(self, event):
        self.delete()


canvas = Canvas()
canvas.setMinimumSize(50, 50)
TARNPluginWidget.layout().addWidget(canvas)
