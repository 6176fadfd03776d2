#include "Core/Assert.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

int Checked(int value)
{
    VEL_ASSERT(value > 0);
    return value;
}

TEST(AssertDeathTest, PassingConditionReturnsNormally)
{
    EXPECT_EQ(Checked(3), 3);
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
    // Any assertion inside the library must name paths like "Core/...", without "src/".
    EXPECT_DEATH(AssertFailed("x", __FILE__, 1, nullptr), "at tests/Core/AssertTest.cpp:1");
}

} // namespace
} // namespace vel
