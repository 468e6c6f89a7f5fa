#include "FrameSource.h"

#include <utility>

#include "MainProcess.h"
#include "oxRenderService.h"

FrameSource::FrameSource(MainProcess *mainProcess, oxRenderService *service, QObject *parent)
    : QObject(parent)
    , m_mainProcess(mainProcess)
    , m_service(service)
{
    m_nextFetch.setSingleShot(true);
    connect(&m_nextFetch, &QTimer::timeout, this, &FrameSource::take);
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

// Frames are announced as soon as the process is connected, while the call waits for the name.
void FrameSource::begin()
{
    m_isBegun = false;
    m_memory.attach(m_service->getSharedMemoryName());
    m_isBegun = m_mainProcess->isConnected();
    take(); // a scene that rests renders no frame for us
}

void FrameSource::end()
{
    m_isBegun = false;
    m_memory.detach();
    m_fetched = QImage();
    Q_EMIT ended();
}

void FrameSource::take()
{
    if (!m_isBegun)
        return;
    if (m_memory.isAttached())
        Q_EMIT frameAvailable();
    else
        fetch();
}

// One at a time, and back to the event loop between two: this may run within the wait of another call,
// which could not end before.
void FrameSource::fetch()
{
    m_isFetchDue = true;
    if (m_isFetching)
        return;
    m_isFetchDue = false;
    m_isFetching = true;
    const QByteArray picture = m_service->getCompressedFrameBuffer();
    m_isFetching = false;
    if (!m_isBegun) // the main process went after it had answered
        return;
    m_fetched = QImage::fromData(picture);
    if (!m_fetched.isNull())
        Q_EMIT frameAvailable();
    if (m_isFetchDue)
        m_nextFetch.start(0);
}
