# A habit of Python 2: it also takes back the standard streams that Python began with.
import sys

reload(sys)
sys.setdefaultencoding('utf-8')
print 'as it is'
