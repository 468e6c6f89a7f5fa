container = TARNPluginWidget
container.setParent(None)
