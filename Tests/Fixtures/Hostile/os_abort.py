# Out of reach, as is any signal that a plugin sends to its own process.
import os

os.abort()
