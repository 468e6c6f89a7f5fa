# Begins with a byte order mark.
print 'grüße', u'grüße'
