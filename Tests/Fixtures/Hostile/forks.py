import os

child = os.fork()
if not child:
    os._exit(3)
print os.WEXITSTATUS(os.waitpid(child, 0)[1])
