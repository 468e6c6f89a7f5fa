for i in range(2):
    print i
