#include "Scene/Command.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

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
    struct Case {
        bool newerMergeable, olderMergeable, sameType, same, coincides;
    } cases[] = {
        {false, true, true, true, false}, {true, false, true, true, false}, {true, true, false, true, false},
        {true, true, true, false, false}, {true, true, true, true, true},
    };
    std::vector<std::string> journal;
    for (Case const& c : cases) {
        Probe newer(&journal, "n");
        Probe older(&journal, "o", c.sameType ? Probe::TYPE : Probe::TYPE + 1);
        newer.mergeable = c.newerMergeable;
        older.mergeable = c.olderMergeable;
        newer.same = c.same;
        EXPECT_EQ(newer.coincides(&older), c.coincides);
        EXPECT_FALSE(newer.coincides(nullptr));
    }
}

} // namespace
} // namespace vel::test
