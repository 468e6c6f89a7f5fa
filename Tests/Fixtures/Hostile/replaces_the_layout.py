from PythonQt.QtGui import QHBoxLayout

TARNPluginWidget.layout().delete()
TARNPluginWidget.setLayout(QHBoxLayout())
print TARNPluginWidget.layout().className()
