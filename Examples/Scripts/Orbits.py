# An animation with PySide2: planets and their trails, on a timer that rests while the panel is
# closed. A click stops time, another one lets it go on.
from math import cos, pi, sin

from PySide2.QtCore import QElapsedTimer, QPointF, QSize, Qt
from PySide2.QtGui import QColor, QPainter, QPen, QRadialGradient
from PySide2.QtWidgets import QWidget
import uiTools

FRAME_MS = 33
TRAIL_STEPS = 40

# colour, radius of the orbit and of the planet in hundredths, seconds for one turn
PLANETS = (("#e8c07d", 32, 3, 2.9), ("#6fb1e8", 52, 5, 4.7), ("#e07a5f", 71, 4, 7.6), ("#9ed8a4", 92, 6, 12.3))


class Orbits(QWidget):
    def __init__(self, parent=None):
        QWidget.__init__(self, parent)
        self.clock = QElapsedTimer()
        self.before = 3.0  # seconds of the earlier runs
        self.timer = None

    def sizeHint(self):
        return QSize(240, 240)

    def seconds(self):
        return self.before + (self.clock.elapsed() / 1000.0 if self.timer else 0)

    def run(self):
        self.clock.start()
        self.timer = self.startTimer(FRAME_MS)

    def stop(self):
        self.before = self.seconds()
        self.killTimer(self.timer)
        self.timer = None

    def showEvent(self, event):
        self.run()

    def hideEvent(self, event):
        if self.timer:
            self.stop()

    def mousePressEvent(self, event):
        if self.timer:
            self.stop()
        else:
            self.run()

    def timerEvent(self, event):
        self.update()

    def paintEvent(self, event):
        painter = QPainter(self)
        try:
            self.paint(painter)
        finally:
            painter.end()  # or else an error's traceback keeps it painting

    def paint(self, painter):
        painter.setRenderHint(QPainter.Antialiasing)
        painter.translate(self.width() / 2.0, self.height() / 2.0)
        scale = min(self.width(), self.height()) / 205.0
        painter.scale(scale, scale)
        self.paintSun(painter)
        for color, orbit, size, period in PLANETS:
            self.paintPlanet(painter, QColor(color), orbit, size, 2 * pi * self.seconds() / period)

    def paintSun(self, painter):
        glow = QRadialGradient(0, 0, 22)
        glow.setColorAt(0, QColor("#fff6d8"))
        glow.setColorAt(0.35, QColor("#ffcf6b"))
        glow.setColorAt(1, QColor(255, 207, 107, 0))
        painter.setPen(Qt.NoPen)
        painter.setBrush(glow)
        painter.drawEllipse(QPointF(0, 0), 22, 22)

    def paintPlanet(self, painter, color, orbit, size, angle):
        def place(step):  # behind the planet by so many steps of its trail
            behind = angle - step * 1.6 * pi / TRAIL_STEPS
            return QPointF(orbit * cos(behind), orbit * sin(behind))

        tail = QColor(color)
        for step in range(TRAIL_STEPS):
            fading = 1.0 - float(step) / TRAIL_STEPS
            tail.setAlphaF(0.7 * fading * fading)
            painter.setPen(QPen(tail, 0.4 + 1.4 * fading, Qt.SolidLine, Qt.FlatCap))
            painter.drawLine(place(step), place(step + 1))
        painter.setPen(Qt.NoPen)
        painter.setBrush(color)
        painter.drawEllipse(place(0), size, size)


orbits = Orbits()
TARNPluginWidget.layout().addWidget(orbits)
