import PythonQt
import PySide2
