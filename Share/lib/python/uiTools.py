"""Helpers for script plugins: user interfaces made in Qt Designer, and the panel for PySide2.

A plugin for PySide2 writes loadUiType and TARNPluginWidget as well: its text is rewritten to use
loadUiTypePySide() and getWidget() before it runs. PySide2 is imported by these two only, so that
plugins for PythonQt work without it.
"""

import os
from xml.etree import ElementTree


def loadUiType(fileName):
    """Make a class of a Designer file, for plugins that use PythonQt.

    fileName: the path of the .ui file. A relative one is looked up in the current folder,
        which is the plugin's own while its text runs.

    Returns the pair (form class, base class). The base class is the Qt class of the form's top
    widget. The form class has one method, setupUi(widget): it fills the widget with the form
    and makes each of the form's named objects an attribute of self. None may have the name of a
    member of that class, such as "close".

        Form, Base = uiTools.loadUiType("panel.ui")

        class Panel(Form, Base):
            def __init__(self, parent=None):
                Base.__init__(self, parent)
                self.setupUi(self)
                self.okButton.connect("clicked()", self.accept)

    Raises IOError when the file cannot be read, ValueError when it is no Designer file.
    """
    from PythonQt import QtCore, QtGui

    path = os.path.abspath(fileName)
    baseName = _topWidgetClass(path)
    try:
        base = getattr(QtGui, baseName)
    except AttributeError:
        raise ValueError("%s: there is no class '%s' in PythonQt.QtGui" % (path, baseName))

    class Form(object):
        def setupUi(self, widget):
            content = _loadContent(path, widget)
            content.setWindowFlags(QtCore.Qt.Widget)  # a dialog would be a window of its own
            widget.resize(content.size)
            if content.windowTitle:
                widget.setWindowTitle(content.windowTitle)
            layout = QtGui.QVBoxLayout(widget)
            layout.setContentsMargins(0, 0, 0, 0)
            layout.addWidget(content)
            for child in _descendants(content):
                if child.objectName and not child.objectName.startswith("qt_"):
                    setattr(self, str(child.objectName), child)

    Form.__name__ = "Ui_" + baseName
    return Form, base


def loadUiTypePySide(fileName):
    """Make a class of a Designer file, for plugins that use PySide2.

    As loadUiType(), but the base class is one of PySide2. setupUi(widget) fills the widget
    itself, as the code that Qt's uic makes does: the form's layout and properties become the
    widget's own, and slots of the widget that are named on_<object>_<signal> are connected. The
    form's named objects become attributes of self.

        Form, Base = uiTools.loadUiType("panel.ui")

        class Panel(Form, Base):
            def __init__(self, parent=None):
                Base.__init__(self, parent)
                self.setupUi(self)
                self.okButton.clicked.connect(self.accept)

    Raises IOError when the file cannot be read, ValueError when it is no Designer file,
    ImportError when PySide2 is not installed.
    """
    QtCore, QtWidgets = _pySide2("loadUiTypePySide", "QtCore", "QtWidgets")
    path = os.path.abspath(fileName)
    baseName = _topWidgetClass(path)
    try:
        base = getattr(QtWidgets, baseName)
    except AttributeError:
        raise ValueError("%s: there is no class '%s' in PySide2.QtWidgets" % (path, baseName))

    class Form(object):
        def setupUi(self, widget):
            _fillWidget(path, widget)
            for child in widget.findChildren(QtCore.QObject):
                name = child.objectName()
                if name and not name.startswith("qt_"):
                    setattr(self, str(name), child)
            QtCore.QMetaObject.connectSlotsByName(widget)

    Form.__name__ = "Ui_" + baseName
    return Form, base


def getWidget(address):
    """The QWidget at this address, for PySide2.

    address: of a living QWidget, as TARNPluginWidgetId has it. Nothing checks it.

    Returns the same Python object each time. It does not own the widget. It becomes invalid when
    the widget is deleted, whoever does that: a call raises a RuntimeError then.

    Raises ImportError when PySide2 is not installed.
    """
    (QtWidgets,) = _pySide2("getWidget", "QtWidgets")
    import shiboken2

    widget = shiboken2.wrapInstance(address, QtWidgets.QWidget)
    # PySide2 never hears of the end of a widget that it knows by its address alone: the object
    # would stay valid, and be taken for the next widget at that address. The connection keeps it
    # as long as the widget lives: without it, PySide2 would give up those of its children, too.
    if not hasattr(widget, "_isWatched"):
        widget._isWatched = True
        widget.destroyed.connect(lambda: shiboken2.invalidate(widget))
    return widget


def _pySide2(function, *modules):
    try:
        package = __import__("PySide2", fromlist=modules)
        return [getattr(package, module) for module in modules]
    except (ImportError, AttributeError) as error:
        raise ImportError("uiTools.%s() needs PySide2, which cannot be loaded: %s" % (function, error))


def _topWidgetClass(path):
    with open(path, "rb") as uiFile:
        try:
            widget = ElementTree.parse(uiFile).getroot().find("widget")
        except ElementTree.ParseError as error:
            raise ValueError("%s: no Designer file: %s" % (path, error))
    if widget is None:
        raise ValueError("%s: no Designer file: it has no top widget" % path)
    return widget.get("class")


def _loadContent(path, parent):
    from PythonQt.QtCore import QFile, QIODevice
    from PythonQt.QtUiTools import QUiLoader

    uiFile = QFile(path)
    if not uiFile.open(QIODevice.ReadOnly):
        raise IOError("%s: %s" % (path, uiFile.errorString()))
    loader = QUiLoader()
    loader.setWorkingDirectory(_folderOf(path))
    content = loader.load(uiFile, parent)
    uiFile.close()
    if content is None:
        raise ValueError("%s: %s" % (path, loader.errorString()))
    return content


def _fillWidget(path, widget):
    from PySide2.QtCore import QDir, QFile, QIODevice
    from PySide2.QtUiTools import QUiLoader

    class Loader(QUiLoader):
        def createWidget(self, className, parent=None, name=""):
            if parent is None:  # the form's top widget
                widget.setObjectName(name)
                return widget
            return QUiLoader.createWidget(self, className, parent, name)

    uiFile = QFile(path)
    if not uiFile.open(QIODevice.ReadOnly):
        raise IOError("%s: %s" % (path, uiFile.errorString()))
    loader = Loader()
    loader.setWorkingDirectory(QDir(os.path.dirname(path)))
    try:
        loader.load(uiFile)
    except RuntimeError:
        raise ValueError("%s: %s" % (path, loader.errorString()))
    uiFile.close()


def _folderOf(path):
    from PythonQt.QtCore import QDir

    return QDir(os.path.dirname(path))


def _descendants(root):
    for child in root.children():
        yield child
        for descendant in _descendants(child):
            yield descendant
