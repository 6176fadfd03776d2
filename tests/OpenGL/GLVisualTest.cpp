// The composites of the frame: each style turns a G-buffer of known surfaces into its look.
// The G-buffer is painted directly (FrameTestSupport), so that a fault shows in the composite
// and not in mesh drawing. Every style is compared with its reference image and, so that a
// wrong reference cannot pass, with colours worked out here at a few pixels.
#include "FrameTestSupport.h"
#include "GLResourceTest.h"

#include "OpenGL/GLVisual.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/TextureCube.h"
#include "Scene/RenderFlags.h"
#include "Scene/ToolList.h"

#include <cmath>
#include <functional>

namespace vel::test {
namespace {

constexpr int W = 64;
constexpr int H = 48;
float const BG = 0.28f; // the default background grey

// The pixel of a point in normalised device coordinates.
int Px(float ndc)
{
    return int((ndc + 1) * 0.5f * W);
}
int Py(float ndc)
{
    return int((ndc + 1) * 0.5f * H);
}

// The three surfaces of every case: a lit, glowing sphere; a flat back face further away;
// a curve.
Patch const SPHERE = [] {
    Patch p;
    p.rect = {-0.9f, -0.8f, 0.1f, 0.8f};
    p.depth = 0.2f;
    p.sphere = true;
    p.id = 7;
    p.flags = FLAG_LIT | FLAG_COLOR_GLOWS;
    p.color = {1.0f, 0.5f, 0.25f, 1.0f};
    p.light = {0.2f, 0.2f, 0.2f, 0.0f};
    p.roughMetal = {0.5f, 0.0f};
    return p;
}();
Patch const BACK = [] {
    Patch p;
    p.rect = {0.3f, -0.8f, 0.9f, 0.0f};
    p.depth = 0.5f;
    p.id = 9;
    p.flags = FLAG_LIT | FLAG_FLIPPED;
    p.color = {0.2f, 0.4f, 0.9f, 1.0f};
    return p;
}();
Patch const CURVE = [] {
    Patch p;
    p.rect = {0.3f, 0.2f, 0.9f, 0.8f};
    p.depth = 0.4f;
    p.normal = {0.6f, 0.0f, 0.8f};
    p.id = 11;
    p.flags = VALUE_CURVE << FLAGS_OBJ_TYPE_SHIFT;
    return p;
}();
// Known pixels: the apex of the sphere, the back face, the curve, the background.
int const SX = Px(-0.4f), SY = Py(0.0f);
int const BX = Px(0.6f), BY = Py(-0.4f);
int const CX = Px(0.6f), CY = Py(0.5f);

// The light of the shaded styles, towards (-0.3, 0.5, 1): its z is the diffuse term of a
// surface facing the viewer.
float FacingDiffuse()
{
    return 1.0f / std::sqrt(0.09f + 0.25f + 1.0f);
}
float Shade(float diffuse)
{
    return 0.25f + 0.75f * diffuse;
}

class GLVisualTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        saved = Rendering::instance().style;
        Rendering::instance().openResources(); // the default matcap
        visual.reset(new GLVisual(W, H));
    }
    void TearDown() override
    {
        Rendering::instance().style = saved;
        Rendering::instance().glow = 1.0f;
        visual.reset();
        Rendering::instance().closeResources();
        GLResourceTest::TearDown();
    }
    // Clears and paints the G-buffer for `style`, then composites.
    std::vector<float> Composite(int style, std::vector<Patch> const& patches)
    {
        Rendering::instance().style = style;
        visual->renderClear();
        for (Patch const& p : patches)
            Paint(*visual->Layers, p);
        visual->contentFlags.set(0);
        visual->composit(0.0f);
        return Pixels(visual->current());
    }
    std::unique_ptr<GLVisual> visual;
    int saved = 0;
};

void ExpectNear(Vector4<float> const& got, Vector3<float> const& want, float tolerance, char const* what)
{
    EXPECT_NEAR(got.x, want.x, tolerance) << what;
    EXPECT_NEAR(got.y, want.y, tolerance) << what;
    EXPECT_NEAR(got.z, want.z, tolerance) << what;
}

