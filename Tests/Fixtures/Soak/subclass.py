from PythonQt.QtGui import QWidget


class Canvas(QWidget):
    def __init__(self, parent):
        QWidget.__init__(self, parent)
        self.itself = self
        self.events = 0

    def paintEvent(self, event):
        self.events += 1


canvas = Canvas(TARNPluginWidget)
TARNPluginWidget.layout().addWidget(canvas)
