// FBO on a real context: completeness, binding mirrors, resizing and shared depth.
#include "GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLState.h"
#include "OpenGL/ShaderManager.h"

#include <cstring>
#include <functional>

namespace vel::test {
namespace {

class FBOTest : public GLResourceTest {};

// A full-screen quad at a given depth, in a given colour.
std::string const kQuadAtDepth = "##VERTEX\nuniform float Depth;\n"
                                 "void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);\n"
                                 "gl_Position = vec4(2.0 * xy - 1.0, Depth, 1.0); }\n"
                                 "##FRAGMENT\nuniform vec4 Color;\nout vec4 oColor;\nvoid main() { oColor = Color; }\n";

void DrawQuad(float depth, float r, float g, float b)
{
    Shared<Shader> s = ShaderManager::instance().FromText(kQuadAtDepth);
    ASSERT_TRUE(s->enable());
    Shader::setUniform("Depth", depth);
    Shader::setUniform("Color", r, g, b, 1.0f);
    GLFill();
}

TEST_F(FBOTest, MirrorsSpareRepeatedBinds)
{
    FBO a(dsNone, 4, 4), b(dsNone, 4, 4);
    a.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    b.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(a.compile());
    ASSERT_TRUE(b.compile());
    GLCallCounter counter;
    ASSERT_TRUE(a.enable());
    ASSERT_TRUE(a.enableDraw());
    ASSERT_TRUE(a.enableRead());
    EXPECT_EQ(counter.bindFramebuffer(), 1);
    ASSERT_TRUE(b.enableRead()); // a stays the draw target
    EXPECT_EQ(FBO::DRAW_ID, a.framebuffer);
    EXPECT_EQ(FBO::READ_ID, b.framebuffer);
    ASSERT_TRUE(a.enable()); // the read target differs: one bind of both
    EXPECT_EQ(counter.bindFramebuffer(), 3);
    GLint draw = 0, read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    EXPECT_EQ(unsigned(draw), a.framebuffer);
    EXPECT_EQ(unsigned(read), a.framebuffer);
    FBO::disable(fbBoth);
    EXPECT_EQ(FBO::DRAW_ID, 0u);
    EXPECT_EQ(FBO::READ_ID, 0u);
}

TEST_F(FBOTest, CompilingKeepsTheCallersBinding)
{
    FBO a(dsNone, 4, 4), b(dsNone, 4, 4);
    a.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    b.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(a.enableDraw());
    ASSERT_TRUE(b.enableRead()); // compiles b while a is the draw target
    GLint draw = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    EXPECT_EQ(unsigned(draw), a.framebuffer);
}

TEST_F(FBOTest, ResizeReportsAChangeOfEitherDimensionAndTakesSizesBelowOneAsOne)
{
    struct Case {
        int width, height;
        bool changed;
        int expectWidth, expectHeight;
    };
    Case const cases[] = {{4, 4, false, 4, 4}, {4, 7, true, 4, 7}, {7, 4, true, 7, 4}, {6, 3, true, 6, 3},
                          {0, 0, true, 1, 1},  {-2, 5, true, 1, 5}};
    for (Case const& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + " x " + std::to_string(c.height));
        FBO f(dsDepth, 4, 4);
        f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        ASSERT_TRUE(f.enable());
        unsigned framebuffer = f.framebuffer, texture = f.color(0)->textureId;
        EXPECT_EQ(f.resize(c.width, c.height), c.changed);
        EXPECT_EQ(f.width, c.expectWidth);
        EXPECT_EQ(f.DepthStencil()->height(), c.expectHeight);
        EXPECT_EQ(f.color(0)->width(), c.expectWidth);
        EXPECT_EQ(f.Compiled, !c.changed);
        if (!c.changed) { // GL objects left alone
            EXPECT_EQ(f.framebuffer, framebuffer);
            EXPECT_EQ(f.color(0)->textureId, texture);
            EXPECT_EQ(FBO::DRAW_ID, framebuffer);
        } else { // the deleted framebuffer is no longer named by the mirrors
            EXPECT_EQ(FBO::DRAW_ID, 0u);
        }
        ASSERT_TRUE(f.enable());
        glViewport(0, 0, c.expectWidth, c.expectHeight);
        glClearColor(0, 1, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        std::vector<unsigned char> pixels = ReadColor(GL_COLOR_ATTACHMENT0, c.expectWidth, c.expectHeight);
        EXPECT_EQ(pixels[pixels.size() - 3], 255); // the far corner exists
    }
}

// True when `f` tests depth: a quad behind one drawn first is rejected.
bool TestsDepth(FBO& f)
{
    EXPECT_TRUE(f.enable());
    glViewport(0, 0, f.width, f.height);
    glClearColor(0, 0, 0, 1);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    DrawQuad(0.0f, 1, 0, 0);
    DrawQuad(0.4f, 0, 1, 0);
    std::vector<unsigned char> far = ReadColor(GL_COLOR_ATTACHMENT0, f.width, f.height);
    return far[far.size() - 4] == 255 && far[far.size() - 3] == 0;
}

// Both FBOs in use, then one resized and enabled, then the other resized.
std::function<void(FBO&, FBO&)> InUseResizedInTurn(bool firstFirst)
{
    return [firstFirst](FBO& a, FBO& b) {
        EXPECT_TRUE(a.enable());
        EXPECT_TRUE(b.enable());
        FBO& one = firstFirst ? a : b;
        one.resize(8, 8);
        EXPECT_TRUE(one.enable());
        (firstFirst ? b : a).resize(8, 8);
    };
}

TEST_F(FBOTest, FBOsSharingADepthBufferKeepItThroughResizesInAnyOrder)
{
    struct Case {
        char const* order;
        std::function<void(FBO&, FBO&)> steps;
    };
    Case const cases[] = {
        {"both resized, then enabled",
         [](FBO& a, FBO& b) {
             EXPECT_TRUE(a.resize(8, 8));
             EXPECT_EQ(b.DepthStencil()->width(), 8);
             EXPECT_TRUE(b.resize(8, 8));
         }},
        // Each resize of one in use deletes the shared depth that the other has attached.
        {"the first resized and enabled before the second", InUseResizedInTurn(true)},
        {"the second resized and enabled before the first", InUseResizedInTurn(false)},
    };
    gl_Depth_Test.set(true);
    glDepthFunc(GL_LESS);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.order);
        FBO first(dsDepth, 4, 4);
        first.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        FBO second(&first, true);
        second.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        ASSERT_EQ(second.DepthStencil(), first.DepthStencil());
        c.steps(first, second);
        EXPECT_TRUE(TestsDepth(first));
        EXPECT_TRUE(TestsDepth(second));

