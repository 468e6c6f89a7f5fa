# Half of the panel is there when it goes wrong.
from PythonQt.QtGui import QLabel


def build(text):
    TARNPluginWidget.layout().addWidget(QLabel(text))
    raise ValueError('100% of ' + text)


print 'before'
build('this')
print 'never printed'
