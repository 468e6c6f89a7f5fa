from PythonQt.QtGui import QPushButton

dock = TARNPluginWidget.parentWidget()


def press():
    dock.delete()
    print 'pressed'


if dock:
    button = QPushButton('Press')
    button.connect('clicked()', press)
    TARNPluginWidget.layout().addWidget(button)
