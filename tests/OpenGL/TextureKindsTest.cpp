// Texture3D (animations), Texture2DArray (layers from files) and TextureCube (panoramas)
// on a real context.
#include "GLResourceTest.h"
#include "TestImages.h"
#include "Support/MathMatchers.h"

#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2DArray.h"
#include "OpenGL/Texture3D.h"
#include "OpenGL/TextureCube.h"

#include <QTemporaryDir>

#include <cmath>
#include <fstream>

namespace vel::test {
namespace {

class TextureKindsTest : public GLResourceTest {
protected:
    std::string path(char const* file) const { return dir.filePath(file).toStdString(); }
    QTemporaryDir dir;
};

// ------------------------------------------------------------------------------------------
// Texture3D
// ------------------------------------------------------------------------------------------

TEST_F(TextureKindsTest, AnimatedGifBecomesOneSlicePerFrame)
{
    ASSERT_TRUE(WriteAnimatedGif(path("anim.gif"), 5, 3, 3, 10));
    Texture3D t(path("anim.gif"));
    ASSERT_FALSE(t.loadFailed);
    EXPECT_EQ(t.width(), 5);
    EXPECT_EQ(t.height(), 3);
    EXPECT_EQ(t.depth(), 3);
    EXPECT_FLOAT_EQ(t.frameDelay, 0.1f);

    ASSERT_TRUE(t.compile());
    EXPECT_TRUE(t.data.empty());
    std::vector<unsigned char> back;
    t.getData(back);
    ASSERT_EQ(back.size(), size_t(5 * 3 * 3 * 4));
    for (int frame = 0; frame < 3; ++frame) {
        unsigned char const* slice = back.data() + frame * 5 * 3 * 4;
        QRgb fill = GifPalette(frame + 1);
        EXPECT_EQ(slice[0], qRed(fill)) << frame;
        EXPECT_EQ(slice[1], qGreen(fill)) << frame;
        EXPECT_EQ(slice[2], qBlue(fill)) << frame;
        // The white top-left pixel is mirrored to the start of the last row.
        EXPECT_EQ(slice[(2 * 5) * 4 + 0], 255) << frame;
        EXPECT_EQ(slice[(2 * 5) * 4 + 1], 255) << frame;
    }
    GLint wrapR = 0;
    ASSERT_TRUE(t.enable());
    glGetTexParameteriv(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, &wrapR);
    t.disable();
    EXPECT_EQ(wrapR, GL_REPEAT);
}

// ------------------------------------------------------------------------------------------
// Texture2DArray
// ------------------------------------------------------------------------------------------

TEST_F(TextureKindsTest, ArrayLayersComeFromAListFileAndAreScaledToTheFirst)
{
    QImage red(4, 2, QImage::Format_RGB32), blue(8, 8, QImage::Format_RGB32);
    red.fill(qRgb(255, 0, 0));
    blue.fill(qRgb(0, 0, 255));
    ASSERT_TRUE(red.save(dir.filePath("red.png")));
    ASSERT_TRUE(blue.save(dir.filePath("blue.png")));
    std::ofstream(path("layers.txt")) << path("red.png") << "\r\n" << path("missing.png") << "\n" << path("blue.png") << "\n";

    Texture2DArray t;
    EXPECT_TRUE(t.loadFiles(path("layers.txt")));
    EXPECT_EQ(t.width(), 4);
    EXPECT_EQ(t.height(), 2);
    EXPECT_EQ(t.depth(), 3);
    ASSERT_TRUE(t.compile());
    EXPECT_TRUE(Logged("ERROR Texture2DArray::compile " + path("missing.png")));

    std::vector<unsigned char> back;
    t.getData(back);
    ASSERT_EQ(back.size(), size_t(4 * 2 * 3 * 3));
    EXPECT_EQ(back[0], 255);
    EXPECT_EQ(back[2], 0);
    size_t third = 2 * 4 * 2 * 3;
    for (size_t i = third; i < back.size(); i += 3) { // every texel of the scaled layer
        EXPECT_EQ(back[i], 0) << i;
        EXPECT_EQ(back[i + 2], 255) << i;
    }
}

// ------------------------------------------------------------------------------------------
// TextureCube
// ------------------------------------------------------------------------------------------

// Colours of the synthetic panorama: the top and bottom sixth, then four bands of columns.
QRgb const kUp = qRgb(255, 255, 255), kDown = qRgb(0, 0, 0), kBack = qRgb(255, 255, 0) /* +Z, at the seam */,
           kLeft = qRgb(255, 0, 0) /* -X */, kFront = qRgb(0, 255, 0) /* -Z */, kRight = qRgb(0, 0, 255) /* +X */;

QImage SyntheticPanorama(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            QRgb c;
            if (y < h / 6)
                c = kUp;
            else if (y >= h - h / 6)
                c = kDown;
            else if (x < w / 8 || x >= 7 * w / 8)
                c = kBack;
            else if (x < 3 * w / 8)
                c = kLeft;
            else if (x < 5 * w / 8)
                c = kFront;
            else
                c = kRight;
            image.setPixel(x, y, c);
        }
    return image;
}

// Samples `cube` in the given directions on the GPU.
std::vector<std::vector<float>> SampleCube(TextureCube& cube, std::vector<Vector3<float>> const& directions)
{
    std::vector<float> flat;
    for (Vector3<float> const& d : directions) {
        flat.push_back(d.x);
        flat.push_back(d.y);
        flat.push_back(d.z);
    }
    Shared<Shader> s = ShaderManager::instance().FromText("##VERTEX\nuniform samplerCube Cube;\nuniform vec3 Directions[8];\n"
                                                          "out vec4 oColor;\n"
                                                          "void main() { oColor = textureLod(Cube, Directions[gl_VertexID], 0.0); }\n");
    EXPECT_TRUE(s->enable());
    EXPECT_TRUE(cube.enable());
    Shader::setUniform("Cube", cube.activeTexture());
    Shader::setUniformArray("Directions", 3, flat.data(), int(directions.size()));
    auto words = CaptureFeedback({4}, int(directions.size()));
    cube.disable();
    std::vector<std::vector<float>> colours;
    for (size_t i = 0; i < directions.size(); ++i)
        colours.push_back({AsFloat(words[0][4 * i]), AsFloat(words[0][4 * i + 1]), AsFloat(words[0][4 * i + 2])});
    return colours;
}

void ExpectColour(std::vector<float> const& got, QRgb expected, char const* what)
{
    EXPECT_NEAR(got[0], qRed(expected) / 255.0f, 0.02f) << what;
    EXPECT_NEAR(got[1], qGreen(expected) / 255.0f, 0.02f) << what;
    EXPECT_NEAR(got[2], qBlue(expected) / 255.0f, 0.02f) << what;
}

TEST_F(TextureKindsTest, PanoramaDirectionsLandOnTheExpectedRegions)
{
    ASSERT_TRUE(SyntheticPanorama(256, 128).save(dir.filePath("panorama.png")));
    TextureCube cube(path("panorama.png"), 32);
    ASSERT_FALSE(cube.loadFailed);
    EXPECT_EQ(cube.panoramaWidth, 256);
    EXPECT_EQ(cube.width(), 32);
    ASSERT_TRUE(cube.compile());
    EXPECT_TRUE(cube.data.empty());

    struct Direction {
        Vector3<float> direction;
        QRgb colour;
        char const* what;
    };
    Direction const directions[] = {{{0, 1, 0}, kUp, "+Y is the top of the picture"},
                                    {{0, -1, 0}, kDown, "-Y is the bottom"},
                                    {{0, 0, -1}, kFront, "-Z is the middle column"},
                                    {{1, 0, 0}, kRight, "+X is right of the middle"},
                                    {{-1, 0, 0}, kLeft, "-X is left of the middle"},
                                    {{0, 0, 1}, kBack, "+Z is at the seam"},
                                    {{0.5f, 0.1f, -0.85f}, kFront, "30 degrees right of -Z is still in front"},
                                    {{-0.2f, 0.05f, 0.97f}, kBack, "near +Z is at the seam"}};
    std::vector<Vector3<float>> asked;
    for (Direction const& d : directions)
        asked.push_back(d.direction);
    auto colours = SampleCube(cube, asked);
    for (size_t i = 0; i < asked.size(); ++i)
        ExpectColour(colours[i], directions[i].colour, directions[i].what);
    // Halfway between -Z and +X is the boundary of the front and right bands.
    double x, y;
    TextureCube::PanoramaPosition({0.7, 0.0, -0.7}, 256, 128, x, y);
    EXPECT_NEAR(x, 256 * 0.625, 1e-9);
    EXPECT_NEAR(y, 64, 1e-9);
}

TEST_F(TextureKindsTest, FaceDirectionsFollowGLsCubeConventions)
{
    // The centre texel of each face looks along the face's axis.
    Vector3<double> axes[6] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (int face = 0; face < 6; ++face) {
        EXPECT_TRUE(Near(TextureCube::FaceDirection(face, 1, 1, 3), axes[face], 1e-12)) << face;
    }
    // On +X, row 0 is the top (t = -1 goes to +Y), column 0 is towards +Z.
    Vector3<double> corner = TextureCube::FaceDirection(0, 0, 0, 2);
    EXPECT_GT(corner.y, 0);
    EXPECT_GT(corner.z, 0);
}

TEST_F(TextureKindsTest, HdrPanoramaKeepsValuesAboveOne)
{
    int w = 16, h = 8;
    std::vector<float> rgb(size_t(w * h * 3));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            float* p = rgb.data() + (y * w + x) * 3;
            p[0] = y < h / 2 ? 8.0f : 0.25f; // bright sky, dim ground
            p[1] = 1.0f;
            p[2] = 0.5f;
        }
    ASSERT_TRUE(WriteHdr(path("sky.hdr"), w, h, rgb));
    TextureCube cube(path("sky.hdr"), 8);
    ASSERT_FALSE(cube.loadFailed);
    EXPECT_EQ(cube.type, GL_FLOAT);
    EXPECT_EQ(cube.internalFormat, GL_RGB32F);
    ASSERT_TRUE(cube.compile());
    auto colours = SampleCube(cube, {{0, 1, 0}, {0, -1, 0}});
    EXPECT_NEAR(colours[0][0], 8.0f, 0.1f);
    EXPECT_NEAR(colours[1][0], 0.25f, 0.01f);
    EXPECT_NEAR(colours[0][1], 1.0f, 0.02f);
}

