// TextureManager: loading once by path, the missing-texture image, internal keys, and the
// scene block that references a texture. Loading describes only: no GL context is needed.
#include "OpenGL/TextureManager.h"

#include "OpenGL/Environment.h"
#include "OpenGL/GeneratedImages.h"
#include "OpenGL/Texture2D.h"
#include "Scene/OFile.h"
#include "TestImages.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <cstring>

namespace vel {
namespace {

class TextureManagerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(qRgb(1, 2, 3));
        ASSERT_TRUE(image.save(dir.filePath("image.png")));
    }
    void TearDown() override
    {
        manager.clear();
        manager.sceneFolder.clear();
    }
    std::string path(char const* file) const { return dir.filePath(file).toStdString(); }

    TextureManager& manager = TextureManager::instance();
    QTemporaryDir dir;
};

TEST_F(TextureManagerTest, AnEmptyPathGivesTheMissingTextureImage)
{
    Shared<Texture> missing = manager.AddFile("");
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->name, MISSING_TEXTURE_PATH);
    EXPECT_EQ(missing->wrap, GL_REPEAT);
    EXPECT_EQ(missing->filter, GL_LINEAR);
    ASSERT_EQ(missing->width(), 64);
    ASSERT_EQ(missing->height(), 64);
    // Mirrored at load: the image's top-left (magenta) starts the last row.
    unsigned char const* topLeft = missing->data.data() + 63 * 64 * 4;
    EXPECT_EQ(topLeft[0], 255);
    EXPECT_EQ(topLeft[1], 0);
    EXPECT_EQ(topLeft[2], 255);
    unsigned char const* nextSquare = topLeft + 8 * 4;
    EXPECT_LT(nextSquare[0], 64);
    EXPECT_EQ(manager.AddFile(""), missing);
    EXPECT_EQ(manager.AddFile(MISSING_TEXTURE_PATH), missing);
}

TEST_F(TextureManagerTest, TheFirstRequestOfAPathWins)
{
    Shared<Texture> first = manager.AddFile(path("image.png"), GL_CLAMP_TO_EDGE, GL_NEAREST);
    ASSERT_TRUE(first);
    Shared<Texture> second = manager.AddFile(path("image.png"), GL_REPEAT, GL_LINEAR);
    EXPECT_EQ(second, first);
    EXPECT_EQ(second->wrap, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(second->filter, GL_NEAREST);
    EXPECT_EQ(first->Target(), GL_TEXTURE_2D);
}

TEST_F(TextureManagerTest, FilesThatFailGiveNullAndAreNotStored)
{
    ASSERT_TRUE(test::WriteGarbage(path("garbage.png")));
    ASSERT_TRUE(test::WriteGarbage(path("garbage.hdr")));
    ASSERT_TRUE(test::WriteGarbage(path("garbage.gif")));
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder.png"));
    for (char const* file : {"missing.png", "garbage.png", "garbage.hdr", "garbage.gif", "folder.png", "noextension"}) {
        EXPECT_FALSE(manager.AddFile(path(file))) << file;
        EXPECT_EQ(manager.textures.count(path(file)), 0u) << file;
    }
    EXPECT_TRUE(manager.textures.empty());
}

TEST_F(TextureManagerTest, TheExtensionChoosesTheKind)
{
    ASSERT_TRUE(test::WriteAnimatedGif(path("anim.GiF"), 2, 2, 2, 5));
    std::vector<float> rgb(8 * 4 * 3, 2.0f);
    ASSERT_TRUE(test::WriteHdr(path("sky.Hdr"), 8, 4, rgb));
    Shared<Texture> gif = manager.AddFile(path("anim.GiF"));
    Shared<Texture> hdr = manager.AddFile(path("sky.Hdr"));
    ASSERT_TRUE(gif);
    ASSERT_TRUE(hdr);
    EXPECT_EQ(gif->Target(), GL_TEXTURE_3D);
    EXPECT_EQ(gif->depth(), 2);
    auto* environment = dynamic_cast<Environment*>(hdr.get());
    ASSERT_NE(environment, nullptr);
    EXPECT_EQ(environment->width(), 256);
    EXPECT_EQ(environment->levels, 6);
    EXPECT_EQ(environment->type, GL_FLOAT);
}

TEST_F(TextureManagerTest, InternalTexturesLiveUnderTheirOwnKeys)
{
    Shared<Texture> mine(new Texture2D(2, 2, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE));
    Shared<Texture> other(new Texture2D(4, 4, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE));
    EXPECT_EQ(manager.AddInternal(mine, "noise"), mine);
    EXPECT_EQ(manager.textures.count("?noise"), 1u);
    EXPECT_EQ(manager.AddInternal(other, "noise"), mine); // the stored one stays
    // A file of that name is another entry.
    EXPECT_EQ(manager.AddFile("noise"), Shared<Texture>());
    EXPECT_DEATH(manager.AddInternal(mine, ""), "!name.empty\\(\\)");
}

TEST_F(TextureManagerTest, SceneBlocksReferToThePathRelativeToTheScene)
{
    ASSERT_TRUE(QDir(dir.path()).mkdir("sub"));
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(dir.filePath("sub/red.png")));
    Shared<Texture> red = manager.AddFile(path("sub/red.png"));
    Shared<Texture> missing = manager.AddFile("");
    ASSERT_TRUE(red);

    EXPECT_EQ(manager.ScenePath(red.get()), path("sub/red.png")); // no scene folder: as stored
    manager.sceneFolder = dir.path().toStdString();
    EXPECT_EQ(manager.ScenePath(red.get()), "sub/red.png");
    EXPECT_EQ(manager.ScenePath(missing.get()), MISSING_TEXTURE_PATH); // resources stay as they are

    OFile out;
    red->DataWrite(out);
    std::string bytes = out.bytes();
    ASSERT_EQ(int(bytes.size()), red->DataSize());
    unsigned id = 0, size = 0;
    int length = 0;
    std::memcpy(&id, bytes.data(), 4);
    std::memcpy(&size, bytes.data() + 4, 4);
    std::memcpy(&length, bytes.data() + 8, 4);
    EXPECT_EQ(id, Texture::TEXTURE_2D_BLOCK);
    EXPECT_EQ(size, bytes.size());
    EXPECT_EQ(bytes.substr(12), "sub/red.png");
    EXPECT_EQ(length, 11);

    std::vector<float> rgb(8 * 4 * 3, 1.0f);
    ASSERT_TRUE(test::WriteHdr(path("sky.hdr"), 8, 4, rgb));
    Shared<Texture> sky = manager.AddFile(path("sky.hdr"));
    OFile cube;
    sky->DataWrite(cube);
    std::memcpy(&id, cube.bytes().data(), 4);
    EXPECT_EQ(id, Texture::TEXTURE_OTHER_BLOCK);
}

} // namespace
} // namespace vel
