// Every GLSL file the project ships also passes glslangValidator, after the layer's own
// preprocessing (stages split, includes expanded, defines and "#version" added), so that a
// driver stricter than Mesa's does not surprise a user.
#include "ShippedGlslPaths.h"

#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/ShaderManager.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace vel {
namespace {

// True when glslangValidator accepts `source` as a `stage` ("vert" or "frag"); else `log` says why.
bool Validate(std::string const& source, char const* stage, std::string& log)
{
    QTemporaryDir dir;
    QString path = dir.filePath(QString("shader.") + stage);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(source.c_str(), qint64(source.size()));
    file.close();
    QProcess validator;
    validator.setProcessChannelMode(QProcess::MergedChannels);
    validator.start(VEL_GLSLANG_VALIDATOR, {path});
    if (!validator.waitForFinished(60000)) {
        log = "glslangValidator did not finish";
        return false;
    }
    log = validator.readAll().toStdString();
    return validator.exitStatus() == QProcess::NormalExit && validator.exitCode() == 0;
}

class ShippedGlsl : public ::testing::Test {
protected:
    void SetUp() override { InitResources(); }
};

TEST_F(ShippedGlsl, TheValidatorRejectsBrokenGlsl)
{
    std::string log;
    EXPECT_FALSE(Validate("#version 330 core\nvoid main() { undefinedThing = 1; }\n", "frag", log));
    EXPECT_TRUE(Validate("#version 330 core\nvoid main() {}\n", "frag", log)) << log;
}

TEST_F(ShippedGlsl, EveryCatalogueProgramPassesInEachStage)
{
    ShaderManager& manager = ShaderManager::instance();
    ASSERT_FALSE(manager.catalogue.empty());
    for (Shader* shader : manager.catalogue) {
        ASSERT_NE(shader, nullptr);
        Shader::Stages stages = Shader::Parse(shader->text, shader->vertexDefines, shader->fragmentDefines);
        std::string what = shader->name + " [" + shader->vertexDefines + " / " + shader->fragmentDefines + "]";
        std::string log;
        EXPECT_TRUE(Validate(stages.vertex, "vert", log)) << what << "\n" << log << stages.vertex;
        if (!stages.fragment.empty()) {
            EXPECT_TRUE(Validate(stages.fragment, "frag", log)) << what << "\n" << log << stages.fragment;
        }
    }
}

TEST_F(ShippedGlsl, IncludeFilesPassInBothStages)
{
    for (std::string const& path : ShaderIncludeManager::IncludeFiles()) {
        std::string text = ShaderManager::ReadFile(path);
        ASSERT_FALSE(text.empty()) << path;
        std::string source = "#version 330 core\n" + text + "\nvoid main() {}\n";
        std::string log;
        EXPECT_TRUE(Validate(source, "vert", log)) << path << "\n" << log;
        EXPECT_TRUE(Validate(source, "frag", log)) << path << "\n" << log;
    }
}

TEST_F(ShippedGlsl, ShaderLayerHeadersPassInEveryGroupBufferKindAndStyle)
{
    for (int group = 0; group < ShaderLayer::GROUPS; ++group)
        for (bool own : {false, true})
            for (int style : {4, Rendering::STYLE_PBR}) {
                bool normal = group <= ShaderLayer::RunPostOpaque && !own;
                ShaderLayer layer(normal ? "void main() { oNormal = fNormal(vec3(0, 0, 1), RENDER_LIT); }"
                                         : "void main() { oColor = vec4(iTime) + iMouse[2]; }");
                layer.setCustom(group, own);
                std::string log;
                std::string const text = layer.FragText(style, true).text();
                EXPECT_TRUE(Validate(text, "frag", log)) << group << own << style << "\n" << log << text;
            }
}

TEST_F(ShippedGlsl, EveryFileIsAResourceAndIsUsed)
{
    QDir root(VEL_SHADER_SOURCE_DIR);
    ASSERT_TRUE(root.exists());
    // A file is used when a member is made from it, or includes it.
    std::vector<std::string> used;
    for (Shader* shader : ShaderManager::instance().catalogue) {
        used.push_back(shader->name);
        used.push_back(shader->text);
    }
    for (std::string const& include : ShaderIncludeManager::IncludeFiles())
        used.push_back(include);
    for (int group = 0; group < ShaderLayer::GROUPS; ++group)
        for (bool own : {false, true}) {
            used.push_back(ShaderLayer::IOHeader(group, own));
            used.push_back(ShaderManager::ReadFile(ShaderLayer::IOHeader(group, own)));
        }
    int files = 0;
    QDirIterator it(root.path(), {"*.glsl"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        std::string resource = ":/shaders/" + root.relativeFilePath(it.next()).toStdString();
        ++files;
        EXPECT_TRUE(QFile::exists(QString::fromStdString(resource))) << resource << " is missing from shaders.qrc";
        bool found = false;
        for (std::string const& name : used)
            found = found || name.find(resource) != std::string::npos;
        EXPECT_TRUE(found) << resource << " is neither an include file nor used (or included) by a catalogue member";
    }
    EXPECT_GT(files, 0);
}

} // namespace
} // namespace vel
