from PythonQt.QtGui import QSlider

for number in range(5):
    TARNPluginWidget.layout().addWidget(QSlider(TARNPluginWidget))
raise RuntimeError("half of a panel")
