# A panel designed in Qt Designer: uiTools.loadUiType() makes a class of ColorMixer.ui.
#
# While this text runs, its folder is the current one: the file is named without a path.
from PythonQt.QtGui import QColor, QWidget
import uiTools

Form, Base = uiTools.loadUiType("ColorMixer.ui")


class ColorMixer(Form, Base):
    def __init__(self, parent=None):
        Base.__init__(self, parent)
        self.setupUi(self)
        for slider in (self.red, self.green, self.blue):
            slider.connect("valueChanged(int)", self.mix)
        self.mix()

    def mix(self, value=0):
        name = QColor(self.red.value, self.green.value, self.blue.value).name()
        self.swatch.setStyleSheet("background: %s; border-radius: 6px" % name)
        self.code.setText(name)


mixer = ColorMixer()
TARNPluginWidget.layout().addWidget(mixer)
