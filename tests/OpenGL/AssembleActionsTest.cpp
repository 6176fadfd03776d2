// The field-changing assemble actions: each makes its change as one step that undo takes
// back exactly and redo makes again, over linked twins named twice; no target, no step.
#include "OpenGL/AssembleActions.h"

#include "Scene/SceneTestSupport.h"

#include <functional>
#include <gtest/gtest.h>

namespace vel::test {
namespace {

using V3 = Vector3<double>;

class AssembleActionsTest : public TreeTest {
protected:
    Tool* a = nullptr;
    Tool* twin = nullptr;
    Tool* other = nullptr;
    std::vector<Tool*> selection;

    void SetUp() override
    {
        TreeTest::SetUp();
        a = addObject(root, moveBy(1, 2, 3), Matrix34<double>(Matrix3<double>::Rotation(0.2, 0.1, 0)));
        twin = addObject(root, Matrix34<double>::Scale(3));
        other = addObject(root, moveBy(-4, 0, 0), Matrix34<double>(Matrix3<double>::Rotation(0, 0.5, 0)));
        a->link(twin);
        a->selectObjects(selection, true, false);
        twin->selectObjects(selection, true, false);
        history().clear();
    }
};

TEST_F(AssembleActionsTest, EveryActionIsOneStepThatUndoesAndRedoesExactly)
{
    Material red;
    red.flags ^= 64;
    std::pair<char const*, std::function<bool()>> const actions[] = {
        {"material", [&] { return AssembleActions::ApplyMaterial(selection, red, -1); }},
        {"rotation", [&] { return AssembleActions::ConstrainRotation(selection, {0, 1, 0}); }},
        {"translation", [&] { return AssembleActions::ConstrainTranslation(selection, {1, 0, 0}); }},
        {"speed", [&] { return AssembleActions::SetSpeed(selection, 2.5f); }},
        {"delay", [&] { return AssembleActions::SetDelay(selection, 0.75f); }},
        {"flip", [&] { return AssembleActions::FlipNormals(selection); }},
        {"parent", [&] { return AssembleActions::SetParent({a, twin}, other); }},
        {"unlink", [&] { return AssembleActions::Unlink({twin}); }},
    };
    for (auto const& [name, action] : actions) {
        auto const before = snapshot(root);
        V3 const at = worldPoint(a, {1, 1, 1});
        ASSERT_TRUE(action()) << name;
        auto const after = snapshot(root);
        EXPECT_NE(difference(after, before), "") << name;
        EXPECT_TRUE(near(worldPoint(a, {1, 1, 1}), at)) << name << " moved the object";
        ASSERT_EQ(history().currentIndex, 0) << name;
        history().undo();
        EXPECT_EQ(difference(snapshot(root), before), "") << name;
        history().redo();
        EXPECT_EQ(difference(snapshot(root), after), "") << name;
        EXPECT_TRUE(validate(root).empty()) << name;
        history().undo();
        history().clear();
    }
}

// Del keeps the children where they stand, one level up; Ctrl+Del takes them along.
TEST_F(AssembleActionsTest, DeleteIsOneStepWithOrWithoutTheChildren)
{
    Tool* child = addObject(other, moveBy(0, 1, 0));
    history().clear();
    for (bool hierarchy : {false, true}) {
        auto const before = snapshot(root);
        V3 const at = worldPoint(child, {1, 1, 1});
        ASSERT_TRUE(AssembleActions::Delete(other, hierarchy));
        auto const after = snapshot(root);
        EXPECT_EQ(other->Parent, nullptr);
        if (hierarchy) {
            EXPECT_EQ(child->Parent, nullptr);
        } else {
            EXPECT_EQ(child->Parent, root);
            EXPECT_TRUE(near(worldPoint(child, {1, 1, 1}), at));
        }
        ASSERT_EQ(history().currentIndex, 0);
        history().undo();
        EXPECT_EQ(difference(snapshot(root), before), "") << hierarchy;
        history().redo();
        EXPECT_EQ(difference(snapshot(root), after), "") << hierarchy;
        history().undo();
        history().clear();
    }
    EXPECT_FALSE(AssembleActions::Delete(root, true));
}

TEST_F(AssembleActionsTest, RefusalsChangeNothing)
{
    auto const before = snapshot(root);
    Tool* inner = add(a);
    history().clear();
    EXPECT_FALSE(AssembleActions::SetParent({a}, inner));
    EXPECT_FALSE(AssembleActions::SetParent({a}, a));
    EXPECT_FALSE(AssembleActions::SetSpeed({}, 3));
    EXPECT_FALSE(AssembleActions::Link(a, twin)); // one ring already
    EXPECT_FALSE(AssembleActions::Unlink({other}));
    EXPECT_EQ(history().currentIndex, -1);
    inner->remove();
    history().clear();
    EXPECT_EQ(difference(snapshot(root), before), "");
}

TEST_F(AssembleActionsTest, LinkJoinsTwoRings)
{
    ASSERT_TRUE(AssembleActions::Link(other, twin));
    EXPECT_TRUE(a->linked(other));
    history().undo();
    EXPECT_FALSE(a->linked(other));
    EXPECT_TRUE(a->linked(twin));
}

} // namespace
} // namespace vel::test
