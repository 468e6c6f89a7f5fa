from PythonQt.QtGui import QTableWidget, QTableWidgetItem

table = QTableWidget(10, 3, TARNPluginWidget)
TARNPluginWidget.layout().addWidget(table)
for row in range(10):
    for column in range(3):
        table.setItem(row, column, QTableWidgetItem("%d, %d" % (row, column)))
