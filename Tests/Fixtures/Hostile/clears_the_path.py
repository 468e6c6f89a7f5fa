import sys

sys.path[:] = []
