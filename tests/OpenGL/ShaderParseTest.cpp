// The CPU half of Shader: how a source becomes the stage texts handed to GL.
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>

namespace vel {
namespace {

TEST(ShaderDefines, OneLinePerTokenWhateverTheBlanks)
{
    EXPECT_EQ(Shader::Defines("A  B"), "#define A\n#define B\n");
    EXPECT_EQ(Shader::Defines("  A\tB  "), "#define A\n#define B\n");
    EXPECT_EQ(Shader::Defines(""), "");
    // A token is a bare name: an equals sign stays part of it.
    EXPECT_EQ(Shader::Defines("N=3"), "#define N=3\n");
}

TEST(ShaderParse, TextAheadOfTheFirstMarkerIsIgnored)
{
    Shader::Stages s = Shader::Parse("garbage that is no GLSL\n##VERTEX\nvoid main() {}\n##FRAGMENT\nvoid main() {}\n",
                                     "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\nvoid main() {}\n");
    EXPECT_EQ(s.fragment, "#version 330 core\nvoid main() {}\n");
    EXPECT_TRUE(s.outputs.empty());
}

TEST(ShaderParse, MarkersMayStandInsideALineAndAreNotCopied)
{
    Shader::Stages s = Shader::Parse("// ##VERTEX stage\na;\n##FRAGMENT\nb;\n", "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\na;\n");
    EXPECT_EQ(s.fragment, "#version 330 core\nb;\n");
}

TEST(ShaderParse, DefinesStandAfterTheVersionAndPerStage)
{
    Shader::Stages s = Shader::Parse("##VERTEX\nv;\n##FRAGMENT\nf;\n", "A", "B  C");
    EXPECT_EQ(s.vertex, "#version 330 core\n#define A\nv;\n");
    EXPECT_EQ(s.fragment, "#version 330 core\n#define B\n#define C\nf;\n");
}

TEST(ShaderParse, AnOwnVersionIsKeptAndTheDefinesGoAheadOfIt)
{
    Shader::Stages s = Shader::Parse("##VERTEX\n#version 410 core\nv;\n##FRAGMENT\nf;\n", "A", "");
    EXPECT_EQ(s.vertex, "#define A\n#version 410 core\nv;\n");
    EXPECT_EQ(s.fragment, "#version 330 core\nf;\n");
}

TEST(ShaderParse, VertexOnlySourceNamesItsOutputsInLineOrder)
{
    Shader::Stages s = Shader::Parse("##VERTEX\nout vec3 oPosition;\nflat out int oSkipped;\n"
                                     "smooth out vec2 oAlsoSkipped;\nout vec4 oColor;\nvoid main() {}\n",
                                     "", "");
    EXPECT_TRUE(s.fragment.empty());
    EXPECT_EQ(s.outputs, (std::vector<std::string>{"oPosition", "oColor"}));
}

TEST(ShaderParse, OutLinesOfTheFragmentStageAreNoOutputs)
{
    Shader::Stages s = Shader::Parse("##VERTEX\nvoid main() {}\n##FRAGMENT\nout vec4 oColor;\n", "", "");
    EXPECT_TRUE(s.outputs.empty());
}

TEST(ShaderParse, IncludesAreExpandedOneLevelDeep)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    std::string inner = dir.filePath("inner.glsl").toStdString();
    std::string outer = dir.filePath("outer.glsl").toStdString();
    std::ofstream(inner) << "float inner;\n";
    // An out line of an included file is no transform-feedback output.
    std::ofstream(outer) << "out vec3 oHidden;\n#include \"" << inner << "\"\n";

    Shader::Stages s = Shader::Parse("##VERTEX\n#include \"" + outer + "\"\nout float oSeen;\n", "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\nout vec3 oHidden;\n#include \"" + inner + "\"\n\nout float oSeen;\n");
    EXPECT_EQ(s.outputs, std::vector<std::string>{"oSeen"});
}

TEST(ShaderParse, AMissingIncludeStaysForTheCompilerToReject)
{
    Shader::Stages s = Shader::Parse("##VERTEX\n#include \"/no/such/file.glsl\"\n#include no quotes\n", "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\n#include \"/no/such/file.glsl\"\n#include no quotes\n");
}

TEST(ShaderParse, ResourceIncludesAreRead)
{
    InitResources();
    Shader::Stages s = Shader::Parse("##VERTEX\n#include \":/shaders/Include/RenderFlags.glsl\"\n", "", "");
    EXPECT_NE(s.vertex.find("#define FLAG_LIT"), std::string::npos);
    EXPECT_EQ(s.vertex.find("#include"), std::string::npos);
}

TEST(ShaderParse, EmptyLinesOfAVerbatimTextKeepTheLineCount)
{
    // Shader layers hand over unsimplified text; its line numbers must survive for the editor.
    Shader::Stages s = Shader::Parse("##VERTEX\na;\n\nb;\r\n", "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\na;\n\nb;\n");
}

TEST(ShaderCount, CountsLiveInstances)
{
    int before = Shader::COUNT;
    {
        Shader a("##VERTEX\n"), b("##VERTEX\n");
        EXPECT_EQ(Shader::COUNT, before + 2);
    }
    EXPECT_EQ(Shader::COUNT, before);
}

TEST(ShaderTransforms, PushThenPopRestoresTheFrameButNotTheOffset)
{
    Shader::ProjectionMatrix.m[3] = 2.0;
    Shader::ModelViewMatrix = Matrix34<double>::Translation({1, 2, 3});
    Shader::NormalMatrixInv.m[4] = 5.0;
    Shader::Lens = 35.0f;
    Shader::PMVSign = -1.0f;
    std::vector<unsigned char> saved;
    Shader::Push(saved);
    size_t record = saved.size();
    EXPECT_EQ(record, 6 * 128 + 3 * 96 + 2 * 72 + 3 * 4u);

    // A nested render pushes again on top, sets its own transforms, and pops in turn.
    Shader::ModelViewMatrix = Matrix34<double>::Translation({-1, -1, -1});
    Shader::Push(saved);
    Shader::ProjectionMatrix.m[3] = 7.0;
    Shader::ProjectionOffset.m[0] = 9.0;
    Shader::Lens = 50.0f;
    Shader::Pop(saved);
    EXPECT_EQ(saved.size(), record);
    EXPECT_EQ(Shader::ProjectionMatrix.m[3], 2.0);
    EXPECT_EQ(Shader::ModelViewMatrix, Matrix34<double>::Translation({-1, -1, -1}));
    EXPECT_EQ(Shader::ProjectionOffset.m[0], 9.0); // not part of the record
    Shader::Pop(saved);
    EXPECT_TRUE(saved.empty());
    EXPECT_EQ(Shader::ModelViewMatrix, Matrix34<double>::Translation({1, 2, 3}));
    EXPECT_EQ(Shader::NormalMatrixInv.m[4], 5.0);
    EXPECT_EQ(Shader::Lens, 35.0f);
    EXPECT_EQ(Shader::PMVSign, -1.0f);
    EXPECT_DEATH(Shader::Pop(saved), "Shader::Pop without a matching Push");

    Shader::ProjectionMatrix = Matrix4<double>();
    Shader::ProjectionOffset = Matrix4<double>();
    Shader::ModelViewMatrix = Matrix34<double>();
    Shader::NormalMatrixInv = Matrix3<double>();
    Shader::Lens = Shader::PMVSign = 1.0f;
}

} // namespace
} // namespace vel
