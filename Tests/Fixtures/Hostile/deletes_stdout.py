import sys

del sys.stdout
