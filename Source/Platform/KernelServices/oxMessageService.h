#pragma once

#include <QString>

#include "oxBaseService.h"

/// Tells the user something.
///
/// The only service that scripts see, as the global oxMessageService. This implementation shows
/// a message in the process that sends it: whoever listens to messageReceived() displays it.
class OXKERNELSERVICES_EXPORT oxMessageService : public oxBaseService
{
    Q_OBJECT

public:
    enum Severity { Information, Warning, Error };
    Q_ENUM(Severity)

    explicit oxMessageService(QObject *parent = nullptr);
    ~oxMessageService() override;

public Q_SLOTS:
    virtual void information(const QString &text);
    virtual void warning(const QString &text);
    virtual void error(const QString &text);

Q_SIGNALS:
    void messageReceived(oxMessageService::Severity severity, const QString &text);
};
