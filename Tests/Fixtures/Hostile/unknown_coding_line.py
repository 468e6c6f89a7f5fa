# -*- coding: no-such-coding -*-
print "runs"
