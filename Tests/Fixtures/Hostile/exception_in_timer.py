from PythonQt.QtCore import QTimer

busy = 3


def tick():
    global busy
    busy -= 1
    if not busy:
        timer.stop()
    raise ValueError('tick %d' % busy)


timer = QTimer(TARNPluginWidget)
timer.connect('timeout()', tick)
timer.start(0)
