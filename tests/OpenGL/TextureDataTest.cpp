// The CPU side of textures: dimensions, formats, CPU reads and data-texture sizes.
// No GL context: describing a texture makes no GL call.
#include "OpenGL/Texture2D.h"
#include "OpenGL/Texture3D.h"

#include "Math/HFloat.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cstring>

namespace vel {
namespace {

// Files become RGBA bytes, rows bottom first when mirrored, the same whether the decoder
// writes into the CPU pixels directly (32-bit kinds) or into an image of its own.
TEST(TextureData, FilesLoadAsRgbaWhateverTheDecoder)
{
    struct Case {
        char const* kind;
        QImage::Format format;
        int height;
    };
    Case const cases[] = {{"png", QImage::Format_RGB32, 5},      {"png", QImage::Format_ARGB32, 4},
                          {"bmp", QImage::Format_RGB32, 3},      {"png", QImage::Format_Indexed8, 5},
                          {"png", QImage::Format_Grayscale8, 2}, {"ppm", QImage::Format_RGB32, 1}};
    QTemporaryDir dir;
    for (Case const& c : cases) {
        QImage image(7, c.height, QImage::Format_ARGB32);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < 7; ++x)
                image.setPixel(x, y, qRgba(x * 30, y * 50, 200 - x * 20, 255 - y * 40));
        QString file = dir.filePath(QString("image%1.%2").arg(int(c.format)).arg(c.kind));
        ASSERT_TRUE(image.convertToFormat(c.format).save(file, c.kind)) << file.toStdString();
        for (bool mirror : {false, true}) {
            QImage expected = QImage(file).mirrored(false, mirror).convertToFormat(QImage::Format_RGBA8888);
            std::vector<unsigned char> bytes(size_t(expected.sizeInBytes()));
            std::memcpy(bytes.data(), expected.constBits(), bytes.size());
            // A size limit above the image's own sends it the general road.
            Texture2D direct(file.toStdString(), mirror, GL_REPEAT, GL_LINEAR);
            Texture2D general(file.toStdString(), 100, 100, mirror, GL_REPEAT, GL_LINEAR);
            for (Texture2D* t : {&direct, &general}) {
                EXPECT_EQ(t->width(), 7);
                EXPECT_EQ(t->height(), c.height);
                EXPECT_EQ(t->data, bytes) << file.toStdString() << (mirror ? " mirrored" : "")
                                          << (t == &direct ? " direct" : " general");
            }
        }
    }
}

TEST(TextureData, DimensionsAnswerZeroWhereMissing)
{
    Texture2D flat(6, 4, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_EQ(flat.width(), 6);
    EXPECT_EQ(flat.height(), 4);
    EXPECT_EQ(flat.depth(), 0);
    Texture2D failed("/no/such/image.png");
    EXPECT_TRUE(failed.loadFailed);
    EXPECT_EQ(failed.width(), 0);
    EXPECT_EQ(failed.height(), 0);
    Texture3D volume(2, 3, 4, GL_R32F, GL_RED, GL_FLOAT);
    EXPECT_EQ(volume.depth(), 4);
    EXPECT_EQ(volume.byteCount(), 2 * 3 * 4 * 4);
}

TEST(TextureData, BytesPerPixelByInternalFormat)
{
    struct Case {
        int format;
        int bytes;
    };
    for (Case c : {Case{GL_RGB8, 3}, Case{GL_RGBA8, 4}, Case{GL_RGBA32F, 16}, Case{GL_RGB32F, 12},
                   Case{GL_RGBA16F, 8}, Case{GL_R32F, 4}, Case{GL_R8, 1}, Case{GL_RG16F, 4},
                   Case{GL_DEPTH32F_STENCIL8, 8}, Case{GL_RGBA32UI, 16}, Case{0x1234, 0}}) {
        Texture2D t(1, 1, c.format, GL_RGBA, GL_UNSIGNED_BYTE);
        EXPECT_EQ(t.bytesPerPixel(), c.bytes) << std::hex << c.format;
    }
}

TEST(TextureData, GetFloatReadsTheFirstChannelInTheTypesUnits)
{
    unsigned char bytes[] = {10, 20, 30, 40, 50, 60, 70, 80};
    Texture2D rgba(2, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    rgba.copy(bytes, sizeof bytes);
    EXPECT_EQ(rgba.getFloat(0), 10.0f);
    EXPECT_EQ(rgba.getFloat(Vector2<int>(1, 0)), 50.0f);

    float values[] = {0.5f, -2.0f, 3.0f, 4.0f};
    Texture2D floats(2, 2, GL_R32F, GL_RED, GL_FLOAT);
    floats.copy(values, sizeof values);
    EXPECT_EQ(floats.getFloat(Vector2<int>(1, 1)), 4.0f);

    unsigned short halves[] = {HFloat::compress(1.5f), 0, 0, 0, HFloat::compress(-0.25f), 0, 0, 0};
    Texture2D half(2, 1, GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    half.copy(halves, sizeof halves);
    EXPECT_EQ(half.getFloat(1), -0.25f);

    unsigned short words[] = {65535, 7};
    Texture2D shorts(2, 1, GL_R16, GL_RED, GL_UNSIGNED_SHORT);
    shorts.copy(words, sizeof words);
    EXPECT_EQ(shorts.getFloat(0), 65535.0f);
}

TEST(TextureData, GetFloatOutsideThePixelsAsserts)
{
    Texture2D t(2, 1, GL_R32F, GL_RED, GL_FLOAT);
    float values[] = {1, 2};
    t.copy(values, sizeof values);
    EXPECT_DEATH(t.getFloat(2), "texel outside the CPU pixels");
    EXPECT_DEATH(t.getFloat(-1), "texel outside the CPU pixels");
}

TEST(TextureData, InterpolatedFloatIsBilinearAndClamped)
{
    float values[] = {0, 10, 20, 30}; // 2 x 2: bottom row 0, 10; top row 20, 30
    Texture2D t(2, 2, GL_R32F, GL_RED, GL_FLOAT);
    t.copy(values, sizeof values);
    EXPECT_FLOAT_EQ(t.getInterpolatedFloat({0.5f, 0.5f}), 15.0f);
    EXPECT_FLOAT_EQ(t.getInterpolatedFloat({0.25f, 0.0f}), 2.5f);
    EXPECT_FLOAT_EQ(t.getInterpolatedFloat({1.0f, 1.0f}), 30.0f);
    EXPECT_FLOAT_EQ(t.getInterpolatedFloat({-5.0f, 9.0f}), 20.0f);
}

// Copies and resizes mark the texture for upload; a resize to the same size does not.
TEST(TextureData, CopyAndResizeMarkForUploadOnlyOnAChange)
{
    Texture2D t(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    unsigned char bytes[3] = {1, 2, 3};
    t.copy(bytes, 3);
    EXPECT_EQ(t.data.size(), 3u);
    t.Compiled = true; // as if uploaded
    t.copy(nullptr, 0);
    EXPECT_TRUE(t.data.empty());
    EXPECT_FALSE(t.Compiled);
    t.Compiled = true;
    t.resize(2, 2);
    EXPECT_TRUE(t.Compiled);
    t.resize(8, 2);
    EXPECT_FALSE(t.Compiled);
    EXPECT_EQ(t.width(), 8);
}

TEST(TextureData, MipMapLevelsAndDataTextureSizes)
{
    EXPECT_EQ(Texture2D(1, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE).mipMapLevels(), 1);
    EXPECT_EQ(Texture2D(256, 64, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE).mipMapLevels(), 9);
    EXPECT_EQ(Texture2D(5, 3, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE).mipMapLevels(), 3);

    struct Case {
        int n, w, h;
    };
    for (Case c : {Case{1, 2, 1}, Case{9, 4, 3}, Case{10, 4, 3}, Case{16, 4, 4}, Case{17, 4, 5}, Case{100, 10, 10},
                   Case{101, 10, 11}, Case{1000000, 1000, 1000}}) {
        Vector2<int> size = Texture2D::LinearSize_2DEven(c.n);
        EXPECT_EQ(size.x, c.w) << c.n;
        EXPECT_EQ(size.y, c.h) << c.n;
        EXPECT_EQ(size.x % 2, 0);
        EXPECT_GE(size.x * size.y, c.n);
    }
}

} // namespace
} // namespace vel
