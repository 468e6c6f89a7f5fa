#pragma once

#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>

#include "oxFileIOService.h"
#include "oxkernelservicesremoteimpl_export.h"

/// The file service with a progress dialog over the main window while a file loads.
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxFileIOServiceRemoteImpl : public oxFileIOService
{
    Q_OBJECT

public:
    oxFileIOServiceRemoteImpl();
    ~oxFileIOServiceRemoteImpl() override;

    /// Loads @p file as oxFileIOService does, behind a frameless dialog that follows the signal
    /// progress(int) of the filed file service. Returns what oxFileIOService returned, when the
    /// dialog is gone.
    ///
    /// A load that begins while another runs has a dialog of its own, which gets all progress while
    /// it is there; that of the other load gets no more. Each dialog goes when its load ends.
    ///
    /// A main-window service and a file service have to be filed. GUI thread only. Events are
    /// processed at each progress value.
    bool loadFile(const QString &file) override;

private Q_SLOTS:
    void changedProgress(int p);

private:
    QPointer<QProgressDialog> progressDialog; // events during a load may delete the main window with it
    QPointer<QProgressBar> progressBar;
};
