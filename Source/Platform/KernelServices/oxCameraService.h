#pragma once

#include <QList>
#include <QStringList>

#include "oxBaseService.h"
#include "oxdSceneObjects.h"

/// The cameras of the scene in the main process. Each looks at the scene's middle from a place on a
/// sphere around it; what is rendered is what the active one sees.
///
/// Azimuth is the angle around the vertical axis, elevation the one above the floor, both in
/// degrees. Distance is in multiples of the one at which the whole scene is in view.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxCameraService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxCameraService")

public:
    explicit oxCameraService(QObject *parent = nullptr);
    ~oxCameraService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.

    virtual QList<oxdSceneObject> getCameras();
    /// A name for each, in their order; none for what is no camera.
    virtual QStringList getNames(const QList<oxdSceneObject> &cameras);
    /// A list of one.
    virtual QList<oxdSceneObject> getActiveCamera();
    /// Takes the first of the list; changes nothing where that is no camera.
    virtual void setActiveCamera(const QList<oxdSceneObject> &cameras);

    // These concern the active camera.
    virtual double getAzimuth();
    virtual double getElevation();
    virtual double getDistance();
    /// Elevation is kept between -5 and 89, distance between 0.2 and 5; what is no number changes
    /// nothing.
    virtual void setView(double azimuth, double elevation, double distance);
    /// Turns by these angles.
    virtual void orbit(double azimuth, double elevation);
    /// Goes nearer for a factor above 1: the distance is divided by it. What is not above 0 changes
    /// nothing.
    virtual void zoom(double factor);
    /// Back to where the camera was at first, and the turntable turns again.
    virtual void reset();

    /// Whether the scene turns by itself, as it does until a user takes the mouse.
    virtual bool isTurning();
    virtual void setTurning(bool on);

Q_SIGNALS:
    /// Another camera is active, it moved, or the turntable started or stopped. Not emitted for each
    /// frame while the turntable turns.
    void cameraChanged();
};
