#include "Scene/SuperCommand.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

namespace vel::test {
namespace {

using Journal = std::vector<std::string>;

TEST(SuperCommandTest, UndoesBackwardsRedoesForwardsAndDestroysBackwards)
{
    Journal journal;
    {
        SuperCommand group("Move", false);
        group.push(new Probe(&journal, "1"));
        group.push(new Probe(&journal, "2"));
        group.push(new Probe(&journal, "3"));
        group.undo();
        EXPECT_FALSE(group.done);
        group.redo();
        EXPECT_TRUE(group.done);
        EXPECT_EQ(group.name(), "Move");
    }
    EXPECT_EQ(journal, (Journal{"u3", "u2", "u1", "r1", "r2", "r3", "~3", "~2", "~1"}));
}

// Pushes and finish reach the innermost open group; one finish closes one level.
TEST(SuperCommandTest, NestedOpenGroupsCollectPushesAndCloseInnermostFirst)
{
    Journal journal;
    SuperCommand outer("outer", false);
    auto* inner = new SuperCommand("inner", false);
    outer.push(inner);
    outer.push(new Probe(&journal, "a"));
    ASSERT_EQ(outer.commands.size(), 1u);
    ASSERT_EQ(inner->commands.size(), 1u);
    outer.finish();
    EXPECT_TRUE(inner->isFinished());
    EXPECT_FALSE(outer.isFinished());
    outer.push(new Probe(&journal, "b"));
    EXPECT_EQ(outer.commands.size(), 2u);
    outer.finish();
    EXPECT_TRUE(outer.isFinished());
}

class SuperCommandMergeTest : public ::testing::Test {
protected:
    Journal journal;

    SuperCommand* group(int count, bool same)
    {
        auto* g = new SuperCommand("g", true);
        for (int i = 0; i < count; ++i) {
            auto* p = new Probe(&journal, std::to_string(i));
            p->same = same;
            p->mergeable = true;
            g->commands.push_back(p);
        }
        g->finished = true;
        return g;
    }
};

// Groups merge only when every command folds into its opposite number, whatever the size.
TEST_F(SuperCommandMergeTest, GroupsMergeWhenEveryCommandFoldsIntoItsOppositeNumber)
{
    struct Case {
        int older, newer;
        int differing; // index of a command of the newer group that does not fold; -1 none
        bool merges;
    } cases[] = {
        {0, 0, -1, true}, {1, 1, -1, true}, {1, 1, 0, false}, {2, 2, 1, false}, {2, 2, 0, false},
        {3, 3, -1, true}, {3, 3, 2, false}, {4, 4, 3, false}, {2, 3, -1, false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.older << " then " << c.newer << ", differing " << c.differing);
        std::unique_ptr<SuperCommand> a(group(c.older, true)), b(group(c.newer, true));
        if (c.differing >= 0)
            static_cast<Probe*>(b->commands[size_t(c.differing)])->same = false;
        EXPECT_EQ(b->coincides(a.get()), c.merges);
    }
}

TEST_F(SuperCommandMergeTest, OnlyMergeableGroupsOfTheSameTypeMerge)
{
    std::unique_ptr<SuperCommand> a(group(2, true)), b(group(2, true));
    a->mergeable = false;
    EXPECT_FALSE(b->coincides(a.get()));
    Probe plain(&journal, "p", SuperCommand::TYPE);
    plain.mergeable = true;
    a->mergeable = true;
    EXPECT_FALSE(b->coincides(&plain)) << "a plain command with the group's type number is no group";
}

} // namespace
} // namespace vel::test
