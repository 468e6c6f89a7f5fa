from PythonQt.QtCore import QEvent, QObject


class Filter(QObject):
    def eventFilter(self, watched, event):
        if event.type() == QEvent.ToolTipChange:
            raise ValueError('in an event filter')
        return False


container = TARNPluginWidget
eventFilter = Filter()
container.installEventFilter(eventFilter)
container.toolTip = 'tip'
print container.toolTip
