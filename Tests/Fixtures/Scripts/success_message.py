oxMessageService.information('loaded')
