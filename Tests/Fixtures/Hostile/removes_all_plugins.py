import os
import shutil

shutil.rmtree(os.path.dirname(os.getcwd()))
