#pragma once

#include <QString>

#include "oxBaseService.h"

/// Tells the user something.
///
/// The service that scripts see as the global oxMessageService. A message goes to the main process,
/// which tells all processes; without a connection it stays in this one. Whoever listens to
/// messageReceived() displays it.
class OXKERNELSERVICES_EXPORT oxMessageService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxMessageService")

public:
    enum Severity { Information, Warning, Error }; // not Q_ENUM: enumerations do not travel

    explicit oxMessageService(QObject *parent = nullptr);
    ~oxMessageService() override;

public Q_SLOTS:
    virtual void information(const QString &text);
    virtual void warning(const QString &text);
    virtual void error(const QString &text);

Q_SIGNALS:
    /// @param severity a Severity
    void messageReceived(int severity, const QString &text);

private:
    void send(const char *signature, Severity severity, const QString &text);
};
