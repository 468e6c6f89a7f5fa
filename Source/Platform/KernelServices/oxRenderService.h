#pragma once

#include <QByteArray>
#include <QString>

#include "oxBaseService.h"

/// Renders the scene in the main process and takes the input for it.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxRenderService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxRenderService")

public:
    explicit oxRenderService(QObject *parent = nullptr);
    ~oxRenderService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual bool initialize(bool master);
    virtual bool terminate(bool force);
    /// Where the rendered frames are, for oxFrameReader.
    virtual QString getSharedMemoryName();
    virtual int getWidth();
    virtual int getHeight();
    virtual void resize(int width, int height);
    virtual void setQuality(int quality);
    virtual int getQuality() const;
    virtual void setBitrate(int bitrate);
    virtual int getBitrate() const;
    virtual void setCodec(int codec);
    virtual int getCodec() const;
    virtual QByteArray getFrameBuffer();
    virtual QByteArray getCompressedFrameBuffer();
    virtual void keyPress(int key, int modifiers, int x, int y);
    virtual void keyRelease(int key, int modifiers, int x, int y);
    virtual void mouseDoubleClick(int x, int y, int button, int modifiers);
    virtual void mousePress(int x, int y, int button, int modifiers);
    virtual void mouseRelease(int x, int y, int button, int modifiers);
    virtual void mouseMove(int x, int y, int buttons, int modifiers);
    virtual void mouseWheel(int x, int y, int delta, int modifiers);
    virtual void sendTouchEvent(QByteArray event);
    virtual void indicateOverlay(bool on);
    virtual void showOverlay();
    virtual void hideOverlay();
    virtual void addOverlay(const QString &name);
    virtual void subOverlay(const QString &name);
    virtual void updateOverlay(const QString &name);

Q_SIGNALS:
    /// A new frame is in the shared memory. Frames are numbered from 1.
    void frameRendered(int number);
};
