dock = TARNPluginWidget.parentWidget()
if dock:
    dock.parentWidget().delete()
