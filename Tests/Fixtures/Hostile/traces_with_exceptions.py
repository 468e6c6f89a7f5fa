import sys


def trace(frame, event, argument):
    raise ValueError('traced')


sys.settrace(trace)
