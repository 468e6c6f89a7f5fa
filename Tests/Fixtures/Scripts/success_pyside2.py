# Runs with the helpers' PySide2 variants.
import PySide2
import uiTools

print uiTools.loadUiType('form.ui'), TARNPluginWidget
