class Parting(object):
    def __repr__(self):
        return 'parting'

    def __del__(self):
        raise ValueError('in a destructor')


parting = Parting()
