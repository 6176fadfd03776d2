#include "Scene/SceneHistory.h"

#include "Core/Communicate.h"
#include "Scene/SuperCommand.h"
#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vel::test {
namespace {

using Journal = std::vector<std::string>;

class HistoryTest : public ::testing::Test {
protected:
    Journal journal;
    int pops = 0;
    int popFronts = 0;
    int updates = 0;
    std::vector<QMetaObject::Connection> connections;

    History& h() { return History::instance(); }

    void SetUp() override
    {
        h().clear();
        h().enabled = h().active = h().notify = true;
        h().capacity = 1000;
        Communicate* hub = &Communicate::instance();
        connections.push_back(QObject::connect(hub, &Communicate::historyPop, [this] { ++pops; }));
        connections.push_back(QObject::connect(hub, &Communicate::historyPopFront, [this] { ++popFronts; }));
        connections.push_back(QObject::connect(hub, &Communicate::historyUpdate, [this] { ++updates; }));
    }
    void TearDown() override
    {
        h().clear();
        h().capacity = 1000;
        for (auto& c : connections)
            QObject::disconnect(c);
    }

    // A probe pushed onto the history; `same` ones also claim to equal the current step.
    Probe* probe(std::string const& tag, bool mergeable = false, bool same = false)
    {
        auto* p = new Probe(&journal, tag);
        p->mergeable = mergeable;
        p->same = same;
        h().push(p);
        return p;
    }
    bool destroyed(std::string const& tag) const
    {
        return std::count(journal.begin(), journal.end(), "~" + tag) == 1;
    }
};

// With either switch off a push destroys the command, and undo and redo do nothing.
TEST_F(HistoryTest, NothingIsRecordedOrSteppedWhileRecordingIsOff)
{
    probe("a");
    for (bool* off : {&h().active, &h().enabled}) {
        *off = false;
        probe("b");
        EXPECT_TRUE(destroyed("b"));
        h().undo();
        EXPECT_EQ(h().currentIndex, 0);
        *off = true;
        journal.clear();
    }
    EXPECT_EQ(h().commands.size(), 1u);
    EXPECT_EQ(updates, 1);
}

TEST_F(HistoryTest, PushAppendsAndUndoAndRedoStepWithinTheEnds)
{
    Probe* a = probe("a");
    Probe* b = probe("b");
    EXPECT_EQ(h().current(), b);
    EXPECT_EQ(h().commands[0], a);
    EXPECT_EQ(updates, 2);
    h().redo();
    h().undo();
    h().undo();
    h().undo();
    EXPECT_EQ(h().currentIndex, -1);
    EXPECT_EQ(h().current(), nullptr);
    h().redo();
    h().redo();
    h().redo();
    EXPECT_EQ(h().currentIndex, 1);
    EXPECT_EQ(journal, (Journal{"ub", "ua", "ra", "rb"}));
}

TEST_F(HistoryTest, PushAfterUndoDestroysTheRedoTailNewestFirst)
{
    probe("a");
    probe("b");
    probe("c");
    h().undo();
    h().undo();
    journal.clear();
    probe("d");
    EXPECT_EQ(journal, (Journal{"~c", "~b"}));
    EXPECT_EQ(pops, 2);
    EXPECT_EQ(h().commands.size(), 2u);
    EXPECT_EQ(h().currentIndex, 1);
    // Even when the new command merges into the current one.
    Probe* e = probe("e", true);
    probe("f");
    h().undo();
    probe("g", true, true);
    EXPECT_TRUE(destroyed("f"));
    EXPECT_EQ(h().commands.size(), 3u);
    EXPECT_EQ(h().current(), e);
    EXPECT_FALSE(destroyed("g")) << "a merged command waits for the history to be cleared";
    h().clear();
    EXPECT_TRUE(destroyed("g"));
}
TEST_F(HistoryTest, TwoEqualMergeableCommandsLeaveOneEntryWithoutASignal)
{
    probe("a", true);
    probe("b", true, true);
    EXPECT_EQ(h().commands.size(), 1u);
    EXPECT_EQ(h().currentIndex, 0);
    EXPECT_EQ(updates, 1);
    h().undo();
    EXPECT_EQ(journal, (Journal{"ua"}));
}

// Past capacity the oldest steps go out of the front, kept until the history is cleared;
// a lowered capacity trims at the next push.
TEST_F(HistoryTest, StepsPastCapacityArePushedOutOfTheFrontAndDestroyedAtTheClear)
{
    for (int i = 0; i < 1000; ++i)
        probe(std::to_string(i));
    EXPECT_EQ(h().currentIndex, 999);
    probe("last");
    EXPECT_EQ(h().commands.size(), 1000u);
    EXPECT_EQ(h().currentIndex, 999);
    EXPECT_EQ(popFronts, 1);
    EXPECT_EQ(static_cast<Probe*>(h().commands.front())->tag, "1");
    EXPECT_FALSE(destroyed("0"));
    ASSERT_EQ(h().dropped.size(), 1u);
    h().capacity = 2;
    probe("next");
    EXPECT_EQ(h().commands.size(), 2u);
    EXPECT_EQ(h().currentIndex, 1);
    EXPECT_EQ(popFronts, 1 + 999);
    h().clear();
    EXPECT_TRUE(destroyed("0"));
    EXPECT_TRUE(h().dropped.empty());
}

TEST_F(HistoryTest, APushIntoAnOpenGroupNeitherMovesCurrentNorSignalsNorEvicts)
{
    h().capacity = 2;
    probe("first");
    h().superBegin("group", false);
    EXPECT_EQ(Command::depth, 1);
    int before = updates;
    probe("a");
    probe("b");
    EXPECT_EQ(h().currentIndex, 1);
    EXPECT_EQ(updates, before);
    EXPECT_EQ(popFronts, 0);
    h().superEnd();
    EXPECT_EQ(Command::depth, 0);
    ASSERT_EQ(h().commands.size(), 2u);
    auto* group = static_cast<SuperCommand*>(h().commands[1]);
    EXPECT_TRUE(group->isFinished());
    EXPECT_EQ(group->commands.size(), 2u);
    h().undo();
    EXPECT_EQ(journal, (Journal{"ub", "ua"}));
}

// Each superEnd closes what its own superBegin opened, whether recording is on at either.
TEST_F(HistoryTest, GroupsCloseByPairsWhateverRecordingDoesInBetween)
{
    h().superBegin("outer", false);
    h().active = false;
    h().superBegin("ignored", false);
    h().active = true;
    h().superEnd(); // pairs with "ignored": the outer group stays open
    probe("a");
    h().active = false;
    h().superEnd();
    h().active = true;
    EXPECT_EQ(Command::depth, 0);
    ASSERT_EQ(h().commands.size(), 1u);
    auto* outer = static_cast<SuperCommand*>(h().commands[0]);
    EXPECT_TRUE(outer->isFinished());
    EXPECT_EQ(outer->commands.size(), 1u);
    probe("b");
    EXPECT_EQ(h().commands.size(), 2u) << "nothing is left open to swallow the next step";
    h().superBegin("cut short", false);
    h().clear();
    EXPECT_EQ(Command::depth, 0);
    h().superEnd(); // unmatched after clear: nothing happens
    EXPECT_EQ(Command::depth, 0);
}

// An empty group stays as a step unless both it and the step before are mergeable; a group
// must not be folded into its predecessor while it still collects.
TEST_F(HistoryTest, EmptyGroupsMergeWhenBothAreMergeableAndAnOpenGroupNever)
{
    h().superBegin("empty", false);
    h().superEnd();
    EXPECT_EQ(h().commands.size(), 1u);
    h().superBegin("empty", true);
    h().superEnd();
    EXPECT_EQ(h().commands.size(), 2u) << "the step before is not mergeable";
    h().superBegin("empty", true);
    h().superEnd();
    EXPECT_EQ(h().commands.size(), 2u) << "two empty mergeable groups are one step";
    h().superBegin("open", true);
    EXPECT_EQ(h().commands.size(), 3u);
    probe("a");
    h().collapse();
    EXPECT_EQ(h().commands.size(), 3u);
    h().superEnd();
    EXPECT_EQ(h().commands.size(), 3u) << "sizes 0 and 1 differ";
}

TEST_F(HistoryTest, NestedGroupsAreOneStepThatUndoesInReverse)
{
    h().superBegin("outer", false);
    probe("a");
    h().superBegin("inner", false);
    probe("b");
    h().superEnd();
    probe("c");
    h().superEnd();
    ASSERT_EQ(h().commands.size(), 1u);
    h().undo();
    h().redo();
    EXPECT_EQ(journal, (Journal{"uc", "ub", "ua", "ra", "rb", "rc"}));
}

TEST_F(HistoryTest, JumpToClampsAndWalksBothWays)
{
    for (char c : std::string("abcd"))
        probe(std::string(1, c));
    h().jumpTo(-5);
    EXPECT_EQ(h().currentIndex, -1);
    EXPECT_EQ(journal, (Journal{"ud", "uc", "ub", "ua"}));
    journal.clear();
    h().jumpTo(100000);
    EXPECT_EQ(h().currentIndex, 3);
    EXPECT_EQ(journal, (Journal{"ra", "rb", "rc", "rd"}));
    journal.clear();
    h().jumpTo(1);
    EXPECT_EQ(h().currentIndex, 1);
    EXPECT_EQ(journal, (Journal{"ud", "uc"}));
}

TEST_F(HistoryTest, PopCleanupAndClearDestroyNewestFirstAndKeepCurrentInRange)
{
    EXPECT_FALSE(h().pop());
    probe("a");
    probe("b");
    probe("c");
    EXPECT_TRUE(h().pop());
    EXPECT_EQ(h().currentIndex, 1);
    h().undo();
    h().cleanup(); // the redo tail only
    EXPECT_EQ(journal, (Journal{"~c", "ub", "~b"}));
    EXPECT_EQ(pops, 2);
    h().undo();
    EXPECT_TRUE(h().pop());
    EXPECT_EQ(h().currentIndex, -1);
    probe("d");
    probe("e");
    journal.clear();
    h().clear();
    EXPECT_EQ(journal, (Journal{"~e", "~d"}));
    EXPECT_EQ(pops, 5);
    EXPECT_EQ(h().currentIndex, -1);
}

// A command that pushes from inside its undo must not cut the list being walked.
TEST_F(HistoryTest, NothingPushedDuringUndoIsRecorded)
{
    struct Pusher : Probe {
        using Probe::Probe;
        void undo() override
        {
            History::instance().push(new Probe(journal, "inner"));
            Probe::undo();
        }
    };
    probe("a");
    h().push(new Pusher(&journal, "p"));
    h().undo();
    EXPECT_TRUE(destroyed("inner"));
    EXPECT_EQ(h().commands.size(), 2u);
    EXPECT_EQ(h().currentIndex, 0);
    EXPECT_TRUE(h().active);
}

} // namespace
} // namespace vel::test
