// The viewport's frame as a whole: sizes (window, half size, a minimised window), an empty
// scene, the shadow of the light, and render to file with accumulated samples.
#include "FrameTestSupport.h"
#include "GLResourceTest.h"

#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/TextureCube.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/Tool.h"
#include "Support/ViewportDriver.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

namespace vel::test {
namespace {

constexpr int W = 64;
constexpr int H = 48;

class GLViewTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        Rendering const& r = Rendering::instance();
        before = {r.style, r.HalfsizeViewport, r.light, r.shadow, r.LightSource};
        Scene::instance().init(false);
        view.reset(new GLView(W, H));
    }
    void TearDown() override
    {
        view.reset();
        Rendering& r = Rendering::instance();
        r.style = before.style;
        r.HalfsizeViewport = before.HalfsizeViewport;
        r.light = before.light;
        r.shadow = before.shadow;
        r.LightSource = before.LightSource;
        SetEffects(false);
        GLResourceTest::TearDown();
    }
    // One frame; the picture handed to the widget.
    std::vector<float> Frame()
    {
        EXPECT_EQ(MainLoopFrame(*view), view->image.get());
        return Pixels(view->current());
    }
    std::unique_ptr<GLView> view;
    // The settings the tests change.
    struct Saved {
        int style;
        bool HalfsizeViewport;
        bool light;
        float shadow;
        Vector3<float> LightSource;
    } before{};
    // Every screen effect on, or off as by default; and wireframe.
    static void SetEffects(bool on, bool wireframe = false)
    {
        Rendering& r = Rendering::instance();
        r.EdgeDetect = r.ScreenSpaceAmbientOcclusion = r.ssss = r.fog = r.ScreenSpaceReflection = on;
        r.LensChromaticAberration = on;
        r.bloom = on ? 0.5f : 0.0f;
        r.tonemap = on ? 3 : 0;
        r.dofSize = on ? 2.0f : 0.0f;
        r.wireframe = wireframe;
    }
};

// Every effect on: they run in the fixed order, and after the first frame no frame makes a
// texture or framebuffer (or storage for one). Wireframe skips SSAO, SSSS, SSR and fog alone.
TEST_F(GLViewTest, EffectsRunInTheirOrderSkipWithWireframeAndMakeNothingAfterTheFirstFrame)
{
    Rendering& r = Rendering::instance();
    r.openResources();
    Tool* box = new Tool(Shared<Element>(Mesh::Box().release()));
    box->addToParent(Scene::instance().root);
    view->viewAll();
    ShaderManager& sm = ShaderManager::instance();
    for (int style : {4, 7}) {
        r.style = style;
        for (bool wireframe : {false, true}) {
            SCOPED_TRACE(std::to_string(style) + (wireframe ? " wireframe" : " solid"));
            SetEffects(true, wireframe);
            Frame(); // compiles the programs and makes the targets
            GLCallCounter counter;
            Frame();
            EXPECT_EQ(counter.created(), 0);
            std::vector<unsigned> used = counter.programs();
            struct Step {
                Shader* shader;
                bool solidOnly;
            };
            Step const order[] = {{sm.ShaderEdgeDetection, false}, {sm.ShaderSSAOApply, true},
                                  {sm.ShaderSSSSApply, true},     {sm.ShaderFogRangeOver, true},
                                  {sm.ShaderSSR, true},           {sm.ShaderFilterThresholdMul, false},
                                  {sm.ShaderTonemapUncharted2, false}, {sm.ShaderFilterChroma, false},
                                  {sm.ShaderFilterDepthOfFieldOver, false}};
            auto at = used.begin();
            for (Step const& step : order) {
                auto found = std::find(at, used.end(), step.shader->program);
                bool const runs = !(wireframe && step.solidOnly);
                EXPECT_EQ(found != used.end(), runs) << step.shader->program;
                if (found != used.end())
                    at = found;
            }
        }
    }
    // The contour pass runs only when a tool asks for contours (material flag 0x2000).
    SetEffects(false);
    for (bool contours : {true, false}) { // on first: a program not yet made has the id 0
        box->material.flags = contours ? box->material.flags | 0x2000 : box->material.flags & ~0x2000;
        GLCallCounter counter;
        Frame();
        std::vector<unsigned> const& used = counter.programs();
        EXPECT_EQ(std::count(used.begin(), used.end(), sm.ShaderContour->program), contours ? 1 : 0);
    }
    Scene::instance().init(false);
    r.closeResources();
}

TEST_F(GLViewTest, AnEmptySceneClearsAndCompositesTheBackground)
{
    Rendering& r = Rendering::instance();
    float const bg = r.background.x;
    // Normals: the colour of a normal facing the viewer.
    for (auto [style, want] : {std::pair{0, Vector3<float>(bg, bg, bg)}, {3, Vector3<float>(0.5f, 0.5f, 1.0f)},
                               {4, Vector3<float>(bg, bg, bg)}, {6, Vector3<float>(bg, bg, bg)}}) {
        r.style = style;
        std::vector<float> pixels = Frame();
        for (auto [x, y] : {std::pair{0, 0}, {W / 2, H / 2}, {W - 1, H - 1}}) {
            Vector4<float> got = At(pixels, W, x, y);
            EXPECT_NEAR(got.x, want.x, 0.01f) << "style " << style;
            EXPECT_NEAR(got.z, want.z, 0.01f) << "style " << style;
        }
    }
}

