// Environment: the face rotations, the levels filled on the GPU, and changing environments.
#include "GLResourceTest.h"
#include "TestImages.h"
#include "Support/MathMatchers.h"

#include "OpenGL/Environment.h"
#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GeneratedImages.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/TextureManager.h"

#include <QTemporaryDir>

#include <cmath>

namespace vel::test {
namespace {

TEST(EnvironmentRotation, TurnsTheQuadOntoEachFaceAsGLLaysItOut)
{
    int const size = 4;
    for (int face = 0; face < 6; ++face) {
        Matrix3<float> r;
        Environment::rotation(face, r);
        for (int j = 0; j < size; ++j)
            for (int i = 0; i < size; ++i) {
                // The quad's point over texel (i, j) of the face, and where GL looks it up.
                float x = (2 * i + 1.0f) / size - 1, y = (2 * j + 1.0f) / size - 1;
                Vector3<float> turned = Vector3<float>(x, y, -1) * r;
                Vector3<double> expected = TextureCube::FaceDirection(face, i, j, size);
                EXPECT_TRUE(Near(Vector3<double>(turned), expected, 1e-6)) << face << " " << i << " " << j;
            }
    }
    Matrix3<float> kept(2, 0, 0, 0, 2, 0, 0, 0, 2);
    for (int face : {-1, 6}) {
        Environment::rotation(face, kept);
        EXPECT_EQ(kept.m[0], 2.0f);
        EXPECT_EQ(kept.m[1], 0.0f);
    }
}

class EnvironmentTest : public GLResourceTest {
protected:
    // A panorama file of w x h RGB floats, rows top first.
    std::string panorama(int w, int h, std::vector<float> const& rgb)
    {
        std::string path = folder.filePath("sky.hdr").toStdString();
        EXPECT_TRUE(WriteHdr(path, w, h, rgb));
        return path;
    }
    // The RGB texels of one face of `level`.
    static std::vector<float> Face(Environment& cube, int face, int level)
    {
        int side = cube.size >> level;
        std::vector<float> texels(size_t(side) * size_t(side) * 3);
        EXPECT_TRUE(cube.enable());
        glActiveTexture(GLenum(GL_TEXTURE0 + cube.unit));
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), level, GL_RGB, GL_FLOAT, texels.data());
        cube.disable();
        return texels;
    }
    static int Parameter(Environment& cube, GLenum name)
    {
        EXPECT_TRUE(cube.enable());
        glActiveTexture(GLenum(GL_TEXTURE0 + cube.unit));
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_CUBE_MAP, name, &value);
        cube.disable();
        return value;
    }

    QTemporaryDir folder;
};

