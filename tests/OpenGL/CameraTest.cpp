// The camera: where the view transform puts the point looked at and the eye, and the orbit
// angles of type 1, which survive a round trip through the rotation and stop at the poles.
#include "OpenGL/Camera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

TEST(Camera, ViewPutsTheTargetAheadAndTheEyeAtTheOrigin)
{
    Camera c;
    c.position = {1, 2, 3};
    c.distance = 10;
    c.rotation = Matrix3<double>::Rotation(0.3, -0.7, 0.2);
    Vector3<double> target = c.position * c.modelView();
    EXPECT_NEAR(target.x, 0, 1e-9);
    EXPECT_NEAR(target.y, 0, 1e-9);
    EXPECT_NEAR(target.z, -10, 1e-9);
    Vector3<double> eye = c.eye() * c.modelView();
    EXPECT_NEAR(eye.length(), 0, 1e-9);
}

TEST(Camera, OrbitAnglesRoundTripAndThePitchStopsAtThePoles)
{
    double const half = std::acos(-1.0) / 2;
    for (auto [yaw, pitch] : {std::pair{0.4, -0.3}, {-2.0, 1.2}, {3.0, 0.0}}) {
        Camera c;
        c.type = 1;
        c.yaw = yaw;
        c.pitch = pitch;
        c.compute_rotation();
        c.yaw = c.pitch = 0;
        c.set_type(1, true);
        EXPECT_NEAR(c.yaw, yaw, 1e-9);
        EXPECT_NEAR(c.pitch, pitch, 1e-9);
    }
    Camera c;
    c.set_type(1, false);
    c.rotate(2.0, 0.0, 0.0);
    EXPECT_NEAR(c.pitch, half, 1e-12);
}

} // namespace
} // namespace vel
