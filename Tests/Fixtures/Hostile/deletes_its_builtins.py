del __builtins__
print len('abc')
