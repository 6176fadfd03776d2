// ViewportInput: the viewport's state machine at run time: what the pointer, the wheel and
// the keys do to the camera and the scene, once a frame inside GLView::render().
//
//   idle --press--> gesture (orbit, pan, transform, value drag, click) --release--> idle
//                          \--cancel key: the gesture is taken back--> idle
//
// The frame calls, in order: setState (keys to actions, in MainLoopPreRender), navigate
// (camera moves, before the matrices), beginFrame (this frame's projection), MainLoopSelect (the pick under the pointer, after the first
// G-buffer pass), dispatch (mouseDown, mouseUp, mouseMove), contourSelection (after the
// composite) and mouseWheel (at the end). The pick reads the G-buffer, never the meshes.
//
// Index (ViewportInput.cpp)
// - construction, keys and state
// - picking and selection
// - the mouse handlers
// - assemble actions on release
// - selection feedback
#pragma once

#include "Math/Vector3.h"
#include "OpenGL/ABrush.h"
#include "OpenGL/GLPick.h"
#include "OpenGL/SculptGesture.h"
#include "OpenGL/TransformGesture.h"
#include "OpenGL/ViewProjection.h"
#include "Scene/Material.h"

#include <string>
#include <vector>

namespace vel {

class GLView;
class Tool;

class ViewportInput {
public:
    // Frames of the transforms (`frameType`), as the status panel names them after "Frame: ".
    static constexpr int FRAME_OBJECT = 0;
    static constexpr int FRAME_ELEMENT = 1;
    static constexpr int FRAME_WORLD = 2;
    static constexpr int FRAME_SCREEN = 3;
    // How a drawn or placed point finds its depth (`projection`), after "Proj: ".
    static constexpr int PROJECT_SAME_DEPTH = 0;
    static constexpr int PROJECT_ON_OBJECT = 1;
    static constexpr int PROJECT_ON_NORMAL = 2;
    static constexpr int PROJECT_NORMAL_PLANE = 3;
    static constexpr int PROJECT_TANGENT_PLANE = 4;
    // What relativeTo() gives the transform frames.
    static constexpr int RELATIVE_SCENE = 0;
    static constexpr int RELATIVE_PARENT = 1;
    static constexpr int RELATIVE_CHILD = 2;
    static constexpr int RELATIVE_HIERARCHY = 3;

    enum Gesture { NONE, ORBIT, PAN, TRANSFORM, VALUE, CLICK, SCULPT };

    // Pointer travel below which a press and release are a click.
    static constexpr float CLICK_PIXELS = 3.0f;
    static constexpr double ROTATE_PER_PIXEL = 0.01; // radians
    static constexpr double SCALE_PER_PIXEL = 0.01;  // of the exponent
    static constexpr double ZOOM_PER_WHEEL = 0.999;  // per unit of Qt's angle delta

    GLView& view;
    ViewProjection projection; // this frame's, without jitter
    ABrush press;              // at the press
    ABrush current;            // under the pointer this frame
    TransformGesture transform;
    SculptGesture sculpt;
    GLPick picker;
    Gesture gesture = NONE;
    int frameType = FRAME_OBJECT;
    int projectionMode = PROJECT_ON_OBJECT;
    int relative = RELATIVE_PARENT;
    bool copying = false;        // control turned a transform into its copying twin
    bool gestureLinked = false;  // linked() as it was at the press
    bool middlePressed = false;
    Vector3<double> center;      // of the orbit, kept between frames
    double startValue = 0.0;     // of a value drag (speed, delay)
    std::vector<Tool*> targets;  // of the gesture
    Tool* linkFirst = nullptr;   // the first of the two clicks of Link
    Material activeMaterial;     // what Material applies
    float pressureExponent = 1.0f; // the pen's pressure curve (PressureCurve)
    float pressureMinimum = 0.0f;
    int hoverId = 0;             // id word of the hovered pixel, without the selection bit
    double pressUnit = 0.0;      // world units per pixel at the depth of the last press
    bool brushShown = false;     // brushHint showed the brush circle

    explicit ViewportInput(GLView& view);
    ~ViewportInput();
    ViewportInput(ViewportInput const&) = delete;
    ViewportInput& operator=(ViewportInput const&) = delete;

    // ---- keys and state
    // Actions from the chosen ones and the keys; the cancel key takes a gesture back.
    void setState();
    // A key press the viewport acts on (frames, projections, actions, groups); false when
    // the key is not its own.
    bool keyPressed(int qtKey, bool control, bool shift);
    void resetState();
    bool idle() const { return gesture == NONE; }
    // Whether a gesture acts on linked twins too: alt inverts the groups toggle; during a
    // gesture the value of its press.
    bool linked() const;
    bool onAllLinked() const { return linked(); }
    int frameTypeValue() const { return frameType; }
    int relativeTo() const { return relative; }
    static char const* FrameTypeName(int frameType);
    static char const* ProjectionName(int mode);
    static char const* RelativeName(int relative);
    // What the status panel shows: the effective action, then "Frame: ", "Proj: " and the
    // transforms' relation, each with its name.
    std::vector<std::string> statusLines() const;
    void UNDO();
    void REDO();

    // ---- frame steps
    // The camera moves of an orbit or pan, before the frame's matrices: the frame that
    // follows a pointer move shows it.
    void navigate();
    void beginFrame();
    // Reads the pick under the pointer and keeps the hover; true when the view should be
    // drawn again.
    bool MainLoopSelect();
    // mouseDown, mouseUp and mouseMove, when the pointer is inside the view; then the tools
    // a transform moves are listed anew, so that this frame draws them where they went.
    void dispatch();
    void mouseDown();
    void mouseMove();
    void mouseUp(bool apply);
    void mouseWheel();
    // The brush circle at the pointer on the surface in sculpt mode, its radius the brush's
    // size at that depth; hidden elsewhere.
    void brushHint();
    // A brush setting changed during a stamp drag: the stroke's step runs again with it.
    void updateSculpt();
    // The selection tint and contours over the picture.
    void contourSelection();
    // The four masks of the feedback shader for the present mode and hover.
    void selectionMaskIDS(int hover, int masks[4][4]) const;

    // ---- picking
    // The pointer in target pixels (y down) and its pick: a fresh read when `now`, else the
    // newest one the GPU has finished.
    ABrush selection(ABrush::TSelection what, bool now);
    // The press-time selection for the assemble actions: fills `targets`.
    void select(ABrush const& brush);
    // The tools the actions work on for a hit: its object, with its twins when linked, or
    // every selected tool when the object is selected already.
    std::vector<Tool*> hitTargets(ABrush const& brush) const;
    // The placement camera moves keep: the point under the pointer, or the look-at point.
    double workingDepth() const;

private:
    void beginTransform();
    // The pointer's brush for a sculpt sample: a fresh pick, the brush's world size at its
    // depth, and the stroke's settings.
    ABrush sculptBrush();
    void dragTransform();
    void clickSelect(ABrush const& brush, bool add);
    void releaseAction(ABrush const& brush);
    Vector3<double> pointerWorld(double depth) const;
    Vector3<double> pressWorld(double depth) const;
};

} // namespace vel
