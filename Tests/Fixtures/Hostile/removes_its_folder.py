import os
import shutil

os.mkdir('gone')
os.chdir('gone')
os.rmdir('../gone')