TEST_F(GLViewTest, AMeshSceneIsDrawnInEveryStyle)
{
    Rendering& r = Rendering::instance();
    r.openResources();
    (new Tool(Shared<Element>(Mesh::Box().release())))->addToParent(Scene::instance().root);
    view->viewAll();
    for (int style = 0; style < 8; ++style) {
        r.style = style;
        std::vector<float> pixels = Frame();
        Vector4<float> middle = At(pixels, W, W / 2, H / 2), corner = At(pixels, W, 0, 0);
        float difference = std::abs(middle.x - corner.x) + std::abs(middle.y - corner.y) + std::abs(middle.z - corner.z);
        EXPECT_GT(difference, 0.05f) << "style " << style << ": the box is not in the middle";
    }
    // The ids under the middle name the box's entry.
    ASSERT_TRUE(view->Layers->enableRead());
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    int ids[4] = {};
    glReadPixels(W / 2, H / 2, 1, 1, GL_RGBA_INTEGER, GL_INT, ids);
    EXPECT_EQ(ids[0] & 0xffff, 1);
    Scene::instance().init(false);
    r.closeResources();
}

TEST_F(GLViewTest, SizesFollowTheWindowHalfSizeAndAMinimisedWindow)
{
    Rendering& r = Rendering::instance();
    r.style = 4;
    struct Case {
        int w, h;
        bool half;
        int targetW, targetH;
    };
    for (Case c : {Case{100, 60, false, 100, 60}, {100, 60, true, 50, 30}, {0, 0, false, 1, 1}, {1, 0, true, 1, 1},
                   {W, H, false, W, H}}) {
        r.HalfsizeViewport = c.half;
        view->resize(c.w, c.h);
        Frame();
        std::string what = std::to_string(c.w) + "x" + std::to_string(c.h) + (c.half ? " half" : "");
        for (FBO* f : std::initializer_list<FBO*>{view.get(), view->Layers.get(), view->Transparent.get(),
                                                  view->Transparent->Layers.get(), view->HintsLayer.get(),
                                                  view->Accumulation.get(), view->image.get()}) {
            EXPECT_EQ(f->width, c.targetW) << what;
            EXPECT_EQ(f->height, c.targetH) << what;
        }
        // The ids go at the same size as the rest: picking scales by the same factor.
        EXPECT_EQ(view->Layers->ObjectItemsElement->width(), c.targetW) << what;
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << what;
    }
    // Switching half size alone, without a resize, is taken at the next frame.
    r.HalfsizeViewport = true;
    Frame();
    EXPECT_EQ(view->width, W / 2);
}

// The depth cube's face matrices and the shader's depth of a face agree: a point at
// distance z along a face's axis lands in the middle of that face at the depth that
// "ShadowComposit" computes for z.
TEST_F(GLViewTest, ShadowFacesStoreTheDepthTheCompositeExpects)
{
    Vector3<double> const light(10, 20, 30);
    Vector3<double> const axes[6] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    double const n = view->shadowNear, f = view->shadowFar;
    for (int face = 0; face < 6; ++face)
        for (double z : {5.0, 250.0, 4000.0}) {
            Vector3<double> p = light + axes[face] * z;
            Vector4<double> clip = Vector4<double>(p.x, p.y, p.z, 1.0) * view->shadowFaceMatrix(face, light);
            EXPECT_NEAR(clip.x / clip.w, 0.0, 1e-9) << face;
            EXPECT_NEAR(clip.y / clip.w, 0.0, 1e-9) << face;
            double depth = (clip.z / clip.w) * 0.5 + 0.5;
            double expected = ((f + n) / (f - n) - 2 * f * n / ((f - n) * z)) * 0.5 + 0.5;
            EXPECT_NEAR(depth, expected, 1e-9) << face << " at " << z;
        }
    // The face's picture is upright as GL samples cube maps: on -y, +x world is +x texel and
    // -z world is +y texel.
    Matrix4<double> down = view->shadowFaceMatrix(3, light);
    Vector4<double> right = Vector4<double>(light.x + 1, light.y - 10, light.z, 1) * down;
    Vector4<double> up = Vector4<double>(light.x, light.y - 10, light.z - 1, 1) * down;
    EXPECT_GT(right.x / right.w, 0.0);
    EXPECT_GT(up.y / up.w, 0.0);
}

