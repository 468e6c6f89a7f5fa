# A form of Qt Designer with PySide2: what a camera sees through a lens.
#
# This text says uiTools.loadUiType() and TARNPluginWidget like one for the other binding. As it
# names PySide2 in an import, both are replaced by their PySide2 counterparts before it runs.
from math import atan, degrees

import PySide2
import uiTools

# name, width and height of the sensor in millimetres
SENSORS = (("Full frame", 36.0, 24.0), ("APS-C", 23.5, 15.6), ("Four Thirds", 17.3, 13.0), ("One inch", 13.2, 8.8))

Form, Base = uiTools.loadUiType("LensCalculator.ui")


class LensCalculator(Form, Base):
    def __init__(self, parent=None):
        Base.__init__(self, parent)
        self.setupUi(self)
        self.sensor.addItems([name for name, width, height in SENSORS])
        self.sensor.activated.connect(self.calculate)
        self.dial.valueChanged.connect(self.focalLength.setValue)
        self.focalLength.valueChanged.connect(self.dial.setValue)
        self.focalLength.valueChanged.connect(self.calculate)
        self.distance.valueChanged.connect(self.calculate)
        self.calculate()

    def calculate(self, ignored=0):
        name, width, height = SENSORS[self.sensor.currentIndex()]
        focal = float(self.focalLength.value())
        metres = self.distance.value()
        self.angles.setText(u"%.1f\u00b0 \u00d7 %.1f\u00b0" % tuple(
            2 * degrees(atan(side / (2 * focal))) for side in (width, height)))
        self.field.setText(u"%.2f m \u00d7 %.2f m" % (metres * width / focal, metres * height / focal))


calculator = LensCalculator()
TARNPluginWidget.layout().addWidget(calculator)
