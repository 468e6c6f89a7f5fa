#include "Camera.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

const QVector3D middle(0, 0.8f, 0);
constexpr float metresAway = 4.6f; // at a distance of 1
constexpr float fieldOfView = 30;

} // namespace

Camera::Camera(double azimuth, double elevation)
    : m_azimuth(azimuth)
    , m_elevation(elevation)
    , m_firstAzimuth(azimuth)
    , m_firstElevation(elevation)
{}

bool Camera::setView(double azimuth, double elevation, double distance)
{
    if (!std::isfinite(azimuth) || !std::isfinite(elevation) || !std::isfinite(distance))
        return false;
    const Camera before = *this;
    m_azimuth = std::remainder(azimuth, 360);
    m_elevation = std::clamp(elevation, -5.0, 89.0);
    m_distance = std::clamp(distance, 0.2, 5.0);
    return m_azimuth != before.m_azimuth || m_elevation != before.m_elevation || m_distance != before.m_distance;
}

bool Camera::orbit(double azimuth, double elevation)
{
    return setView(m_azimuth + azimuth, m_elevation + elevation, m_distance);
}

bool Camera::zoom(double factor)
{
    return factor > 0 && setView(m_azimuth, m_elevation, m_distance / factor);
}

bool Camera::reset()
{
    return setView(m_firstAzimuth, m_firstElevation, 1);
}

QVector3D Camera::eye() const
{
    const double azimuth = qDegreesToRadians(m_azimuth);
    const double elevation = qDegreesToRadians(m_elevation);
    const QVector3D direction(static_cast<float>(std::cos(elevation) * std::sin(azimuth)),
                              static_cast<float>(std::sin(elevation)),
                              static_cast<float>(std::cos(elevation) * std::cos(azimuth)));
    return middle + metresAway * static_cast<float>(m_distance) * direction;
}

QMatrix4x4 Camera::viewMatrix() const
{
    QMatrix4x4 matrix;
    matrix.lookAt(eye(), middle, {0, 1, 0});
    return matrix;
}

QMatrix4x4 Camera::projectionMatrix(double aspectRatio) const
{
    QMatrix4x4 matrix;
    // A picture that is higher than wide has the same width in view as a square one.
    const double narrow = std::min(aspectRatio, 1.0);
    const double angle = 2 * std::atan(std::tan(qDegreesToRadians(fieldOfView) / 2.0) / narrow);
    matrix.perspective(static_cast<float>(qRadiansToDegrees(angle)), static_cast<float>(aspectRatio), 0.1f, 60);
    return matrix;
}
