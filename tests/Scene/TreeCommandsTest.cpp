// The tree's commands: what each undo and redo does to the tree, and who destroys a tool
// when a command that owns it leaves the history.
#include "Scene/Commands/CommandObjectAddChild.h"
#include "Scene/Commands/CommandObjectDelete.h"
#include "Scene/Commands/CommandObjectLink.h"
#include "Scene/Commands/CommandObjectRemItem.h"
#include "Scene/Commands/CommandObjectSetItem.h"
#include "Scene/Commands/CommandObjectSetPivot.h"
#include "Scene/Commands/CommandObjectSubChild.h"
#include "Scene/Commands/CommandObjectUnlink.h"
#include "Scene/Commands/CommandRegisterToolCreation.h"
#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

namespace vel::test {
namespace {

TEST_F(TreeTest, SetItemPlacesTheItemWithTheCompositesObjectState)
{
    auto* holder = new ItemHolder;
    root->addChild(holder);
    holder->setObject(true);
    Tool* item = new Tool;
    CommandObjectSetItem command(holder, item);
    command.redo();
    EXPECT_EQ(holder->item, item);
    EXPECT_EQ(item->Parent, holder);
    EXPECT_TRUE(item->isObject());
    EXPECT_TRUE(holder->hasItem(item));
    command.undo();
    EXPECT_EQ(holder->item, nullptr);
    EXPECT_EQ(item->Parent, nullptr);
    EXPECT_FALSE(item->isObject()) << "the item's own object state comes back";
    EXPECT_FALSE(command.done);
    delete item;
}

TEST_F(TreeTest, SetPivotExchangesTheHeldMatrix)
{
    Tool* a = add(root, Matrix34<double>(), Matrix34<double>::Scale(2));
    CommandObjectSetPivot command(a, Matrix34<double>::Scale(3));
    command.redo();
    EXPECT_EQ(a->pivotMatrix, Matrix34<double>::Scale(3));
    command.undo();
    EXPECT_EQ(a->pivotMatrix, Matrix34<double>::Scale(2));
    EXPECT_EQ(command.pivot, Matrix34<double>::Scale(3));
}

// Delete, undo, push: the tail goes with the command undone, and the tool stays; a removal
// is one step, so one undo takes all of it back.
TEST_F(TreeTest, AnUndoneDeletionDiscardedLeavesTheToolInTheTree)
{
    Tool* a = add(root);
    a->remove();
    history().undo();
    ASSERT_EQ(a->Parent, root);
    int count = Tool::COUNT;
    add(root);
    EXPECT_EQ(Tool::COUNT, count + 1);
    EXPECT_EQ(root->children.front(), a);
    EXPECT_EQ(validate(root), std::vector<std::string>());
}

TEST_F(TreeTest, ADeletionThatLeavesTheHistoryDestroysTheTool)
{
    Tool* a = add(root);
    Tool* b = add(root);
    int count = Tool::COUNT;
    a->remove();
    EXPECT_TRUE(history().pop()) << "the Object Delete step";
    EXPECT_EQ(Tool::COUNT, count - 1);
    b->remove();
    history().undo();
    history().redo();
    history().clear();
    EXPECT_EQ(Tool::COUNT, count - 2);
    EXPECT_EQ(root->children.size(), 0u);
}

// Create, undo, push: the creation cannot come back, and its tool is destroyed.
TEST_F(TreeTest, AnUndoneCreationDiscardedDestroysTheTool)
{
    int count = Tool::COUNT;
    Tool* a = add(root);
    history().undo();
    history().undo();
    EXPECT_EQ(a->Parent, nullptr);
    EXPECT_EQ(Tool::COUNT, count + 1);
    history().cleanup();
    EXPECT_EQ(Tool::COUNT, count);
}

// Outside any group, creating and placing a tool are two steps. With the placement undone
// and cut off by a new step, the tool is out of the tree and its creation still owns it;
// a tool its maker keeps out of the tree is the maker's.
TEST_F(TreeTest, NoUndoAndPushLeavesAToolWithoutOwner)
{
    Tool* kept = new Tool;
    std::function<void()> scenarios[] = {
        [&] { root->addChild(new Tool); },
        [&] { add(root)->addChild(new Tool); },
        [&] {
            Tool* t = new Tool;
            t->addChild(new Tool);
            root->addChild(t);
        },
    };
    for (auto const& scenario : scenarios) {
        scenario();
        history().undo();
        add(root); // cuts the undone placement off
        history().clear();
        delete root;
        EXPECT_EQ(Tool::COUNT, 1);
        root = new Root;
    }
    delete kept;
}

TEST_F(TreeTest, LinkAndUnlinkCommandsRestoreTheRingOrder)
{
    Tool* t[3];
    for (Tool*& x : t)
        x = add(root);
    t[0]->link(t[1]);
    t[0]->link(t[2]);
    auto before = snapshot(root);
    CommandObjectUnlink unlink(t[1], t[1]->previous());
    unlink.redo();
    EXPECT_EQ(t[1]->linksCount(), 1);
    EXPECT_EQ(t[0]->linksCount(), 2);
    unlink.undo();
    EXPECT_EQ(snapshot(root), before);
    CommandObjectLink join(t[1], t[1]);
    join.redo();
    EXPECT_EQ(snapshot(root), before) << "a tool linked with itself stays as it is";
}

TEST_F(TreeTest, SubChildRedoFindsTheChildAnew)
{
    Tool* a = add(root);
    Tool* b = add(root);
    CommandObjectSubChild command(root, a, 5);
    command.redo();
    EXPECT_EQ(command.position, 0);
    EXPECT_EQ(root->children, (std::vector<Tool*>{b}));
    command.undo();
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, b}));
    EXPECT_EQ(a->Parent, root);
}

} // namespace
} // namespace vel::test
