# Never called: the interpreter lives until the process is gone.
import atexit


def end():
    print 'at the end'
    raise SystemExit(3)


atexit.register(end)
