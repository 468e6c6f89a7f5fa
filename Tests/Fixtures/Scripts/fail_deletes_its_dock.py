# Takes the whole panel away from under itself; loaded again, it is not given another one.
dock = TARNPluginWidget.parentWidget()
if dock:
    dock.delete()
print 'the dock is gone'
