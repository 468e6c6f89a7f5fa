# Turns the camera of the main process around the scene.
#
# Services that reach the main process are imported from __main__. An operation without a result
# does not wait for the main process, so a timer may call it for each step.
from __main__ import oxCameraService, oxMainProcess
from PythonQt.QtCore import QElapsedTimer, QTimer, Qt
from PythonQt.QtGui import QFont, QHBoxLayout, QLabel, QPushButton, QSlider

STEP_MS = 33
NOBODY = "No main process is connected:\nthere is nothing to turn yet."


class Turntable(object):
    def __init__(self, layout):
        self.clock = QElapsedTimer()

        self.display = QLabel()
        self.display.setFont(QFont("DejaVu Sans Mono", 18))
        self.display.setAlignment(Qt.AlignCenter)
        layout.addWidget(self.display)

        self.speed = QSlider(Qt.Horizontal)
        self.speed.setRange(-180, 180)  # degrees in a second
        self.speed.setValue(45)
        self.speed.connect("valueChanged(int)", self.show)
        layout.addWidget(self.speed)

        self.toggle = QPushButton()
        self.toggle.connect("clicked()", self.start_or_stop)
        self.back = QPushButton("Reset")
        self.back.connect("clicked()", self.reset)
        buttons = QHBoxLayout()
        buttons.addWidget(self.toggle)
        buttons.addWidget(self.back)
        layout.addLayout(buttons)

        self.hint = QLabel(NOBODY)
        layout.addWidget(self.hint)

        self.timer = QTimer(self.display)  # ends with its parent
        self.timer.connect("timeout()", self.turn)
        oxMainProcess.connect("connected()", self.show)
        oxMainProcess.connect("disconnected()", self.stop)
        self.show()

    def start_or_stop(self):
        if self.timer.active:
            self.stop()
            return
        oxCameraService.setTurning(False)  # the scene's own turntable
        self.clock.start()
        self.timer.start(STEP_MS)
        self.show()

    def stop(self):
        self.timer.stop()
        self.show()

    def reset(self):
        self.stop()
        oxCameraService.reset()

    def turn(self):
        # By the time that has passed: a timer that is late does not make it slower.
        seconds = self.clock.restart() / 1000.0
        oxCameraService.orbit(self.speed.value * seconds, 0)

    def show(self, ignored=0):
        online = oxMainProcess.isConnected()
        self.toggle.setText("Stop" if self.timer.active else "Start")
        self.display.setText(u"%+d\xb0/s" % self.speed.value)
        self.hint.setVisible(not online)
        for widget in (self.toggle, self.back):
            widget.setEnabled(online)


TARNPluginWidget.layout().setContentsMargins(9, 9, 9, 9)
turntable = Turntable(TARNPluginWidget.layout())