TEST_F(GLViewTest, AShadowFallsUnderTheOccluder)
{
    Rendering& r = Rendering::instance();
    r.style = 4;
    r.light = true;
    r.shadow = 0.8f;
    r.LightSource = {0.0f, 500.0f, 0.0f};
    // A floor at y = 0, looked at from above and in front.
    view->camera.position = {0, 0, 0};
    view->camera.distance = 1500;
    view->camera.rotation = Matrix3<double>::Rotation(0.9, 0.0, 0.0);
    view->buildMatricesInViewport(false);
    view->renderClear();
    PaintFloor(*view->Layers, 1000.0f);
    view->composit(0.0f);
    // The light's cube sees an occluder 250 below the light over the half x < 0 of its
    // downward face, nothing elsewhere.
    view->renderShadow({}, false);
    unsigned fb = 0;
    glGenFramebuffers(1, &fb);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, fb);
    double const n = view->shadowNear, f = view->shadowFar, z = 250.0;
    float const occluder = float(((f + n) / (f - n) - 2 * f * n / ((f - n) * z)) * 0.5 + 0.5);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_CUBE_MAP_NEGATIVE_Y,
                           view->ShadowMap->textureId, 0);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, GLView::SHADOW_SIZE / 2, GLView::SHADOW_SIZE);
    glDepthMask(GL_TRUE);
    glClearDepth(occluder);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClearDepth(1.0);
    glDisable(GL_SCISSOR_TEST);
    glDeleteFramebuffers(1, &fb);
    FBO::DRAW_ID = 0;
    std::vector<float> lit = Pixels(view->current());
    view->shadow(Matrix4<float>(view->screenToWorld()), Matrix3<float>(Shader::NormalMatrixInv));
    std::vector<float> shaded = Pixels(view->current());
    ExpectMatchesReference(shaded, W, H, "shadow");
    // Pixels of floor points under the occluder darken by the strength; others stay.
    for (auto [x, under] : {std::pair{-150.0, true}, {150.0, false}}) {
        auto [px, py] = PixelOf({x, 0, 0}, W, H);
        float before = At(lit, W, px, py).x, after = At(shaded, W, px, py).x;
        EXPECT_GT(before, 0.3f);
        EXPECT_NEAR(after, under ? before * 0.2f : before, 0.02f) << "x " << x;
    }
}

TEST_F(GLViewTest, HintsDrawTheGridAxesAndBrushOverThePicture)
{
    Rendering::instance().style = 4;
    // What the widget is handed: RGBA8, with the hints merged in.
    auto shown = [&] {
        Frame();
        EXPECT_TRUE(view->image->enableRead());
        return ReadColor(GL_COLOR_ATTACHMENT0, W, H);
    };
    auto count = [](std::vector<unsigned char> const& p, auto&& test) {
        int n = 0;
        for (size_t i = 0; i < p.size(); i += 4)
            n += test(p[i], p[i + 1], p[i + 2]) ? 1 : 0;
        return n;
    };
    std::vector<unsigned char> plain = shown();
    EXPECT_EQ(count(plain, [&](int r, int g, int b) { return r != plain[0] || g != plain[1] || b != plain[2]; }), 0);
    view->showGrid = view->showAxes = true;
    std::vector<unsigned char> grid = shown();
    EXPECT_GT(count(grid, [](int r, int g, int b) { return r > g + 60 && r > b + 60; }), 3) << "no x axis";
    EXPECT_GT(count(grid, [](int r, int g, int b) { return b > r + 60 && b > g + 60; }), 3) << "no z axis";
    view->showGrid = view->showAxes = false;
    // The brush: a white ring about the origin, facing the camera, empty inside.
    view->brushVisible = true;
    view->brushCenter = {0, 0, 0};
    view->brushNormal = view->camera.eye() - view->camera.position;
    view->brushRadius = view->camera.distance * 0.15;
    std::vector<unsigned char> brush = shown();
    EXPECT_GT(count(brush, [](int r, int g, int b) { return r > 250 && g > 250 && b > 250; }), 8);
    unsigned char const* middle = &brush[size_t((H / 2 * W + W / 2) * 4)];
    EXPECT_EQ(middle[0], plain[0]) << "the circle is filled";
}

TEST_F(GLViewTest, RenderToFileWritesTheMeanOfNSamplesAfterNFrames)
{
    QTemporaryDir dir;
    Rendering::instance().style = 4;
    for (int samples : {1, 3}) {
        std::string path = dir.filePath(QString("frame%1.jpg").arg(samples)).toStdString();
        view->saveImage(path, samples);
        for (int i = 1; i < samples; ++i) {
            Frame();
            EXPECT_FALSE(QFile::exists(QString::fromStdString(path))) << "early, frame " << i;
        }
        Frame();
        ASSERT_TRUE(QFile::exists(QString::fromStdString(path))) << samples;
        EXPECT_EQ(view->savedSamples, samples);
        EXPECT_FALSE(view->saveRequested);
        QImage image(QString::fromStdString(path));
        ASSERT_EQ(image.width(), W);
        // The empty scene's background survives averaging (JPEG within a few levels).
        QColor c = image.pixelColor(W / 2, H / 2);
        EXPECT_NEAR(c.red(), int(0.28f * 255), 4);
    }
    // Without a save or samples nothing accumulates.
    Frame();
    EXPECT_EQ(view->accumulated, 0);
}

} // namespace
} // namespace vel::test
