TARNPluginWidget.delete()
print 'goes on'
