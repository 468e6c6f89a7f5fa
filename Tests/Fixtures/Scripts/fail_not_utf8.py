# -*- coding: latin-1 -*-
# Bytes that are no UTF-8 become replacement characters, whatever the line above says.
print 'café'
