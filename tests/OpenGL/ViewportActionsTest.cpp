// The state machine of the viewport: the effective action of a chosen one under held keys,
// that a gesture keeps its action whatever the keys do, and ToolPick's way back.
#include "OpenGL/ViewportActions.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

HeldKeys Keys(bool control, int digit = 0)
{
    HeldKeys k;
    k.control = control;
    if (digit)
        k.digit[digit] = true;
    return k;
}

TEST(ViewportActions, EffectiveActionFromChosenActionAndHeldKeys)
{
    struct Row {
        int chosen;
        bool control;
        int digit;
        int effective;
        bool copying;
    };
    Row const rows[] = {
        {ACTION_MOVE, false, 0, ACTION_MOVE, false},
        {ACTION_MOVE, true, 0, ACTION_MOVE + 6, true},   // copy twin
        {ACTION_POSE, true, 0, ACTION_POSE + 6, true},
        {ACTION_ROTATE_SCALE, true, 0, 30, true},
        {ACTION_MOVE, false, 1, ACTION_POSE, false},
        {ACTION_POSE, false, 1, ACTION_MOVE, false},
        {ACTION_MOVE, false, 2, ACTION_ROTATE, false},
        {ACTION_MOVE, false, 3, ACTION_SCALE, false},
        {ACTION_ROTATE, false, 3, ACTION_ROTATION_MULTIPLIER, false},
        {ACTION_SCALE, false, 3, ACTION_SCALE_ALT, false},
        {ACTION_MIRROR, false, 2, ACTION_MIRROR, false}, // digits turn 19 to 22 only
        {ACTION_CAPTURE_MESH, true, 0, ACTION_CAPTURE_ALPHA, false},
        {ACTION_CAPTURE_ALPHA, true, 0, ACTION_CAPTURE_MESH, false},
        {ACTION_ALIGN, false, 1, ACTION_ALIGN_ALT, false},
        {ACTION_FLIP_NORMALS, true, 0, ACTION_FLIP_NORMALS_ALT, false},
        {ACTION_DRAW, false, 2, ACTION_DRAW_PICK_AXIS, false},
        {ACTION_DRAW, false, 4, ACTION_DRAW_PICK_AXIS_HIERARCHY, false},
        {ACTION_MATERIAL, true, 2, ACTION_MATERIAL, false},
    };
    for (Row const& r : rows) {
        bool copying = !r.copying;
        EXPECT_EQ(EffectiveAssembleAction(r.chosen, Keys(r.control, r.digit), copying), r.effective)
            << r.chosen << " control " << r.control << " digit " << r.digit;
        EXPECT_EQ(copying, r.copying) << r.chosen;
    }
}

class ViewportState : public ::testing::Test {
protected:
    void SetUp() override
    {
        ActionMode = iActionMode = MODE_ASSEMBLE;
        AssembleAction = iAssembleAction = PrevAssembleAction = ACTION_MOVE;
    }
};

// Control let go during a copy drag: the copy stays in force until the release.
TEST_F(ViewportState, AGestureKeepsItsActionUntilRelease)
{
    bool copying = false;
    DeriveActions(Keys(true), false, copying);
    EXPECT_EQ(iAssembleAction, ACTION_MOVE + 6);
    EXPECT_TRUE(copying);
    DeriveActions(Keys(false), true, copying);
    EXPECT_EQ(iAssembleAction, ACTION_MOVE + 6);
    EXPECT_TRUE(copying);
    DeriveActions(Keys(false), false, copying);
    EXPECT_EQ(iAssembleAction, ACTION_MOVE);
    EXPECT_FALSE(copying);
}

TEST_F(ViewportState, DigitOneDuringDrawingSmoothsInSculptMode)
{
    gSetAssembleAction(ACTION_DRAW, true);
    bool copying = false;
    DeriveActions(Keys(false, 1), false, copying);
    EXPECT_EQ(iActionMode, MODE_SCULPT);
    EXPECT_EQ(iSculptAction, 32);
    DeriveActions(Keys(false), false, copying);
    EXPECT_EQ(iActionMode, MODE_ASSEMBLE);
    EXPECT_EQ(iAssembleAction, ACTION_DRAW);
    EXPECT_EQ(CreateAction, ACTION_DRAW);
}

TEST_F(ViewportState, ToolPickReturnsToTheActionBeforeItAlsoAfterTwoPicks)
{
    gSetAssembleAction(ACTION_ROTATE, true);
    gSetAssembleAction(ACTION_TOOL_PICK, true);
    gSetAssembleAction(ACTION_TOOL_PICK, true);
    EXPECT_EQ(PrevAssembleAction, ACTION_ROTATE);
    gSetAssembleAction(PrevAssembleAction, false);
    EXPECT_EQ(AssembleAction, ACTION_ROTATE);
    EXPECT_EQ(iAssembleAction, ACTION_ROTATE);
}

TEST(ViewportActions, CreatingActionsSetTheAddAction)
{
    for (int a : {0, 2, 3, 4, 5, 64, 68, 73, 81, 92}) {
        AddAction = -1;
        gSetAssembleAction(a, false);
        EXPECT_EQ(CreateAction, a);
        EXPECT_EQ(AddAction, a);
    }
    for (int a : {1, 7, 20, 63, 74, 93}) {
        CreateAction = AddAction = -1;
        gSetAssembleAction(a, false);
        EXPECT_EQ(CreateAction, -1) << a;
    }
    gSetAssembleAction(ACTION_MOVE, false);
}

} // namespace
} // namespace vel
