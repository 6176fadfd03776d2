// Shader on a real context: building, transform feedback, the program mirror and the
// uniform cache.
#include "GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"

#include <QTemporaryDir>

#include <fstream>

namespace vel::test {
namespace {

// Full-screen quad; the fragment writes the uniforms A and B and the defines' colours.
std::string const kQuad = "##VERTEX\n"
                          "void main() {\n"
                          "    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);\n"
                          "    gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0);\n"
                          "}\n"
                          "##FRAGMENT\n"
                          "uniform float A;\n"
                          "uniform float B;\n"
                          "out vec4 oColor;\n"
                          "void main() {\n"
                          "#ifdef BLUE\n"
                          "    oColor = vec4(A, B, 1.0, 1.0);\n"
                          "#else\n"
                          "    oColor = vec4(A, B, 0.0, 1.0);\n"
                          "#endif\n"
                          "}\n";

// kQuad made distinct by real code: a comment would not change the cache key.
std::string Unique(std::string const& tag)
{
    return kQuad + "float unique_" + tag + ";\n";
}

class ShaderTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        target.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        ASSERT_TRUE(target.enable());
        glViewport(0, 0, 4, 4);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    // The colour of the first pixel of the target.
    std::vector<unsigned char> pixel() { return std::vector<unsigned char>(ReadColor(GL_COLOR_ATTACHMENT0, 1, 1)); }

