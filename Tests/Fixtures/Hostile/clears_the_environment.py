import os

os.environ.clear()
