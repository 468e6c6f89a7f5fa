import os

from PythonQt.QtGui import QPushButton

button = QPushButton('Press')
button.connect('clicked()', lambda: os.chdir('/'))
TARNPluginWidget.layout().addWidget(button)
