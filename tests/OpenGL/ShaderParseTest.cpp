// The CPU half of Shader: how a source becomes the stage texts handed to GL.
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <fstream>

#include <unistd.h>

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

TEST(ShaderParse, StagesOutputsVersionAndDefines)
{
    std::string const v = "#version 330 core\n";
    struct Case {
        std::string text;
        std::string vertex;
        std::string fragment;
        std::vector<std::string> outputs;
        char const* vertexDefines = "";
    };
    Case const cases[] = {
        // Text ahead of the first marker is ignored.
        {"garbage that is no GLSL\n##VERTEX\nv;\n##FRAGMENT\nf;\n", v + "v;\n", v + "f;\n", {}},
        // Markers may stand inside a line, and are not copied.
        {"// ##VERTEX stage\nv;\n##FRAGMENT\nf;\n", v + "v;\n", v + "f;\n", {}},
        // A vertex-only source names its outputs in line order; qualified ones do not count.
        {"##VERTEX\nout vec3 oPosition;\nflat out int oSkipped;\nsmooth out vec2 oAlso;\nout vec4 oColor;\n",
         v + "out vec3 oPosition;\nflat out int oSkipped;\nsmooth out vec2 oAlso;\nout vec4 oColor;\n", "",
         {"oPosition", "oColor"}},
        // Out lines of the fragment stage are no outputs.
        {"##VERTEX\nv;\n##FRAGMENT\nout vec4 oColor;\n", v + "v;\n", v + "out vec4 oColor;\n", {}},
        // Shader layers hand over unsimplified text: empty lines keep the editor's line numbers.
        {"##VERTEX\na;\n\nb;\r\n", v + "a;\n\nb;\n", "", {}},
        // The defines of each stage follow the version; an own version is kept ahead of them, as
        // GLSL wants it on the first line.
        {"##VERTEX\nv;\n##FRAGMENT\nf;\n", v + "#define A\nv;\n", v + "f;\n", {}, "A"},
        {"##VERTEX\n#version 410 core\nv;\n##FRAGMENT\nf;\n", "#version 410 core\n#define A\nv;\n", v + "f;\n", {},
         "A"},
        {"##VERTEX\nv;\n  #version 410 core\n##FRAGMENT\nf;\n", "  #version 410 core\n#define A\n#define B\nv;\n",
         v + "f;\n", {}, "A B"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        Shader::Stages s = Shader::Parse(c.text, c.vertexDefines, "");
        EXPECT_EQ(s.vertex, c.vertex);
        EXPECT_EQ(s.fragment, c.fragment);
        EXPECT_EQ(s.outputs, c.outputs);
    }
    EXPECT_EQ(Shader::Parse("##VERTEX\nv;\n##FRAGMENT\nf;\n", "", "B  C").fragment,
              v + "#define B\n#define C\nf;\n");
}

// A temporary folder with an include folder "inc" in it, registered while alive.
class IncludeFolder {
public:
    IncludeFolder()
    {
        QDir(root.path()).mkdir("inc");
        ShaderIncludeManager::instance().folders.push_back(path(""));
    }
    ~IncludeFolder() { ShaderIncludeManager::instance().folders.pop_back(); }
    // A path in the include folder; "../name" is one beside it.
    std::string path(std::string const& name) const { return root.path().toStdString() + "/inc/" + name; }
    std::string write(std::string const& name, std::string const& text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

private:
    QTemporaryDir root;
};

TEST(ShaderParse, IncludesAreExpandedOneLevelDeep)
{
    IncludeFolder folder;
    std::string inner = folder.write("inner.glsl", "float inner;\n");
    // An out line of an included file is no transform-feedback output.
    std::string outer = folder.write("outer.glsl", "out vec3 oHidden;\n#include \"" + inner + "\"\n");

    Shader::Stages s = Shader::Parse("##VERTEX\n#include \"" + outer + "\"\nout float oSeen;\n", "", "");
    EXPECT_EQ(s.vertex, "#version 330 core\nout vec3 oHidden;\n#include \"" + inner + "\"\n\nout float oSeen;\n");
    EXPECT_EQ(s.outputs, std::vector<std::string>{"oSeen"});
}

TEST(ShaderParse, IncludesAreReadOnlyFromTheIncludeFoldersAndResources)
{
    InitResources();
    IncludeFolder folder;
    std::string stray = folder.write("../stray.glsl", "float stray;\n");
    QDir().mkpath(QString::fromStdString(folder.path("../incx")));
    std::string sibling = folder.write("../incx/sibling.glsl", "float sibling;\n"); // "inc" is no prefix
    ASSERT_EQ(symlink("/dev/zero", folder.path("zero.glsl").c_str()), 0);
    std::string huge = folder.write("huge.glsl", std::string(size_t(ShaderManager::FileSizeLimit) + 1, ' '));
    std::string fits = folder.write("fits.glsl", "float fits;\n");

    struct Case {
        std::string path;
        bool read;
    };
    Case const cases[] = {{"/dev/zero", false},
                          {folder.path("zero.glsl"), false}, // a link out of the folder
                          {stray, false},
                          {sibling, false},
                          {huge, false},
                          {"/no/such/file.glsl", false},
                          {fits, true},
                          {":/shaders/Include/RenderFlags.glsl", true}};
    for (Case const& c : cases) {
        std::string line = "#include \"" + c.path + "\"";
        Shader::Stages s = Shader::Parse("##VERTEX\n" + line + "\n", "", "");
        // A refused include stays, for the compiler to reject.
        EXPECT_EQ(s.vertex.find(line) == std::string::npos, c.read) << c.path;
    }
}

TEST(ShaderParse, TheLineMapNamesTheFileAndLineOfEveryStageLine)
{
    IncludeFolder folder;
    std::string header = folder.write("header.glsl", "float h1;\nfloat h2;\n");
    std::string text = "##VERTEX\nv1;\n#include \"" + header + "\"\nv3;\n##FRAGMENT\nf1;\n";
    Shader::Stages s = Shader::Parse(text, "A B", "", "main.glsl");
    // #version, A, B, v1, h1, h2, the include's closing line, v3.
    ASSERT_EQ(s.vertexLines.size(), 8u);
    std::string const expected[] = {"(inserted)", "(inserted)", "(inserted)", "main.glsl:2", header + ":1",
                                    header + ":2", header + ":3", "main.glsl:4"};
    for (size_t i = 0; i < 8; ++i) {
        Shader::Origin o = s.vertexLines[i];
        EXPECT_EQ(o.file < 0 ? "(inserted)" : s.files[size_t(o.file)] + ":" + std::to_string(o.line), expected[i]) << i;
    }
    EXPECT_EQ(s.fragmentLines.back().line, 6);

    // Each place of a log, Mesa's and NVIDIA's forms, is mapped, not only one.
    std::string log = "0:4(3): error: v1\n0:5(1): error: h1\n0(8) : error C1: v3\n0:0(0): error: no main\n";
    EXPECT_EQ(s.mapLog(log, s.vertexLines), "main.glsl:2(3): error: v1\n" + header + ":1(1): error: h1\n" +
                                               "main.glsl(4) : error C1: v3\n0:0(0): error: no main\n");
    // In the listing each note stands right under the line it names; a note without a line
    // comes last.
    std::string listing = s.listing(s.vertex, s.vertexLines, log);
    for (std::string const& pair : {std::string("main.glsl:2\tv1;\n  >>> main.glsl:2(3): error: v1\n"),
                                    "\tfloat h1;\n  >>> " + header + ":1(1)",
                                    std::string("main.glsl:4\tv3;\n  >>> main.glsl(4)")})
        EXPECT_NE(listing.find(pair), std::string::npos) << pair << "\n" << listing;
    EXPECT_EQ(listing.substr(listing.size() - 23), "0:0(0): error: no main\n");
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
