import threading


def work():
    for i in range(3):
        print 'from the thread', i


thread = threading.Thread(target=work)
thread.start()
thread.join()
print 'joined'
