// The action variables of the viewport and the derivation of the effective action.
//
// The tool bars and keys write the *chosen* action; once a frame GLView::setState derives
// the *effective* one from it and the keys held (EffectiveAssembleAction), and the mouse
// handlers dispatch on the effective one. Plain ints of the namespace, as the codes below.
//
// Nothing here touches GL or Qt: the machine is testable without a context.
#pragma once

namespace vel {

// ---- action modes (ActionMode, iActionMode) ----
constexpr int MODE_NONE = 0;
constexpr int MODE_ASSEMBLE = 2;
constexpr int MODE_SCULPT = 3;

// ---- assemble action codes ----
constexpr int ACTION_INSERT = 0;
constexpr int ACTION_PLACE_CENTER = 2;
constexpr int ACTION_PLACE_ENDS = 3;
constexpr int ACTION_INSERT_PAINT = 4;
constexpr int ACTION_MULTIPLY = 5;
constexpr int ACTION_DRAW = 6;
constexpr int ACTION_DRAW_PICK_AXIS = 7;
constexpr int ACTION_DRAW_PICK_AXIS_HIERARCHY = 8;
constexpr int ACTION_DRAW_PICK_SECTION = 9;
constexpr int ACTION_DRAW_PICK_ITEM = 10;
constexpr int ACTION_TOOL_PICK = 11;
constexpr int ACTION_CAPTURE_MESH = 15;
constexpr int ACTION_CAPTURE_ALPHA = 16;
constexpr int ACTION_POSE = 19;
constexpr int ACTION_MOVE = 20;
constexpr int ACTION_ROTATE = 21;
constexpr int ACTION_SCALE = 22;
constexpr int ACTION_MIRROR = 23;
constexpr int ACTION_ROTATE_SCALE = 24;
constexpr int ACTION_COPY_OFFSET = 6; // 19..24 with control: the copying twins 25..30
constexpr int ACTION_ROTATION_MULTIPLIER = 32;
constexpr int ACTION_SCALE_ALT = 33; // Scale with digit 3
constexpr int ACTION_MATERIAL = 37;
constexpr int ACTION_LINK = 43;
constexpr int ACTION_UNLINK = 44;
constexpr int ACTION_CONSTRAIN_ROTATION = 45;
constexpr int ACTION_COUNTER_CONSTRAIN_ROTATION = 46;
constexpr int ACTION_CONSTRAIN_TRANSLATION = 47;
constexpr int ACTION_COUNTER_CONSTRAIN_TRANSLATION = 48;
constexpr int ACTION_REMOVE_ROTATION_CONSTRAINT = 49;
constexpr int ACTION_REMOVE_TRANSLATION_CONSTRAINT = 50;
constexpr int ACTION_ALIGN = 51;
constexpr int ACTION_ALIGN_ALT = 52;
constexpr int ACTION_SPEED = 59;
constexpr int ACTION_DELAY = 60;
constexpr int ACTION_SET_PARENT = 61;
constexpr int ACTION_FLIP_NORMALS = 62;
constexpr int ACTION_FLIP_NORMALS_ALT = 63;

extern int ActionMode;  // chosen: 2 assemble, 3 sculpt (1 while a worker holds the scene)
extern int iActionMode; // effective this frame; 0 none
extern int AssembleAction;
extern int iAssembleAction;
extern int PrevAssembleAction; // where ToolPick returns to
extern int AddAction;          // the last action that adds tools (0, 2, 3, 4, 5)
extern int CreateAction;       // the last creating action
extern int BooleanAction;
extern int SculptAction;
extern int iSculptAction;
extern int iSculptSelect;
extern int iSculptProperty;
extern int gToolCreation;
extern int gDrawStyle;
extern int gDrawStrokeProfile;
extern bool gIsSelectedObjectMenu; // a pop-up menu is open: presses are refused
extern bool gToggleGroups;         // "G": hovering and acting on linked groups
extern bool gStickySelection;      // keep the last hit while the cursor is over nothing

// The keys the derivation looks at, as held this frame.
struct HeldKeys {
    bool control = false;
    bool shift = false;
    bool alt = false;
    bool digit[6] = {}; // digit[1] to digit[5]
};

// Whether `action` creates tools: 0, 2 to 6, 64, 68 to 73, 81 to 92.
bool IsCreatingAction(int action);
// Whether `action` moves the targets' placement during a drag.
bool IsTransformAction(int action);

// The names the status panel shows for an action code; "" where a code has none.
char const* AssembleActionName(int action);
char const* SculptActionName(int action);

// Chooses an assemble action; with `remember` the old one is kept for ToolPick's return.
void gSetAssembleAction(int action, bool remember);
void gSetSculptAction(int action);

// The effective assemble action of the chosen one under the held keys. `copying` is set
// where control turns a transform into its copying twin.
int EffectiveAssembleAction(int chosen, HeldKeys const& keys, bool& copying);

// The step of setState that derives iActionMode and iAssembleAction: during a gesture
// (`buttonHeld`) both stay as they are, so a key let go mid-drag changes nothing.
void DeriveActions(HeldKeys const& keys, bool buttonHeld, bool& copying);

} // namespace vel
