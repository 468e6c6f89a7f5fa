#pragma once

#include "oxKernelService.h"
#include "oxkernelservicesremoteimpl_export.h"

/// The kernel service for a process that wants the log on its own standard output.
///
/// oxKernelInterface::init() files the plain oxKernelService; file one of these in its place to
/// use it.
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxKernelServiceRemoteImpl : public oxKernelService
{
    Q_OBJECT

public:
    ~oxKernelServiceRemoteImpl() override;

    /// Writes @p text to standard output as UTF-8, with nothing added and no flush. A NUL
    /// character ends it.
    void consoleLog(const QString &text) override;
};
