# Out of reach: the scan waits for the text to end.
open('looping', 'w').close()
while True:
    pass