        // Depth written through the first is tested through the second.
        ASSERT_TRUE(first.enable());
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        DrawQuad(0.0f, 1, 0, 0); // depth 0.5 in window space
        ASSERT_TRUE(second.enable());
        glClear(GL_COLOR_BUFFER_BIT);
        DrawQuad(0.4f, 0, 1, 0); // behind: rejected by the shared depth
        EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1)[1], 0);
        DrawQuad(-0.4f, 0, 0, 1); // in front: drawn
        EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1)[2], 255);
    }
    gl_Depth_Test.set(false);
}

TEST_F(FBOTest, IntegerColourTargetsAreReadThroughAnIntegerSampler)
{
    // Asked for with the default (linear) filter, which would leave the texture incomplete.
    FBO f(dsNone, 2, 2);
    Texture2D* target = f.addColor(GL_RGBA32UI, GL_RGBA_INTEGER, GL_UNSIGNED_INT);
    ASSERT_TRUE(f.enable());
    GLuint const value[4] = {7, 8, 9, 10};
    glClearBufferuiv(GL_COLOR, 0, value);
    FBO::disable(fbBoth);
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\nuniform usampler2D Image;\nout uvec4 oValue;\n"
        "void main() { oValue = texture(Image, vec2(0.5)); }\n");
    ASSERT_TRUE(s->enable());
    Shader::setUniform("Image", target->activeTexture());
    std::vector<uint32_t> words = CaptureFeedback({4}, 1)[0];
    target->disable();
    EXPECT_EQ(words, (std::vector<uint32_t>{7, 8, 9, 10}));
}

