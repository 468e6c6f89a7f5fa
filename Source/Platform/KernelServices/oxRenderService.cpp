#include "oxRenderService.h"

oxRenderService::oxRenderService(QObject *parent)
    : oxBaseService(parent)
{}

oxRenderService::~oxRenderService() = default;

bool oxRenderService::initialize(bool master)
{
    return call<bool>(staticMetaObject, "initialize(bool)", master);
}

bool oxRenderService::terminate(bool force)
{
    return call<bool>(staticMetaObject, "terminate(bool)", force);
}

QString oxRenderService::getSharedMemoryName()
{
    return call<QString>(staticMetaObject, "getSharedMemoryName()");
}

int oxRenderService::getWidth()
{
    return call<int>(staticMetaObject, "getWidth()");
}

int oxRenderService::getHeight()
{
    return call<int>(staticMetaObject, "getHeight()");
}

void oxRenderService::resize(int width, int height)
{
    call(staticMetaObject, "resize(int,int)", width, height);
}

void oxRenderService::setQuality(int quality)
{
    call(staticMetaObject, "setQuality(int)", quality);
}

int oxRenderService::getQuality() const
{
    return call<int>(staticMetaObject, "getQuality()");
}

void oxRenderService::setBitrate(int bitrate)
{
    call(staticMetaObject, "setBitrate(int)", bitrate);
}

int oxRenderService::getBitrate() const
{
    return call<int>(staticMetaObject, "getBitrate()");
}

void oxRenderService::setCodec(int codec)
{
    call(staticMetaObject, "setCodec(int)", codec);
}

int oxRenderService::getCodec() const
{
    return call<int>(staticMetaObject, "getCodec()");
}

QByteArray oxRenderService::getFrameBuffer()
{
    return call<QByteArray>(staticMetaObject, "getFrameBuffer()");
}

QByteArray oxRenderService::getCompressedFrameBuffer()
{
    return call<QByteArray>(staticMetaObject, "getCompressedFrameBuffer()");
}

void oxRenderService::keyPress(int key, int modifiers, int x, int y)
{
    call(staticMetaObject, "keyPress(int,int,int,int)", key, modifiers, x, y);
}

void oxRenderService::keyRelease(int key, int modifiers, int x, int y)
{
    call(staticMetaObject, "keyRelease(int,int,int,int)", key, modifiers, x, y);
}

void oxRenderService::mouseDoubleClick(int x, int y, int button, int modifiers)
{
    call(staticMetaObject, "mouseDoubleClick(int,int,int,int)", x, y, button, modifiers);
}

void oxRenderService::mousePress(int x, int y, int button, int modifiers)
{
    call(staticMetaObject, "mousePress(int,int,int,int)", x, y, button, modifiers);
}

void oxRenderService::mouseRelease(int x, int y, int button, int modifiers)
{
    call(staticMetaObject, "mouseRelease(int,int,int,int)", x, y, button, modifiers);
}

void oxRenderService::mouseMove(int x, int y, int buttons, int modifiers)
{
    call(staticMetaObject, "mouseMove(int,int,int,int)", x, y, buttons, modifiers);
}

void oxRenderService::mouseWheel(int x, int y, int delta, int modifiers)
{
    call(staticMetaObject, "mouseWheel(int,int,int,int)", x, y, delta, modifiers);
}

void oxRenderService::sendTouchEvent(QByteArray event) // NOLINT(performance-unnecessary-value-param)
{
    call(staticMetaObject, "sendTouchEvent(QByteArray)", event);
}

void oxRenderService::indicateOverlay(bool on)
{
    call(staticMetaObject, "indicateOverlay(bool)", on);
}

void oxRenderService::showOverlay()
{
    call(staticMetaObject, "showOverlay()");
}

void oxRenderService::hideOverlay()
{
    call(staticMetaObject, "hideOverlay()");
}

void oxRenderService::addOverlay(const QString &name)
{
    call(staticMetaObject, "addOverlay(QString)", name);
}

void oxRenderService::subOverlay(const QString &name)
{
    call(staticMetaObject, "subOverlay(QString)", name);
}

void oxRenderService::updateOverlay(const QString &name)
{
    call(staticMetaObject, "updateOverlay(QString)", name);
}
