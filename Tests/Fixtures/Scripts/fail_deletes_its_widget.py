# The container dies while the main window shows it.
TARNPluginWidget.delete()
print 'the container is gone'
