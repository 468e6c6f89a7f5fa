oxMessageService.delete()
