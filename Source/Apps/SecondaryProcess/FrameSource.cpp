#include "FrameSource.h"

#include <QScopedValueRollback>

#include <utility>

#include "MainProcess.h"
#include "oxRenderService.h"

FrameSource::FrameSource(MainProcess *mainProcess, oxRenderService *service, QObject *parent)
    : QObject(parent)
    , m_mainProcess(mainProcess)
    , m_service(service)
{
    connect(mainProcess, &MainProcess::connected, this, &FrameSource::begin);
    connect(mainProcess, &MainProcess::disconnected, this, &FrameSource::end);
    connect(service, &oxRenderService::frameRendered, this, &FrameSource::take);
    if (mainProcess->isConnected())
        begin();
}

bool FrameSource::read(QImage *frame)
{
    if (m_memory.isAttached())
        return m_memory.read(frame);
    if (m_fetched.isNull())
        return false;
    *frame = std::exchange(m_fetched, QImage());
    return true;
}

void FrameSource::begin()
{
    m_memory.attach(m_service->getSharedMemoryName());
    take(); // a scene that rests renders no frame for us
}

void FrameSource::end()
{
    m_memory.detach();
    m_fetched = QImage();
    Q_EMIT ended();
}

void FrameSource::take()
{
    if (m_memory.isAttached())
        Q_EMIT frameAvailable();
    else
        fetch();
}

// One at a time: further frames are announced while the call waits for its answer.
void FrameSource::fetch()
{
    m_isFetchDue = true;
    if (m_isFetching)
        return;
    const QScopedValueRollback<bool> fetching(m_isFetching, true);
    while (m_isFetchDue && m_mainProcess->isConnected()) {
        m_isFetchDue = false;
        m_fetched = QImage::fromData(m_service->getCompressedFrameBuffer());
        if (!m_fetched.isNull())
            Q_EMIT frameAvailable();
    }
}
