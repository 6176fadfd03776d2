#include "Support/GLTestContext.h"

#include <cstring>
#include <string>

namespace vel::test {
namespace {

class GLContextTest : public GLTest {};

TEST_F(GLContextTest, IsCoreProfileOfAtLeast33)
{
    GLint major = 0, minor = 0, profile = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
    EXPECT_GE(major * 10 + minor, 33);
    EXPECT_TRUE(profile & GL_CONTEXT_CORE_PROFILE_BIT);
    EXPECT_NE(glGetString(GL_RENDERER), nullptr);
}

TEST_F(GLContextTest, ClearsAFramebufferAndReadsItBack)
{
    GLuint texture = 0, framebuffer = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    ASSERT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));

    glViewport(0, 0, 4, 4);
    glClearColor(1.0f, 0.5f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    // A scissored second clear proves the read-back sees individual pixels, not a constant.
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 1, 1);
    glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);

    std::vector<unsigned char> pixels = ReadPixelsRGBA(0, 0, 4, 4);
    EXPECT_EQ(pixels[0], 0);
    EXPECT_EQ(pixels[2], 255);
    EXPECT_EQ(pixels[4 * 5 + 0], 255);
    EXPECT_NEAR(pixels[4 * 5 + 1], 128, 1);
    EXPECT_EQ(pixels[4 * 5 + 2], 0);
    EXPECT_EQ(pixels[4 * 5 + 3], 255);

    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &texture);
}

} // namespace
} // namespace vel::test
