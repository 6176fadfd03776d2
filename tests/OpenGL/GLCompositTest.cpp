// The composite's own screen effects on a G-buffer of known geometry: a floor meeting a low
// wall, seen from above and in front, so that one picture holds a crease, an open plane and
// the background.
#include "FrameTestSupport.h"
#include "GLResourceTest.h"

#include "OpenGL/Camera.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLVisual.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"

#include <algorithm>
#include <functional>

namespace vel::test {
namespace {

constexpr int W = 64;
constexpr int H = 48;
constexpr float HALF = 1000.0f; // half the floor's side; the wall is a fifth of it high

class GLCompositTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        Rendering& r = Rendering::instance();
        saved = {r.style, r.ssaoStrength, r.ssssStrength, r.fogStrength};
        r.style = 4;
        visual.reset(new GLVisual(W, H));
        Camera camera;
        camera.position = {0, 0, 0};
        camera.distance = 2500;
        camera.rotation = Matrix3<double>::Rotation(0.6, 0.0, 0.0);
        visual->zNear = 100.0f;
        visual->buildMatrices(camera, {});
        visual->renderClear();
        PaintFloor(*visual->Layers, HALF);
        PaintQuad(*visual->Layers, {-HALF, 0, -HALF}, {2 * HALF, 0, 0}, {0, 0.2f * HALF, 0}, {0, 0, 1}, 2);
        visual->contentFlags.set(0);
        visual->composit(0.0f);
    }
    void TearDown() override
    {
        visual.reset();
        Rendering& r = Rendering::instance();
        r.style = saved.style;
        r.ssaoStrength = saved.ssao;
        r.ssssStrength = saved.ssss;
        r.fogStrength = saved.fog;
        GLMachine::checkFeedback = false;
        GLResourceTest::TearDown();
    }
    std::unique_ptr<GLVisual> visual;
    struct {
        int style;
        float ssao, ssss, fog;
    } saved{};
};

TEST_F(GLCompositTest, SSAOAndSSSSChangeTheCreaseAloneAndNothingAtZeroStrength)
{
    struct Case {
        char const* name;
        float Rendering::*strength;
        std::function<void(GLVisual&)> pass;
        Shader* ShaderManager::*apply;
        int creaseSign; // -1 darker, +1 brighter
    };
    Case const cases[] = {
        {"SSAO", &Rendering::ssaoStrength, [](GLVisual& v) { v.SSAO(); }, &ShaderManager::ShaderSSAOApply, -1},
        {"SSSS", &Rendering::ssssStrength, [](GLVisual& v) { v.SSSS(); }, &ShaderManager::ShaderSSSSApply, +1},
    };
    std::vector<float> const before = Pixels(visual->current());
    auto [cx, cy] = PixelOf({0, 0.02 * HALF, -0.98 * HALF}, W, H);
    auto [ox, oy] = PixelOf({0, 0, 0.5 * HALF}, W, H);
    Vector4<float> const background = At(before, W, W / 2, H - 1);
    ASSERT_NEAR(background.x, Rendering::instance().background.x, 1e-5f) << "the top row shows the background";
    for (Case const& test : cases) {
        SCOPED_TRACE(test.name);
        for (float strength : {0.0f, 1.0f}) {
            Rendering::instance().*test.strength = strength;
            visual->composit(0.0f); // the passes work in place: the picture afresh for each
            GLCallCounter counter;
            test.pass(*visual);
            std::vector<unsigned> const& used = counter.programs();
            unsigned const apply = (ShaderManager::instance().*test.apply)->program;
            EXPECT_NE(std::find(used.begin(), used.end(), apply), used.end()) << "the pass runs even at zero strength";
            std::vector<float> after = Pixels(visual->current());
            float const crease = At(after, W, cx, cy).x - At(before, W, cx, cy).x;
            if (strength == 0) {
                EXPECT_EQ(after, before);
                continue;
            }
            EXPECT_GT(crease * float(test.creaseSign), 0.01f) << "the crease";
            EXPECT_NEAR(At(after, W, ox, oy).x, At(before, W, ox, oy).x, 1e-5f) << "the open floor";
            for (int x = 0; x < W; ++x) // the background row
                ASSERT_EQ(At(after, W, x, H - 1).x, At(before, W, x, H - 1).x) << x;
        }
    }
}

// Sampling a texture that the framebuffer being drawn holds is undefined in GL, depth mask or
// not: one driver reads the texel, another a stale or compressed one. No pass may do it.
TEST_F(GLCompositTest, NoPassSamplesATextureOfTheFramebufferItDraws)
{
    Rendering& r = Rendering::instance();
    r.ssaoStrength = r.ssssStrength = r.fogStrength = 1.0f;
    using Pass = std::pair<char const*, std::function<void(GLVisual&)>>;
    Pass const passes[] = {
        {"depth composite", [](GLVisual& v) { v.compositDepth(true); }},
        {"normals from depth", [](GLVisual& v) { v.calculateNormals(Shader::ProjectionMatrixInv); }},
        {"edges", [](GLVisual& v) { v.edgeDetection(); }},
        {"SSAO", [](GLVisual& v) { v.SSAO(); }},
        {"SSSS", [](GLVisual& v) { v.SSSS(); }},
        {"fog", [](GLVisual& v) { v.fog(); }},
        {"SSR", [](GLVisual& v) { v.SSR(); }},
        {"bloom", [](GLVisual& v) { v.bloom(); }},
        {"tonemap", [](GLVisual& v) { v.tonemap(); }},
        {"chromatic aberration", [](GLVisual& v) { v.chromaticAberration(); }},
        {"depth of field", [](GLVisual& v) { v.depthOfField(); }},
        {"contours", [](GLVisual& v) { v.contour(); }},
    };
    GLMachine::checkFeedback = true;
    for (Pass const& pass : passes) {
        GLMachine::feedbackLoops = 0;
        pass.second(*visual);
        EXPECT_EQ(GLMachine::feedbackLoops, 0) << pass.first << ": " << GLMachine::feedbackReport;
    }
}

} // namespace
} // namespace vel::test
