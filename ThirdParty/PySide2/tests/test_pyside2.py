"""Tests of the PySide2 that is installed beside this folder. Started by run-tests."""

import ctypes
import gc
import os
import subprocess
import sys
import tempfile
import textwrap
import unittest
import weakref

HERE = os.path.dirname(os.path.abspath(__file__))
SITE_PACKAGES = os.path.join(os.path.dirname(HERE), "site-packages")
FORM = os.path.join(HERE, "form.ui")
sys.path.insert(0, SITE_PACKAGES)

import PySide2
import shiboken2
from PySide2.QtCore import QMetaObject, QObject, QTimer, Signal, Slot, qVersion
from PySide2.QtGui import QColor, QPainter
from PySide2.QtUiTools import QUiLoader
from PySide2.QtWidgets import QApplication, QDialog, QPushButton, QWidget
from PySide2.QtXml import QDomDocument


def addressOf(wrapper):
    return shiboken2.getCppPointer(wrapper)[0]


class Modules(unittest.TestCase):
    def test_allComeFromTheRecipe(self):
        self.assertEqual(PySide2.__version__, "5.15.8")
        self.assertEqual(shiboken2.__version__, "5.15.8")
        self.assertEqual(sorted(PySide2.__all__), ["QtCore", "QtGui", "QtUiTools", "QtWidgets", "QtXml"])
        for name in ["shiboken2"] + ["PySide2." + module for module in PySide2.__all__]:
            __import__(name)
            self.assertTrue(sys.modules[name].__file__.startswith(SITE_PACKAGES), sys.modules[name].__file__)

    def test_runWithTheQtThatTheyWereBuiltFor(self):
        self.assertEqual(qVersion(), PySide2.QtCore.__version__)

    def test_importLeavesNothingBehind(self):
        folder = tempfile.mkdtemp()
        try:
            subprocess.check_call([sys.executable, "-B", "-E", "-s", "-c", textwrap.dedent("""\
                import sys
                sys.path.insert(0, %r)
                import PySide2.QtWidgets""" % SITE_PACKAGES)], env=dict(os.environ, TMPDIR=folder))
            self.assertEqual(os.listdir(folder), [])
        finally:
            os.rmdir(folder)


class SignalsAndSlots(unittest.TestCase):
    def test_clickCallsAFunction(self):
        clicks = []
        button = QPushButton()
        button.clicked.connect(lambda: clicks.append("clicked"))
        button.click()
        self.assertEqual(clicks, ["clicked"])

    def test_signalOfAPythonClassReachesItsSlot(self):
        class Sender(QObject):
            changed = Signal(int, str)

        class Receiver(QObject):
            def __init__(self):
                super(Receiver, self).__init__()
                self.received = []

            @Slot(int, str)
            def receive(self, number, text):
                self.received.append((number, text))

        sender, receiver = Sender(), Receiver()
        sender.changed.connect(receiver.receive)
        sender.changed.emit(7, "seven")
        self.assertEqual(receiver.received, [(7, "seven")])

    def test_timerFiresInTheEventLoop(self):
        QTimer.singleShot(0, lambda: QApplication.exit(3))
        self.assertEqual(QApplication.exec_(), 3)


class Widgets(unittest.TestCase):
    def test_overriddenPaintEventIsCalled(self):
        class Red(QWidget):
            def paintEvent(self, event):
                QPainter(self).fillRect(event.rect(), QColor("red"))

        red = Red()
        red.resize(4, 4)
        self.assertEqual(red.grab().toImage().pixelColor(2, 2), QColor("red"))

    def test_documentIsParsed(self):
        document = QDomDocument()
        self.assertTrue(document.setContent("<a><b c='d'/></a>")[0])
        self.assertEqual(document.documentElement().firstChildElement("b").attribute("c"), "d")


class Ownership(unittest.TestCase):
    def test_childIsInvalidWhenItsParentDies(self):
        parent = QWidget()
        child = QPushButton(parent)
        self.assertTrue(shiboken2.isValid(child))
        shiboken2.delete(parent)
        self.assertFalse(shiboken2.isValid(child))
        self.assertRaises(RuntimeError, child.text)

    def test_invalidatedWrapperRefusesCalls(self):
        form = loadForm()
        button = form.button
        shiboken2.invalidate(button)
        self.assertFalse(shiboken2.isValid(button))
        self.assertRaises(RuntimeError, button.text)
        self.assertTrue(shiboken2.isValid(form))

    def test_wrapInstanceWrapsTheObjectAtTheAddress(self):
        button = QPushButton("wrapped")
        address = addressOf(button)
        self.assertIs(shiboken2.wrapInstance(address, QPushButton), button)

        form = loadForm()
        address = addressOf(form.button)
        shiboken2.invalidate(form.button)
        self.assertEqual(shiboken2.wrapInstance(address, QPushButton).text(), "Press")
        self.assertRaises(TypeError, shiboken2.wrapInstance, address, object)


