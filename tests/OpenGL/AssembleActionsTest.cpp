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

    // `action` makes one step that undo takes back exactly and redo makes again; `made`
    // checks the state it leaves. The step is undone and cleared afterwards.
    void expectOneExactStep(std::function<bool()> const& action, std::function<void()> const& made)
    {
        auto const before = snapshot(root);
        ASSERT_TRUE(action());
        auto const after = snapshot(root);
        EXPECT_NE(difference(after, before), "");
        made();
        ASSERT_EQ(history().currentIndex, 0);
        history().undo();
        EXPECT_EQ(difference(snapshot(root), before), "");
        history().redo();
        EXPECT_EQ(difference(snapshot(root), after), "");
        EXPECT_TRUE(validate(root).empty());
        history().undo();
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
        SCOPED_TRACE(name);
        V3 const at = worldPoint(a, {1, 1, 1});
        expectOneExactStep(action, [&] { EXPECT_TRUE(near(worldPoint(a, {1, 1, 1}), at)) << "moved the object"; });
    }
}

// Del keeps the children where they stand, one level up; Ctrl+Del takes them along.
TEST_F(AssembleActionsTest, DeleteIsOneStepWithOrWithoutTheChildren)
{
    Tool* child = addObject(other, moveBy(0, 1, 0));
    history().clear();
    for (bool hierarchy : {false, true}) {
        SCOPED_TRACE(hierarchy);
        V3 const at = worldPoint(child, {1, 1, 1});
        expectOneExactStep([&] { return AssembleActions::Delete(other, hierarchy); },
                           [&] {
                               EXPECT_EQ(other->Parent, nullptr);
                               EXPECT_EQ(child->Parent, hierarchy ? nullptr : root);
                               if (!hierarchy) {
                                   EXPECT_TRUE(near(worldPoint(child, {1, 1, 1}), at));
                               }
                           });
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
    expectOneExactStep([&] { return AssembleActions::Link(other, twin); }, [&] { EXPECT_TRUE(a->linked(other)); });
    EXPECT_FALSE(a->linked(other));
    EXPECT_TRUE(a->linked(twin));
}

} // namespace
} // namespace vel::test
