# Finds what lies beside it while it is loaded.
print open('success_subfolder.txt').read()
