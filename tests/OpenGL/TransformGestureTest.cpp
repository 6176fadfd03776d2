// A drag of the transform actions: every target moves alike in the world whatever its
// parent and pivot, each tool once (linked twins named twice), and the one step it leaves
// undoes and redoes exactly; a cancel leaves neither change nor step.
#include "OpenGL/TransformGesture.h"

#include "Scene/Commands/CommandTransformObjects.h"
#include "Scene/SceneTestSupport.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

using V3 = Vector3<double>;

class TransformGestureTest : public TreeTest {
protected:
    Tool* a = nullptr;
    Tool* twin = nullptr;
    Tool* child = nullptr;
    std::vector<Tool*> selection; // the twins, each named twice, and a child of one of them

    void SetUp() override
    {
        TreeTest::SetUp();
        Tool* group = addObject(root, moveBy(0, 5, 0), Matrix34<double>(Matrix3<double>::Rotation(0, 0.7, 0)));
        a = addObject(group, Matrix34<double>::Scale(2), moveBy(1, 0, 0));
        twin = addObject(root, moveBy(-3, 0, 0));
        child = add(a, moveBy(0, 1, 0));
        a->link(twin);
        a->selectObjects(selection, true, false);
        twin->selectObjects(selection, true, false);
        selection.push_back(child);
        history().clear();
    }
};

TEST_F(TransformGestureTest, TargetsHoldEachToolOnceAndNoneBelowAnother)
{
    EXPECT_EQ(selection.size(), 5u);
    EXPECT_EQ(TransformGesture::Targets(selection), (std::vector<Tool*>{a, twin}));
    EXPECT_EQ(TransformGesture::Targets({child, root, nullptr}), std::vector<Tool*>{child});
}

TEST_F(TransformGestureTest, EachWorldTransformUndoesAndRedoesExactly)
{
    V3 const c(1, 2, 3);
    Matrix34<double> const transforms[] = {
        TransformGesture::Move({0.5, -2, 7}),
        TransformGesture::RotateAbout(c, {0, 1, 1}, 0.8),
        TransformGesture::ScaleAbout(c, 1.5),
        TransformGesture::MirrorAbout(c, {1, 0, 0}),
    };
    for (Matrix34<double> const& X : transforms) {
        auto const before = snapshot(root);
        V3 const points[] = {worldPoint(a, {1, 1, 1}), worldPoint(twin, {0, 2, 0}), worldPoint(child, {0, 0, 1})};
        TransformGesture g;
        ASSERT_TRUE(g.begin(selection, c));
        g.apply(TransformGesture::Move({9, 9, 9})); // a frame of the drag before the last
        g.apply(X);
        EXPECT_TRUE(near(worldPoint(a, {1, 1, 1}), points[0] * X, 1e-9));
        EXPECT_TRUE(near(worldPoint(twin, {0, 2, 0}), points[1] * X, 1e-9));
        EXPECT_TRUE(near(worldPoint(child, {0, 0, 1}), points[2] * X, 1e-9)); // with its parent
        g.finish();
        auto const after = snapshot(root);
        ASSERT_EQ(history().commands.size(), 1u);
        auto* command = dynamic_cast<CommandTransformObjects*>(history().commands.back());
        ASSERT_TRUE(command);
        EXPECT_EQ(command->targets, (std::vector<Tool*>{a, twin}));
        history().undo();
        EXPECT_EQ(difference(snapshot(root), before), "");
        history().redo();
        EXPECT_EQ(difference(snapshot(root), after), "");
        EXPECT_TRUE(validate(root).empty());
        history().clear();
    }
}

TEST_F(TransformGestureTest, AMoveKeepsToTheTranslationAxis)
{
    twin->translationAxis = {0, 0, 1}; // its parent is the root: world z
    TransformGesture g;
    ASSERT_TRUE(g.begin({twin}, V3()));
    V3 const before = worldPoint(twin, {0, 0, 0});
    g.apply(TransformGesture::Move({3, 4, 5}));
    EXPECT_TRUE(near(worldPoint(twin, {0, 0, 0}), before + V3(0, 0, 5), 1e-12));
}

TEST_F(TransformGestureTest, ACancelOrADragBackToThePressRecordsNothing)
{
    auto const before = snapshot(root);
    TransformGesture g;
    ASSERT_TRUE(g.begin(selection, {}));
    g.apply(TransformGesture::Move({1, 0, 0}));
    g.cancel();
    EXPECT_EQ(difference(snapshot(root), before), "");
    ASSERT_TRUE(g.begin(selection, {}));
    g.apply(TransformGesture::Move({1, 0, 0}));
    g.apply(Matrix34<double>());
    g.finish();
    EXPECT_TRUE(history().commands.empty());
    EXPECT_FALSE(g.begin({root}, {}));
}

} // namespace
} // namespace vel::test
