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

// A failure prints the condition, the reason where one is given, and the source path
// relative to the project (tests/) or to src/ for the library, never an absolute build path.
TEST(AssertDeathTest, FailurePrintsConditionReasonAndRelativeSourcePath)
{
    EXPECT_DEATH(Checked(-1), "Assertion failed: value > 0\n  at tests/Core/AssertTest.cpp:[0-9]+");
    EXPECT_DEATH(VEL_ASSERT_MSG(1 + 1 == 3, "arithmetic is broken"),
                 "Assertion failed: 1 \\+ 1 == 3 \\(arithmetic is broken\\)");
    Tool tool; // an orientation mode above three is refused
    EXPECT_DEATH(tool.changeOrientation(4, false, false),
                 "an orientation mode is 0 to 3\\)\n  at Scene/Tool\\.cpp:[0-9]+");
}

} // namespace
} // namespace vel
