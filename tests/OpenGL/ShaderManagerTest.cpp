#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"

#include "OpenGL/Resources.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>

namespace vel {
namespace {

std::string const kSource = "##VERTEX\nvoid main() { gl_Position = vec4(0.0); }\n"
                            "##FRAGMENT\nout vec4 c;\nvoid main() { c = vec4(1.0); }\n";

class ShaderManagerTest : public ::testing::Test {
protected:
    void SetUp() override { InitResources(); }
    ShaderManager& manager = ShaderManager::instance();
};

TEST_F(ShaderManagerTest, CommentsAndWhiteSpaceShareOneProgram)
{
    Shared<Shader> a = manager.FromText(kSource);
    Shared<Shader> b = manager.FromText("// another comment\n  " + kSource + "\n\n/* and more */\n");
    ASSERT_TRUE(a);
    EXPECT_EQ(a, b);
    EXPECT_EQ(a->text, "##VERTEX\nvoid main() { gl_Position = vec4(0.0); }\n##FRAGMENT\nout vec4 c;\n"
                       "void main() { c = vec4(1.0); }\n");
}

TEST_F(ShaderManagerTest, DefinesMakeDistinctPrograms)
{
    Shared<Shader> plain = manager.FromText(kSource);
    Shared<Shader> vertex = manager.FromText(kSource, "A");
    Shared<Shader> fragment = manager.FromText(kSource, "", "A");
    EXPECT_NE(plain, vertex);
    EXPECT_NE(plain, fragment);
    EXPECT_NE(vertex, fragment); // the same name on the other stage is another program
    EXPECT_EQ(vertex->vertexDefines, "A");
    EXPECT_EQ(fragment->fragmentDefines, "A");
    EXPECT_EQ(manager.FromText(kSource, "", "A"), fragment);
}

TEST_F(ShaderManagerTest, DescribingCountsButCompilesNothing)
{
    int before = Shader::COUNT;
    Shared<Shader> s = manager.FromText(kSource + "// unique 1\nfloat unique1;\n");
    EXPECT_EQ(Shader::COUNT, before + 1);
    EXPECT_FALSE(s->Compiled);
    EXPECT_EQ(s->program, 0u);
}

TEST_F(ShaderManagerTest, EmptyOrMissingSourcesGiveANullShared)
{
    EXPECT_FALSE(manager.FromText(""));
    EXPECT_FALSE(manager.FromFile("/no/such/shader.glsl"));
    EXPECT_FALSE(manager.FromFile(":/shaders/Curve/Color.glsl"));
    EXPECT_FALSE(manager.FromFiles("/no/such/v.glsl", ":/shaders/Copy.glsl"));
    EXPECT_FALSE(manager.FromVFileFText("/no/such/v.glsl", "void main() {}"));
}

TEST_F(ShaderManagerTest, FilesAreJoined)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    std::string v = dir.filePath("v.glsl").toStdString();
    std::string f = dir.filePath("f.glsl").toStdString();
    std::ofstream(v) << "##VERTEX\nvoid main() {}";
    std::ofstream(f) << "##FRAGMENT\nvoid main() { }";

    Shared<Shader> both = manager.FromFiles(v, f);
    ASSERT_TRUE(both);
    EXPECT_EQ(both->text, "##VERTEX\nvoid main() {}\n##FRAGMENT\nvoid main() { }\n");
    EXPECT_EQ(both->name, v + " " + f);

    Shared<Shader> text = manager.FromVFileFText(v, "void main() {}");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->text, "##VERTEX\nvoid main() {}\n##FRAGMENT\nvoid main() {}\n");
}

TEST_F(ShaderManagerTest, TheCatalogueIsDescribedFromResources)
{
    ASSERT_FALSE(manager.catalogue.empty());
    for (Shader* s : manager.catalogue) {
        ASSERT_NE(s, nullptr);
        EXPECT_FALSE(s->text.empty()) << s->name;
    }
    EXPECT_NE(manager.ShaderCopy, manager.ShaderCopyGreyMax);
    EXPECT_EQ(manager.ShaderCopyGreyMax->fragmentDefines, "GREY_MAX");
}

TEST_F(ShaderManagerTest, FactoriesAssertOnEmptyNames)
{
    EXPECT_DEATH(manager.FromFile(""), "!filename.empty\\(\\)");
    EXPECT_DEATH(manager.FromFiles("a", ""), "!vert_file.empty\\(\\) && !frag_file.empty\\(\\)");
    EXPECT_DEATH(manager.FromVFileFText("a", ""), "!vert_file.empty\\(\\) && !frag_text.empty\\(\\)");
}

// ---- ShaderIncludeManager

TEST(ShaderIncludeManager, ShippedHeadersAreRegisteredAtConstruction)
{
    InitResources();
    ShaderIncludeManager& includes = ShaderIncludeManager::instance();
    ASSERT_EQ(ShaderIncludeManager::IncludeFiles().size(), 5u);
    for (std::string const& path : ShaderIncludeManager::IncludeFiles()) {
        ASSERT_EQ(includes.files.count(path), 1u) << path;
        EXPECT_FALSE(includes.files[path].empty()) << path;
    }
    EXPECT_NE(includes.AddFile(":/shaders/Include/MaterialUtils.glsl").find("DecodeMaterialUnsigned"),
              std::string::npos);
}

TEST(ShaderIncludeManager, NamesThatYieldNothing)
{
    ShaderIncludeManager& includes = ShaderIncludeManager::instance();
    EXPECT_EQ(includes.AddFile(""), "");
    EXPECT_EQ(includes.AddFile("/no/such/header.h"), "");
    EXPECT_EQ(includes.files.count("/no/such/header.h"), 0u);
    EXPECT_EQ(includes.AddFile("?Common -1"), "");
    EXPECT_EQ(includes.AddFile("?Common 1000"), "");
    EXPECT_EQ(includes.AddFile("?Common"), "");
}

TEST(ShaderIncludeManager, CommonIncludesByIndex)
{
    ShaderIncludeManager& includes = ShaderIncludeManager::instance();
    includes.common = {"float zero;", "float one;"};
    EXPECT_EQ(includes.AddFile("?Common 1"), "float one;");
    EXPECT_EQ(includes.AddFile("?Common 0"), "float zero;");
    includes.common.clear();
}

TEST(ShaderIncludeManager, FilesAreReadOnce)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    std::string path = dir.filePath("h.glsl").toStdString();
    std::ofstream(path) << "float first;";
    ShaderIncludeManager& includes = ShaderIncludeManager::instance();
    EXPECT_EQ(includes.AddFile(path), ""); // outside the include folders
    includes.folders.push_back(dir.path().toStdString());
    EXPECT_EQ(includes.AddFile(path), "float first;");
    std::ofstream(path) << "float second;";
    EXPECT_EQ(includes.AddFile(path), "float first;");
    includes.folders.pop_back();
}

TEST(ShaderIncludeManager, IndexOfReadsTheLastToken)
{
    EXPECT_EQ(ShaderIncludeManager::IndexOf("?Common 12"), 12);
    EXPECT_EQ(ShaderIncludeManager::IndexOf("?Common 3 "), 3);
    EXPECT_EQ(ShaderIncludeManager::IndexOf("?Common x"), -1);
    EXPECT_EQ(ShaderIncludeManager::IndexOf("?Common 4x"), -1);
    EXPECT_EQ(ShaderIncludeManager::IndexOf(""), -1);
    EXPECT_EQ(ShaderIncludeManager::IndexOf("7"), 7);
}

} // namespace
} // namespace vel
