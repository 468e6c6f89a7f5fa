# Live signals and a timer.
#
# Whatever has to live as long as the panel needs a name at the level of the module, or a
# parent: the globals stay until the plugin is reloaded.
from PythonQt.QtCore import QElapsedTimer, QTimer
from PythonQt.QtGui import QFont, QHBoxLayout, QLabel, QPushButton

TICK_MS = 50


class Stopwatch(object):
    def __init__(self, layout):
        self.clock = QElapsedTimer()
        self.before = 0  # milliseconds of the earlier runs

        self.display = QLabel()
        self.display.setFont(QFont("DejaVu Sans Mono", 22))
        layout.addWidget(self.display)

        self.toggle = QPushButton()
        self.toggle.connect("clicked()", self.start_or_stop)
        reset = QPushButton("Reset")
        reset.connect("clicked()", self.reset)
        buttons = QHBoxLayout()
        buttons.addWidget(self.toggle)
        buttons.addWidget(reset)
        layout.addLayout(buttons)

        self.timer = QTimer(self.display)  # ends with its parent
        self.timer.connect("timeout()", self.show)
        self.reset()

    def elapsed(self):
        return self.before + (self.clock.elapsed() if self.timer.active else 0)

    def start_or_stop(self):
        if self.timer.active:
            self.before = self.elapsed()
            self.timer.stop()
        else:
            self.clock.start()
            self.timer.start(TICK_MS)
        self.show()

    def reset(self):
        self.timer.stop()
        self.before = 0
        self.show()

    def show(self):
        seconds = self.elapsed() / 1000.0
        self.display.setText("%02d:%04.1f" % (seconds // 60, seconds % 60))
        self.toggle.setText("Stop" if self.timer.active else "Start")


TARNPluginWidget.layout().setContentsMargins(9, 9, 9, 9)
stopwatch = Stopwatch(TARNPluginWidget.layout())
stopwatch.start_or_stop()
