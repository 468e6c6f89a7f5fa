if True:
	print "tab"
        print "blanks"
