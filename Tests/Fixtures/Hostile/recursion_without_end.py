def again():
    again()


again()
