#include "oxFileIOServiceRemoteImpl.h"

#include <QCoreApplication>

#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"

oxFileIOServiceRemoteImpl::oxFileIOServiceRemoteImpl() = default;

oxFileIOServiceRemoteImpl::~oxFileIOServiceRemoteImpl() = default;

bool oxFileIOServiceRemoteImpl::loadFile(const QString &file)
{
    auto *factory = oxKernelServiceFactory::the();
    QWidget *parent = factory->getService<oxMainWindowService>()->getWidget();
    const QPointer<QProgressDialog> dialog = new QProgressDialog(
        QStringLiteral("Loading ..."), QString(), 0, 100, parent, Qt::CustomizeWindowHint | Qt::FramelessWindowHint);
    progressDialog = dialog;
    progressBar = new QProgressBar(progressDialog);
    progressBar->setRange(0, 100);

    // Deliberate: one connection more at each load, never undone; the n-th load applies each value n times.
    connect(factory->getService<oxFileIOService>(), SIGNAL(progress(int)), this, SLOT(changedProgress(int)));

    progressDialog->setAutoClose(false);
    progressDialog->setBar(progressBar);
    progressDialog->show();

    const bool result = oxFileIOService::loadFile(file);

    delete dialog; // this load's own: the members are those of the load that began last
    progressBar = nullptr;
    progressDialog = nullptr;
    return result;
}

void oxFileIOServiceRemoteImpl::changedProgress(int p)
{
    if (!progressDialog || !progressBar)
        return;
    if (p == 100 && progressBar->maximum() == 100) {
        progressDialog->setLabelText(QStringLiteral("Uploading ..."));
        progressBar->setRange(0, 0);
    }
    progressDialog->setValue(p);
    progressDialog->update();
    QCoreApplication::processEvents();
}
