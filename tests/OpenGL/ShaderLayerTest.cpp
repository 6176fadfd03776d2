// Shader layers in the viewport's frame: where each group acts, a simulation in a buffer of its
// own, Shadertoy code, compile errors placed at the user's lines, and the sample scenes.
#include "FrameTestSupport.h"

#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderLayer.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneFile.h"
#include "Scene/Tool.h"

#include <glad/gl.h>

#include <cmath>

namespace vel::test {
namespace {

class ShaderLayerTest : public ViewFrameTest {
protected:
    void TearDown() override
    {
        for (auto& group : Rendering::instance().ShaderLayers)
            group.clear();
        ShaderIncludeManager::instance().common.clear();
        ShaderLayer::ActiveAll = true;
        ViewFrameTest::TearDown();
    }
    static Shared<ShaderLayer> Add(int group, std::string const& code)
    {
        return Rendering::instance().addShaderLayer(group, Shared<ShaderLayer>(new ShaderLayer(code)));
    }
    void AddBox()
    {
        (new Tool(Shared<Element>(Mesh::Box().release())))->addToParent(Scene::instance().root);
        view->viewAll();
    }
};

// Red albedo with the "drawn" mark, over the whole G-buffer.
char const* const RED_SURFACE = "void main() { oNormal = fNormal(vec3(0, 0, 1), 0);\n"
                                "oRoughMetal = vec2(1, 0); oColorAlpha = vec4(1, 0, 0, 1); oLightThick = vec4(0); }\n";
char const* const INVERT = "void main() { oColor = vec4(1.0 - texelFetch(iImage, ivec2(gl_FragCoord.xy), 0).rgb, 1); }\n";

TEST_F(ShaderLayerTest, EachGroupActsAtItsPointOfTheFrame)
{
    AddBox();
    std::vector<float> plain = Frame();
    Vector4<float> const box = At(plain, W, W / 2, H / 2), background = At(plain, W, 1, 1);
    ASSERT_GT(std::abs(box.x - background.x) + std::abs(box.z - background.z), 0.05f);
    Vector4<float> const red(1, 0, 0, 1), inverted(1 - background.x, 1 - background.y, 1 - background.z, 1);
    struct Case {
        int group;
        char const* code;
        Vector4<float> corner; // what the background shows
        bool coversBox;        // the layer shows over the box as well
    };
    for (Case const& c : {Case{0, RED_SURFACE, red, false}, Case{1, RED_SURFACE, red, true},
                          Case{2, INVERT, inverted, true}, Case{3, INVERT, inverted, true}}) {
        Add(c.group, c.code);
        std::vector<float> pixels = Frame();
        Vector4<float> corner = At(pixels, W, 1, 1), middle = At(pixels, W, W / 2, H / 2);
        EXPECT_NEAR(corner.x, c.corner.x, 0.02f) << "group " << c.group;
        EXPECT_NEAR(corner.y, c.corner.y, 0.02f) << "group " << c.group;
        EXPECT_NEAR(corner.z, c.corner.z, 0.02f) << "group " << c.group;
        // Before the objects, the layer is overdrawn where the box stands; after, it covers it.
        if (c.group <= 1)
            EXPECT_EQ(middle.y < 0.02f && middle.x > 0.98f, c.coversBox) << "group " << c.group;
        else
            EXPECT_NEAR(middle.x, 1 - box.x, 0.02f) << "group " << c.group;
        Rendering::instance().ShaderLayers[c.group].clear();
    }
    // Composite then final: a constant green, inverted after it, comes out magenta.
    Add(3, INVERT);
    Add(2, "void main() { oColor = vec4(0, 1, 0, 1); }");
    Vector4<float> both = At(Frame(), W, 1, 1);
    EXPECT_NEAR(both.x, 1.0f, 0.02f);
    EXPECT_NEAR(both.y, 0.0f, 0.02f);
    // All layers off: the plain picture.
    ShaderLayer::ActiveAll = false;
    EXPECT_NEAR(At(Frame(), W, 1, 1).y, background.y, 0.02f);
}

// Layers read the frame's depth through a copy: never the depth-stencil their own stencil and
// depth tests keep attached, which GL leaves undefined to sample.
TEST_F(ShaderLayerTest, LayersReadTheDepthWithoutSamplingWhatTheyDrawInto)
{
    AddBox();
    char const* const DEPTH_SURFACE = "void main() { float d = texelFetch(iDepth, ivec2(gl_FragCoord.xy), 0).r;\n"
                                      "oNormal = fNormal(vec3(0, 0, 1), 0); oRoughMetal = vec2(1, 0);\n"
                                      "oColorAlpha = vec4(d, d, d, 1); oLightThick = vec4(0); }\n";
    char const* const DEPTH_IMAGE = "void main() { oColor = vec4(vec3(texelFetch(iDepth, ivec2(gl_FragCoord.xy), 0).r), 1); }\n";
    GLMachine::checkFeedback = true;
    for (int group : {0, 1, 2, 3}) {
        Add(group, group <= 1 ? DEPTH_SURFACE : DEPTH_IMAGE);
        GLMachine::feedbackLoops = 0;
        std::vector<float> pixels = Frame();
        EXPECT_EQ(GLMachine::feedbackLoops, 0) << "group " << group << ": " << GLMachine::feedbackReport;
        if (group >= 2) {
            EXPECT_NEAR(At(pixels, W, 1, 1).x, 1.0f, 1e-3f) << "group " << group; // the background's depth
            float const box = At(pixels, W, W / 2, H / 2).x;
            EXPECT_GT(box, 0.01f) << "group " << group;
            EXPECT_LT(box, 0.999f) << "group " << group;
        }
        Rendering::instance().ShaderLayers[group].clear();
    }
    GLMachine::checkFeedback = false;
}

TEST_F(ShaderLayerTest, ABufferLayerReadingItsOutputCountsFrames)
{
    Shared<ShaderLayer> counter = Add(3, "void main() { oColor = texelFetch(iTex0, ivec2(gl_FragCoord.xy), 0) + vec4(1); }");
    counter->custom = true;
    counter->percent = false;
    counter->width = 8;
    counter->height = 4;
    Frame(); // makes the buffer; without its sampler the code doesn't compile yet
    ASSERT_TRUE(counter->fbo);
    counter->set_sampler(0, Shared<Texture>(counter->fbo->attachments[1]));
    auto front = [&] { return Pixels(counter->fbo->front()); };
    Frame(); // the first run clears the buffer and draws nothing
    EXPECT_FLOAT_EQ(front()[0], 0.0f);
    for (int frame = 1; frame <= 5; ++frame) {
        Frame();
        EXPECT_FLOAT_EQ(front()[0], float(frame));
    }
    EXPECT_EQ(counter->fbo->width, 8); // pixels, whatever the view's size
    // A new size clears the buffer and starts counting again after one frame.
    counter->width = 16;
    Frame();
    EXPECT_EQ(counter->fbo->width, 16);
    EXPECT_FLOAT_EQ(front()[0], 0.0f);
    Frame();
    EXPECT_FLOAT_EQ(front()[0], 1.0f);
    // While all layers are off no buffer is touched.
    ShaderLayer::ActiveAll = false;
    Frame();
    EXPECT_FLOAT_EQ(front()[0], 1.0f);
}

TEST_F(ShaderLayerTest, ShadertoyCodeRunsAfterAdaptation)
{
    std::string const shadertoy =
        "void mainImage(out vec4 fragColor, in vec2 fragCoord)\n"
        "{\n"
        "    vec2 uv = fragCoord / iResolution.xy;\n"
        "    float t = iTime * 0.0 + iMouse.x * 0.0;\n"
        "    fragColor = vec4(texture(iChannel0, uv).rg, step(0.5, uv.x) * 0.5 + t, 1.0);\n"
        "}\n";
    Shared<ShaderLayer> layer = Add(3, ShaderLayer::AdaptFromShadertoy(shadertoy));
    Shared<Texture2D> channel(new Texture2D(1, 1, GL_RGBA32F, GL_RGBA, GL_FLOAT));
    float const texel[4] = {0.25f, 0.75f, 0.0f, 1.0f};
    channel->copy(texel, sizeof texel);
    layer->set_sampler(0, Shared<Texture>(channel));
    std::vector<float> pixels = Frame();
    ASSERT_TRUE(layer->errors.empty()) << layer->errors[0].message;
    for (auto [x, blue] : {std::pair{2, 0.0f}, {W - 2, 0.5f}}) {
        Vector4<float> got = At(pixels, W, x, H / 2);
        EXPECT_NEAR(got.x, 0.25f, 0.01f);
        EXPECT_NEAR(got.y, 0.75f, 0.01f);
        EXPECT_NEAR(got.z, blue, 0.01f) << x;
    }
}

TEST_F(ShaderLayerTest, CompileErrorsNameTheUsersLinesAndTheLastGoodProgramStays)
{
    ShaderIncludeManager::instance().common = {"// a helper\nfloat Twice(float x)\n{\n    return 2.0 * x;\n}\n",
                                               "#define GREY 0.5\nvec3 Grey() { return vec3(GREY); }\n"};
    std::string const head = "#include \"?Common 0\"\n#include \"?Common 1\"\nvoid main()\n{\n";
    struct Case {
        std::string code;
        std::vector<int> lines; // user lines named, in order
        char const* place;      // how the first message begins
    };
    Case const cases[] = {
        {head + "    float a = Twice(1.0);\n    vec3 b = Grey();\n    oColor = vec4(b * a, undefinedThing);\n}\n",
         {7}, "Fragment_Shader:7"},
        {head + "    float a = nope1;\n    vec3 b = Grey();\n    float c = nope2;\n    oColor = vec4(b, 1.0);\n}\n",
         {5, 7}, "Fragment_Shader:5"},
        {head + "    float a = 1.0 +;\n    vec3 b = Grey();\n    float c = );\n    oColor = vec4(b, 1.0);\n}\n",
         {5, 7}, "Fragment_Shader:5"}, // two syntax errors
        {head + "    oColor = vec4(Grey(), 1.0);\n", {5}, "Fragment_Shader:5"}, // the brace at the end is missing
    };
    for (Case const& c : cases) {
        Shared<ShaderLayer> layer = Add(3, c.code);
        Frame();
        EXPECT_EQ(layer->shaders.count(Rendering::instance().style), 0u) << c.code;
        std::vector<int> named;
        for (CodeError const& e : layer->errors)
            if (e.line > 0 && (named.empty() || named.back() != e.line))
                named.push_back(e.line);
        EXPECT_EQ(named, c.lines) << c.code;
        ASSERT_FALSE(layer->errors.empty());
        EXPECT_EQ(layer->errors[0].message.rfind(c.place, 0), 0u) << layer->errors[0].message;
        EXPECT_NE(ShaderCode::error_messages[layer->key()][1].find(c.place), std::string::npos);
        Rendering::instance().ShaderLayers[3].clear();
    }
    // A fault inside an include names the include's line and the user's #include line.
    ShaderIncludeManager::instance().common[1] = "#define GREY 0.5\nvec3 Grey() { return vec3(GREY) + oops; }\n";
    Shared<ShaderLayer> broken = Add(3, head + "    oColor = vec4(Grey(), 1.0);\n}\n");
    Frame();
    ASSERT_FALSE(broken->errors.empty());
    EXPECT_EQ(broken->errors[0].line, 2);
    EXPECT_EQ(broken->errors[0].message.rfind("?Common 1:2", 0), 0u) << broken->errors[0].message;
    Rendering::instance().ShaderLayers[3].clear();

    // An edit that breaks a running layer keeps its program on screen.
    Shared<ShaderLayer> layer = Add(3, "void main() { oColor = vec4(0, 0, 1, 1); }");
    EXPECT_NEAR(At(Frame(), W, 1, 1).z, 1.0f, 0.01f);
    Shader* good = layer->shaders[Rendering::instance().style].get();
    layer->setText("void main() { oColor = vec4(1, 0, 0, 1) }");
    Vector4<float> still = At(Frame(), W, 1, 1);
    EXPECT_NEAR(still.z, 1.0f, 0.01f);
    EXPECT_NEAR(still.x, 0.0f, 0.01f);
    EXPECT_EQ(layer->shaders[Rendering::instance().style].get(), good);
    EXPECT_FALSE(layer->errors.empty());
}

TEST_F(ShaderLayerTest, TheSampleScenesLoadTheirLayersAndTheyCompile)
{
    for (char const* file : {"DefaultFinal.vsc", "FilterHalftone.vsc", "FilterMangaDots.vsc", "FilterMangaDirection.vsc",
                             "FilterLensFlares.vsc", "FilterTiltShift.vsc", "FractalJuliaSet.vsc",
                             "FractalMandelbrotSet.vsc", "HG_SDF.vsc"}) {
        Scene scene;
        ASSERT_TRUE(scene.load(std::string(":/scenes/ShaderLayers/") + file)) << file;
        ASSERT_TRUE(Rendering::instance().load_shader_layers_from_buffer(gShaderLayersBuf.get(), true)) << file;
        gDeleteLoadBuffers();
        auto const& layers = Rendering::instance().ShaderLayers[ShaderLayer::RunFinal];
        ASSERT_EQ(layers.size(), 1u) << file;
        Frame();
        EXPECT_TRUE(layers[0]->errors.empty()) << file << ": " << layers[0]->errors[0].message;
        EXPECT_EQ(layers[0]->shaders.count(Rendering::instance().style), 1u) << file;
    }
}

} // namespace
} // namespace vel::test
