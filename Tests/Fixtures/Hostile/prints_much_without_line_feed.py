import sys

sys.stdout.write('x' * 100000000)
