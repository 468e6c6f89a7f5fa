import threading


def work():
    raise ValueError('in a thread')


thread = threading.Thread(target=work, name='Worker')
thread.start()
thread.join()
