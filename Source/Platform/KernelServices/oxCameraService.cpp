#include "oxCameraService.h"

oxCameraService::oxCameraService(QObject *parent)
    : oxBaseService(parent)
{}

oxCameraService::~oxCameraService() = default;

QList<oxdSceneObject> oxCameraService::getCameras()
{
    return call<QList<oxdSceneObject>>(staticMetaObject, "getCameras()");
}

QStringList oxCameraService::getNames(const QList<oxdSceneObject> &cameras)
{
    return call<QStringList>(staticMetaObject, "getNames(QList<oxdSceneObject>)", cameras);
}

QList<oxdSceneObject> oxCameraService::getActiveCamera()
{
    return call<QList<oxdSceneObject>>(staticMetaObject, "getActiveCamera()");
}

void oxCameraService::setActiveCamera(const QList<oxdSceneObject> &cameras)
{
    call(staticMetaObject, "setActiveCamera(QList<oxdSceneObject>)", cameras);
}

double oxCameraService::getAzimuth()
{
    return call<double>(staticMetaObject, "getAzimuth()");
}

double oxCameraService::getElevation()
{
    return call<double>(staticMetaObject, "getElevation()");
}

double oxCameraService::getDistance()
{
    return call<double>(staticMetaObject, "getDistance()");
}

void oxCameraService::setView(double azimuth, double elevation, double distance)
{
    call(staticMetaObject, "setView(double,double,double)", azimuth, elevation, distance);
}

void oxCameraService::orbit(double azimuth, double elevation)
{
    call(staticMetaObject, "orbit(double,double)", azimuth, elevation);
}

void oxCameraService::zoom(double factor)
{
    call(staticMetaObject, "zoom(double)", factor);
}

void oxCameraService::reset()
{
    call(staticMetaObject, "reset()");
}

bool oxCameraService::isTurning()
{
    return call<bool>(staticMetaObject, "isTurning()");
}

void oxCameraService::setTurning(bool on)
{
    call(staticMetaObject, "setTurning(bool)", on);
}
