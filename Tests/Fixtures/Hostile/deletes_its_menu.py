from PythonQt.QtGui import QMenu

for menu in TARNPluginWidget.parentWidget().parentWidget().menuBar().findChildren(QMenu):
    if menu.title == 'Scripts':
        menu.delete()
        break
