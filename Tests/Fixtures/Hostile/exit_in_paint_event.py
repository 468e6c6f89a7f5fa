import sys

from PythonQt.QtGui import QWidget


class Canvas(QWidget):
    isPainted = False

    def paintEvent(self, event):
        if not self.isPainted:
            self.isPainted = True
            print 'painted'
            sys.exit(3)


canvas = Canvas()
canvas.setMinimumSize(50, 50)
TARNPluginWidget.layout().addWidget(canvas)
