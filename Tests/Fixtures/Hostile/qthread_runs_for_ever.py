# Lives on when its module is cleared, as run() itself holds the thread.
import threading

from PythonQt.QtCore import QThread

started = threading.Event()


class Worker(QThread):
    def run(self):
        started.set()
        while True:
            self.msleep(1)


worker = Worker()
worker.start()
started.wait()
