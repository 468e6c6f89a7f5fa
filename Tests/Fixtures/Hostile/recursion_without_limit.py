# Out of reach: with Python's own limit gone, the stack of the process is the limit.
import sys

sys.setrecursionlimit(2 ** 31 - 1)


def again():
    again()


again()
