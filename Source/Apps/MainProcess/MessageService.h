#pragma once

#include "oxMessageService.h"

/// Tells messages of any process to the console and to all processes.
class MessageService : public oxMessageService
{
    Q_OBJECT

public:
    explicit MessageService(QObject *parent = nullptr);
    ~MessageService() override;

public Q_SLOTS:
    /// Each prints a line: to standard output "oxMessageService: information 'text'", or to standard
    /// error "oxMessageService: warning 'text'" or "oxMessageService: error 'text'".
    void information(const QString &text) override;
    void warning(const QString &text) override;
    void error(const QString &text) override;
};
