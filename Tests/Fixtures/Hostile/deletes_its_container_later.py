TARNPluginWidget.deleteLater()
print 'goes on'
