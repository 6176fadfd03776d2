// Texture and Texture2D on a real context: upload, read-back, units, mipmaps, files.
#include "GLResourceTest.h"
#include "TestImages.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "OpenGL/Texture2DArray.h"
#include "OpenGL/Texture3D.h"
#include "OpenGL/TextureCube.h"

#include <QTemporaryDir>

#include <cstring>
#include <memory>

namespace vel::test {
namespace {

class Texture2DTest : public GLResourceTest {
protected:
    std::string path(char const* file) const { return dir.filePath(file).toStdString(); }
    QTemporaryDir dir;
};

std::vector<unsigned char> const kPixels = {255, 0, 0, 255, 0, 255, 0, 255,  // bottom row
                                            0, 0, 255, 255, 10, 20, 200, 128}; // top row

TEST_F(Texture2DTest, RenderToTextureAndReadBack)
{
    Texture2D source(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_NEAREST);
    source.copy(kPixels.data(), int(kPixels.size()));
    FBO target(dsNone, 2, 2);
    Texture2D* color = target.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(target.enableDraw());
    glViewport(0, 0, 2, 2);
    GLSimpleFilter(ShaderManager::instance().ShaderCopy, &source, color);
    EXPECT_EQ(Texture::GLActiveTexture, 0); // the filter's machine gave the unit back

    std::vector<unsigned char> back;
    color->getData(back);
    EXPECT_EQ(back, kPixels);

    GLSimpleFilter(ShaderManager::instance().ShaderCopyGreyMax, &source, color);
    color->getData(back);
    EXPECT_EQ(back[12], 200); // the largest channel of (10, 20, 200)
    EXPECT_EQ(back[13], 200);
    EXPECT_EQ(back[15], 128);
}

// Storage comes from nothing, or from a caller's block leaving the CPU pixels alone; a copy
// makes the next enable upload again, into the same texture.
TEST_F(Texture2DTest, UploadsAllocateTakeACallersBlockAndRespecifyAfterACopy)
{
    Texture2D empty(3, 5, GL_RGBA32F, GL_RGBA, GL_FLOAT);
    ASSERT_TRUE(empty.compile());
    ASSERT_TRUE(empty.enable());
    GLint w = 0, h = 0, format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    empty.disable();
    EXPECT_EQ(w, 3);
    EXPECT_EQ(h, 5);
    EXPECT_EQ(format, GL_RGBA32F);

    Texture2D t(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    std::vector<unsigned char> block = kPixels, back;
    ASSERT_TRUE(t.compile(block.data()));
    EXPECT_TRUE(t.data.empty());
    t.getData(back);
    EXPECT_EQ(back, kPixels);
    unsigned id = t.textureId;
    std::vector<unsigned char> const reversed(kPixels.rbegin(), kPixels.rend());
    t.copy(reversed.data(), 16);
    EXPECT_FALSE(t.Compiled);
    ASSERT_TRUE(t.enable());
    t.disable();
    EXPECT_EQ(t.textureId, id); // re-specified, not re-created
    t.getData(back);
    EXPECT_EQ(back, reversed);
}

TEST_F(Texture2DTest, LoadedPixelsAreDroppedAfterUploadUnlessKept)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(qRgb(0, 0, 255));
    image.setPixel(0, 0, qRgb(255, 0, 0)); // top-left
    ASSERT_TRUE(image.save(dir.filePath("small.png")));

    Texture2D t(path("small.png"));
    ASSERT_FALSE(t.loadFailed);
    EXPECT_EQ(t.width(), 3);
    EXPECT_EQ(t.height(), 2);
    EXPECT_EQ(t.internalFormat, GL_RGBA8);
    ASSERT_EQ(t.data.size(), 3u * 2u * 4u); // the rows' order is checked without GL
    std::vector<unsigned char> described = t.data;

    ASSERT_TRUE(t.compile());
    EXPECT_TRUE(t.data.empty());
    std::vector<unsigned char> back;
    t.getData(back);
    EXPECT_EQ(back, described);

    Texture2D unmirrored(path("small.png"), false);
    unmirrored.keepData = true;
    ASSERT_TRUE(unmirrored.compile());
    EXPECT_EQ(unmirrored.data.size(), 24u);
}

TEST_F(Texture2DTest, SizeLimitScalesDownKeepingTheAspect)
{
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(Qt::gray);
    ASSERT_TRUE(image.save(dir.filePath("wide.png")));
    Texture2D limited(path("wide.png"), 10, 10);
    EXPECT_EQ(limited.width(), 10);
    EXPECT_EQ(limited.height(), 5);
    Texture2D small(path("wide.png"), 100, 100);
    EXPECT_EQ(small.width(), 40);
}

TEST_F(Texture2DTest, MissingAndUnreadableFilesSetTheFailedFlag)
{
    ASSERT_TRUE(WriteGarbage(path("garbage.png")));
    for (std::string const& file : {path("none.png"), path("garbage.png"), dir.path().toStdString()}) {
        Texture2D t(file);
        EXPECT_TRUE(t.loadFailed) << file;
        EXPECT_TRUE(t.data.empty());
        EXPECT_TRUE(Logged("ERROR Texture2D::load " + file));
    }
}

// The name GL has bound at `unit` for 2D textures.
unsigned BoundAt(int unit)
{
    GLint name = 0;
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    return unsigned(name);
}

TEST_F(Texture2DTest, UnitsAreHandedOutAsAStack)
{
    Texture2D a(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE), b(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    Texture2D c(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    {
        GLMachine m{&a, &b};
        ASSERT_TRUE(m.enable());
        EXPECT_EQ(a.activeTexture(), 0);
        EXPECT_EQ(b.activeTexture(), 1);
        EXPECT_EQ(Texture::GLActiveTexture, 2);
        EXPECT_TRUE(a.enable()); // already bound: keeps its unit
        EXPECT_EQ(Texture::GLActiveTexture, 2);
    }
    EXPECT_EQ(Texture::GLActiveTexture, 0);
    EXPECT_FALSE(a.bound);
    EXPECT_EQ(b.activeTexture(), 0); // the next user gets the first unit again

    // Out of order: a unit freed below one still held is not handed out over the held one.
    ASSERT_EQ(a.activeTexture(), 1);
    b.disable();
    ASSERT_EQ(c.activeTexture(), 2);
    EXPECT_EQ(BoundAt(1), a.textureId);
    EXPECT_EQ(BoundAt(2), c.textureId);
    a.disable();
    c.disable();
    EXPECT_EQ(Texture::GLActiveTexture, 0);
}

TEST_F(Texture2DTest, CompilingLeavesAForeignBindingInPlace)
{
    auto array = std::make_unique<Texture2DArray>();
    array->resize(2, 2, 2);
    std::unique_ptr<Texture> const kinds[] = {
        std::make_unique<Texture2D>(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE),
        std::make_unique<Texture3D>(2, 2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE), std::move(array),
        std::make_unique<TextureCube>(2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE)};
    for (std::unique_ptr<Texture> const& t : kinds) {
        SCOPED_TRACE(t->Target());
        GLuint foreign = 0;
        glGenTextures(1, &foreign);
        glActiveTexture(GLenum(GL_TEXTURE0 + Texture::GLActiveTexture)); // the unit an upload borrows
        glBindTexture(GLenum(t->Target()), foreign);
        ASSERT_TRUE(t->compile());
        GLint bound = 0;
        glGetIntegerv(BindingOf(t->Target()), &bound);
        EXPECT_EQ(unsigned(bound), foreign);
        glBindTexture(GLenum(t->Target()), 0);
        glDeleteTextures(1, &foreign);
    }
}

TEST_F(Texture2DTest, MipMapsAverageTheLevelAbove)
{
    std::vector<unsigned char> half(4 * 4 * 4, 0);
    for (int i = 0; i < 8; ++i)
        for (int c = 0; c < 4; ++c)
            half[size_t(i * 4 + c)] = 255;
    Texture2D t(4, 4, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    t.copy(half.data(), int(half.size()));
    EXPECT_EQ(t.mipMapLevels(), 3);
    t.generateMipMaps(2);
    EXPECT_EQ(t.maxMipLevel, 2);
    EXPECT_FALSE(t.bound);
    ASSERT_TRUE(t.enable());
    unsigned char top[4] = {0, 0, 0, 0};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 2, GL_RGBA, GL_UNSIGNED_BYTE, top);
    t.disable();
    EXPECT_NEAR(top[0], 128, 2);
}

TEST_F(Texture2DTest, MipMapsOfATargetAfterAResize)
{
    // levels: as asked; level: the one read back (-1: the whole chain, down to 1 x 1).
    struct Case {
        int levels;
        int level;
    };
    for (Case c : {Case{3, 3}, Case{-1, 4}}) {
        SCOPED_TRACE(c.levels);
        FBO f(dsNone, 8, 8);
        Texture2D* t = f.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        for (int size : {8, 16}) {
            f.resize(size, size);
            ASSERT_TRUE(f.enable());
            glViewport(0, 0, size, size);
            glClearColor(0, size == 16 ? 1.0f : 0.0f, 0, 1);
            glClear(GL_COLOR_BUFFER_BIT);
            FBO::disable(fbBoth);
            glGetError();
            t->generateMipMaps(c.levels);
            EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        }
        ASSERT_TRUE(t->enable());
        GLint width = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, c.level, GL_TEXTURE_WIDTH, &width);
        std::vector<unsigned char> texel(16 * 16 * 4);
        if (width > 0)
            glGetTexImage(GL_TEXTURE_2D, c.level, GL_RGBA, GL_UNSIGNED_BYTE, texel.data());
        t->disable();
        EXPECT_EQ(width, 16 >> c.level);
        EXPECT_EQ(texel[1], 255); // the content after the resize
    }
}

TEST_F(Texture2DTest, SaveWritesTopRowFirst)
{
    Texture2D t(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    t.copy(kPixels.data(), 16);
    ASSERT_TRUE(t.save(path("saved.png"), 100));
    QImage image(dir.filePath("saved.png"));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.pixel(0, 1), qRgb(255, 0, 0)); // bottom-left texel, bottom row of the file
    EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 255));

