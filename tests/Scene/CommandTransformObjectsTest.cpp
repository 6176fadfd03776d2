#include "Scene/Commands/CommandTransformObjects.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {
namespace {

// A move of a selection of two linked twins, each named twice by the expanded selection:
// undo puts every point back where it was, redo where the move took it.
TEST_F(TreeTest, TransformObjectsUndoesAMoveOfTheSelectionAndItsTwins)
{
    using V3 = Vector3<double>;
    Tool* a = addObject(root, Matrix34<double>::Scale(2));
    Tool* child = add(a, Matrix34<double>(), Matrix34<double>::Translation(V3(1, 0, 0)));
    Tool* twin = addObject(root);
    a->link(twin);
    V3 childBefore = worldPoint(child, V3(0, 1, 0));
    V3 twinBefore = worldPoint(twin, V3(0, 1, 0));

    std::vector<Tool*> targets;
    a->selectObjects(targets, true, false);
    twin->selectObjects(targets, true, false);
    auto* command = new CommandTransformObjects(targets);
    a->constrainedMoveObject(Matrix34<double>::Translation(V3(0, 0, 2)), true, false);
    a->transformPivot(Matrix34<double>::Translation(V3(5, 0, 0)), true, false);
    history().push(command);
    V3 childAfter = worldPoint(child, V3(0, 1, 0));
    V3 twinAfter = worldPoint(twin, V3(0, 1, 0));
    EXPECT_TRUE(near(childAfter, childBefore + V3(0, 0, 2)));
    EXPECT_TRUE(near(twinAfter, twinBefore + V3(0, 0, 2 / std::cbrt(8.0))));

    history().undo();
    EXPECT_TRUE(near(worldPoint(child, V3(0, 1, 0)), childBefore, 0));
    EXPECT_TRUE(near(worldPoint(twin, V3(0, 1, 0)), twinBefore, 0));
    history().redo();
    EXPECT_TRUE(near(worldPoint(child, V3(0, 1, 0)), childAfter, 0));
    EXPECT_TRUE(near(worldPoint(twin, V3(0, 1, 0)), twinAfter, 0));
}

// A drag merges step by step on the same selection only; either way one undo per step.
TEST_F(TreeTest, TransformObjectsMergesTheStepsOfOneDragOfOneSelection)
{
    Tool* a = addObject(root);
    Tool* b = addObject(root);
    size_t steps = history().commands.size();
    auto drag = [&](Tool* t, double x) {
        history().superBegin("Move", true);
        history().push(new CommandTransformObjects({t}));
        t->transformObject(moveBy(x, 0, 0), false, false);
        history().superEnd();
    };
    drag(a, 1);
    drag(a, 2);
    EXPECT_EQ(history().commands.size(), steps + 1);
    drag(b, 4);
    EXPECT_EQ(history().commands.size(), steps + 2) << "a move of another tool is another step";
    history().undo();
    EXPECT_TRUE(near(b->objectMatrix, Matrix34<double>()));
    EXPECT_TRUE(near(a->objectMatrix, moveBy(3, 0, 0)));
    history().undo();
    EXPECT_TRUE(near(a->objectMatrix, Matrix34<double>()));
}

} // namespace
} // namespace vel::test
