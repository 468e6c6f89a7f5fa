import sys


class Broken(object):
    def write(self, text):
        raise ValueError('cannot write')


sys.stderr = Broken()
raise ValueError('never shown')