    float depths[4] = {0.5f, 1.0f, 1.0f, 0.0f};
    Texture2D d(2, 2, GL_R32F, GL_RED, GL_FLOAT);
    d.copy(depths, sizeof depths);
    ASSERT_TRUE(d.savef(path("depth.png")));
    QImage mask(dir.filePath("depth.png"));
    EXPECT_EQ(mask.pixel(0, 1), qRgb(255, 255, 255));
    EXPECT_EQ(mask.pixel(1, 1), qRgb(0, 0, 0));
    EXPECT_EQ(mask.pixel(1, 0), qRgb(255, 255, 255));
}

TEST_F(Texture2DTest, RandomNoiseIsKeptForTheCpu)
{
    Shared<Texture2D> t = Texture2D::random(4, 3);
    EXPECT_EQ(Texture2D::Random, t);
    ASSERT_EQ(t->data.size(), 4u * 3u * 16u);
    ASSERT_EQ(Texture2D::Rand.size(), 3u);
    ASSERT_EQ(Texture2D::Rand[0].size(), 4u);
    for (int i = 0; i < 12 * 4; ++i) {
        float value;
        std::memcpy(&value, t->data.data() + i * 4, 4);
        EXPECT_GE(value, -1.0f);
        EXPECT_LT(value, 1.0f);
    }
    EXPECT_EQ(t->getFloat(Vector2<int>(2, 1)), Texture2D::Rand[1][2].x);
    ASSERT_TRUE(t->compile());
    EXPECT_EQ(t->wrap, GL_REPEAT);
    t = Shared<Texture2D>();
    Rendering::instance().closeResources();
    EXPECT_EQ(Texture2D::Random, Shared<Texture2D>()) << "kept past the context";
}

} // namespace
} // namespace vel::test
