class Mute(Exception):
    __module__ = 'mute'

    def __str__(self):
        raise self


raise Mute()
