# A plugin in a folder of its own, with a helper module.
#
# Every file "*.py" below Scripts is a plugin, so the helper lies in a folder whose name begins
# with a dot: the scan does not enter those. The helper stays imported when the plugin is
# reloaded; reload() gets the changes that were made to it meanwhile.
import os
import sys

from PythonQt.QtGui import QComboBox, QDoubleSpinBox, QFormLayout, QLabel

MODULES = os.path.join(os.getcwd(), ".modules")
if MODULES not in sys.path:
    sys.path.append(MODULES)
import units

reload(units)


def add_combo(label, index):
    combo = QComboBox()
    for name in units.NAMES:
        combo.addItem(name)
    combo.setCurrentIndex(index)
    combo.connect("currentIndexChanged(int)", convert)
    form.addRow(label, combo)
    return combo


def convert(ignored=0):
    value = units.convert(amount.value, source.currentText, target.currentText)
    result.setText("%.6g %s" % (value, target.currentText))


form = QFormLayout()
form.setContentsMargins(9, 9, 9, 9)
TARNPluginWidget.layout().addLayout(form)
amount = QDoubleSpinBox()
amount.setRange(0, 1e6)
amount.setValue(1)
form.addRow("Length", amount)
source = add_combo("From", units.NAMES.index("inch"))
target = add_combo("To", units.NAMES.index("mm"))
result = QLabel()
form.addRow("Result", result)
amount.connect("valueChanged(double)", convert)
convert()
