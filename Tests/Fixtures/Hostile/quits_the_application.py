# Is not in the event loop as it is loaded.
from PythonQt.QtGui import QApplication

QApplication.instance().quit()
