# What the module is cleared with.
import __builtin__


def no(*args):
    raise ValueError('no')


dir = globals = no
