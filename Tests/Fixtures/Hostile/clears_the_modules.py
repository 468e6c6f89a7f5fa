import sys

sys.modules.clear()
