for dock in TARNPluginWidget.parentWidget().parentWidget().children():
    if dock.inherits('QDockWidget') and dock.windowTitle == 'Before':
        dock.delete()
        break
