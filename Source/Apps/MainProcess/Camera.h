#pragma once

#include <QMatrix4x4>
#include <QVector3D>

/// A camera that looks at the scene's middle from a sphere around it. Angles in degrees; a distance
/// of 1 has the whole scene in view.
class Camera
{
public:
    Camera(double azimuth, double elevation);

    double azimuth() const { return m_azimuth; }
    double elevation() const { return m_elevation; }
    double distance() const { return m_distance; }

    /// What is out of range is brought into it; what is no number changes nothing.
    /// @return whether something changed
    bool setView(double azimuth, double elevation, double distance);
    bool orbit(double azimuth, double elevation);
    bool zoom(double factor);
    /// Back to where it was made.
    bool reset();

    QVector3D eye() const;
    QMatrix4x4 viewMatrix() const;
    QMatrix4x4 projectionMatrix(double aspectRatio) const;

private:
    double m_azimuth;
    double m_elevation;
    double m_distance = 1;
    double m_firstAzimuth;
    double m_firstElevation;
};
