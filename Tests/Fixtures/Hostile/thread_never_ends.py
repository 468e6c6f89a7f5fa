import threading

threading.Thread(target=threading.Event().wait).start()
