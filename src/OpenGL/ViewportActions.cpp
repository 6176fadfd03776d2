#include "OpenGL/ViewportActions.h"

#include "Deformers/Sculptor.h"

namespace vel {

// ActionMode and iActionMode live with the frame loop (GLWidget.cpp), which blocks them.
int AssembleAction = ACTION_MOVE;
int iAssembleAction = ACTION_MOVE;
int PrevAssembleAction = ACTION_MOVE;
int AddAction = ACTION_INSERT;
int CreateAction = ACTION_INSERT;
int BooleanAction = 74;
int SculptAction = 32;
int iSculptAction = 32;
int iSculptSelect = 0;
int iSculptProperty = 0;
int gToolCreation = 0;
int gDrawStyle = 0;
int gDrawStrokeProfile = 0;
bool gIsSelectedObjectMenu = false;
bool gToggleGroups = false;
bool gStickySelection = false;
int gSculptorAction = 0;

namespace {
constexpr int SCULPT_SMOOTH = 32;
constexpr int SCULPT_SELECT_PATCH = 3;
constexpr int BRUSH_ASSEMBLE = 81;
// gToolCreation values that make a tool by drawing a curve rather than by placing one.
constexpr int CREATION_DRAWN_FIRST = 100;
} // namespace

bool IsCreatingAction(int a)
{
    return a == 0 || (a >= 2 && a <= 6) || a == 64 || (a >= 68 && a <= 73) || (a >= 81 && a <= 92);
}

bool IsTransformAction(int a)
{
    return (a >= ACTION_POSE && a <= 30) || a == ACTION_ROTATION_MULTIPLIER || a == ACTION_SCALE_ALT;
}

void gSetAssembleAction(int action, bool remember)
{
    bool const leavingPick = AssembleAction == ACTION_TOOL_PICK && action != ACTION_TOOL_PICK;
    if (remember && AssembleAction != ACTION_TOOL_PICK)
        PrevAssembleAction = AssembleAction;
    AssembleAction = iAssembleAction = action;
    if (IsCreatingAction(action)) {
        CreateAction = action;
        if (action != ACTION_DRAW)
            AddAction = action;
    }
    (void)leavingPick; // the tool box that a pick fills comes with the tool box
    if (ActionMode == MODE_ASSEMBLE)
        gSculptorAction = BRUSH_ASSEMBLE;
}

void gSetSculptAction(int action)
{
    SculptAction = iSculptAction = action;
    // The brush key follows the action in sculpt mode only.
    if (ActionMode == MODE_SCULPT)
        Sculptor::gSculptAction = action;
}

int EffectiveAssembleAction(int chosen, HeldKeys const& keys, bool& copying)
{
    copying = false;
    switch (chosen) {
    case ACTION_INSERT:
    case ACTION_PLACE_CENTER:
    case ACTION_PLACE_ENDS:
    case ACTION_INSERT_PAINT:
        return gToolCreation >= CREATION_DRAWN_FIRST ? ACTION_DRAW : chosen;
    case ACTION_DRAW:
        if (keys.digit[2])
            return ACTION_DRAW_PICK_AXIS;
        if (keys.digit[3])
            return gToolCreation >= CREATION_DRAWN_FIRST ? ACTION_DRAW_PICK_ITEM : ACTION_DRAW_PICK_SECTION;
        if (keys.digit[4])
            return ACTION_DRAW_PICK_AXIS_HIERARCHY;
        return chosen;
    case ACTION_CAPTURE_MESH:
    case ACTION_CAPTURE_ALPHA:
        return keys.control ? (ACTION_CAPTURE_MESH + ACTION_CAPTURE_ALPHA - chosen) : chosen;
    case ACTION_ALIGN:
    case ACTION_ALIGN_ALT:
        return keys.digit[1] ? (ACTION_ALIGN + ACTION_ALIGN_ALT - chosen) : chosen;
    case ACTION_FLIP_NORMALS:
        return keys.control ? ACTION_FLIP_NORMALS_ALT : chosen;
    default:
        break;
    }
    if (chosen >= ACTION_POSE && chosen <= ACTION_ROTATE_SCALE) {
        if (keys.control) {
            copying = true;
            return chosen + ACTION_COPY_OFFSET;
        }
        if (chosen <= ACTION_SCALE) {
            if (keys.digit[1] && chosen == ACTION_POSE)
                return ACTION_MOVE;
            if (keys.digit[1] && chosen == ACTION_MOVE)
                return ACTION_POSE;
            if (keys.digit[3] && chosen == ACTION_ROTATE)
                return ACTION_ROTATION_MULTIPLIER;
            if (keys.digit[3] && chosen == ACTION_SCALE)
                return ACTION_SCALE_ALT;
            if (keys.digit[2])
                return ACTION_ROTATE;
            if (keys.digit[3])
                return ACTION_SCALE;
        }
    }
    return chosen;
}

void DeriveActions(HeldKeys const& keys, bool buttonHeld, bool& copying)
{
    if (buttonHeld)
        return;
    if (ActionMode == MODE_SCULPT) {
        iActionMode = MODE_SCULPT;
        iSculptAction = SculptAction;
        return;
    }
    if (ActionMode != MODE_ASSEMBLE)
        return;
    iActionMode = MODE_ASSEMBLE;
    // Digit 1 during drawing smooths what is drawn: a sculpt stroke on the drawing.
    if (AssembleAction == ACTION_DRAW && keys.digit[1]) {
        iActionMode = MODE_SCULPT;
        iSculptAction = SCULPT_SMOOTH;
        iSculptSelect = SCULPT_SELECT_PATCH;
        copying = false;
        return;
    }
    iAssembleAction = EffectiveAssembleAction(AssembleAction, keys, copying);
}

} // namespace vel
