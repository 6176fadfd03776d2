// GLState mirrors, the shared draw helpers and VertexBuffer on a real context.
#include "GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLState.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "OpenGL/VertexBuffer.h"

#include <functional>
#include <memory>

namespace vel::test {
namespace {

class GLStateTest : public GLResourceTest {
protected:
    // An RGBA8 target of size x size, bound, in the viewport, cleared to transparent black.
    void useClearedTarget(int size)
    {
        target = std::make_unique<FBO>(dsNone, size, size);
        target->addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        ASSERT_TRUE(target->enable());
        glViewport(0, 0, size, size);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    std::unique_ptr<FBO> target;
};

TEST_F(GLStateTest, SetCallsGLOnlyOnAChange)
{
    GLCallCounter counter;
    gl_Depth_Test.set(true);
    gl_Depth_Test.set(true);
    EXPECT_EQ(counter.enableDisable(), 1);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    gl_Depth_Test.set(true, true); // forced: GL is told again
    EXPECT_EQ(counter.enableDisable(), 2);
    gl_Depth_Test.set(false);
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(counter.enableDisable(), 3);
}

TEST_F(GLStateTest, ResyncReadsForeignChangesBackIntoTheMirrors)
{
    // Each case: bind through the mirrors, let foreign code change GL behind them, resync,
    // bind again through the mirrors, and ask GL whether ours is in place.
    FBO fbo(dsNone, 2, 2);
    fbo.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    Shared<Shader> shader = ShaderManager::instance().FromText(
        "##VERTEX\nvoid main() { gl_Position = vec4(0.0); }\n"
        "##FRAGMENT\nout vec4 c;\nvoid main() { c = vec4(1.0); }\n");
    Texture2D texture(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    auto integer = [](GLenum name) {
        GLint value = 0;
        glGetIntegerv(name, &value);
        return value;
    };
    struct Case {
        char const* what;
        std::function<bool()> enable;
        std::function<void()> foreign;
        std::function<bool()> inPlace;
    };
    Case const cases[] = {
        {"program", [&] { return shader->enable(); }, [] { glUseProgram(0); },
         [&] { return unsigned(integer(GL_CURRENT_PROGRAM)) == shader->program; }},
        {"framebuffers", [&] { return fbo.enable(); }, [] { glBindFramebuffer(GL_FRAMEBUFFER, 0); },
         [&] {
             return unsigned(integer(GL_DRAW_FRAMEBUFFER_BINDING)) == fbo.framebuffer &&
                    unsigned(integer(GL_READ_FRAMEBUFFER_BINDING)) == fbo.framebuffer;
         }},
        {"read framebuffer", [&] { return fbo.enableRead(); }, [] { glBindFramebuffer(GL_READ_FRAMEBUFFER, 0); },
         [&] { return unsigned(integer(GL_READ_FRAMEBUFFER_BINDING)) == fbo.framebuffer; }},
        {"depth test", [] { gl_Depth_Test.set(true); return true; }, [] { glDisable(GL_DEPTH_TEST); },
         [] { return glIsEnabled(GL_DEPTH_TEST) == GL_TRUE; }},
        {"culling", [] { gl_Cull_Face.set(false); return true; }, [] { glEnable(GL_CULL_FACE); },
         [] { return glIsEnabled(GL_CULL_FACE) == GL_FALSE; }},
        {"stencil test", [] { gl_Stencil_Test.set(true); return true; }, [] { glDisable(GL_STENCIL_TEST); },
         [] { return glIsEnabled(GL_STENCIL_TEST) == GL_TRUE; }},
        {"texture unit", [&] { return texture.enable(); },
         [&] {
             glActiveTexture(GLenum(GL_TEXTURE0 + texture.unit));
             glBindTexture(GL_TEXTURE_2D, 0);
             glActiveTexture(GL_TEXTURE3);
         },
         [&] {
             glActiveTexture(GLenum(GL_TEXTURE0 + texture.unit));
             return unsigned(integer(GL_TEXTURE_BINDING_2D)) == texture.textureId;
         }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(c.enable());
        c.foreign();
        GLint active = integer(GL_ACTIVE_TEXTURE);
        ResyncGLMirrors();
        EXPECT_EQ(integer(GL_ACTIVE_TEXTURE), active); // the resync changes no GL state
        ASSERT_TRUE(c.enable());
        EXPECT_TRUE(c.inPlace());
    }
    texture.disable();
    EXPECT_EQ(Texture::GLActiveTexture, 0);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
}

TEST_F(GLStateTest, GLInitResetsTheSharedState)
{
    gl_Cull_Face.set(true);
    gl_Stencil_Test.set(true);
    glEnable(GL_BLEND);
    glDepthFunc(GL_GREATER);
    glDepthMask(GL_FALSE);
    GLInit();
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_STENCIL_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_MULTISAMPLE));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_CUBE_MAP_SEAMLESS));
    GLint func = 0;
    GLboolean mask = GL_FALSE;
    glGetIntegerv(GL_DEPTH_FUNC, &func);
    glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
    EXPECT_EQ(func, GL_LESS);
    EXPECT_EQ(mask, GL_TRUE);
    EXPECT_TRUE(gl_Depth_Test.value);
    EXPECT_FALSE(gl_Cull_Face.value);
    gl_Depth_Test.set(false);
}

TEST_F(GLStateTest, FillCoversTheTargetEvenWithCullingOn)
{
    useClearedTarget(3);
    glCullFace(GL_FRONT); // the quad faces front: culling would drop it
    gl_Cull_Face.set(true);
    ASSERT_TRUE(ShaderManager::instance().ShaderFillVec4->enable());
    Shader::setUniform("Color", 1.0f, 0.0f, 1.0f, 1.0f);
    GLFill();
    EXPECT_FALSE(gl_Cull_Face.value);
    std::vector<unsigned char> pixels = ReadColor(GL_COLOR_ATTACHMENT0, 3, 3);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(pixels[size_t(i * 4)], 255) << i;
        EXPECT_EQ(pixels[size_t(i * 4 + 2)], 255) << i;
    }
    glCullFace(GL_BACK);
}

