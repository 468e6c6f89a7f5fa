"""Helpers for script plugins: user interfaces made in Qt Designer."""

import os
from xml.etree import ElementTree


def loadUiType(fileName):
    """Make a class of a Designer file, for plugins that use PythonQt.

    fileName: the path of the .ui file. A relative one is looked up in the current folder,
        which is the plugin's own while its text runs.

    Returns the pair (form class, base class). The base class is the Qt class of the form's top
    widget. The form class has one method, setupUi(widget): it fills the widget with the form
    and makes each of the form's named objects an attribute of self.

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
            content = _loadContent(path, widget)
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


def _folderOf(path):
    from PythonQt.QtCore import QDir

    return QDir(os.path.dirname(path))


def _descendants(root):
    for child in root.children():
        yield child
        for descendant in _descendants(child):
            yield descendant
