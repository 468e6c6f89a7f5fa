#pragma once

#include <QImage>
#include <QObject>
#include <QTimer>

#include "oxFrameReader.h"

class MainProcess;
class oxRenderService;

/// The frames that the main process renders: from the memory that both share, or over the
/// connection where they share none, as on two machines.
class FrameSource : public QObject
{
    Q_OBJECT

public:
    /// Both have to outlive this.
    FrameSource(MainProcess *mainProcess, oxRenderService *service, QObject *parent = nullptr);

    /// Takes the newest frame, unless it is the one that was taken last.
    ///
    /// @param frame give the same one each time and keep no copies: the pixels are then copied once
    /// @return whether there was a new one
    bool read(QImage *frame);

Q_SIGNALS:
    /// read() has something new.
    void frameAvailable();
    /// No frame comes until the next frameAvailable().
    void ended();

private:
    void begin();
    void end();
    void take();
    void fetch();

    MainProcess *m_mainProcess;
    oxRenderService *m_service;
    oxFrameReader m_memory;
    QImage m_fetched;
    bool m_isBegun = false; // where the frames come from is known
    bool m_isFetching = false;
    bool m_isFetchDue = false;
    QTimer m_nextFetch;
};