TEST_F(GLStateTest, SegmentDrawsALine)
{
    useClearedTarget(5);
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\nvoid main() { gl_Position = vec4(gl_VertexID == 0 ? -1.0 : 1.0, 0.0, 0.0, 1.0); }\n"
        "##FRAGMENT\nout vec4 c;\nvoid main() { c = vec4(1.0); }\n");
    ASSERT_TRUE(s->enable());
    GLSegment();
    std::vector<unsigned char> pixels = ReadColor(GL_COLOR_ATTACHMENT0, 5, 5);
    int lit = 0;
    for (size_t i = 0; i < pixels.size(); i += 4)
        lit += pixels[i] == 255;
    EXPECT_EQ(lit, 5); // one row of the 5 x 5 target
}

TEST_F(GLStateTest, VertexBufferWritesOnlyWhenDirtyAndInPlaceWhenTheSizeHolds)
{
    VertexBuffer buffer;
    EXPECT_TRUE(buffer.compile());
    EXPECT_TRUE(buffer.enable());
    float first[4] = {1, 2, 3, 4}, second[4] = {5, 6, 7, 8}, longer[6] = {9, 10, 11, 12, 13, 14};
    GLCallCounter counter;
    buffer.write(first, sizeof first);
    EXPECT_NE(buffer.buffer, 0u);
    EXPECT_FALSE(buffer.dirty);
    buffer.write(second, sizeof second); // clean: nothing happens
    EXPECT_EQ(counter.bufferData(), 1);
    EXPECT_EQ(counter.bufferSubData(), 0);
    buffer.dirty = true;
    buffer.write(second, sizeof second);
    EXPECT_EQ(counter.bufferSubData(), 1);
    buffer.dirty = true;
    buffer.write(longer, sizeof longer);
    EXPECT_EQ(counter.bufferData(), 2);
    EXPECT_EQ(buffer.size, int(sizeof longer));

    float back[6] = {};
    glBindBuffer(GL_ARRAY_BUFFER, buffer.buffer);
    glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof back, back);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    EXPECT_EQ(back[0], 9);
    EXPECT_EQ(back[5], 14);
}

} // namespace
} // namespace vel::test
