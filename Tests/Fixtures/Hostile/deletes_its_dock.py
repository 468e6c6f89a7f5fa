dock = TARNPluginWidget.parentWidget()
if dock:
    dock.delete()
