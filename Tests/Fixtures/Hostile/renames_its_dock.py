dock = TARNPluginWidget.parentWidget()
if dock:
    dock.windowTitle = 'Another'
