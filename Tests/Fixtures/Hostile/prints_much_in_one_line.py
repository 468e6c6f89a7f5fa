print 'x' * 100000000