TEST_F(FBOTest, PackedDepthStencilReadsBackWhole)
{
    FBO f(dsDepthStencil, 3, 2);
    ASSERT_TRUE(f.enable());
    glClearDepth(0.25);
    glClearStencil(7);
    glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    FBO::disable(fbBoth);
    std::vector<unsigned char> back;
    f.DepthStencil()->getData(back);
    ASSERT_EQ(back.size(), 6 * 8u); // a 32-bit float and a word holding 8 stencil bits per texel
    for (size_t texel = 0; texel < 6; ++texel) {
        float depth;
        uint32_t stencil;
        std::memcpy(&depth, &back[texel * 8], 4);
        std::memcpy(&stencil, &back[texel * 8 + 4], 4);
        EXPECT_EQ(depth, 0.25f) << texel;
        EXPECT_EQ(stencil & 0xff, 7u) << texel;
    }
    glClearDepth(1.0);
    glClearStencil(0);
}

TEST_F(FBOTest, SimpleFilterDrawsIntoTheTargetsAttachment)
{
    FBO f(dsNone, 2, 2);
    f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    Texture2D* second = f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    Texture2D source(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_NEAREST);
    unsigned char const blue[4] = {0, 0, 255, 255};
    source.copy(blue, 4);
    ASSERT_TRUE(f.enable());
    glViewport(0, 0, 2, 2);
    GLenum const both[2] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};
    glDrawBuffers(2, both);
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    GLSimpleFilter(ShaderManager::instance().ShaderCopy, &source, second);
    source.disable();
    EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT1, 1, 1), (std::vector<unsigned char>{0, 0, 255, 255}));
    EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1), (std::vector<unsigned char>{255, 0, 0, 255}));
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
}

TEST_F(FBOTest, SharingAllAttachments)
{
    FBO first(dsDepth, 4, 4);
    first.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    FBO copy(&first, false);
    EXPECT_EQ(copy.color(0), first.color(0));
    EXPECT_EQ(copy.attachments.front().useCount(), 2);
    EXPECT_TRUE(copy.compile());
}

TEST_F(FBOTest, DepthOnlySharingOfAnFBOWithoutDepthAsserts)
{
    FBO plain(dsNone, 4, 4);
    EXPECT_DEATH(FBO(&plain, true), "DepthStencilType != dsNone");
}

TEST_F(FBOTest, TextureTargetAndDoubleBuffers)
{
    Shared<Texture2D> texture(new Texture2D(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE));
    FBOTexture around(texture);
    ASSERT_TRUE(around.enable());
    glViewport(0, 0, 2, 2);
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    std::vector<unsigned char> back;
    texture->getData(back);
    EXPECT_EQ(back[0], 255);

    // A double buffer: each step draws the front plus one into the back, then publishes it.
    FBODoubleBuffer buffer(2, 2);
    std::string step = "##VERTEX\nvoid main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);\n"
                       "gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }\n"
                       "##FRAGMENT\nuniform sampler2D Image;\nout vec4 oColor;\n"
                       "void main() { oColor = texelFetch(Image, ivec2(gl_FragCoord.xy), 0) + vec4(1.0); }\n";
    Shader* add = ShaderManager::instance().FromText(step).get();
    ASSERT_TRUE(buffer.enable());
    glClearColor(0, 0, 0, 0);
    for (Texture2D* t : {buffer.back(), buffer.front()}) {
        BindDrawBuffer(t);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(buffer.enableDraw());
        GLSimpleFilter(add, buffer.front(), buffer.back());
        buffer.copyBackToFront();
    }
    EXPECT_FLOAT_EQ(ReadColorFloat(GLenum(buffer.front()->attachment), 1, 1)[0], 5.0f);
}

} // namespace
} // namespace vel::test
