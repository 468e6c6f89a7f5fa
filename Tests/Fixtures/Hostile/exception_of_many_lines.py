raise Exception('100%\r\n%s%n\n\n\'quoted\'\t\0end')