// The bytes of a file.
std::string Bytes(std::string const& file)
{
    std::ifstream in(file, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

TEST_F(TextureKindsTest, AnimationPanoramaAndLayerFilesThatFail)
{
    ASSERT_TRUE(WriteGarbage(path("garbage.gif")) && WriteGarbage(path("fake.hdr")));
    // Truncated files: a valid header, the frames or rows cut short.
    ASSERT_TRUE(WriteAnimatedGif(path("whole.gif"), 5, 3, 3, 10));
    ASSERT_TRUE(WriteHdr(path("whole.hdr"), 16, 8, std::vector<float>(16 * 8 * 3, 1.0f)));
    std::ofstream(path("cut.gif"), std::ios::binary) << Bytes(path("whole.gif")).substr(0, 800);
    std::string hdr = Bytes(path("whole.hdr"));
    std::ofstream(path("cut.hdr"), std::ios::binary) << hdr.substr(0, hdr.size() / 3);
    struct Case {
        char const* file;
        bool cube;       // read as a panorama, else as an animation
        std::string log; // the start of the error logged, if checked
    };
    for (Case const& c : {Case{"missing.gif", false, "ERROR Texture3D::load " + path("missing.gif")},
                          Case{"garbage.gif", false, "ERROR Texture3D::load " + path("garbage.gif")},
                          Case{"cut.gif", false, ""}, Case{"missing.hdr", true, ""}, Case{"cut.hdr", true, ""},
                          Case{"fake.hdr", true, "ERROR TextureCube::loadhdr " + path("fake.hdr")},
                          Case{"missing.png", true, "ERROR TextureCube::load "}}) {
        SCOPED_TRACE(c.file);
        Messages().clear();
        EXPECT_TRUE(c.cube ? TextureCube(path(c.file)).loadFailed : Texture3D(path(c.file)).loadFailed);
        EXPECT_TRUE(c.log.empty() || Logged(c.log));
    }
    Texture2DArray layers;
    EXPECT_FALSE(layers.loadFiles(path("no-list.txt")));
    EXPECT_TRUE(Logged("ERROR Texture2DArray::loadFiles"));
    EXPECT_FALSE(layers.loadFile(path("no-image.png")));
    EXPECT_TRUE(Logged("ERROR Texture2DArray::loadFile"));
    EXPECT_TRUE(layers.paths.empty());
}

TEST_F(TextureKindsTest, DepthCubesCompareAndPanoramasRecompileInPlace)
{
    TextureCube depth(16, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_FLOAT);
    ASSERT_TRUE(depth.compile());
    ASSERT_TRUE(depth.enable());
    GLint mode = 0;
    glGetTexParameteriv(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_COMPARE_MODE, &mode);
    depth.disable();
    EXPECT_EQ(mode, GL_COMPARE_REF_TO_TEXTURE);

    // New panorama pixels into an existing cube go through sub-image uploads.
    ASSERT_TRUE(SyntheticPanorama(64, 32).save(dir.filePath("p.png")));
    TextureCube cube(path("p.png"), 8);
    ASSERT_EQ(cube.format, GL_RGB);
    ASSERT_TRUE(cube.compile());
    unsigned id = cube.textureId;
    std::vector<unsigned char> white(64 * 32 * 3, 255);
    cube.copy(white.data(), int(white.size()));
    ASSERT_TRUE(cube.compile());
    EXPECT_EQ(cube.textureId, id);
    std::vector<unsigned char> faces;
    cube.getData(faces);
    ASSERT_EQ(faces.size(), size_t(6 * 8 * 8 * 3));
    EXPECT_EQ(faces[0], 255);
    EXPECT_EQ(faces[faces.size() - 1], 255);
}

TEST_F(TextureKindsTest, CubeFacesAreSaved)
{
    ASSERT_TRUE(SyntheticPanorama(64, 32).save(dir.filePath("p.png")));
    TextureCube cube(path("p.png"), 8);
    ASSERT_TRUE(cube.save(path("face"), 100));
    QImage up(dir.filePath("face2.png"));
    ASSERT_FALSE(up.isNull());
    EXPECT_EQ(up.pixel(4, 4), kUp);
    QImage front(dir.filePath("face5.png"));
    EXPECT_EQ(front.pixel(4, 4), kFront);
}

} // namespace
} // namespace vel::test
