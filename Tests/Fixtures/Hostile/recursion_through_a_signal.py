def answer(severity, text):
    oxMessageService.information(text)


oxMessageService.connect('messageReceived(int,QString)', answer)
oxMessageService.information('again')
