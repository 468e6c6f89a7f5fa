import os

with open('rewrites_itself.py', 'w') as text:
    text.write("print 'second'\n")
print 'first'
