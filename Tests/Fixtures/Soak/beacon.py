import __main__


def handler(number):
    def flash(count):
        __main__.flashes.append(number)
    return flash


for number in range(20):
    __main__.beacon.connect("flash(int)", handler(number))
