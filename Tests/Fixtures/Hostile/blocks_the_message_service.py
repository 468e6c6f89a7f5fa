oxMessageService.blockSignals(True)
