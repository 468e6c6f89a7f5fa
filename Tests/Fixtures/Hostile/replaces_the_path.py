import sys

sys.path = None
