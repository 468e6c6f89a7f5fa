# A widget that paints itself: a Python class overrides a virtual function of QWidget.
from math import cos, pi, sin

from PythonQt.QtCore import QPointF, QSize, Qt
from PythonQt.QtGui import QColor, QPainter, QPen, QPolygonF, QSlider, QWidget


class Curve(QWidget):
    """A hypotrochoid: the path of a pen on a wheel that rolls inside a ring."""

    RING = 105

    def __init__(self, parent=None):
        QWidget.__init__(self, parent)
        self.wheel = 32
        self.pen = 62
        self.setMinimumSize(QSize(220, 220))

    def points(self):
        scale = 0.45 * min(self.width, self.height) / (self.RING - self.wheel + self.pen)
        gap = self.RING - self.wheel
        for step in range(3200):
            t = step * pi / 40
            yield QPointF(scale * (gap * cos(t) + self.pen * cos(t * gap / self.wheel)),
                          scale * (gap * sin(t) - self.pen * sin(t * gap / self.wheel)))

    def paintEvent(self, event):
        painter = QPainter(self)
        try:
            painter.setRenderHint(QPainter.Antialiasing)
            painter.translate(self.width / 2.0, self.height / 2.0)
            painter.setPen(QPen(QColor("#f0a35e"), 1))
            painter.drawPolyline(QPolygonF(list(self.points())))
        finally:
            painter.end()  # or else an error's traceback keeps it painting

    def setPenDistance(self, distance):
        self.pen = distance
        self.update()


curve = Curve()
slider = QSlider(Qt.Horizontal)
slider.setRange(10, 100)
slider.setValue(curve.pen)
slider.connect("valueChanged(int)", curve.setPenDistance)
TARNPluginWidget.layout().setContentsMargins(9, 9, 9, 9)
TARNPluginWidget.layout().addWidget(curve)
TARNPluginWidget.layout().addWidget(slider)
