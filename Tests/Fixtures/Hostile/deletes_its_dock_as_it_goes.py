class Parting(object):
    def __init__(self, dock):
        self.dock = dock

    def __del__(self):
        self.dock.delete()


parting = Parting(TARNPluginWidget.parentWidget())
