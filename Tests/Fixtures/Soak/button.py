from PythonQt.QtGui import QLabel, QPushButton

label = QLabel("not yet")
button = QPushButton("Press")


def press():
    label.text = "pressed"


button.connect("clicked()", press)
TARNPluginWidget.layout().addWidget(label)
TARNPluginWidget.layout().addWidget(button)
button.click()
