# The smallest plugin: one label in its panel.
from PythonQt.QtGui import QLabel

TARNPluginWidget.layout().addWidget(QLabel("Hello from Python"))
