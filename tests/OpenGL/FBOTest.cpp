// FBO on a real context: completeness, binding mirrors, resizing and shared depth.
#include "GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLState.h"
#include "OpenGL/ShaderManager.h"

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

TEST_F(FBOTest, DepthAndDepthStencilTargetsAreComplete)
{
    FBO depth(dsDepth, 8, 4);
    depth.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_TRUE(depth.compile());
    EXPECT_EQ(depth.DepthStencil()->internalFormat, GL_DEPTH_COMPONENT24);
    EXPECT_EQ(depth.color(0)->attachment, GL_COLOR_ATTACHMENT0);

    FBO stencil(dsDepthStencil, 8, 4);
    stencil.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    stencil.addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    EXPECT_TRUE(stencil.compile());
    EXPECT_EQ(stencil.DepthStencil()->internalFormat, GL_DEPTH32F_STENCIL8);
    EXPECT_EQ(stencil.color(1)->attachment, GL_COLOR_ATTACHMENT1);

    FBO none(dsNone, 8, 4);
    EXPECT_EQ(none.DepthStencil(), nullptr);
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

TEST_F(FBOTest, ResizeToTheSameSizeLeavesGLObjectsAlone)
{
    FBO f(dsDepth, 4, 4);
    f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(f.enable());
    unsigned framebuffer = f.framebuffer, texture = f.color(0)->textureId;
    EXPECT_FALSE(f.resize(4, 4));
    EXPECT_TRUE(f.Compiled);
    EXPECT_EQ(f.framebuffer, framebuffer);
    EXPECT_EQ(f.color(0)->textureId, texture);
    EXPECT_EQ(FBO::DRAW_ID, framebuffer);
}

TEST_F(FBOTest, ResizeRebuildsAtTheNextEnable)
{
    FBO f(dsDepth, 4, 4);
    f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(f.enable());
    EXPECT_TRUE(f.resize(6, 3));
    EXPECT_FALSE(f.Compiled);
    EXPECT_EQ(f.framebuffer, 0u);
    EXPECT_EQ(FBO::DRAW_ID, 0u); // the deleted framebuffer is no longer named by the mirrors
    EXPECT_EQ(f.DepthStencil()->width(), 6);
    EXPECT_EQ(f.color(0)->height(), 3);
    ASSERT_TRUE(f.enable());
    glViewport(0, 0, 6, 3);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    std::vector<unsigned char> pixels = ReadColor(GL_COLOR_ATTACHMENT0, 6, 3);
    EXPECT_EQ(pixels[(2 * 6 + 5) * 4 + 1], 255); // the far corner exists
}

TEST_F(FBOTest, TwoTargetsShareOneDepthBuffer)
{
    FBO first(dsDepth, 4, 4);
    first.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    FBO second(&first, true);
    second.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_EQ(second.DepthStencil(), first.DepthStencil());
    EXPECT_EQ(second.attachments.size(), 2u);
    EXPECT_NE(second.color(0), first.color(0));

    // Resizing one resizes the shared texture for both; the owners resize together.
    EXPECT_TRUE(first.resize(8, 8));
    EXPECT_EQ(second.DepthStencil()->width(), 8);
    EXPECT_TRUE(second.resize(8, 8));

    // Depth written through the first is tested through the second.
    glViewport(0, 0, 8, 8);
    gl_Depth_Test.set(true);
    glDepthFunc(GL_LESS);
    ASSERT_TRUE(first.enable());
    glClearColor(0, 0, 0, 1);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    DrawQuad(0.0f, 1, 0, 0); // depth 0.5 in window space
    ASSERT_TRUE(second.enable());
    glClear(GL_COLOR_BUFFER_BIT);
    DrawQuad(0.4f, 0, 1, 0); // behind: rejected by the shared depth
    EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1)[1], 0);
    DrawQuad(-0.4f, 0, 0, 1); // in front: drawn
    EXPECT_EQ(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1)[2], 255);
    gl_Depth_Test.set(false);
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

    // Ping-pong: each buffer draws the other's content plus a step.
    FBODoubleBuffer ping(2, 2), pong(2, 2);
    std::string step = "##VERTEX\nvoid main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);\n"
                       "gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }\n"
                       "##FRAGMENT\nuniform sampler2D Image;\nout vec4 oColor;\n"
                       "void main() { oColor = texelFetch(Image, ivec2(gl_FragCoord.xy), 0) + vec4(1.0); }\n";
    Shader* add = ShaderManager::instance().FromText(step).get();
    ASSERT_TRUE(ping.enable());
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    FBODoubleBuffer* buffers[2] = {&ping, &pong};
    for (int i = 0; i < 5; ++i) {
        FBODoubleBuffer* from = buffers[i & 1];
        FBODoubleBuffer* to = buffers[(i + 1) & 1];
        ASSERT_TRUE(to->enableDraw());
        GLSimpleFilter(add, from->texture(), to->texture());
    }
    ASSERT_TRUE(pong.enableRead());
    EXPECT_FLOAT_EQ(ReadColorFloat(GL_COLOR_ATTACHMENT0, 1, 1)[0], 5.0f);
}

} // namespace
} // namespace vel::test
