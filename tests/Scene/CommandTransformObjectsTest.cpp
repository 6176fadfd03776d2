#include "Scene/Commands/CommandTransformObjects.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {
namespace {

// A move of a selection with a linked twin: undo puts every point back where it was.
TEST_F(TreeTest, TransformObjectsUndoesAMoveOfTheSelectionAndItsTwins)
{
    using V3 = Vector3<double>;
    Tool* a = addObject(root, Matrix34<double>::Scale(2));
    Tool* child = add(a, Matrix34<double>(), Matrix34<double>::Translation(V3(1, 0, 0)));
    Tool* twin = addObject(root);
    a->link(twin);
    V3 childBefore = worldPoint(child, V3(0, 1, 0));
    V3 twinBefore = worldPoint(twin, V3(0, 1, 0));

    auto* command = new CommandTransformObjects(a->findAllObjectLinks());
    a->constrainedMoveObject(Matrix34<double>::Translation(V3(0, 0, 2)), true, false);
    a->transformPivot(Matrix34<double>::Translation(V3(5, 0, 0)), true, false);
    history().push(command);
    EXPECT_EQ(command->name(), "Transform Objects");
    V3 childAfter = worldPoint(child, V3(0, 1, 0));
    EXPECT_TRUE(near(childAfter, childBefore + V3(0, 0, 2)));
    EXPECT_TRUE(near(worldPoint(twin, V3(0, 1, 0)), twinBefore + V3(0, 0, 2 / std::cbrt(8.0))));

    history().undo();
    EXPECT_TRUE(near(worldPoint(child, V3(0, 1, 0)), childBefore, 0));
    EXPECT_TRUE(near(worldPoint(twin, V3(0, 1, 0)), twinBefore, 0));
    history().redo();
    EXPECT_TRUE(near(worldPoint(child, V3(0, 1, 0)), childAfter, 0));
}

} // namespace
} // namespace vel::test
