import threading


def work():
    while True:
        sum(xrange(100))


thread = threading.Thread(target=work)
thread.daemon = True
thread.start()
