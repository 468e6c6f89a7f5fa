import __builtin__

__builtin__.__import__ = None
