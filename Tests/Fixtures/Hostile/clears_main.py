import __main__

__main__.__dict__.clear()
