// Image readers refuse headers that promise more pixels than their file can hold, before
// decoding: each case is a tiny file whose header declares a huge or empty picture.
#include "OpenGL/ImageLimits.h"

#include "OpenGL/Texture2DArray.h"
#include "OpenGL/TextureManager.h"
#include "Scene/Elements/Mesh/MeshFixtures.h"
#include "TestImages.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <sys/resource.h>

#include <fstream>
#include <iterator>

namespace vel {
namespace {

std::string Bytes(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void Write(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string Le16(int v)
{
    return {char(v & 255), char((v >> 8) & 255)};
}

std::string Le32(int v)
{
    return Le16(v & 0xFFFF) + Le16(v >> 16);
}

// A one-frame GIF of 2 x 2 pixels whose logical screen claims width x height.
std::string GifScreen(std::string const& scratch, int width, int height)
{
    EXPECT_TRUE(test::WriteAnimatedGif(scratch, 2, 2, 1, 10));
    std::string gif = Bytes(scratch);
    return gif.replace(6, 4, Le16(width) + Le16(height));
}

// A Radiance header declaring width x height, followed by `body`.
std::string Hdr(int width, int height, std::string const& body)
{
    return "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(height) + " +X " + std::to_string(width) +
           "\n" + body;
}

// An 8-bit run-length BMP of width x height that ends at once (the rest is left to zeros).
std::string RleBmp(int width, int height)
{
    std::string dib = Le32(40) + Le32(width) + Le32(height) + Le16(1) + Le16(8) + Le32(1) + Le32(2) + Le32(2835) +
                      Le32(2835) + Le32(1) + Le32(0);
    std::string pixels = std::string("\x00\x00\x00\x00", 4) + std::string("\x00\x01", 2);
    return "BM" + Le32(14 + 40 + int(pixels.size())) + Le32(0) + Le32(14 + 40 + 4) + dib + pixels;
}

// A run-length true-colour TGA of width x height: one packet of 128 grey pixels.
std::string RleTga(int width, int height)
{
    return std::string("\x00\x00\x0A\x00\x00\x00\x00\x00\x00\x00\x00\x00", 12) + Le16(width) + Le16(height) +
           std::string("\x18\x00\xFF\x80\x80\x80", 6);
}

// The peak resident size of the process so far.
long PeakMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

class ImageLimitsTest : public ::testing::Test {
protected:
    void TearDown() override { TextureManager::instance().clear(); }
    std::string path(std::string const& file) const { return dir.filePath(QString::fromStdString(file)).toStdString(); }
    QTemporaryDir dir;
};

TEST_F(ImageLimitsTest, HeadersThatOverstateTheFileAreRefusedWithAMessage)
{
    struct Case {
        char const* file;
        std::string bytes;
        char const* says; // a piece of the logged reason
    };
    Case const cases[] = {
        {"screen.gif", GifScreen(path("scratch.gif"), 14648, 15201), "exceeds the texture limit"},
        {"screen2k.gif", GifScreen(path("scratch.gif"), 2000, 2000), "cannot hold"},
        {"truncated.hdr", Hdr(12000, 12000, "\x02\x02\x2E\xE0"), "cannot hold"},
        {"flat.hdr", Hdr(7, 1000, std::string(100, '\x80')), "cannot hold"},
        {"tga.hdr", RleTga(14000, 14000), "not a Radiance HDR image"},
        {"zero.hdr", Hdr(0, 4, std::string(64, '\x80')), "no pixels"},
        {"runs.hdr", Hdr(9, 4, std::string("\x02\x02\x00\x09\x89\x80", 6)), "run-length data"},
        {"rle.bmp", RleBmp(15000, 15000), "cannot hold"},
        {"wide.bmp", RleBmp(17000, 2), "exceeds the texture limit"},
        {"wide.png", "", "exceeds the texture limit"},
    };
    QImage wide(16385, 1, QImage::Format_Mono);
    wide.fill(0);
    ASSERT_TRUE(wide.save(dir.filePath("wide.png")));
    for (Case const& c : cases) {
        if (!c.bytes.empty())
            Write(path(c.file), c.bytes);
        test::LogCapture log;
        long peakBefore = PeakMiB();
        EXPECT_FALSE(TextureManager::instance().AddFile(path(c.file))) << c.file;
        // Refused before decoding: the declared pixels were never allocated.
        EXPECT_LT(PeakMiB() - peakBefore, 32) << c.file;
        EXPECT_EQ(log.entries.size(), 1u) << c.file;
        EXPECT_EQ(log.entries.empty() ? -1 : log.entries[0].second, 2) << c.file;
        EXPECT_TRUE(log.all().contains(QString::fromStdString(path(c.file)))) << c.file;
        EXPECT_TRUE(log.all().contains(c.says)) << c.file << ": " << log.all().toStdString();
    }
}

// The bounds are tight enough to refuse, but never refuse what an encoder can write: the
// smallest encodings (one colour a row) of the borderline sizes load, rows bottom first.
TEST_F(ImageLimitsTest, TheBestCompressedRealFilesStillLoad)
{
    std::pair<int, int> const sizes[] = {{1, 3}, {7, 3}, {8, 3}, {127, 3}, {128, 3}, {400, 3}, {8, 16000}};
    for (auto [width, height] : sizes) {
        std::vector<float> rgb;
        for (int y = 0; y < height; ++y)
            rgb.insert(rgb.end(), size_t(width) * 3, float(y + 1));
        std::string file = path("uniform" + std::to_string(width) + "x" + std::to_string(height) + ".hdr");
        ASSERT_TRUE(test::WriteHdr(file, width, height, rgb));
        test::LogCapture log;
        Shared<Texture> t = TextureManager::instance().AddFile(file);
        ASSERT_TRUE(t) << width << " " << log.all().toStdString();
        ASSERT_EQ(t->data.size(), size_t(width) * size_t(height) * 12) << width;
        auto const* values = reinterpret_cast<float const*>(t->data.data());
        for (int row : {0, height / 2, height - 1})
            EXPECT_NEAR(values[size_t(row) * size_t(width) * 3], float(height - row), 0.01f * float(height - row))
                << width << " x " << height << ", row " << row;
    }
    QImage mono(2000, 2000, QImage::Format_Mono);
    mono.fill(1);
    ASSERT_TRUE(mono.save(dir.filePath("mono.png"), nullptr, 0));
    Shared<Texture> png = TextureManager::instance().AddFile(path("mono.png"));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->width(), 2000);
}

TEST_F(ImageLimitsTest, ALayerListStopsAtTheLayerLimit)
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(qRgb(9, 9, 9));
    ASSERT_TRUE(image.save(dir.filePath("layer.png")));
    std::string list;
    for (int i = 0; i < MAX_TEXTURE_LAYERS + 5; ++i)
        list += path("layer.png") + (i % 2 ? "\r\n" : "\n");
    Write(path("layers.txt"), list);
    test::LogCapture log;
    Texture2DArray array;
    EXPECT_FALSE(array.loadFiles(path("layers.txt")));
    EXPECT_EQ(array.depth(), MAX_TEXTURE_LAYERS);
    EXPECT_EQ(log.entries.size(), 1u) << log.all().toStdString();
}

} // namespace
} // namespace vel
