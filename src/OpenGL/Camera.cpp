#include "OpenGL/Camera.h"

#include <algorithm>
#include <cmath>

namespace vel {

namespace {
constexpr double HALF_PI = 1.5707963267948966;
} // namespace

void Camera::set_type(int newType, bool fromRotation)
{
    type = newType;
    if (type == 1 && fromRotation) {
        // rotation = Ry(yaw) * Rx(pitch): the third row of the inverse is the view axis.
        Vector3<double> back = Vector3<double>(0, 0, 1) * inv(rotation);
        yaw = std::atan2(back.x, back.z);
        pitch = std::atan2(-back.y, std::sqrt(back.x * back.x + back.z * back.z));
    }
    if (type == 1)
        compute_rotation();
}

void Camera::compute_rotation()
{
    pitch = std::clamp(pitch, -HALF_PI, HALF_PI);
    rotation = Matrix3<double>::Rotation(0.0, -yaw, 0.0) * Matrix3<double>::Rotation(-pitch, 0.0, 0.0);
}

void Camera::rotate(double x, double y, double z)
{
    if (type == 1) {
        yaw += y;
        pitch += x;
        compute_rotation();
        return;
    }
    rotation = rotation * Matrix3<double>::Rotation(x, y, z);
}

Matrix3<double> Camera::rotation_scale() const
{
    return rotation * (1.0 / std::max(distance, 1e-9));
}

void Camera::getFromMat34(Matrix34<double> const& M)
{
    rotation = inv(M.linear());
    position = M.translation();
    if (type == 1)
        set_type(1, true);
}

void Camera::rotateAbout(Vector3<double> const& center, double x, double y, double z)
{
    // (center - position) R must stay what it was: position follows the new rotation.
    Vector3<double> const seen = (center - position) * rotation;
    rotate(x, y, z);
    position = center - seen * inv(rotation);
}

namespace {
// Zooming stops short of zero and of overflow, where the view would collapse.
constexpr double DISTANCE_MIN = 1e-6;
constexpr double DISTANCE_MAX = 1e12;
} // namespace

void Camera::zoom(double factor)
{
    if (!(factor > 0.0) || !std::isfinite(factor))
        return;
    distance = std::clamp(distance * factor, DISTANCE_MIN, DISTANCE_MAX);
}

void Camera::zoomAbout(Vector3<double> const& point, double factor)
{
    double const before = distance;
    zoom(factor);
    double const f = distance / before; // the factor after clamping
    position = point + (position - point) * f;
}

Matrix34<double> Camera::modelView() const
{
    return Matrix34<double>::Translation(-position) * Matrix34<double>(rotation) *
           Matrix34<double>::Translation({0.0, 0.0, -distance});
}

Vector3<double> Camera::eye() const
{
    return Vector3<double>(0.0, 0.0, distance) * inv(rotation) + position;
}

} // namespace vel
