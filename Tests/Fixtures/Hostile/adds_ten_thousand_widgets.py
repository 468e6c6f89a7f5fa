from PythonQt.QtGui import QLabel

layout = TARNPluginWidget.layout()
for i in xrange(10000):
    layout.addWidget(QLabel(str(i)))
print layout.count()
