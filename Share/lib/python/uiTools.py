"""Helpers for script plugins: user interfaces made in Qt Designer, and the panel for PySide2.

A plugin for PySide2 writes loadUiType and TARNPluginWidget as well: its text is rewritten to use
loadUiTypePySide() and getWidget() before it runs. PySide2 is imported by these two only, so that
plugins for PythonQt work without it.
"""

import os
from xml.etree import ElementTree

# Classes whose widgets place their children themselves: they accept no other layout.
_PLACE_CHILDREN = ("QMainWindow", "QDockWidget", "QStackedWidget", "QToolBox")


def loadUiType(fileName):
    """Make a class of a Designer file, for plugins that use PythonQt.

    fileName: the path of the .ui file. A relative one is looked up in the current folder,
        which is the plugin's own while its text runs.

    Returns the pair (form class, base class). The base class is the Qt class of the form's top
    widget. The form class has one method, setupUi(widget): it fills the widget with the form
    and makes each of the form's named objects an attribute of self.

    The form becomes a child that fills the widget. Where both are a QMainWindow, QDockWidget,
    QStackedWidget or QToolBox, which place their children themselves, the form's parts and
    properties become the widget's own.

    An object that has the name of a member of the widget's class hides that member: with a button
    named "close", self.close is the button, and Base.close(self) closes the widget. Qt itself still
    calls the member. A hidden property is set as before, self.windowTitle = "a", and read by
    self.property("windowTitle").

        Form, Base = uiTools.loadUiType("panel.ui")

        class Panel(Form, Base):
            def __init__(self, parent=None):
                Base.__init__(self, parent)
                self.setupUi(self)
                self.okButton.connect("clicked()", self.accept)

    Raises IOError when the file cannot be read, ValueError when it is no Designer file.
    """
    from PythonQt import QtGui

    path = os.path.abspath(fileName)
    baseName = _topWidgetClass(path)
    try:
        base = getattr(QtGui, baseName)
    except AttributeError:
        raise ValueError("%s: there is no class '%s' in PythonQt.QtGui" % (path, baseName))

    class Form(object):
        def setupUi(self, widget):
            if baseName in _PLACE_CHILDREN and widget.inherits(baseName):
                content = _fillWidget(path, widget)
            else:
                content = _addContent(path, widget)
            members = {}
            for child in _descendants(content):
                name = str(child.objectName)
                if not name or name.startswith("qt_"):
                    continue
                if _isQtMember(type(self), name):
                    members[name] = child
                else:
                    setattr(self, name, child)
            if members:
                self._namedLikeMembers = members
                Form.__getattribute__ = getNamedObject

    # PythonQt refuses these objects as attributes. In the instance's dictionary, where it accepts
    # them, it would take them for overrides of virtual functions. Looking for them first makes each
    # look-up slower: only a form that has such names does it.
    def getNamedObject(self, name):
        find = super(Form, self).__getattribute__
        try:
            return find("_namedLikeMembers")[name]
        except (AttributeError, KeyError):
            return find(name)

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
            _fillWidgetPySide(path, widget)
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


def _addContent(path, widget):
    from PythonQt.QtCore import Qt
    from PythonQt.QtGui import QVBoxLayout
    from PythonQt.QtUiTools import QUiLoader

    content = _load(QUiLoader(), path, widget)
    content.setWindowFlags(Qt.Widget)  # a dialog would be a window of its own
    widget.resize(content.size)
    if content.windowTitle:
        widget.setWindowTitle(content.windowTitle)
    layout = QVBoxLayout(widget)
    layout.setContentsMargins(0, 0, 0, 0)
    layout.addWidget(content)
    return content


def _fillWidget(path, widget):
    from PythonQt.QtUiTools import QUiLoader

    class Loader(QUiLoader):
        def createWidget(self, className, parent, name):
            if parent is None:  # the form's top widget
                widget.setObjectName(name)
                return widget
            return QUiLoader.createWidget(self, className, parent, name)

    return _load(Loader(), path, None)


def _load(loader, path, parent):
    from PythonQt.QtCore import QDir, QFile, QIODevice

    uiFile = QFile(path)
    if not uiFile.open(QIODevice.ReadOnly):
        raise IOError("%s: %s" % (path, uiFile.errorString()))
    loader.setWorkingDirectory(QDir(os.path.dirname(path)))
    content = loader.load(uiFile, parent)
    uiFile.close()
    if content is None:
        raise ValueError("%s: %s" % (path, loader.errorString()))
    return content


def _fillWidgetPySide(path, widget):
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


def _isQtMember(formClass, name):
    return any(hasattr(c, name) for c in formClass.__mro__ if c.__module__.startswith("PythonQt."))


def _descendants(root):
    for child in root.children():
        yield child
        for descendant in _descendants(child):
            yield descendant