TEST_F(EnvironmentTest, AConstantPanoramaGivesItsColourAtEveryLevelAndTheStateComesBack)
{
    std::vector<float> rgb;
    for (int i = 0; i < 16 * 8; ++i)
        rgb.insert(rgb.end(), {0.5f, 1.5f, 3.0f});
    Environment cube(panorama(16, 8, rgb), 32, 4);
    ASSERT_FALSE(cube.loadFailed);
    FBO other(dsNone, 4, 4);
    other.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(other.enable());
    glViewport(1, 2, 3, 4);
    ASSERT_TRUE(cube.compile());

    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 1);
    EXPECT_EQ(viewport[3], 4);
    GLint draw = -1;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    GLint program = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    // The caller's framebuffer is bound again, and the mirrors tell the truth.
    EXPECT_EQ(unsigned(draw), other.framebuffer);
    EXPECT_EQ(unsigned(draw), FBO::DRAW_ID);
    EXPECT_EQ(unsigned(program), Shader::id);
    EXPECT_EQ(Parameter(cube, GL_TEXTURE_MAX_LEVEL), 3);
    EXPECT_EQ(Parameter(cube, GL_TEXTURE_BASE_LEVEL), 0);
    EXPECT_EQ(Parameter(cube, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    for (int level = 0; level < 4; ++level)
        for (int face = 0; face < 6; ++face) {
            std::vector<float> texels = Face(cube, face, level);
            for (size_t i = 0; i < texels.size(); ++i)
                ASSERT_NEAR(texels[i], rgb[i % 3], 1e-4f) << "level " << level << " face " << face << " texel " << i / 3;
        }
}

TEST_F(EnvironmentTest, TheDefaultSizeEndsWithAnEightPixelLevel)
{
    std::vector<float> rgb(8 * 4 * 3, 1.0f);
    Shared<Texture> texture = TextureManager::instance().AddFile(panorama(8, 4, rgb));
    auto* cube = dynamic_cast<Environment*>(texture.get());
    ASSERT_NE(cube, nullptr);
    ASSERT_TRUE(cube->compile());
    EXPECT_EQ(cube->maxLevel(), 5);
    EXPECT_EQ(Parameter(*cube, GL_TEXTURE_MAX_LEVEL), 5);
    ASSERT_TRUE(cube->enable());
    GLint width = 0;
    glActiveTexture(GLenum(GL_TEXTURE0 + cube->unit));
    glGetTexLevelParameteriv(GL_TEXTURE_CUBE_MAP_POSITIVE_Z, 5, GL_TEXTURE_WIDTH, &width);
    cube->disable();
    EXPECT_EQ(width, 8);
}

TEST_F(EnvironmentTest, ABrightSpotSpreadsWiderAtCoarserLevels)
{
    // Black, with a bright spot straight ahead (-Z, the middle of the panorama).
    int const w = 64, h = 32;
    std::vector<float> rgb(size_t(w) * size_t(h) * 3, 0.0f);
    for (int y = h / 2 - 1; y <= h / 2; ++y)
        for (int x = w / 2 - 1; x <= w / 2; ++x)
            for (int c = 0; c < 3; ++c)
                rgb[(size_t(y) * w + size_t(x)) * 3 + size_t(c)] = 100.0f;
    Environment cube(panorama(w, h, rgb), 64, 6);
    ASSERT_TRUE(cube.compile());
    double lastSpread = 0, firstPower = 0;
    for (int level = 0; level < 6; ++level) {
        int side = cube.size >> level;
        // The mean angle from -Z, weighted by radiance and solid angle; and the total power.
        double weighted = 0, power = 0;
        for (int face = 0; face < 6; ++face) {
            std::vector<float> texels = Face(cube, face, level);
            for (int j = 0; j < side; ++j)
                for (int i = 0; i < side; ++i) {
                    Vector3<double> d = TextureCube::FaceDirection(face, i, j, side);
                    double len = d.length();
                    double solidAngle = (4.0 / (side * side)) / (len * len * len);
                    double radiance = texels[(size_t(j) * side + size_t(i)) * 3];
                    power += radiance * solidAngle;
                    weighted += radiance * solidAngle * std::acos(-d.z / len);
                }
        }
        double spread = weighted / power;
        if (level == 0)
            firstPower = power;
        else
            EXPECT_GT(spread, lastSpread * 1.2) << "level " << level;
        EXPECT_NEAR(power, firstPower, 0.25 * firstPower) << "level " << level;
        lastSpread = spread;
    }
}

TEST_F(EnvironmentTest, TheSkyBoxLooksAlongMinusZWithPlusXToTheRightAndUpAtTheTop)
{
    // Red grows with the panorama's column, green towards its top.
    int const w = 32, h = 16, side = 8;
    std::vector<float> rgb;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            rgb.insert(rgb.end(), {(x + 0.5f) / w, 1 - (y + 0.5f) / h, 0.5f});
    Environment cube(panorama(w, h, rgb), 32, 2);
    FBO screen(dsNone, side, side);
    screen.addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    ASSERT_TRUE(cube.compile());
    ASSERT_TRUE(screen.enable());
    glViewport(0, 0, side, side);
    {
        GLMachine m{ShaderManager::instance().ShaderSkyBox, &cube};
        ASSERT_TRUE(m.enable());
        Shader::setUniform("ProjectionModelViewMatrix", Matrix4<float>());
        Shader::setUniform("Rotation", Matrix3<float>());
        Shader::setUniform("box", cube.activeTexture());
        Shader::setUniform("level", 0.0f);
        GLFill();
    }
    std::vector<float> out = ReadColorFloat(GL_COLOR_ATTACHMENT0, side, side);
    auto at = [&](int x, int y, int c) { return out[(size_t(y) * side + size_t(x)) * 4 + size_t(c)]; };
    EXPECT_NEAR(at(side / 2, side / 2, 0), 0.5f, 0.05f); // the middle column
    EXPECT_NEAR(at(side / 2, side / 2, 1), 0.5f, 0.05f); // the horizon
    for (int i = 0; i + 1 < side; ++i) {
        EXPECT_LT(at(i, side / 2, 0), at(i + 1, side / 2, 0)) << i;
        EXPECT_LT(at(side / 2, i, 1), at(side / 2, i + 1, 1)) << i;
    }
}

TEST_F(EnvironmentTest, AnUnreadableFileLeavesTheCurrentEnvironment)
{
    std::vector<float> rgb(8 * 4 * 3, 1.0f);
    Rendering& rendering = Rendering::instance();
    ASSERT_TRUE(rendering.setEnvironment(panorama(8, 4, rgb)));
    Environment* current = rendering.environment();
    ASSERT_NE(current, nullptr);
    std::string garbage = folder.filePath("garbage.hdr").toStdString();
    ASSERT_TRUE(WriteGarbage(garbage));
    EXPECT_FALSE(TextureManager::instance().AddFile(garbage));
    for (std::string const& path : {garbage, folder.filePath("missing.hdr").toStdString(), std::string(MISSING_TEXTURE_PATH)}) {
        EXPECT_FALSE(rendering.setEnvironment(path)) << path;
        EXPECT_EQ(rendering.environment(), current);
    }
    rendering.closeResources();
    EXPECT_EQ(rendering.environment(), nullptr);
}

} // namespace
} // namespace vel::test
