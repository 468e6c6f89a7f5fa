# Refused: one process cannot hand its widgets to both bindings.
from PythonQt.QtGui import QLabel
from PySide2.QtWidgets import QPushButton

print 'never printed'
