import os

os.closerange(0, 1024)
print 'never shown'
