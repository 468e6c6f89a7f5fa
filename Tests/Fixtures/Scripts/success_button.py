from PythonQt.QtGui import QPushButton

button = QPushButton('Press')
button.connect('clicked()', lambda: None)
TARNPluginWidget.layout().addWidget(button)
print TARNPluginWidget.layout().count(), button.text