TEST_F(GLVisualTest, EachStyleHasItsLook)
{
    // A grey environment and a table whose terms are (0.5, 0.1) everywhere, for style 7,
    // seen by an orthographic camera (the view direction is +z everywhere).
    Shared<TextureCube> sky(new TextureCube(4, GL_RGBA16F, GL_RGBA, GL_FLOAT));
    ASSERT_TRUE(sky->enable());
    glActiveTexture(GLenum(GL_TEXTURE0 + sky->unit));
    std::vector<float> face(4 * 4 * 4, 0.6f);
    for (int f = 0; f < 6; ++f)
        glTexSubImage2D(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + f), 0, 0, 0, 4, 4, GL_RGBA, GL_FLOAT, face.data());
    sky->disable();
    Shader::Lens = 0.0f;
    Shared<Texture2D> brdf(new Texture2D(2, 2, GL_RG16F, GL_RG, GL_FLOAT));
    std::vector<float> table{0.5f, 0.1f, 0.5f, 0.1f, 0.5f, 0.1f, 0.5f, 0.1f};
    brdf->copy(table.data(), int(table.size() * sizeof(float)));
    visual->sky = sky.get();
    visual->brdfLUT = brdf.get();

    float const lit = Shade(FacingDiffuse());
    Vector3<float> const grey{BG, BG, BG};
    // PBR at the apex: NV = 1, so F = F0 with metalness clamped to 0.02.
    auto pbr = [&](float albedo) {
        float f0 = 0.04f + (albedo - 0.04f) * 0.02f;
        float kd = (1 - f0) * 0.98f;
        return kd * 0.6f * albedo + 0.6f * (f0 * 0.5f + 0.1f) + 0.2f; // + glow
    };
    struct Case {
        int style;
        char const* name;
        Vector3<float> sphere, back, curve, background;
        float tolerance;
    };
    Case const cases[] = {
        {0, "flat", {0.8f, 0.8f, 0.8f}, {0.55f, 0.4f, 0.35f}, {0.8f, 0.8f, 0.8f}, grey, 0.01f},
        {2, "ids", IdColor(7), IdColor(9), IdColor(11), grey, 0.01f},
        {3, "normals", {0.5f, 0.5f, 1.0f}, {0.5f, 0.5f, 1.0f}, {0.8f, 0.5f, 0.9f}, {0.5f, 0.5f, 1.0f}, 0.04f},
        {4, "shaded", {0.8f * lit, 0.8f * lit, 0.8f * lit}, {0.55f * lit, 0.4f * lit, 0.35f * lit},
         Vector3<float>(1, 1, 1) * (0.8f * Shade((0.8f - 0.18f) * FacingDiffuse())), grey, 0.03f},
        {6, "color", {1.0f * lit + 0.2f, 0.5f * lit + 0.2f, 0.25f * lit + 0.2f}, {0.2f * lit, 0.4f * lit, 0.9f * lit},
         {1, 1, 1}, grey, 0.03f},
        {7, "pbr", {pbr(1.0f), pbr(0.5f), pbr(0.25f)}, {0, 0, 0}, {0, 1, 0}, grey, 0.03f},
    };
    for (Case const& c : cases) {
        std::vector<float> pixels = Composite(c.style, {SPHERE, BACK, CURVE});
        ExpectMatchesReference(pixels, W, H, std::string("style_") + c.name);
        ExpectNear(At(pixels, W, SX, SY), c.sphere, c.tolerance, c.name);
        ExpectNear(At(pixels, W, 0, 0), c.background, 0.01f, c.name);
        if (c.style != 7) // the back face of the PBR style is lit by the environment only
            ExpectNear(At(pixels, W, BX, BY), c.back, c.tolerance, c.name);
        ExpectNear(At(pixels, W, CX, CY), c.curve, c.tolerance, c.name);
    }
}

