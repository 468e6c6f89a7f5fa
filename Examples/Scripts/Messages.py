# Talks to the message service: what is typed appears in the window's status bar.
#
# oxMessageService is there in every plugin. Its slots are called like methods.
from PythonQt.QtGui import QHBoxLayout, QLineEdit, QPushButton

TARNPluginWidget.layout().setContentsMargins(9, 9, 9, 9)
edit = QLineEdit("Hello")
TARNPluginWidget.layout().addWidget(edit)
buttons = QHBoxLayout()
TARNPluginWidget.layout().addLayout(buttons)


def add_button(text, send):
    button = QPushButton(text)
    button.connect("clicked()", lambda: send(edit.text))
    buttons.addWidget(button)


add_button("Information", oxMessageService.information)
add_button("Warning", oxMessageService.warning)
add_button("Error", oxMessageService.error)
print("Messages: type a text and press a button")
