#include "OpenGL/SimplifiedString.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

TEST(SimplifiedString, Cases)
{
    struct Case {
        char const* source;
        char const* simplified;
    };
    Case const cases[] = {
        {"  uniform   float  a; // trailing\n\n/* block\n spanning lines */ float b;\n\t\tvoid main() {}\t\n",
         "uniform float a;\nfloat b;\nvoid main() {}\n"},
        // A line comment takes its text, not the line break: the statements stay apart.
        {"a; // x\nb;", "a;\nb;\n"},
        {"a;//\nb;", "a;\nb;\n"},
        {"a;\r\nb;\rc;", "a;\nb;\nc;\n"},
        {"#define A // one\r#define B // two\rc;", "#define A\n#define B\nc;\n"},
        // A "//" inside a block comment is comment text, and the code behind it stays.
        {"/* see http://x */ code;\nmore;", "code;\nmore;\n"},
        {"a; // not /* a block\nb;\n", "a;\nb;\n"},
        // A block comment is one blank, also across lines inside a directive.
        {"a/**/b;", "a b;\n"},
        {"#define X /* one\n two */ 1\n", "#define X 1\n"},
        {"a;\n/* never closed\nb;", "a;\n"},
        {"a; // no line feed", "a;\n"},
        {"// one\n/* two */\n   \n", ""},
        {"/* // */", ""},
        {"", ""},
        {"##VERTEX\n#include \"C://dir/*.glsl\"\nout vec3 oP; // out\n",
         "##VERTEX\n#include \"C://dir/*.glsl\"\nout vec3 oP;\n"},
    };
    for (Case const& c : cases)
        EXPECT_EQ(SimplifiedString(c.source), c.simplified) << c.source;
}

TEST(RemoveSection, RemovesFromStartThroughEndAndFindsMarkersJoinedByARemoval)
{
    QString text = "keep [cut] keep [cut2]";
    EXPECT_EQ(RemoveSection(text, "[", "]"), 5);
    EXPECT_EQ(text, "keep  keep [cut2]");
    EXPECT_EQ(RemoveSection(text, "<", ">"), -1);
    // Removing "/* c */" joins the "/" ahead of it and the "*" behind into a new opener.
    text = "a//* c */*b */z";
    RemoveSections(text, "/*", "*/");
    EXPECT_EQ(text, "az");
}

} // namespace
} // namespace vel
