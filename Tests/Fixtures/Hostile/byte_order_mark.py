print "grüße", u"grüße"
