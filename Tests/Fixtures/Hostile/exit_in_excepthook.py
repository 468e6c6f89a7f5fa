import sys

sys.excepthook = lambda *args: sys.exit(3)
raise ValueError('shown after all')
