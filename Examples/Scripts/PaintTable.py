# Model and view with PySide2: a table that sorts, filters and is edited in place.
#
# The model holds the rows, a proxy sorts and filters them, and the view shows what is left. The
# model has to outlive the call that made it: a parent or, as here, a global keeps it.
from PySide2.QtCore import QAbstractTableModel, QModelIndex, QSortFilterProxyModel, Qt
from PySide2.QtGui import QColor
from PySide2.QtWidgets import QAbstractItemView, QHeaderView, QLabel, QLineEdit, QTableView
import uiTools

COLUMNS = ("Paint", "Colour", "Roughness")
PAINTS = (
    ("Arctic white", "#eef1f4", 0.12),
    ("Graphite", "#4a4f57", 0.30),
    ("Lagoon", "#1f8a9c", 0.18),
    ("Midnight", "#22345c", 0.10),
    ("Moss", "#5d7a3a", 0.55),
    ("Signal red", "#c8202b", 0.15),
    ("Sunflower", "#f0b429", 0.22),
    ("Terracotta", "#c2603d", 0.70),
)


class PaintModel(QAbstractTableModel):
    def __init__(self, paints, parent=None):
        QAbstractTableModel.__init__(self, parent)
        self.paints = [list(paint) for paint in paints]

    def rowCount(self, parent=QModelIndex()):
        return 0 if parent.isValid() else len(self.paints)

    def columnCount(self, parent=QModelIndex()):
        return 0 if parent.isValid() else len(COLUMNS)

    def headerData(self, section, orientation, role=Qt.DisplayRole):
        if role == Qt.DisplayRole and orientation == Qt.Horizontal:
            return COLUMNS[section]

    def data(self, index, role=Qt.DisplayRole):
        value = self.paints[index.row()][index.column()]
        isColour = COLUMNS[index.column()] == "Colour"
        if role in (Qt.DisplayRole, Qt.EditRole):
            return value
        if role == Qt.DecorationRole and isColour:
            return QColor(value)
        if role == Qt.TextAlignmentRole and isinstance(value, float):
            return int(Qt.AlignRight | Qt.AlignVCenter)

    def flags(self, index):
        return QAbstractTableModel.flags(self, index) | Qt.ItemIsEditable

    def setData(self, index, value, role=Qt.EditRole):
        if role != Qt.EditRole or not self.isGood(COLUMNS[index.column()], value):
            return False
        self.paints[index.row()][index.column()] = value
        self.dataChanged.emit(index, index)
        return True

    def isGood(self, column, value):
        if column == "Colour":
            return QColor.isValidColor(value)
        if column == "Roughness":
            return 0 <= value <= 1
        return bool(value)


def count():
    summary.setText("%d of %d paints" % (shown.rowCount(), model.rowCount()))


model = PaintModel(PAINTS)
shown = QSortFilterProxyModel()
shown.setSourceModel(model)
shown.setFilterCaseSensitivity(Qt.CaseInsensitive)

search = QLineEdit(placeholderText="Search", clearButtonEnabled=True)
search.textChanged.connect(shown.setFilterFixedString)
view = QTableView(alternatingRowColors=True, sortingEnabled=True, showGrid=False)
view.setModel(shown)
view.setSelectionBehavior(QAbstractItemView.SelectRows)
view.sortByColumn(0, Qt.AscendingOrder)
view.verticalHeader().hide()
view.horizontalHeader().setSectionResizeMode(QHeaderView.ResizeToContents)
view.horizontalHeader().setStretchLastSection(True)
view.setMinimumSize(320, 240)
summary = QLabel()
for signal in (shown.rowsInserted, shown.rowsRemoved, shown.modelReset):
    signal.connect(count)
count()

layout = TARNPluginWidget.layout()
layout.setContentsMargins(9, 9, 9, 9)
for widget in (search, view, summary):
    layout.addWidget(widget)
