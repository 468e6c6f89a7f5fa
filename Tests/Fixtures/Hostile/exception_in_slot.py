from PythonQt.QtGui import QPushButton


def press():
    raise ValueError('in a slot')


button = QPushButton('Press')
button.connect('clicked()', press)
TARNPluginWidget.layout().addWidget(button)
