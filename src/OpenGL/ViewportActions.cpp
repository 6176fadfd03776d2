#include "OpenGL/ViewportActions.h"

#include "Deformers/Sculptor.h"

#include <iterator>

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

namespace {

struct ActionName {
    int code;
    char const* name;
};

char const* FindName(ActionName const* names, std::size_t count, int action)
{
    for (std::size_t i = 0; i < count; ++i)
        if (names[i].code == action)
            return names[i].name;
    return "";
}

ActionName const ASSEMBLE_NAMES[] = {
    {0, "Insert"}, {2, "PlaceCenter"}, {3, "PlaceEnds"}, {4, "InsertPaint"}, {5, "Multiply"},
    {7, "DrawPickAxis"}, {8, "DrawPickAxisFromHierarchy"}, {9, "DrawPickSection"}, {10, "DrawPickItem"},
    {11, "ToolPick"}, {14, "DistributeOnSurface"}, {15, "CaptureMesh"}, {16, "CaptureAlpha"}, {17, "IKPose"},
    {19, "Pose"}, {20, "Move"}, {21, "Rotate"}, {22, "Scale"}, {23, "Mirror"}, {24, "RotateScale"},
    {25, "CopyPose"}, {26, "CopyMove"}, {27, "CopyRotate"}, {28, "CopyScale"}, {29, "CopyMirror"},
    {30, "CopyRotateScale"}, {32, "RotationMultiplier"}, {33, "Scale"}, {37, "Material"}, {38, "PickMaterial"},
    {39, "MatchMaterial"}, {43, "Link"}, {44, "Unlink"}, {45, "ConstrainRotation"},
    {46, "CounterConstrainRotation"}, {47, "ConstrainTranslation"}, {48, "CounterConstrainTranslation"},
    {49, "RemoveRotationConstraint"}, {50, "RemoveTranslationConstraint"}, {51, "Align"}, {52, "Align"},
    {54, "MatchPivot"}, {55, "MatchObjectPivot"}, {58, "Sharpen"}, {59, "Speed"}, {60, "Delay"},
    {61, "SetParent"}, {62, "FlipNormals"}, {63, "FlipNormals"}, {65, "VoxUnion"}, {66, "VoxIntersection"},
    {67, "VoxSubtraction"}, {68, "InsertVoxAdd"}, {69, "InsertVoxSub"}, {70, "PlaceEndsVoxAdd"},
    {71, "PlaceEndsVoxSub"}, {72, "PlaceCenterVoxAdd"}, {73, "PlaceCenterVoxSub"}, {74, "CSGUnion"},
    {75, "CSGIntersection"}, {76, "CSGSubtraction"}, {77, "CSGContour"}, {78, "CSGCut"}, {79, "CSGClip"},
    {80, "CSGSplit"}, {81, "InsertCSGAdd"}, {82, "InsertCSGSub"}, {83, "InsertCSGContour"},
    {84, "InsertCSGSplit"}, {85, "PlaceEndsCSGAdd"}, {86, "PlaceEndsCSGSub"}, {87, "PlaceEndsCSGContour"},
    {88, "PlaceEndsCSGSplit"}, {89, "PlaceCenterCSGAdd"}, {90, "PlaceCenterCSGSub"},
    {91, "PlaceCenterCSGContour"}, {92, "PlaceCenterCSGSplit"},
};

ActionName const SCULPT_NAMES[] = {
    {1, "SculptMove"}, {3, "SculptRotate"}, {5, "SculptScale"}, {9, "ScaleDirection"}, {10, "Stretch"},
    {12, "Skew"}, {13, "Bend"}, {14, "Taper"}, {16, "Swirl"}, {17, "Chisel"}, {18, "Carve"}, {19, "Crease"},
    {20, "Ridge"}, {21, "AddStampCenter"}, {22, "SubStampCenter"}, {23, "AddStampEnds"}, {24, "SubStampEnds"},
    {25, "Add"}, {26, "Sub"}, {27, "Clay"}, {28, "Scrape"}, {29, "Deform"}, {30, "DeformVolume"}, {32, "Smooth"},
    {36, "Grow"}, {37, "Pinch"}, {38, "Twist"}, {39, "Flatten"}, {41, "Paint"}, {42, "Gradient"}, {43, "Fill"},
    {44, "PaintErase"}, {45, "GradientErase"}, {46, "FillErase"}, {47, "PaintEraseAll"},
    {48, "GradientEraseAll"}, {49, "FillEraseAll"},
};

} // namespace

char const* AssembleActionName(int action)
{
    return FindName(ASSEMBLE_NAMES, std::size(ASSEMBLE_NAMES), action);
}

char const* SculptActionName(int action)
{
    return FindName(SCULPT_NAMES, std::size(SCULPT_NAMES), action);
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
        Sculptor::gSculptAction = BRUSH_ASSEMBLE;
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
