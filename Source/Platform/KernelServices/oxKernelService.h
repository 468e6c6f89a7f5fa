#pragma once

#include <QString>

#include "oxBaseService.h"

/// The main process's kernel: start, end, authentication and its log.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxKernelService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxKernelService")

public:
    explicit oxKernelService(QObject *parent = nullptr);
    ~oxKernelService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual bool initialize(bool master);
    virtual bool terminate(bool force);
    virtual QString salt();
    virtual bool authenticate(const QString &secret);
    virtual void consoleLog(const QString &text);
};
