# Nothing at all is run.
print 'never printed'
def broken(:
    pass
