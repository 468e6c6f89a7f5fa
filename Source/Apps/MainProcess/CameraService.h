#pragma once

#include "oxCameraService.h"

class Scene;

/// The cameras of the scene, and its turntable.
class CameraService : public oxCameraService
{
    Q_OBJECT

public:
    /// @param scene not owned
    explicit CameraService(Scene *scene, QObject *parent = nullptr);
    ~CameraService() override;

public Q_SLOTS:
    QList<oxdSceneObject> getCameras() override;
    QStringList getNames(const QList<oxdSceneObject> &cameras) override;
    QList<oxdSceneObject> getActiveCamera() override;
    void setActiveCamera(const QList<oxdSceneObject> &cameras) override;
    double getAzimuth() override;
    double getElevation() override;
    double getDistance() override;
    void setView(double azimuth, double elevation, double distance) override;
    void orbit(double azimuth, double elevation) override;
    void zoom(double factor) override;
    void reset() override;
    bool isTurning() override;
    void setTurning(bool on) override;

private:
    int indexOf(const oxdSceneObject &handle) const;

    Scene *m_scene;
};
