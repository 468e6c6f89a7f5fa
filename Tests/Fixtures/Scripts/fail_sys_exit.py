# Ends the script, and not the process.
import sys

print 'before'
sys.exit(1)
