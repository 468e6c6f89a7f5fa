print 'a\0b', '\xff\xfe', u'\ud800', '\r', '%s%n'
