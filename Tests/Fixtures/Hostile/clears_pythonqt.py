import PythonQt

PythonQt.__dict__.clear()
PythonQt.QtGui = None
