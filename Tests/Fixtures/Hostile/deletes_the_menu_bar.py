TARNPluginWidget.parentWidget().parentWidget().menuBar().delete()