    FBO target{dsNone, 4, 4};
};

TEST_F(ShaderTest, UnusualSourcesCompile)
{
    struct Case {
        std::string text;
        char const* defines;
    };
    Case const cases[] = {
        {"this is no GLSL at all;\n" + kQuad, ""},
        // Defines go behind an own version: GLSL wants "#version" on the first line.
        {"##VERTEX\n#version 330 core\nvoid main() {\n#ifdef A\ngl_Position = vec4(1.0);\n#endif\n}\n"
         "##FRAGMENT\n#version 330 core\nout vec4 c;\nvoid main() { c = vec4(1.0); }\n",
         "A"},
    };
    for (Case const& c : cases) {
        Shared<Shader> s = ShaderManager::instance().FromText(c.text, c.defines);
        ASSERT_TRUE(s);
        std::unordered_map<int, std::string> errors;
        EXPECT_TRUE(s->compile(errors)) << errors[0] << errors[1] << errors[2];
        EXPECT_NE(s->program, 0u);
    }
}

TEST_F(ShaderTest, ASourceWithoutCodeFailsToCompileAndIsLogged)
{
    for (char const* text : {"// only a comment\n", " \n\t\n", "/* a // inside */", "/* never closed"}) {
        SCOPED_TRACE(text);
        Messages().clear();
        Shared<Shader> s = ShaderManager::instance().FromText(text);
        ASSERT_TRUE(s);
        EXPECT_FALSE(s->enable());
        EXPECT_TRUE(Logged("the source holds no code"));
        std::unordered_map<int, std::string> errors;
        EXPECT_FALSE(s->compile(errors));
        EXPECT_FALSE(errors[0].empty());
    }
}

TEST_F(ShaderTest, DefinesSelectCodeAndMakeSeparatePrograms)
{
    ShaderManager& m = ShaderManager::instance();
    Shared<Shader> plain = m.FromText(kQuad);
    Shared<Shader> blue = m.FromText(kQuad, "", "BLUE");
    ASSERT_TRUE(plain->enable());
    ASSERT_TRUE(blue->enable());
    EXPECT_NE(plain->program, blue->program);

    ASSERT_TRUE(plain->enable());
    GLFill();
    EXPECT_EQ(pixel()[2], 0);
    ASSERT_TRUE(blue->enable());
    GLFill();
    EXPECT_EQ(pixel()[2], 255);
}

TEST_F(ShaderTest, VertexOnlyFileIsATransformFeedbackProgramWithOutputsInLineOrder)
{
    // The names are out of alphabetical order, so a driver's own ordering would show.
    Shared<Shader> s = ShaderManager::instance().FromText("##VERTEX\n"
                                                          "out float zFirst;\n"
                                                          "out vec2 aSecond;\n"
                                                          "void main() {\n"
                                                          "    zFirst = float(gl_VertexID) * 2.0 + 1.0;\n"
                                                          "    aSecond = vec2(gl_VertexID, -gl_VertexID);\n"
                                                          "}\n");
    ASSERT_TRUE(s->enable());

    GLint count = 0;
    glGetProgramiv(s->program, GL_TRANSFORM_FEEDBACK_VARYINGS, &count);
    ASSERT_EQ(count, 2);
    char name[32];
    GLsizei length = 0, size = 0;
    GLenum type = 0;
    glGetTransformFeedbackVarying(s->program, 0, sizeof name, &length, &size, &type, name);
    EXPECT_STREQ(name, "zFirst");
    glGetTransformFeedbackVarying(s->program, 1, sizeof name, &length, &size, &type, name);
    EXPECT_STREQ(name, "aSecond");

    int const n = 5;
    auto words = CaptureFeedback({1, 2}, n);
    for (int i = 0; i < n; ++i) {
        EXPECT_EQ(AsFloat(words[0][i]), float(2 * i + 1));
        EXPECT_EQ(AsFloat(words[1][2 * i]), float(i));
        EXPECT_EQ(AsFloat(words[1][2 * i + 1]), float(-i));
    }
}

TEST_F(ShaderTest, AUniformFirstSetAfterTheFirstUseIsIgnored)
{
    Shared<Shader> s = ShaderManager::instance().FromText(Unique("firstUse"));
    ASSERT_TRUE(s->enable());
    Shader::setUniform("A", 0.0f); // only A is learned in the first use
    GLFill();
    s->disable();

    ASSERT_TRUE(s->enable());
    Shader::setUniform("A", 1.0f);
    Shader::setUniform("B", 1.0f); // too late: B keeps location -1
    GLFill();
    std::vector<unsigned char> c = pixel();
    EXPECT_EQ(c[0], 255);
    EXPECT_EQ(c[1], 0);
    EXPECT_EQ(s->uniforms.at("B"), -1);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(ShaderTest, ASteadyFrameAsksGLNoUniformLocation)
{
    ShaderManager& m = ShaderManager::instance();
    Shared<Shader> first = m.FromText(Unique("steadyFrame"));
    Shared<Shader> second = m.FromText(Unique("steadyFrame"), "", "BLUE");
    auto frame = [&] {
        for (Shader* s : {first.get(), second.get()}) {
            ASSERT_TRUE(s->enable());
            Shader::setUniform("A", 0.5f);
            Shader::setUniform("B", 0.25f);
            Shader::setUniform("NotInTheProgram", 1.0f);
            GLFill();
            s->disable();
        }
    };
    GLCallCounter counter;
    frame(); // the first frame learns the locations
    EXPECT_GT(counter.getUniformLocation(), 0);
    for (int i = 0; i < 3; ++i) {
        counter.reset();
        frame();
        EXPECT_EQ(counter.getUniformLocation(), 0) << "frame " << i + 2;
    }
}

TEST_F(ShaderTest, EnablingTheProgramInUseCostsNoCallAndReplacingItEndsItsLearning)
{
    Shared<Shader> a = ShaderManager::instance().FromText(Unique("mirrorA"));
    Shared<Shader> b = ShaderManager::instance().FromText(Unique("mirrorB"));
    ASSERT_TRUE(a->compile());
    ASSERT_TRUE(b->compile());
    GLCallCounter counter;
    ASSERT_TRUE(a->enable());
    ASSERT_TRUE(a->enable());
    EXPECT_EQ(counter.useProgram(), 1);
    EXPECT_TRUE(a->learning);
    ASSERT_TRUE(b->enable()); // a was never disabled
    EXPECT_EQ(counter.useProgram(), 2);
    EXPECT_EQ(Shader::Current, b.get());
    EXPECT_EQ(Shader::id, b->program);
    EXPECT_FALSE(a->learning);
    EXPECT_TRUE(b->learning);
    b->disable(); // disabling keeps the program in use
    ASSERT_TRUE(b->enable());
    EXPECT_EQ(counter.useProgram(), 2);
}

TEST_F(ShaderTest, DestroyingTheCurrentShaderClearsTheMirrors)
{
    {
        Shader s(kQuad);
        ASSERT_TRUE(s.enable());
        EXPECT_EQ(Shader::Current, &s);
    }
    EXPECT_EQ(Shader::Current, nullptr);
    EXPECT_EQ(Shader::id, 0u);
}

TEST_F(ShaderTest, FailuresAreReportedInTheSlotOfTheirStageWithoutCrash)
{
    // The slots of an editor's map: 0 vertex, 1 fragment, 2 link.
    struct Case {
        char const* name;
        std::string text;
        int slot;
        char const* logged; // the start of the log of a compile that logs
        char const* detail; // a word that the slot's report names
    };
    Case const cases[] = {
        {"broken",
         "##VERTEX\nvoid main() { gl_Position = vec4(0.0); }\n"
         "##FRAGMENT\nout vec4 c;\nvoid main() { c = undefinedThing; }\n",
         1, "ERROR broken fragment", "undefinedThing"},
        // Each stage compiles; the two stages disagree on the type of a uniform.
        {"unlinked",
         "##VERTEX\nuniform float X;\nvoid main() { gl_Position = vec4(X); }\n"
         "##FRAGMENT\nuniform vec2 X;\nout vec4 c;\nvoid main() { c = vec4(X, 0.0, 1.0); }\n",
         2, "ERROR Shader::compile unlinked", ""},
        {"missing", "##VERTEX\n#include \":/shaders/Include/NoSuchHeader.glsl\"\nvoid main() {}\n", 0, "ERROR missing", ""},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        Messages().clear();
        Shader s(c.text, "", "", c.name);
        EXPECT_FALSE(s.compile(true));
        EXPECT_FALSE(s.Compiled);
        EXPECT_TRUE(Logged(c.logged));
        EXPECT_FALSE(s.enable()); // and again: no crash, still not compiled

        std::unordered_map<int, std::string> errors;
        Shader editor(c.text);
        EXPECT_FALSE(editor.compile(errors));
        for (int slot = 0; slot < 3; ++slot) {
            auto report = errors.find(slot);
            EXPECT_EQ(report != errors.end() && !report->second.empty(), slot == c.slot) << slot;
        }
        EXPECT_NE(errors[c.slot].find(c.detail), std::string::npos) << errors[c.slot];

        Shader fixed(kQuad); // the editor's map, reused after the failure, is emptied
        EXPECT_TRUE(fixed.compile(errors));
        for (int slot = 0; slot < 3; ++slot)
            EXPECT_EQ(errors[slot], "") << slot;
        EXPECT_TRUE(fixed.Compiled);
        EXPECT_TRUE(fixed.compile(errors)); // compiled: nothing to do
    }
}

TEST_F(ShaderTest, ErrorsNameTheFileAndLineOfTheTextAndOfItsIncludes)
{
    QTemporaryDir dir;
    ShaderIncludeManager::instance().folders.push_back(dir.path().toStdString());
    std::string header = dir.filePath("header.glsl").toStdString();
    std::ofstream(header) << "float fromHeader() {\n    return undefinedInHeader;\n}\n";
    // Lines: 6 out, 7 include, 8 main, 9 A, 10 fine, 11 B.
    std::string text = "##VERTEX\nvoid main() {\n    gl_Position = vec4(0.0);\n}\n##FRAGMENT\n"
                       "out vec4 c;\n#include \"" + header + "\"\nvoid main() {\n    c = undefinedA;\n"
                       "    c = vec4(1.0);\n    c = undefinedB;\n}\n";
    Shader s(text, "", "ONE TWO", "user.glsl");
    EXPECT_FALSE(s.compile(true));
    std::unordered_map<int, std::string> errors;
    EXPECT_FALSE(s.compile(errors));
    ShaderIncludeManager::instance().folders.pop_back();

    std::string listing;
    for (std::string const& m : Messages())
        if (m.rfind("ERROR user.glsl fragment", 0) == 0)
            listing = m;
    struct Place {
        std::string file;
        int line;
        std::string source; // the source line the note must stand under
    };
    Place const places[] = {{header, 2, "return undefinedInHeader;"},
                            {"user.glsl", 9, "c = undefinedA;"},
                            {"user.glsl", 11, "c = undefinedB;"}};
    for (Place const& p : places) {
        // Drivers write places as "0:7(12)" or "0(7)": the mapped log keeps the driver's form.
        std::string n = std::to_string(p.line);
        std::string place = p.file + ":" + n + "(";
        if (errors[1].find(place) == std::string::npos)
            place = p.file + "(" + n + ")";
        SCOPED_TRACE(place);
        EXPECT_NE(errors[1].find(place), std::string::npos) << errors[1];
        size_t note = listing.find("  >>> " + place);
        ASSERT_NE(note, std::string::npos) << listing;
        size_t lineStart = listing.rfind('\n', note - 2) + 1;
        std::string above = listing.substr(lineStart, note - lineStart);
        EXPECT_NE(above.find(p.source), std::string::npos) << above;
        EXPECT_EQ(above.find(p.file + ":" + n + "\t"), 0u) << above;
    }
}

TEST_F(ShaderTest, MatrixUniformsArriveSoThatMTimesVIsTheRowConvention)
{
    // A translation by (0.25, 0.5, 0.75) in the row convention; GLSL applies it as M * p.
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\n"
        "uniform mat4x3 T34;\n"
        "uniform mat4 T4;\n"
        "out vec3 o34;\n"
        "out vec4 o4;\n"
        "void main() { o34 = T34 * vec4(0.0, 0.0, 0.0, 1.0); o4 = T4 * vec4(0.0, 0.0, 0.0, 1.0); }\n");
    ASSERT_TRUE(s->enable());
    Matrix34<double> t = Matrix34<double>::Translation({0.25, 0.5, 0.75});
    Shader::setUniform("T34", t);
    Shader::setUniform("T4", Matrix4<double>(t));

    auto words = CaptureFeedback({3, 4}, 1);
    float const expected[4] = {0.25f, 0.5f, 0.75f, 1.0f};
    for (size_t output = 0; output < 2; ++output)
        for (size_t i = 0; i < words[output].size(); ++i)
            EXPECT_FLOAT_EQ(AsFloat(words[output][i]), expected[i]) << output << ", " << i;
}

TEST_F(ShaderTest, UniformWithoutAShaderAsserts)
{
    EXPECT_DEATH(Shader::setUniform("A", 1.0f), "no shader enabled");
}

} // namespace
} // namespace vel::test
