import __main__


class Undead(object):
    place = __main__

    def __del__(self):
        self.place.undead = self
        print 'not yet'


undead = Undead()