class Gauge(QWidget):
    created = 0

    def __init__(self, parent=None):
        super(Gauge, self).__init__(parent)
        Gauge.created += 1


def loadForm():
    loader = QUiLoader()
    loader.registerCustomWidget(Gauge)
    return loader.load(FORM)


class Forms(unittest.TestCase):
    def test_loadedFormHasItsWidgetsAsAttributes(self):
        form = loadForm()
        self.assertEqual(form.windowTitle(), "A form")
        self.assertEqual(form.button.text(), "Press")
        clicks = []
        form.button.clicked.connect(lambda: clicks.append("clicked"))
        form.button.click()
        self.assertEqual(clicks, ["clicked"])

    def test_customWidgetIsMadeByPython(self):
        created = Gauge.created
        form = loadForm()
        self.assertEqual(Gauge.created, created + 1)
        self.assertIsInstance(form.gauge, Gauge)


# What fixes.patch changes.
class Fixes(unittest.TestCase):
    def test_getCppPointerGivesOneAddressForEachObject(self):
        # QWidget itself has two C++ bases
        self.assertEqual(len(shiboken2.getCppPointer(QWidget())), 1)

        class Both(QObject, QColor):
            def __init__(self):
                QObject.__init__(self)
                QColor.__init__(self)

        self.assertEqual(len(shiboken2.getCppPointer(Both())), 2)

    def test_getCppPointerGivesNoneForADeadObject(self):
        dead = QObject()
        shiboken2.delete(dead)
        self.assertEqual(shiboken2.getCppPointer(dead), ())

    def test_wrongArgumentsPrintNothing(self):
        script = textwrap.dedent("""\
            import sys
            sys.path.insert(0, %r)
            from PySide2.QtCore import QBuffer, QCommandLineOption, QFileSystemWatcher, QObject
            for function in QBuffer, QCommandLineOption, QFileSystemWatcher, QObject:
                try:
                    function(object())
                except TypeError:
                    sys.stderr.write("refused\\n")""" % SITE_PACKAGES)
        process = subprocess.Popen([sys.executable, "-B", "-E", "-s", "-c", script],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        output, errors = process.communicate()
        self.assertEqual(errors, 4 * "refused\n")
        self.assertEqual(output, "")

    # In a process that embeds Python, nothing finalizes the interpreter.
    def test_exitWithoutFinalizationDeletesNothing(self):
        script = textwrap.dedent("""\
            import ctypes, sys
            sys.path.insert(0, %r)
            from PySide2.QtWidgets import QApplication, QPushButton, QWidget

            class Child(QPushButton):
                def __del__(self):
                    sys.stdout.write("deleted\\n")

            def connect(button):
                window = Child()
                button.clicked.connect(lambda: window)

            application = QApplication([])
            parent = QWidget()
            Child(parent)
            button = QPushButton()
            connect(button)
            sys.stdout.write("ends\\n")
            sys.stdout.flush()
            ctypes.CDLL(None).exit(0)""" % SITE_PACKAGES)
        process = subprocess.Popen([sys.executable, "-B", "-E", "-s", "-c", script],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        output, errors = process.communicate()
        self.assertEqual(output, "ends\n")
        self.assertEqual(process.returncode, 0, errors)

    def test_attributeThatIsNoFunctionOverridesNothing(self):
        dialog = QDialog()
        dialog.accept = QPushButton(dialog)
        QMetaObject.invokeMethod(dialog, "accept")
        self.assertEqual(dialog.result(), QDialog.Accepted)

    def test_registeredClassLivesOn(self):
        class Temporary(QWidget):
            pass

        reference = weakref.ref(Temporary)
        QUiLoader().registerCustomWidget(Temporary)
        del Temporary
        gc.collect()
        self.assertIsNotNone(reference())

    def test_formIsLoadedByCodeWithoutTheInterpreterLock(self):
        loader = ctypes.CDLL(os.path.join(HERE, "libformloader.so")) # calls without the lock, unlike PyDLL
        loader.loadForm.restype = ctypes.c_bool
        loader.loadForm.argtypes = [ctypes.c_char_p, ctypes.c_void_p]
        QUiLoader().registerCustomWidget(Gauge)
        parent = QWidget()
        created = Gauge.created
        self.assertTrue(loader.loadForm(FORM, addressOf(parent)))
        self.assertEqual(Gauge.created, created + 1)


if __name__ == "__main__":
    application = QApplication(sys.argv[:1])
    unittest.main(verbosity=2)
