print "café"
