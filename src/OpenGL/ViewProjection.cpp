#include "OpenGL/ViewProjection.h"

#include "Math/Vector4.h"
#include "OpenGL/Camera.h"

#include <algorithm>
#include <cmath>

namespace vel {

ViewProjection::ViewProjection(Camera const& camera, int w, int h, double fov, double n, double f, bool ortho)
    : width(std::max(1, w))
    , height(std::max(1, h))
    , fieldOfView(fov)
    , zNear(n)
    , zFar(f)
    , orthographic(ortho)
    , modelView(camera.modelView())
{
    projection = Projection(camera.distance, double(width) / double(height), height, fov, n, f, ortho, viewSize, lens);
}

Matrix4<double> ViewProjection::Projection(double distance, double aspect, int height, double fov, double n, double f,
                                           bool ortho, double& viewSize, double& lens)
{
    double const tangent = std::tan(fov * M_PI / 360.0);
    Matrix4<double> P;
    if (ortho) {
        double const half = distance * tangent;
        viewSize = half;
        lens = 0.0;
        P.m[0] = 1.0 / (half * aspect);
        P.m[5] = 1.0 / half;
        P.m[10] = -2.0 / (f - n);
        P.m[14] = -(f + n) / (f - n);
        return P;
    }
    double const cot = 1.0 / tangent;
    viewSize = distance / cot;
    lens = cot * height * 0.5;
    P.m[0] = cot / aspect;
    P.m[5] = cot;
    P.m[10] = (f + n) / (n - f);
    P.m[11] = -1.0;
    P.m[14] = 2.0 * f * n / (n - f);
    P.m[15] = 0.0;
    return P;
}

namespace {
Vector3<double> Project(Vector3<double> const& p, Matrix4<double> const& M)
{
    Vector4<double> c = Vector4<double>(p, 1.0) * M;
    double const w = c.w != 0.0 ? c.w : 1e-300;
    return {c.x / w, c.y / w, c.z / w};
}
} // namespace

Vector3<double> ViewProjection::point_world_to_normalized(Vector3<double> const& p) const
{
    return Project(p * modelView, projection);
}

Vector3<double> ViewProjection::point_normalized_to_world(Vector3<double> const& n) const
{
    return Project(n, inv(projection)) * inv(modelView);
}

Vector3<double> ViewProjection::point_normalized_to_screen(Vector3<double> const& n) const
{
    return {(n.x + 1.0) * 0.5 * width, (1.0 - n.y) * 0.5 * height, (n.z + 1.0) * 0.5};
}

Vector3<double> ViewProjection::point_screen_to_normalized(Vector3<double> const& s) const
{
    return {2.0 * s.x / width - 1.0, 1.0 - 2.0 * s.y / height, 2.0 * s.z - 1.0};
}

Vector3<double> ViewProjection::point_world_to_screen(Vector3<double> const& p) const
{
    return point_normalized_to_screen(point_world_to_normalized(p));
}

Vector3<double> ViewProjection::point_screen_to_world(Vector3<double> const& s) const
{
    return point_normalized_to_world(point_screen_to_normalized(s));
}

Vector3<double> ViewProjection::normal_world_to_screen(Vector3<double> const& n) const
{
    return modelView.transformDirection(n);
}

Vector3<double> ViewProjection::normal_screen_to_world(Vector3<double> const& n) const
{
    return inv(modelView).transformDirection(n);
}

double ViewProjection::depthScreen(double z) const
{
    return -Project({0.0, 0.0, 2.0 * z - 1.0}, inv(projection)).z;
}

double ViewProjection::depthScreenInv(double distance) const
{
    return (Project({0.0, 0.0, -distance}, projection).z + 1.0) * 0.5;
}

double ViewProjection::pixelSize(double distance) const
{
    if (orthographic || lens <= 0.0)
        return 2.0 * viewSize / height;
    return distance / lens;
}

} // namespace vel
