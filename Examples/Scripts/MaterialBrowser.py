# The materials of the scene in the main process: pick one, give it a colour, take that back.
#
# Data objects such as materials come in lists, and one call asks for the names or the colours of
# all of them. What another process changes is seen here as well, by the services' signals.
import traceback

from __main__ import oxMainProcess, oxMaterialService, oxUndoService
from PythonQt.QtCore import QSize, Qt
from PythonQt.QtGui import (QColor, QColorDialog, QGridLayout, QHBoxLayout, QIcon, QLabel, QListWidget, QPainter,
                            QPixmap, QPushButton)

PAINTS = ("#d8dbe0", "#f2c14e", "#e8703c", "#c8324a", "#8d4fb8", "#3d7bd4",
          "#2c3038", "#9a7b4f", "#7fb04a", "#4fae84", "#36a6b8", "#24407a")
NOBODY = "No main process is connected:\nits materials appear here when it is."


def swatch(color, side):
    pixmap = QPixmap(side, side)
    pixmap.fill(QColor(0, 0, 0, 0))
    painter = QPainter(pixmap)
    try:
        painter.setRenderHint(QPainter.Antialiasing)
        painter.setPen(QColor(0, 0, 0, 110))
        painter.setBrush(color)
        painter.drawRoundedRect(1, 1, side - 2, side - 2, 5, 5)
    finally:
        painter.end()  # or else an error's traceback keeps it painting
    icon = QIcon(pixmap)
    icon.addPixmap(pixmap, QIcon.Selected)  # or else it is tinted there
    return icon


class MaterialBrowser(object):
    def __init__(self, layout):
        self.materials = []
        self.colors = []
        self.due = set()  # what has to be shown anew
        self.is_busy = False

        self.list = QListWidget()
        self.list.setIconSize(QSize(26, 26))
        self.list.setMinimumSize(QSize(230, 150))
        layout.addWidget(self.list)
        self.hint = QLabel(NOBODY)
        layout.addWidget(self.hint)

        self.paints = QGridLayout()
        self.paints.setSpacing(3)
        for index, name in enumerate(PAINTS):
            self.add_paint(QColor(name), index)
        layout.addLayout(self.paints)

        buttons = QHBoxLayout()
        self.other = self.add_button(buttons, u"Other\u2026", self.choose)
        self.undo = self.add_button(buttons, "Undo", oxUndoService.undo)
        self.redo = self.add_button(buttons, "Redo", oxUndoService.redo)
        layout.addLayout(buttons)

        oxMaterialService.connect("materialsChanged()", lambda: self.refresh(self.show_materials))
        oxUndoService.connect("changed()", lambda: self.refresh(self.show_undo))
        oxMainProcess.connect("connected()", self.refresh_all)
        oxMainProcess.connect("disconnected()", self.refresh_all)
        self.refresh_all()

    def add_paint(self, color, index):
        button = QPushButton()
        button.setFlat(True)
        button.setIcon(swatch(color, 24))
        button.setIconSize(QSize(24, 24))
        button.setToolTip(color.name())
        button.connect("clicked()", lambda: self.paint(color))
        self.paints.addWidget(button, index // 6, index % 6)

    def add_button(self, layout, text, action):
        button = QPushButton(text)
        button.connect("clicked()", lambda: action())
        layout.addWidget(button)
        return button

    def paint(self, color):
        row = self.list.currentRow
        if 0 <= row < len(self.materials):
            oxMaterialService.setColor([self.materials[row]], color)

    def choose(self):
        row = self.list.currentRow
        if 0 <= row < len(self.colors):
            self.paint(QColorDialog.getColor(self.colors[row], self.list, "Colour"))  # invalid if cancelled

    def refresh_all(self):
        self.refresh(self.show_materials, self.show_undo)

    # One at a time: while a call waits for its answer, further changes are announced. An error in one
    # part is printed, and keeps neither the others nor later changes from being shown.
    def refresh(self, *parts):
        self.due.update(parts)
        if self.is_busy:
            return
        self.is_busy = True
        try:
            while self.due:
                self.show_next()
        finally:
            self.is_busy = False

    def show_next(self):
        try:
            self.due.pop()()
        except Exception:
            traceback.print_exc()

    def show_materials(self):
        online = oxMainProcess.isConnected()
        self.materials = oxMaterialService.getMaterials() if online else []
        names = oxMaterialService.getNames(self.materials) if online else []
        self.colors = oxMaterialService.getColors(self.materials) if online else []
        row = max(0, self.list.currentRow)
        self.list.clear()
        for name, color in zip(names, self.colors):
            self.list.addItem(name)
            self.list.item(self.list.count - 1).setIcon(swatch(color, 26))
        self.list.setCurrentRow(min(row, self.list.count - 1))
        self.list.setVisible(online)
        self.hint.setVisible(not online)
        self.other.setEnabled(online)

    def show_undo(self):
        online = oxMainProcess.isConnected()
        self.undo.setEnabled(online and oxUndoService.canUndo())
        self.redo.setEnabled(online and oxUndoService.canRedo())


TARNPluginWidget.layout().setContentsMargins(9, 9, 9, 9)
browser = MaterialBrowser(TARNPluginWidget.layout())
