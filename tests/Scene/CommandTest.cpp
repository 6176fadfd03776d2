#include "Scene/Command.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

TEST(CommandTest, StartsDoneWithAFreshIdAndTheDefaults)
{
    std::vector<std::string> journal;
    Probe a(&journal, "a");
    Probe b(&journal, "b");
    EXPECT_TRUE(a.done);
    EXPECT_FALSE(a.mergeable);
    EXPECT_EQ(b.id, a.id + 1);
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.name(), "Command");
    EXPECT_FALSE(a.isSuper());
    EXPECT_TRUE(a.isFinished());
}

TEST(CommandTest, UndoAndRedoMoveTheDoneFlag)
{
    std::vector<std::string> journal;
    Probe a(&journal, "a");
    a.undo();
    EXPECT_FALSE(a.done);
    a.redo();
    EXPECT_TRUE(a.done);
    EXPECT_EQ(journal, (std::vector<std::string>{"ua", "ra"}));
}

// Both must be mergeable and of one type before isSame is asked at all.
TEST(CommandTest, CoincidesAsksIsSameOnlyForTwoMergeableCommandsOfOneType)
{
    std::vector<std::string> journal;
    Probe newer(&journal, "n");
    Probe older(&journal, "o");
    Probe other(&journal, "x", Probe::TYPE + 1);
    newer.same = true;
    EXPECT_FALSE(newer.coincides(&older)) << "neither is mergeable";
    newer.mergeable = true;
    EXPECT_FALSE(newer.coincides(&older)) << "the older one is not mergeable";
    older.mergeable = true;
    other.mergeable = true;
    EXPECT_TRUE(newer.coincides(&older));
    EXPECT_FALSE(newer.coincides(&other)) << "types differ";
    EXPECT_FALSE(newer.coincides(nullptr));
    newer.same = false;
    EXPECT_FALSE(newer.coincides(&older));
}

} // namespace
} // namespace vel::test
