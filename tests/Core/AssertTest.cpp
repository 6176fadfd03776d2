#include "Core/Assert.h"

#include "Scene/Tool.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

int Checked(int value)
{
    VEL_ASSERT(value > 0);
    return value;
}

TEST(AssertDeathTest, FailurePrintsConditionTextAndSourcePathRelativeToSrc)
{
    // The path is printed relative to the project, never as an absolute build path.
    EXPECT_DEATH(Checked(-1), "Assertion failed: value > 0\n  at tests/Core/AssertTest.cpp:[0-9]+");
}

TEST(AssertDeathTest, MessageFormAddsTheReason)
{
    EXPECT_DEATH(VEL_ASSERT_MSG(1 + 1 == 3, "arithmetic is broken"),
                 "Assertion failed: 1 \\+ 1 == 3 \\(arithmetic is broken\\)");
}

TEST(AssertDeathTest, LibraryAssertionNamesItsSourceFileUnderSrc)
{
    // An assertion compiled into the library names its file relative to src/; an orientation
    // mode above three is refused.
    Tool tool;
    EXPECT_DEATH(tool.changeOrientation(4, false, false),
                 "an orientation mode is 0 to 3\\)\n  at Scene/Tool\\.cpp:[0-9]+");
}

} // namespace
} // namespace vel
