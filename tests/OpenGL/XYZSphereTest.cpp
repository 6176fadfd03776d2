// The navigation sphere: the cap of the axis that the camera's rotation turns toward the
// viewer fills the middle of the picture; the far side is never drawn.
#include "GLResourceTest.h"

#include "OpenGL/FBOTexture.h"
#include "OpenGL/XYZSphere.h"

#include <cmath>

namespace vel::test {
namespace {

class XYZSphereTest : public GLResourceTest {
protected:
    void TearDown() override
    {
        XYZSphere::instance().clear();
        GLResourceTest::TearDown();
    }
};

TEST_F(XYZSphereTest, RotationBringsEachAxisCapToTheMiddle)
{
    int const n = 64;
    FBOTexture target(Shared<Texture2D>(new Texture2D(n, n, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE)));
    double const h = std::acos(-1.0) / 2;
    struct Case {
        Vector3<double> angles; // Matrix3::Rotation about x, y, z
        int channel;            // the brightest channel in the middle: 0 red x, 1 green y, 2 blue z
        bool positive;          // the axis' positive end (brighter) faces the viewer
    };
    for (Case c : {Case{{0, 0, 0}, 2, true}, {{0, h, 0}, 0, false}, {{0, -h, 0}, 0, true}, {{h, 0, 0}, 1, true},
                   {{0, 2 * h, 0}, 2, false}}) {
        ASSERT_TRUE(target.enableDraw());
        ASSERT_TRUE(XYZSphere::instance().enableShader());
        glViewport(0, 0, n, n);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        Shader::ProjectionModelViewMatrix =
            XYZSphere::Transform(Matrix3<double>::Rotation(c.angles.x, c.angles.y, c.angles.z));
        XYZSphere::instance().render();
        ASSERT_TRUE(target.enableRead());
        std::vector<unsigned char> pixels = ReadColor(GL_COLOR_ATTACHMENT0, n, n);
        unsigned char const* middle = &pixels[(n / 2 * n + n / 2) * 4];
        unsigned char const* corner = &pixels[0];
        EXPECT_EQ(corner[0] + corner[1] + corner[2], 0) << "drawn outside the sphere";
        for (int k = 0; k < 3; ++k) {
            if (k == c.channel)
                continue;
            EXPECT_GT(middle[c.channel], middle[k] + 40) << "case axis " << c.channel;
        }
        EXPECT_EQ(middle[c.channel] > 150, c.positive) << int(middle[c.channel]) << " axis " << c.channel;
    }
}

} // namespace
} // namespace vel::test
