import sys
import threading


def work():
    while True:
        sys.stdout.write('tick\n')


thread = threading.Thread(target=work)
thread.daemon = True
thread.start()
