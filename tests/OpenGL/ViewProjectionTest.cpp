// Conversions between world, normalized and screen coordinates, both projections and both
// camera types; the near and far planes; and the camera moves that must keep a point under
// the pointer.
#include "OpenGL/Camera.h"
#include "OpenGL/ViewProjection.h"

#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

using V3 = Vector3<double>;
using test::Near;

Camera MakeCamera(int type)
{
    Camera c;
    c.position = {3, -2, 5};
    c.distance = 40;
    c.rotation = Matrix3<double>::Rotation(0.4, -0.9, 0.1);
    c.set_type(type, true);
    return c;
}

struct Projection {
    int cameraType;
    bool orthographic;
};
Projection const SETUPS[] = {{0, false}, {0, true}, {1, false}, {1, true}};

// World to screen and back, the near and far planes at depths 0 and 1, and the width of a
// pixel at a depth.
TEST(ViewProjection, ConversionsAgreeInEveryProjection)
{
    for (Projection s : SETUPS) {
        SCOPED_TRACE(testing::Message() << "camera " << s.cameraType << ", orthographic " << s.orthographic);
        Camera const c = MakeCamera(s.cameraType);
        ViewProjection const v(c, 640, 480, 50, 2, 800, s.orthographic);
        for (V3 p : {c.position, c.position + V3(4, 1, -3), c.eye() + (c.position - c.eye()) * 0.2})
            EXPECT_TRUE(Near(v.point_screen_to_world(v.point_world_to_screen(p)), p, 1e-7));
        // The point looked at is the middle of the screen.
        V3 const middle = v.point_world_to_screen(c.position);
        EXPECT_NEAR(middle.x, 320, 1e-7);
        EXPECT_NEAR(middle.y, 240, 1e-7);
        // Screen y runs down: a point above the target is higher up on screen.
        V3 const above = v.point_world_to_screen(c.position + v.normal_screen_to_world({0, 1, 0}));
        EXPECT_LT(above.y, middle.y);
        EXPECT_TRUE(Near(v.normal_world_to_screen(v.normal_screen_to_world({0.2, 0.3, 0.9})), V3(0.2, 0.3, 0.9)));

        EXPECT_NEAR(v.depthScreenInv(v.Near()), 0.0, 1e-9);
        EXPECT_NEAR(v.depthScreenInv(v.Far()), 1.0, 1e-9);
        for (double d : {2.0, 17.5, 40.0, 300.0, 799.0}) {
            double const z = v.depthScreenInv(d);
            EXPECT_NEAR(v.depthScreen(z), d, 1e-6 * d);
            // A point at depth value z lies that far in front of the eye, and a pixel there is
            // pixelSize wide.
            V3 const p = v.point_screen_to_world({100, 50, z});
            EXPECT_NEAR(-(p * v.modelView).z, d, 1e-6 * d);
            EXPECT_NEAR((v.point_screen_to_world({101, 50, z}) - p).length(), v.pixelSize(d), 1e-9 * d) << d;
        }
    }
}

// Zooming about a point and orbiting about a centre leave that point where it was on screen.
TEST(ViewProjection, CameraMovesKeepTheirPointOnScreen)
{
    for (Projection s : SETUPS) {
        Camera c = MakeCamera(s.cameraType);
        V3 const point = c.position + V3(2, 3, -1);
        auto onScreen = [&] { return ViewProjection(c, 640, 480, 50, 1, 500, s.orthographic).point_world_to_screen(point); };
        V3 const before = onScreen();
        c.zoomAbout(point, 0.5);
        EXPECT_NEAR(c.distance, 20, 1e-12);
        for (int turned = 0; turned < 2; ++turned) {
            V3 const after = onScreen();
            EXPECT_NEAR(after.x, before.x, 1e-7) << turned;
            EXPECT_NEAR(after.y, before.y, 1e-7) << turned;
            c.rotateAbout(point, 0.2, -0.3, 0.0);
        }
    }
}

TEST(ViewProjection, ZoomRefusesFactorsThatWouldCollapseTheView)
{
    Camera c = MakeCamera(0);
    for (double f : {0.0, -1.0, std::nan(""), double(INFINITY)}) {
        c.zoom(f);
        EXPECT_EQ(c.distance, 40) << f;
    }
    c.zoom(1e-30);
    EXPECT_GT(c.distance, 0);
}

} // namespace
} // namespace vel
