// The filter family on small float textures with known values, read back and compared with
// what the CPU computes from the same inputs.
#include "GLResourceTest.h"

#include "OpenGL/EdgeTiles.h"
#include "OpenGL/FBO.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "Scene/RenderFlags.h"

#include <algorithm>
#include <cstring>
#include <cmath>
#include <functional>
#include <memory>
#include <string>

namespace vel::test {
namespace {

int const W = 6, H = 4; // not square and not a power of two: catches swapped axes and odd halving

using Pixels = std::vector<float>; // RGBA, bottom row first

// Deterministic values in [lo, hi).
Pixels RandomPixels(unsigned seed, float lo, float hi, int w = W, int h = H)
{
    Pixels p(size_t(w) * size_t(h) * 4);
    for (float& v : p) {
        seed = seed * 1664525u + 1013904223u;
        v = lo + (hi - lo) * float(seed >> 8) / float(1u << 24);
    }
    return p;
}

Pixels Constant(float r, float g, float b, float a, int w = W, int h = H)
{
    Pixels p;
    for (int i = 0; i < w * h; ++i)
        p.insert(p.end(), {r, g, b, a});
    return p;
}

Shared<Texture2D> Upload(Pixels const& p, int w = W, int h = H, int filter = GL_NEAREST)
{
    Shared<Texture2D> t(new Texture2D(w, h, GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, filter));
    t->copy(p.data(), int(p.size() * sizeof(float)));
    return t;
}

class GLFiltersTest : public GLResourceTest {
protected:
    // A framebuffer of two float targets of W x H, bound for drawing, viewport set.
    void SetUp() override
    {
        GLResourceTest::SetUp();
        fbo.reset(new FBO(dsNone, W, H));
        target = fbo->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
        second = fbo->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
        ASSERT_TRUE(fbo->enable());
        glViewport(0, 0, W, H);
    }
    void TearDown() override
    {
        FBO::disable(fbBoth);
        fbo.reset();
        GLResourceTest::TearDown();
    }
    Pixels read(Texture2D* t) { return ReadColorFloat(t->attachment, W, H); }