TEST_F(GLVisualTest, DepthAndMatcapStylesFollowTheSurface)
{
    // Depth: black background; the drawn depths span the greys, from the sphere's apex (the
    // nearest) to the back face (the farthest), the curve between.
    std::vector<float> depth = Composite(1, {SPHERE, BACK, CURVE});
    ExpectMatchesReference(depth, W, H, "style_depth");
    ExpectNear(At(depth, W, 0, 0), {0, 0, 0}, 0.01f, "depth background");
    EXPECT_NEAR(At(depth, W, SX, SY).x, 0.0f, 0.02f);
    EXPECT_NEAR(At(depth, W, BX, BY).x, 1.0f, 0.02f);
    EXPECT_GT(At(depth, W, CX, CY).x, 0.1f);
    EXPECT_LT(At(depth, W, CX, CY).x, 0.9f);
    // Matcap: brightest where the normal meets the capture's highlight, the sphere's rim
    // towards the light brighter than the rim away from it.
    std::vector<float> matcap = Composite(5, {SPHERE, BACK, CURVE});
    ExpectMatchesReference(matcap, W, H, "style_matcap");
    ExpectNear(At(matcap, W, 0, 0), {BG, BG, BG}, 0.01f, "matcap background");
    float const towards = At(matcap, W, Px(-0.4f - 0.35f), Py(0.3f)).x;
    float const away = At(matcap, W, Px(-0.4f + 0.35f), Py(-0.3f)).x;
    EXPECT_GT(towards, away + 0.2f);
}

TEST_F(GLVisualTest, AnEmptyBufferCompositesTheBackground)
{
    // Styles 0 to 6 (7 needs an environment); normals is the colour of a normal facing the viewer.
    for (int style = 0; style < 7; ++style) {
        std::vector<float> pixels = Composite(style, {});
        Vector3<float> want = style == 1 ? Vector3<float>(0, 0, 0)
                              : style == 3 ? Vector3<float>(0.5f, 0.5f, 1.0f)
                                           : Vector3<float>(BG, BG, BG);
        for (auto [x, y] : {std::pair{0, 0}, {W / 2, H / 2}, {W - 1, H - 1}})
            ExpectNear(At(pixels, W, x, y), want, 0.01f, ("style " + std::to_string(style)).c_str());
    }
}

TEST_F(GLVisualTest, TransparentSurfacesShowWhatIsBehind)
{
    Rendering::instance().style = 6;
    Rendering::instance().glow = 0.0f;
    Patch wall;
    wall.rect = {-1, -1, 1, 1};
    wall.depth = 0.8f;
    wall.color = {0.0f, 0.0f, 1.0f, 1.0f}; // unlit blue
    Patch glass;
    glass.rect = {-0.5f, -0.5f, 0.5f, 0.5f};
    glass.depth = 0.1f;
    glass.color = {1.0f, 0.0f, 0.0f, 0.5f};
    glass.light = {0, 0, 0, 0}; // no thickness: no displacement
    auto frame = [&](float alpha, bool behind) {
        visual->renderClear();
        Paint(*visual->Layers, wall);
        TRenderState state;
        state.kind = 1;
        visual->Transparent->Layers->renderClear(state, visual->Layers.get());
        Patch g = glass;
        g.color.w = alpha;
        g.depth = behind ? 0.9f : 0.1f;
        Paint(*visual->Transparent->Layers, g);
        visual->contentFlags.set(0);
        visual->contentFlags.set(1);
        visual->composit(0.0f);
        std::vector<float> opaque = Pixels(visual->current());
        visual->mixRefract();
        return std::pair{opaque, Pixels(visual->current())};
    };
    // Half-transparent red over blue: purple in the middle, blue around it.
    auto [opaque, mixed] = frame(0.5f, false);
    ExpectNear(At(mixed, W, W / 2, H / 2), {0.5f, 0.0f, 0.5f}, 0.02f, "glass");
    ExpectNear(At(mixed, W, 2, 2), {0.0f, 0.0f, 1.0f}, 0.02f, "around the glass");
    ExpectMatchesReference(mixed, W, H, "transparent_glass");
    // Alpha 0, and glass hidden behind the wall: the opaque picture itself.
    for (auto [alpha, behind] : {std::pair{0.0f, false}, {0.5f, true}}) {
        auto [before, after] = frame(alpha, behind);
        for (size_t i = 0; i < before.size(); ++i)
            ASSERT_NEAR(after[i], before[i], 1e-3f) << "alpha " << alpha << " behind " << behind;
    }
    // Without transparent content the picture is left as it is.
    visual->contentFlags.reset(1);
    std::vector<float> before = Pixels(visual->current());
    visual->mixRefract();
    EXPECT_EQ(Pixels(visual->current()), before);
}

} // namespace
} // namespace vel::test
