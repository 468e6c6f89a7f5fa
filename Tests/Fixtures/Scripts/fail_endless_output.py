# As near to endless as a test can wait for: many lines, and a very long one.
for i in xrange(20000):
    print 'line', i
print 'x' * 1000000
