import sys


class Parting(object):
    def __init__(self):
        self.exit = sys.exit

    def __repr__(self):
        return 'parting'

    def __del__(self):
        self.exit(3)


parting = Parting()
