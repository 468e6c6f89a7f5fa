#include "CameraService.h"

#include <algorithm>

#include "Scene.h"

CameraService::CameraService(Scene *scene, QObject *parent)
    : oxCameraService(parent)
    , m_scene(scene)
{
    connect(m_scene, &Scene::cameraChanged, this, &CameraService::cameraChanged);
}

CameraService::~CameraService() = default;

QList<oxdSceneObject> CameraService::getCameras()
{
    QList<oxdSceneObject> handles;
    for (const Scene::NamedCamera &camera : m_scene->cameras())
        handles.append(oxdSceneObject(camera.id));
    return handles;
}

QStringList CameraService::getNames(const QList<oxdSceneObject> &cameras)
{
    QStringList names;
    for (const oxdSceneObject &handle : cameras) {
        const int index = indexOf(handle);
        names.append(index < 0 ? QString() : m_scene->cameras().at(index).name);
    }
    return names;
}

QList<oxdSceneObject> CameraService::getActiveCamera()
{
    return {oxdSceneObject(m_scene->cameras().at(m_scene->activeCamera()).id)};
}

void CameraService::setActiveCamera(const QList<oxdSceneObject> &cameras)
{
    if (!cameras.isEmpty())
        m_scene->setActiveCamera(indexOf(cameras.first()));
}

double CameraService::getAzimuth()
{
    return m_scene->camera().azimuth();
}

double CameraService::getElevation()
{
    return m_scene->camera().elevation();
}

double CameraService::getDistance()
{
    return m_scene->camera().distance();
}

void CameraService::setView(double azimuth, double elevation, double distance)
{
    m_scene->setView(azimuth, elevation, distance);
}

void CameraService::orbit(double azimuth, double elevation)
{
    m_scene->orbit(azimuth, elevation);
}

void CameraService::zoom(double factor)
{
    m_scene->zoom(factor);
}

void CameraService::reset()
{
    m_scene->resetCamera();
}

bool CameraService::isTurning()
{
    return m_scene->isTurning();
}

void CameraService::setTurning(bool on)
{
    m_scene->setTurning(on);
}

int CameraService::indexOf(const oxdSceneObject &handle) const
{
    const auto &cameras = m_scene->cameras();
    const auto *const found =
        std::find_if(cameras.cbegin(), cameras.cend(),
                     [&handle](const Scene::NamedCamera &camera) { return camera.id == handle.objectId(); });
    return found == cameras.cend() ? -1 : static_cast<int>(found - cameras.cbegin());
}
