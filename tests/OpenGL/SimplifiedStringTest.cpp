#include "OpenGL/SimplifiedString.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

TEST(SimplifiedString, DropsCommentsEmptyLinesAndRunsOfBlanks)
{
    std::string source = "  uniform   float  a; // trailing\n"
                         "\n"
                         "/* block\n spanning lines */ float b;\n"
                         "\t\tvoid main() {}\t\n";
    EXPECT_EQ(SimplifiedString(source), "uniform float a;\nfloat b;\nvoid main() {}\n");
}

TEST(SimplifiedString, LineCommentLeavesTheLineBreakBehind)
{
    // Without the doubled line feed, removing "// x\n" would glue the two statements.
    EXPECT_EQ(SimplifiedString("a; // x\nb;"), "a;\nb;\n");
    EXPECT_EQ(SimplifiedString("a;//\nb;"), "a;\nb;\n");
}

TEST(SimplifiedString, CarriageReturnsAreLineBreaks)
{
    EXPECT_EQ(SimplifiedString("a;\r\nb;\rc;"), "a;\nb;\nc;\n");
}

TEST(SimplifiedString, UnterminatedCommentsRunToTheEnd)
{
    EXPECT_EQ(SimplifiedString("a;\n/* never closed\nb;"), "a;\n");
    EXPECT_EQ(SimplifiedString("a; // no line feed"), "a;\n");
}

TEST(SimplifiedString, CommentsOnlyGiveNothing)
{
    EXPECT_EQ(SimplifiedString("// one\n/* two */\n   \n"), "");
    EXPECT_EQ(SimplifiedString(""), "");
}

TEST(SimplifiedString, LineCommentsGoFirstSoTheyMayCutABlockOpener)
{
    // "//" is removed before "/*": the opener inside a line comment is gone with it.
    EXPECT_EQ(SimplifiedString("a; // not /* a block\nb;\n"), "a;\nb;\n");
}

TEST(SimplifiedString, KeepsMarkersAndIncludes)
{
    std::string source = "##VERTEX\n#include \":/shaders/Include/Math.glsl\"\nout vec3 oP; // out\n";
    EXPECT_EQ(SimplifiedString(source), "##VERTEX\n#include \":/shaders/Include/Math.glsl\"\nout vec3 oP;\n");
}

TEST(RemoveSection, RemovesFromStartThroughEnd)
{
    QString text = "keep [cut] keep [cut2]";
    EXPECT_EQ(RemoveSection(text, "[", "]"), 5);
    EXPECT_EQ(text, "keep  keep [cut2]");
    RemoveSections(text, "[", "]");
    EXPECT_EQ(text, "keep  keep ");
    EXPECT_EQ(RemoveSection(text, "[", "]"), -1);
}

TEST(RemoveSection, FindsMarkersJoinedByARemoval)
{
    // Removing "/* c */" joins the "/" ahead of it and the "*" behind into a new opener.
    QString text = "a//* c */*b */z";
    RemoveSections(text, "/*", "*/");
    EXPECT_EQ(text, "az");
}

} // namespace
} // namespace vel
