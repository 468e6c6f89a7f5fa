# The scan has already seen that the next one is a file.
import glob
import os

after, = glob.glob('../*/After.py')
os.remove(after)
os.mkfifo(after)