    std::unique_ptr<FBO> fbo;
    Texture2D* target = nullptr;
    Texture2D* second = nullptr;
};

using Run = std::function<void(std::vector<Texture2D*> const& in, Texture2D* target)>;
// The expected value of channel c of pixel i.
using Expect = std::function<float(std::vector<Pixels> const& in, int i, int c)>;

struct Case {
    char const* name;
    std::vector<Pixels> inputs;
    Run run;
    Expect expect;
};

float Sum(std::vector<Pixels> const& in, int i, int c)
{
    float s = 0;
    for (Pixels const& p : in)
        s += p[size_t(i) * 4 + size_t(c)];
    return s;
}

TEST_F(GLFiltersTest, PointwiseFiltersMatchTheCpu)
{
    auto at = [](Pixels const& p, int i, int c) { return p[size_t(i) * 4 + size_t(c)]; };
    std::vector<Pixels> five, seven;
    for (unsigned k = 0; k < 7; ++k)
        (k < 5 ? five : seven).push_back(RandomPixels(k + 1, -1, 1));
    seven.insert(seven.begin(), five.begin(), five.end());
    Pixels a = RandomPixels(11, -2, 2), b = RandomPixels(12, -2, 2), depthA = RandomPixels(13, 0, 1),
           depthB = RandomPixels(14, 0, 1), depthWithBackground = RandomPixels(15, 0, 1.25f);
    Vector4<float> const v(0.5f, -2.0f, 3.0f, 0.25f);
    // Depth of field: level i is the constant i, then the depth.
    std::vector<Pixels> levels;
    for (int i = 0; i < 5; ++i)
        levels.push_back(Constant(float(i), 0, 0, 1));
    levels.push_back(depthWithBackground);
    auto dof = [](float size) {
        return [size](auto const& in, Texture2D* t) {
            Shader::ProjectionMatrixInv = Matrix4<double>();
            GLDepthOfField({in[0], in[1], in[2], in[3], in[4]}, in[5], t, 0.5f, size);
        };
    };
    // The level of a pixel is size * |distance - focus| / focus, at most 4; the background's 4.
    auto level = [&](float size) {
        return [&, size](auto const& in, int i, int c) {
            float d = at(in[5], i, 0);
            float l = d >= 1 ? (size > 0 ? 4.0f : 0.0f) : std::min(size * std::abs(std::abs(2 * d - 1) - 0.5f) / 0.5f, 4.0f);
            return c == 0 ? l : c == 3 ? 1.0f : 0.0f;
        };
    };
    auto component = [](Vector4<float> const& u, int c) { return c == 0 ? u.x : c == 1 ? u.y : c == 2 ? u.z : u.w; };

    auto fogged = [&](auto const& in, int i, int c) {
        float d = at(in[1], i, 0);
        float f = d >= 1 ? 0.0f : std::clamp((std::abs(2 * d - 1) - 0.1f) / 0.8f, 0.0f, 1.0f) * v.w;
        return c == 3 ? at(in[0], i, 3) : at(in[0], i, c) + (component(v, c) - at(in[0], i, c)) * f;
    };
    Case const cases[] = {
        {"sum of five", five, [](auto const& in, Texture2D* t) { GLAdd(in, t, false); }, Sum},
        {"sum of seven, in two rounds", seven, [](auto const& in, Texture2D* t) { GLAdd(in, t, false); }, Sum},
        {"sum of one", {a}, [](auto const& in, Texture2D* t) { GLAdd(in, t, false); }, Sum},
        {"sum added to the target", {a, b},
         [](auto const& in, Texture2D* t) {
             GLCopy(in[0], t);
             GLAdd({in[1]}, t, true);
         },
         Sum},
        {"product", {a, b}, [](auto const& in, Texture2D* t) { GLMul(in[0], in[1], t); },
         [&](auto const& in, int i, int c) { return at(in[0], i, c) * at(in[1], i, c); }},
        {"scale", {a}, [&](auto const& in, Texture2D* t) { GLMul(in[0], v, t); },
         [&](auto const& in, int i, int c) { return at(in[0], i, c) * component(v, c); }},
        {"offset", {a}, [&](auto const& in, Texture2D* t) { GLAdd(in[0], v, t); },
         [&](auto const& in, int i, int c) { return at(in[0], i, c) + component(v, c); }},
        {"a + factor b", {a, b}, [](auto const& in, Texture2D* t) { GLAdd(in[0], in[1], -0.5f, t); },
         [&](auto const& in, int i, int c) { return at(in[0], i, c) - 0.5f * at(in[1], i, c); }},
        {"mix", {a, b}, [](auto const& in, Texture2D* t) { GLMix(in[0], in[1], 0.25f, t); },
         [&](auto const& in, int i, int c) { return 0.75f * at(in[0], i, c) + 0.25f * at(in[1], i, c); }},
        {"clamp", {a}, [](auto const& in, Texture2D* t) { GLClamp(in[0], t); },
         [&](auto const& in, int i, int c) { return std::clamp(at(in[0], i, c), 0.0f, 1.0f); }},
        {"mix by depth picks the nearer", {a, depthA, b, depthB},
         [](auto const& in, Texture2D* t) { GLMixDepth(in[0], in[1], in[2], in[3], 0.0f, t); },
         [&](auto const& in, int i, int c) {
             return at(in[1], i, 0) <= at(in[3], i, 0) ? at(in[0], i, c) : at(in[2], i, c);
         }},
        {"threshold", {a}, [](auto const& in, Texture2D* t) { GLThresholdMul(in[0], 0.5f, 3.0f, t); },
         [&](auto const& in, int i, int c) {
             float brightest = std::max({at(in[0], i, 0), at(in[0], i, 1), at(in[0], i, 2)});
             return brightest > 0.5f ? 3.0f * at(in[0], i, c) : 0.0f;
         }},
        {"normalize keeps w", {a}, [](auto const& in, Texture2D* t) { GLNormalize(in[0], t); },
         [&](auto const& in, int i, int c) {
             float len = std::sqrt(at(in[0], i, 0) * at(in[0], i, 0) + at(in[0], i, 1) * at(in[0], i, 1) +
                                   at(in[0], i, 2) * at(in[0], i, 2));
             return c == 3 ? at(in[0], i, 3) : at(in[0], i, c) / len;
         }},
        {"grey from the largest channel", {a}, [](auto const& in, Texture2D* t) { GLCopyGreyMax(in[0], t); },
         [&](auto const& in, int i, int c) {
             return c == 3 ? at(in[0], i, 3) : std::max({at(in[0], i, 0), at(in[0], i, 1), at(in[0], i, 2)});
         }},
        {"mirror", {a}, [](auto const& in, Texture2D* t) { GLMirrorVertical(in[0], t); },
         [&](auto const& in, int i, int c) { return at(in[0], (H - 1 - i / W) * W + i % W, c); }},
        {"zero noise copies", {a}, [](auto const& in, Texture2D* t) { GLNoise(in[0], t, 7, 0.0f); },
         [&](auto const& in, int i, int c) { return at(in[0], i, c); }},
        // With the identity for the inverse projection the eye distance is |2 depth - 1|, here
        // and for the depth of field.
        {"fog", {a, depthWithBackground},
         [&](auto const& in, Texture2D* t) {
             Shader::ProjectionMatrixInv = Matrix4<double>();
             GLFog(in[0], t, 0.1f, 0.9f, v, in[1]);
         },
         fogged},
        // The same range from the depths 0.55 and 0.95 in texel 0, blended over the picture.
        {"fog over, range from a texture", {a, depthWithBackground, Constant(0.55f, 0.95f, 0, 0)},
         [&](auto const& in, Texture2D* t) {
             Shader::ProjectionMatrixInv = Matrix4<double>();
             GLCopy(in[0], t);
             GLFogOver(in[2], v, in[1], t);
         },
         fogged},
        // Nearest sampling: the shifted point of a pixel centre lands inside a texel.
        {"chroma", {a},
         [&](auto const& in, Texture2D* t) { GLChroma(in[0], t, {0.0f, 1.0f, 0.25f, 0.0f}, 0.5f, {0.5f, 0.5f}); },
         [&](auto const& in, int i, int c) {
             auto shifted = [](int p, int size) {
                 float uv = 0.5f + ((float(p) + 0.5f) / float(size) - 0.5f) * 1.5f;
                 return std::clamp(int(std::floor(uv * float(size))), 0, size - 1);
             };
             float moved = at(in[0], shifted(i / W, H) * W + shifted(i % W, W), c);
             float const weight[4] = {0.0f, 1.0f, 0.25f, 0.0f};
             return at(in[0], i, c) + (moved - at(in[0], i, c)) * weight[c];
         }},
        {"depth of field", levels, dof(1.5f), level(1.5f)},
        {"depth of field over the picture", levels,
         [](auto const& in, Texture2D* t) {
             GLCopy(in[0], t);
             GLDepthOfFieldOver({in[1], in[2], in[3], in[4]}, in[5], t, 0.5f, 1.5f);
         },
         level(1.5f)},
        {"no depth of field at size 0", levels, dof(0.0f), level(0.0f)},
    };
    for (Case const& test : cases) {
        SCOPED_TRACE(test.name);
        std::vector<Shared<Texture2D>> owned;
        std::vector<Texture2D*> in;
        for (Pixels const& p : test.inputs) {
            owned.push_back(Upload(p));
            in.push_back(owned.back().get());
        }
        test.run(in, target);
        Pixels out = read(target);
        for (int i = 0; i < W * H; ++i)
            for (int c = 0; c < 4; ++c)
                ASSERT_NEAR(out[size_t(i) * 4 + size_t(c)], test.expect(test.inputs, i, c), 1e-4f)
                    << "pixel " << i << " channel " << c;
    }
}

// The apply passes of the reduced SSAO and SSSS, blended over the picture, upsample by depth:
// nothing gathered on the far side of a silhouette reaches the near side or the other way round,
// and the background keeps its colour. Columns 0 to 2 are near, 3 to 5 far, the top row
// background; the gathered texels (3 x 2) of the far column hold 1 (SSAO: full occlusion; SSSS:
// colour 0.25), each with the view depth it was gathered for.
TEST_F(GLFiltersTest, ReducedSSAOAndSSSSUpsampleByDepth)
{
    Pixels depth, gathered;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            depth.insert(depth.end(), {y == H - 1 ? 1.0f : x < 3 ? 0.3f : 0.9f, 0, 0, 0});
    for (int y = 0; y < H / 2; ++y)
        for (int x = 0; x < W / 2; ++x) {
            float v = x == 2 ? 1.0f : 0.0f;
            float z = x == 2 ? 0.8f : -0.4f; // 2 d - 1 through the identity projection
            gathered.insert(gathered.end(), {v, v, v, z});
        }
    Shared<Texture2D> image = Upload(Constant(0.5f, 0.5f, 0.5f, 1.0f)), depthTexture = Upload(depth),
                      gatheredTexture = Upload(gathered, W / 2, H / 2);
    Shader::ProjectionMatrixInv = Matrix4<double>();
    struct Case {
        char const* name;
        void (*apply)(Texture2D*, Texture2D*, Texture2D*, float);
        float strength, far; // the far side's value
    };
    Case const cases[] = {
        {"SSAO", GLSSAOApply, 1.0f, 0.0f},
        {"SSSS", GLSSSSApply, 0.25f, 0.75f},
    };
    for (Case const& test : cases) {
        SCOPED_TRACE(test.name);
        GLCopy(image.get(), target);
        test.apply(depthTexture.get(), gatheredTexture.get(), target, test.strength);
        Pixels out = read(target);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                ASSERT_NEAR(out[size_t(y * W + x) * 4], y == H - 1 || x < 3 ? 0.5f : test.far, 2e-3f) << x << ", " << y;
    }
}

TEST_F(GLFiltersTest, NoiseOfSomeStrengthChangesThePictureByAtMostHalfOfIt)
{
    Pixels p = Constant(0.5f, 0.5f, 0.5f, 1.0f);
    Shared<Texture2D> source = Upload(p);
    GLNoise(source.get(), target, 3, 0.2f);
    Pixels out = read(target);
    float moved = 0;
    for (size_t i = 0; i < out.size(); ++i) {
        EXPECT_LE(std::abs(out[i] - p[i]), 0.1f + 1e-5f);
        moved = std::max(moved, std::abs(out[i] - p[i]));
        if (i % 4 == 3) {
            EXPECT_EQ(out[i], 1.0f); // alpha is left alone
        }
    }
    EXPECT_GT(moved, 0.01f);
}

// Neighbourhood filters leave a constant picture as it is, up to the borders.
TEST_F(GLFiltersTest, BlursAndMedianKeepAConstantPicture)
{
    Pixels p = Constant(0.25f, 0.5f, 0.75f, 1.0f);
    struct Blur {
        char const* name;
        std::function<void(Texture2D* source, Texture2D* target)> run;
        bool inPlace; // the result ends in the source
    };
    Blur const blurs[] = {
        {"blur", [](Texture2D* s, Texture2D* t) { GLBlur(s, t, 2, false); }, true},
        {"simple blur", [](Texture2D* s, Texture2D* t) { GLBlur(s, t, 1, true); }, true},
        {"gaussian", [](Texture2D* s, Texture2D* t) { GLGaussianBlur(s, t, 1.5f, 3); }, false},
        {"median", [](Texture2D* s, Texture2D* t) { GLMedian(s, t, 2); }, false},
    };
    for (Blur const& blur : blurs) {
        SCOPED_TRACE(blur.name);
        Shared<Texture2D> source = Upload(p);
        GLCopy(source.get(), second);
        blur.run(second, target);
        Pixels out = read(blur.inPlace ? second : target);
        for (size_t i = 0; i < out.size(); ++i)
            ASSERT_NEAR(out[i], p[i], 1e-5f) << i;
    }
}

TEST_F(GLFiltersTest, ABlurSpreadsASpikeSymmetricallyAndTheMedianRemovesIt)
{
    // A ramp along x with a spike on it: the median gives the ramp back (a min or max would not).
    Pixels ramp = Constant(0, 0, 0, 0);
    int const spike = 1 * W + 2;
    for (int i = 0; i < W * H; ++i)
        ramp[size_t(i) * 4] = float(i % W);
    ramp[size_t(spike) * 4] = 100.0f;
    Shared<Texture2D> spiked = Upload(ramp);
    GLMedian(spiked.get(), target, 1);
    Pixels out = read(target);
    for (int i = 0; i < W * H; ++i)
        ASSERT_EQ(out[size_t(i) * 4], float(i % W)) << i;

    Pixels p = Constant(0, 0, 0, 0);
    p[size_t(spike) * 4] = 1.0f;
    Shared<Texture2D> source = Upload(p);
    GLCopy(source.get(), second);
    GLBlur(second, target, 1, false);
    out = read(second);
    // Binomial 1 4 6 4 1 along each axis: the centre keeps (6/16)^2.
    EXPECT_NEAR(out[size_t(spike) * 4], 36.0f / 256.0f, 1e-5f);
    EXPECT_NEAR(out[size_t(spike - 1) * 4], out[size_t(spike + 1) * 4], 1e-6f);
    EXPECT_NEAR(out[size_t(spike - W) * 4], out[size_t(spike + 1) * 4], 1e-6f);
    EXPECT_GT(out[size_t(spike + W) * 4], 0.0f);
}

TEST_F(GLFiltersTest, AddMipMapsSumsTheLevelsOfEverySource)
{
    // Constant sources: every level holds the same value, so levels 0 to 2 give three times it.
    std::vector<Shared<Texture2D>> owned;
    std::vector<Texture2D*> in;
    float const values[] = {0.5f, 0.25f, 1.0f};
    for (float v : values) {
        owned.push_back(Upload(Constant(v, v, v, v, 8, 8), 8, 8, GL_LINEAR));
        owned.back()->mipmaps = true;
        in.push_back(owned.back().get());
    }
    GLAddMipMaps(in, 2, target);
    Pixels out = read(target);
    for (float v : out)
        ASSERT_NEAR(v, 3 * (0.5f + 0.25f + 1.0f), 1e-5f);
}

TEST_F(GLFiltersTest, NormalsOfAFlatDepthFaceTheViewerAndKeepTheFlags)
{
    Shared<Texture2D> depth = Upload(Constant(0.5f, 0, 0, 0));
    Shared<Texture2D> flags = Upload(Constant(0, 0, 0, 7.0f));
    GLNormals(depth.get(), flags.get(), target, Matrix4<float>());
    Pixels out = read(target);
    for (int i = 0; i < W * H; ++i) {
        EXPECT_NEAR(out[size_t(i) * 4 + 2], 1.0f, 1e-5f) << i;
        EXPECT_EQ(out[size_t(i) * 4 + 3], 7.0f) << i;
    }
}

TEST_F(GLFiltersTest, MinMaxMatchesTheCpuAndRestoresBindingAndViewport)
{
    struct Size {
        int w, h;
    };
    Size const sizes[] = {{1, 1}, {7, 3}, {16, 16}, {33, 1}};
    for (Size const& size : sizes) {
        SCOPED_TRACE(std::to_string(size.w) + " x " + std::to_string(size.h));
        Pixels p = RandomPixels(unsigned(size.w * 31 + size.h), -5, 5, size.w, size.h);
        float lo = 1e30f, hi = -1e30f;
        for (size_t i = 0; i < p.size(); i += 4) {
            lo = std::min(lo, p[i]);
            hi = std::max(hi, p[i]);
        }
        Shared<Texture2D> source = Upload(p, size.w, size.h);
        Vector2<float> range = GLMinMax(source.get());
        EXPECT_EQ(range.x, lo);
        EXPECT_EQ(range.y, hi);
        EXPECT_EQ(FBO::DRAW_ID, fbo->framebuffer);
        GLint viewport[4];
        glGetIntegerv(GL_VIEWPORT, viewport);
        EXPECT_EQ(viewport[2], W);
        EXPECT_EQ(viewport[3], H);
    }
}

TEST_F(GLFiltersTest, MinMaxOfADepthLeavesTheBackgroundOut)
{
    FBO depthFbo(dsDepth, 5, 3);
    ASSERT_TRUE(depthFbo.enable());
    glViewport(0, 0, 5, 3);
    glClearDepth(1.0);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    glScissor(1, 1, 2, 1);
    glClearDepth(0.25);
    glClear(GL_DEPTH_BUFFER_BIT);
    glScissor(3, 2, 1, 1);
    glClearDepth(0.75);
    glClear(GL_DEPTH_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    glClearDepth(1.0);
    Vector2<float> range = GLMinMax(depthFbo.DepthStencil());
    EXPECT_NEAR(range.x, 0.25f, 1e-6f);
    EXPECT_NEAR(range.y, 0.75f, 1e-6f);
}

// The curves at inputs worked out by hand from their constants, exposure and gamma around
// them, and the background: cleared through the inverse of the pass, it comes out as chosen.
TEST_F(GLFiltersTest, TonemapFollowsEachCurveAndGivesTheBackgroundBack)
{
    struct Curve {
        int tonemap;
        float at025, at1, at4;
    };
    Curve const curves[] = {
        {1, 0.25f, 1.0f, 4.0f},
        {2, 0.2f, 0.5f, 0.8f},
        {3, 0.0916420f, 0.3043006f, 0.7132380f},
        {4, 0.3741110f, 0.8037975f, 0.9734171f},
    };
    Rendering& r = Rendering::instance();
    struct {
        int style, tonemap;
        Vector4<float> background;
        float exposure, gamma;
    } const before{r.style, r.tonemap, r.background, r.exposure, r.gamma};
    float const chosen[3] = {0.28f, 0.5f, 0.9f};
    r.style = Rendering::STYLE_PBR;
    r.background = {chosen[0], chosen[1], chosen[2], 1.0f};
    r.exposure = r.gamma = 2.0f;
    Shared<Texture2D> source = Upload(Constant(0.25f, 1.0f, 4.0f, 0.5f));
    // Exposure 2 and gamma 2 turn 0.125, 0.5 and 2 into the square roots of the values above.
    Shared<Texture2D> halved = Upload(Constant(0.125f, 0.5f, 2.0f, 0.5f));
    for (Curve const& curve : curves) {
        SCOPED_TRACE(curve.tonemap);
        r.tonemap = curve.tonemap;
        Vector4<float> clear = r.clearColor();
        Shared<Texture2D> background = Upload(Constant(clear.x, clear.y, clear.z, clear.w));
        GLTonemap(source.get(), target, 1.0f, 1.0f, curve.tonemap);
        GLTonemap(halved.get(), second, r.exposure, r.gamma, curve.tonemap);
        Pixels plain = read(target), exposed = read(second);
        float const want[4] = {curve.at025, curve.at1, curve.at4, 0.5f};
        for (int c = 0; c < 4; ++c) {
            EXPECT_NEAR(plain[size_t(c)], want[c], 1e-5f) << c;
            EXPECT_NEAR(exposed[size_t(c)], c == 3 ? 0.5f : std::sqrt(want[c]), 1e-5f) << c;
        }
        GLTonemap(background.get(), target, r.exposure, r.gamma, curve.tonemap);
        Pixels back = read(target);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(back[size_t(c)], chosen[c], 2e-3f) << "background " << c;
    }
    r.style = before.style;
    r.background = before.background;
    r.exposure = before.exposure;
    r.gamma = before.gamma;
    r.tonemap = before.tonemap;
}

// Edges and contours on integer ids: which pixels turn black.
TEST_F(GLFiltersTest, EdgesAndContoursMarkTheRightPixels)
{
    // Object 1 on columns 0 to 2, object 2 on 3 and 4, nothing on column 5. Object 1's normals
    // turn by 90 degrees between rows 1 and 2.
    std::vector<int> ids;
    Pixels normals, flagged;
    int const bits = FLAG_CONTOURS | FLAG_NON_EMPTY;
    float contours;
    std::memcpy(&contours, &bits, 4);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            int id = x < 3 ? 1 : x < 5 ? 2 : 0;
            ids.insert(ids.end(), {id, 0, 0, 0});
            bool up = id == 1 && y >= 2;
            normals.insert(normals.end(), {up ? 1.0f : 0.0f, 0.0f, up ? 0.0f : 1.0f, 0.0f});
            flagged.insert(flagged.end(), {0, 0, 0, id == 2 ? contours : 0.0f});
        }
    Shared<Texture2D> idTexture(new Texture2D(W, H, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST));
    idTexture->copy(ids.data(), int(ids.size() * sizeof(int)));
    Shared<Texture2D> image = Upload(Constant(0.5f, 0.6f, 0.7f, 1.0f)), normal = Upload(normals),
                      flags = Upload(flagged), unflagged = Upload(Constant(0, 0, 0, 0));
    struct Case {
        char const* name;
        bool contour;        // else edges
        Texture2D* flags;    // of the contours
        float width;         // of the contours
        bool variant;        // ids alone; wireframe
        char const* rows[H]; // top row first: '#' black, '.' the picture
    };
    Case const cases[] = {
        {"ids and normals", false, nullptr, 0, false, {"..####", "######", "######", "..####"}},
        {"ids alone", false, nullptr, 0, true, {"..####", "..####", "..####", "..####"}},
        {"contours, both sides", true, flags.get(), 1, false, {"..####", "..####", "..####", "..####"}},
        {"two pixels wide", true, flags.get(), 2, false, {".#####", ".#####", ".#####", ".#####"}},
        {"wireframe: where nothing was drawn", true, flags.get(), 1, true, {".....#", ".....#", ".....#", ".....#"}},
        {"no object flagged", true, unflagged.get(), 2, false, {"......", "......", "......", "......"}},
    };
    EdgeTiles tiles(W, H);
    for (Case const& test : cases) {
        SCOPED_TRACE(test.name);
        if (test.contour)
            GLContour(image.get(), idTexture.get(), test.flags, tiles, target, test.width, {0, 0, 0, 1}, test.variant);
        else
            GLEdgeDetection(image.get(), idTexture.get(), normal.get(), tiles, target, 0.8f, test.variant);
        Pixels out = read(target);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                bool black = test.rows[H - 1 - y][x] == '#';
                EXPECT_EQ(out[size_t(y * W + x) * 4 + 1], black ? 0.0f : 0.6f) << x << ", " << y;
            }
    }
}

// The same rules on a picture of several tiles, whose borders the objects, the creases and
// the outlines cross: the tiles the passes skip must hold no changed pixel. The expected pixels
// come from the rules themselves, pixel by pixel.
TEST_F(GLFiltersTest, EdgesAndContoursAcrossTilesFollowTheRules)
{
    int const w = 45, h = 29; // partial tiles on both axes
    float const limit = 0.8f;
    std::vector<int> ids;
    std::vector<bool> marked;
    Pixels normals, flagged;
    auto dot = [&](int a, int b) {
        return normals[size_t(a) * 4] * normals[size_t(b) * 4] + normals[size_t(a) * 4 + 2] * normals[size_t(b) * 4 + 2];
    };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            // A marked disc (1) with a gently turning normal, touching a box (2) that starts on
            // a tile border and turns its normals 20 degrees, except for a 0 and a 40 degree
            // band (a crease) in the tile at (3, 2); a marked small box (3) in the box; nothing
            // (0, no normal) elsewhere.
            bool const disc = (x - 6) * (x - 6) + (y - 5) * (y - 5) <= 25;
            int const id = disc ? 1 : x >= 40 && x <= 43 && y >= 20 && y <= 23 ? 3 : x >= 12 && y >= 8 ? 2 : 0;
            bool const band = id == 2 && y >= 16 && y <= 23 && x >= 26 && x <= 29;
            float const angle = id == 1 ? 0.03f * float(x) : band ? (x <= 27 ? 0.0f : 0.7f) : id == 2 ? 0.35f : 0.0f;
            ids.insert(ids.end(), {id, 0, 0, 0});
            marked.push_back(id == 1 || id == 3);
            normals.insert(normals.end(), {id ? std::sin(angle) : 0.0f, 0.0f, id ? std::cos(angle) : 0.0f, 0.0f});
            int const bits = id == 0 ? 0 : marked.back() ? FLAG_CONTOURS | FLAG_NON_EMPTY : FLAG_NON_EMPTY;
            float carrier;
            std::memcpy(&carrier, &bits, 4);
            flagged.insert(flagged.end(), {0, 0, 0, carrier});
        }
    Shared<Texture2D> idTexture(new Texture2D(w, h, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST));
    idTexture->copy(ids.data(), int(ids.size() * sizeof(int)));
    Shared<Texture2D> image = Upload(Constant(0.5f, 0.6f, 0.7f, 0.3f, w, h), w, h), normal = Upload(normals, w, h),
                      flags = Upload(flagged, w, h);
    FBO picture(dsNone, w, h);
    Texture2D* out = picture.addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    ASSERT_TRUE(picture.enable());
    glViewport(0, 0, w, h);
    EdgeTiles tiles(w, h);
    struct Case {
        bool contour;
        float width;  // of the contours
        bool variant; // ids alone; wireframe
    };
    Case const cases[] = {{false, 0, false}, {false, 0, true}, {true, 1, false},
                          {true, 2.5f, false}, {true, 4, false}, {true, 3, true}};
    for (Case const& test : cases) {
        SCOPED_TRACE(std::string(test.contour ? "contour " : "edges ") + std::to_string(test.width) +
                     (test.variant ? " variant" : ""));
        auto black = [&](int x, int y) {
            int const p = y * w + x, id = ids[size_t(p) * 4];
            int const r = test.contour ? int(std::ceil(std::clamp(test.width, 0.0f, 4.0f))) : 1;
            if (test.contour && test.variant && id != 0)
                return false;
            for (int dy = -r; dy <= r; ++dy)
                for (int dx = -r; dx <= r; ++dx) {
                    bool const near = test.contour ? float(dx * dx + dy * dy) <= test.width * test.width
                                                   : std::abs(dx) + std::abs(dy) == 1;
                    int const q = std::clamp(y + dy, 0, h - 1) * w + std::clamp(x + dx, 0, w - 1);
                    bool const other = ids[size_t(q) * 4] != id;
                    if (near && (test.contour ? other && (marked[size_t(p)] || marked[size_t(q)])
                                              : other || (!test.variant && id != 0 && dot(p, q) < limit)))
                        return true;
                }
            return false;
        };
        if (test.contour)
            GLContour(image.get(), idTexture.get(), flags.get(), tiles, out, test.width, {0, 0, 0, 1}, test.variant);
        else
            GLEdgeDetection(image.get(), idTexture.get(), normal.get(), tiles, out, limit, test.variant);
        Pixels const got = ReadColorFloat(out->attachment, w, h);
        int changed = 0, wrong = 0;
        std::string first;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                bool const want = black(x, y);
                changed += want;
                size_t const i = size_t(y * w + x) * 4;
                if ((got[i + 1] != (want ? 0.0f : 0.6f) || got[i + 3] != 0.3f) && !wrong++)
                    first = std::to_string(x) + ", " + std::to_string(y);
            }
        EXPECT_EQ(wrong, 0) << "first at " << first;
        EXPECT_GT(changed, 0);
    }
}

} // namespace
} // namespace vel::test
