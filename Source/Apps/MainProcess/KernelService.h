#pragma once

#include "oxKernelService.h"

/// The kernel of this process, which runs as long as the process does.
class KernelService : public oxKernelService
{
    Q_OBJECT

public:
    explicit KernelService(QObject *parent = nullptr);
    ~KernelService() override;

public Q_SLOTS:
    /// True: it runs.
    bool initialize(bool master) override;
    /// Ends this process, once the answer is on its way, when it is forced; else answers false, as
    /// others may use it.
    bool terminate(bool force) override;
    /// "": who reaches this process may use it, so there is nothing to prove.
    QString salt() override;
    bool authenticate(const QString &secret) override;
    /// Prints the text to standard output as it is.
    void consoleLog(const QString &text) override;
};
