from PythonQt.QtGui import QPushButton


def press():
    print 'pressed'
    raise SystemExit(3)


button = QPushButton('Press')
button.connect('clicked()', press)
TARNPluginWidget.layout().addWidget(button)
