// Object shaders in the viewport's frame: vertex code moves the object's pixels, fragment
// code overrides its material, the switch falls back to the built-in programs, and errors
// name the fragment and line they are in.
#include "FrameTestSupport.h"

#include "OpenGL/GLView.h"
#include "OpenGL/ObjectShader.h"
#include "OpenGL/Rendering.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/Tool.h"

#include <cmath>

namespace vel::test {
namespace {

class ObjectShaderTest : public ViewFrameTest {
protected:
    void SetUp() override
    {
        ViewFrameTest::SetUp();
        box = new Tool(Shared<Element>(Mesh::Box().release()));
        box->addToParent(Scene::instance().root);
        view->viewAll();
    }
    void TearDown() override
    {
        ObjectShader::ActiveAll = true;
        ViewFrameTest::TearDown();
    }
    // The mean column of the pixels that differ from the corner's (the background).
    static float Centre(std::vector<float> const& pixels)
    {
        Vector4<float> bg = At(pixels, W, 0, 0);
        double sum = 0;
        int count = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                Vector4<float> p = At(pixels, W, x, y);
                if (std::abs(p.x - bg.x) + std::abs(p.y - bg.y) + std::abs(p.z - bg.z) > 0.05f) {
                    sum += x;
                    ++count;
                }
            }
        return count ? float(sum / count) : -1.0f;
    }
    Tool* box = nullptr;
};

TEST_F(ObjectShaderTest, VertexCodeMovesThePixelsAndTheSwitchRestoresTheBuiltIn)
{
    std::vector<float> const plain = Frame();
    float const at = Centre(plain);
    ASSERT_GT(at, 0.0f);
    // Half a box to the right on the screen: along the view's x axis in world space.
    box->setCode("VertexMainWorldCode", "wPosition += 0.6 * vec3(iWorldToScreenRotation[0][0],\n"
                                        "    iWorldToScreenRotation[1][0], iWorldToScreenRotation[2][0]);\n");
    box->setCode("VertexIOFunctionsCode", "uniform mat3 iWorldToScreenRotation;\n");
    box->active = true;
    std::vector<float> const moved = Frame();
    ASSERT_TRUE(box->errors.empty()) << box->errors[0].message;
    float const movedAt = Centre(moved);
    EXPECT_GT(movedAt, 0.0f);
    EXPECT_GT(std::abs(movedAt - at), 3.0f);

    ObjectShader::ActiveAll = false;
    EXPECT_NEAR(Centre(Frame()), at, 0.01f);
    ObjectShader::ActiveAll = true;
    box->active = false;
    EXPECT_NEAR(Centre(Frame()), at, 0.01f);
}

TEST_F(ObjectShaderTest, FragmentCodeOverridesTheMaterial)
{
    box->setCode("FragmentMainCode", "oColorAlpha = vec4(0.0, 1.0, 0.0, 1.0);\noNormal.w = intBitsToFloat(1 << 29);\n");
    box->active = true;
    Vector4<float> middle = At(Frame(), W, W / 2, H / 2);
    ASSERT_TRUE(box->errors.empty()) << box->errors[0].message;
    EXPECT_NEAR(middle.x, 0.0f, 0.02f);
    EXPECT_NEAR(middle.y, 1.0f, 0.02f);
    EXPECT_NEAR(middle.z, 0.0f, 0.02f);
}

TEST_F(ObjectShaderTest, ErrorsNameTheFragmentAndItsLineAndTheLastProgramStays)
{
    box->setCode("FragmentMainCode", "oColorAlpha = vec4(0.0, 1.0, 0.0, 1.0);\n");
    box->active = true;
    Frame();
    ASSERT_EQ(box->programs.size(), 1u);
    Shader* good = box->programs.begin()->second.get();
    struct Case {
        char const* title;
        char const* code;
        char const* place;
    };
    for (Case c : {Case{"FragmentMainCode", "oColorAlpha = vec4(1.0);\noColorAlpha = missing;\n", "FragmentMainCode:2"},
                   Case{"VertexMainLocalCode", "\n\nlPosition = nothing;\n", "VertexMainLocalCode:3"},
                   Case{"VertexIOFunctionsCode", "float f() { return 1.0;\n", "VertexIOFunctionsCode:1"}}) {
        box->code.clear();
        box->setCode(c.title, c.code);
        Frame();
        ASSERT_FALSE(box->errors.empty()) << c.title;
        EXPECT_EQ(box->errors[0].message.rfind(c.place, 0), 0u) << box->errors[0].message;
        EXPECT_EQ(box->programs.begin()->second.get(), good) << c.title;
    }
}

} // namespace
} // namespace vel::test
