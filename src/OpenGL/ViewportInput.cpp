#include "OpenGL/ViewportInput.h"

#include "Core/Assert.h"
#include "Deformers/Sculptor.h"
#include "OpenGL/AssembleActions.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/GLView.h"
#include "OpenGL/GLWidget.h"
#include "OpenGL/Keyboard.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/SculptGesture.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/ViewportActions.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <glad/gl.h>

#include <QtCore/qnamespace.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vel {

namespace {

constexpr int SELECTED_BIT = int(0x80000000u);
constexpr int ID_BITS = 0x7fffffff;
constexpr float TINT_SELECTION[4] = {1.0f, 0.55f, 0.1f, 0.35f};
// The brightest a selected pixel stays before its tint: orange-white.
constexpr float TINT_CEILING[3] = {1.0f, 0.8f, 0.55f};
// The hovered tool shows by its contour alone: a tint of its inside would shift every shade
// the pointer passes over.
constexpr float TINT_HOVER[4] = {1.0f, 1.0f, 1.0f, 0.0f};
constexpr float TINT_CONTOUR[4] = {1.0f, 0.7f, 0.2f, 1.0f};
constexpr double SPEED_PER_PIXEL = 0.01; // exponent of the speed factor
constexpr double DELAY_PER_PIXEL = 0.01; // seconds
constexpr double NEAR_OF_DISTANCE = 0.01; // the depth range, as GLView::viewAll sets it
constexpr double FAR_OF_DISTANCE = 100.0;

// Every selected tool of the tree, topmost first.
std::vector<Tool*> SelectedTools()
{
    std::vector<Tool*> out;
    Root* root = Scene::instance().root;
    if (!root)
        return out;
    std::vector<Tool*> pending(root->children.rbegin(), root->children.rend());
    while (!pending.empty()) {
        Tool* t = pending.back();
        pending.pop_back();
        if (t->flags & Tool::FLAG_SELECTED)
            out.push_back(t);
        pending.insert(pending.end(), t->children.rbegin(), t->children.rend());
    }
    return out;
}

void ClearSelection()
{
    for (Tool* t : SelectedTools())
        t->deselect(false, false);
}

HeldKeys Held()
{
    HeldKeys h;
    h.control = keys.control();
    h.shift = keys.shift();
    h.alt = keys.alt();
    for (int d = 1; d <= 5; ++d)
        h.digit[d] = keys.digit(d);
    return h;
}

Vector3<double> Origin(Tool* t)
{
    Matrix34<double> W;
    t->worldTransform(W, true);
    return W.translation();
}

// The rotation of a placement, its rows made unit length.
Matrix3<double> RotationOf(Matrix34<double> const& M)
{
    Matrix3<double> L = M.linear();
    Vector3<double> rows[3] = {{L.m[0], L.m[1], L.m[2]}, {L.m[3], L.m[4], L.m[5]}, {L.m[6], L.m[7], L.m[8]}};
    for (auto& r : rows)
        r = r.length() > 0 ? r * (1.0 / r.length()) : r;
    return Matrix3<double>(rows[0].x, rows[0].y, rows[0].z, rows[1].x, rows[1].y, rows[1].z, rows[2].x, rows[2].y,
                           rows[2].z);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Construction, keys and state

namespace {
std::vector<ViewportInput*> inputs; // alive, for forgetting a tool that goes

// A tool that is destroyed or removed leaves no pointer behind in the snapshots.
void ForgetTool(Tool* t)
{
    for (ViewportInput* in : inputs) {
        for (ABrush* b : {&in->press, &in->current})
            if (b->tool == t || b->object == t)
                *b = ABrush();
        if (in->view.hovered == t)
            in->view.hovered = nullptr;
        if (in->linkFirst == t)
            in->linkFirst = nullptr;
    }
}
} // namespace

ViewportInput::ViewportInput(GLView& v)
    : view(v)
{
    inputs.push_back(this);
    gResetStickySelection = &ForgetTool;
}

ViewportInput::~ViewportInput()
{
    inputs.erase(std::find(inputs.begin(), inputs.end(), this));
    if (inputs.empty())
        gResetStickySelection = nullptr;
    // The view goes while its context is current (GLWidget's destructor).
    picker.release();
}

char const* ViewportInput::FrameTypeName(int f)
{
    static char const* const names[] = {"Object", "Element", "World", "Screen"};
    return f >= 0 && f < 4 ? names[f] : "";
}

char const* ViewportInput::ProjectionName(int mode)
{
    static char const* const names[] = {"Same Depth", "On Object", "On Normal", "Nor. Plane", "Tan. Plane"};
    return mode >= 0 && mode < 5 ? names[mode] : "";
}

char const* ViewportInput::RelativeName(int r)
{
    static char const* const names[] = {"To Scene", "To Parent", "Rel. To Child", "Match Hierarchy"};
    return r >= 0 && r < 4 ? names[r] : "";
}

std::vector<std::string> ViewportInput::statusLines() const
{
    bool const sculpting = iActionMode == MODE_SCULPT;
    std::string const action =
        sculpting ? SculptActionName(Sculptor::gSculptAction) : AssembleActionName(iAssembleAction);
    std::vector<std::string> lines = {action, std::string("Frame: ") + FrameTypeName(frameType),
                                      std::string("Proj: ") + ProjectionName(projectionMode),
                                      RelativeName(relative)};
    if (sculpting) {
        // The brush of the action as the keys leave it: size, strength, falloff, elevation.
        BrushProperties const& b = *GetBrushes()[Sculptor::gSculptAction].object;
        char text[96];
        std::snprintf(text, sizeof text, "Brush: %.0f px  S %.2f  F %.2f  E %.2f", double(BrushSize),
                      double(b.strength), double(b.falloff), double(b.elevation));
        lines.push_back(text);
    }
    return lines;
}

bool ViewportInput::linked() const
{
    if (gesture != NONE)
        return gestureLinked;
    bool const alt = !gIsSelectedObjectMenu && keys.alt();
    return alt != gToggleGroups;
}

void ViewportInput::setState()
{
    if (gesture != NONE && keys.pressed(Qt::Key_Escape)) {
        // Cancel: the gesture is taken back as if it never was.
        if (gesture == TRANSFORM)
            transform.cancel();
        if (copying && gesture == TRANSFORM) {
            History& history = History::instance();
            history.superEnd();
            history.undo();
            history.pop();
        }
        if (AssembleAction == ACTION_TOOL_PICK)
            gSetAssembleAction(PrevAssembleAction, false);
        if (gesture == SCULPT)
            sculpt.cancel();
        resetState();
    }
    bool const held = mouse.left || mouse.middle || mouse.right;
    if (ActionMode == MODE_ASSEMBLE || ActionMode == MODE_SCULPT)
        DeriveActions(Held(), held || gesture != NONE, copying);
}

bool ViewportInput::keyPressed(int key, bool control, bool shift)
{
    // The brush keys act during a stroke too (a stamp drag takes the strength).
    if (sculpt.keyPressed(key, control, shift, gesture == NONE))
        return true;
    if (gesture != NONE)
        return false;
    auto choose = [](int action) {
        ActionMode = iActionMode = MODE_ASSEMBLE;
        gSetAssembleAction(action, true);
        return true;
    };
    switch (key) {
    case Qt::Key_F3:
        return choose(shift ? ACTION_POSE : control ? ACTION_ROTATE : ACTION_MOVE);
    case Qt::Key_F4:
        return ActionMode == MODE_ASSEMBLE && choose(ACTION_MATERIAL);
    case Qt::Key_F5:
        return ActionMode == MODE_ASSEMBLE && choose(control ? ACTION_UNLINK : ACTION_LINK);
    case Qt::Key_G:
        gToggleGroups = !gToggleGroups;
        return true;
    case Qt::Key_A:
        ActionMode = iActionMode = ActionMode == MODE_SCULPT ? MODE_ASSEMBLE : MODE_SCULPT;
        Sculptor::gSculptAction = ActionMode == MODE_SCULPT ? SculptAction : 81;
        return true;
    case Qt::Key_E:
        frameType = frameType == FRAME_ELEMENT ? FRAME_OBJECT : FRAME_ELEMENT;
        return true;
    case Qt::Key_F:
        frameType = control ? (shift ? FRAME_SCREEN : FRAME_WORLD) : (shift ? FRAME_ELEMENT : FRAME_OBJECT);
        return true;
    case Qt::Key_D:
        if (shift)
            return false; // subdivide
        projectionMode = PROJECT_SAME_DEPTH;
        return true;
    case Qt::Key_O:
        if (control)
            return false; // open
        projectionMode = PROJECT_ON_OBJECT;
        return true;
    case Qt::Key_N:
        if (control)
            return false; // the start window
        projectionMode = shift ? PROJECT_ON_NORMAL : PROJECT_NORMAL_PLANE;
        return true;
    case Qt::Key_T:
        projectionMode = PROJECT_TANGENT_PLANE;
        return true;
    default:
        return false;
    }
}

void ViewportInput::resetState()
{
    if (sculpt.active())
        sculpt.cancel();
    gesture = NONE;
    targets.clear();
    press = current = ABrush();
    middlePressed = false;
    view.drag = false;
}

void ViewportInput::UNDO()
{
    if (gesture == NONE)
        History::instance().undo();
}

void ViewportInput::REDO()
{
    if (gesture == NONE)
        History::instance().redo();
}

// ---------------------------------------------------------------------------------------------
// Picking and selection

void ViewportInput::beginFrame()
{
    Rendering const& r = Rendering::instance();
    projection = ViewProjection(view.camera, view.width, view.height, r.FieldOfView, view.zNear, view.zFar,
                                r.cameraType == 1);
}

double ViewportInput::workingDepth() const
{
    return projection.depthScreenInv(view.camera.distance);
}

Vector3<double> ViewportInput::pointerWorld(double depth) const
{
    return projection.point_screen_to_world({current.screen.x, current.screen.y, depth});
}

Vector3<double> ViewportInput::pressWorld(double depth) const
{
    return projection.point_screen_to_world({press.screen.x, press.screen.y, depth});
}

ABrush ViewportInput::selection(ABrush::TSelection what, bool now)
{
    ABrush b;
    // Window pixels to the targets' (half of them in half-size mode).
    float const s = float(view.width) / float(std::max(1, view.windowWidth)) / std::max(view.scale, 1e-6f);
    b.screen = {mouse.x * s, mouse.y * s};
    b.pressure = PressureCurve(mouse.pressure, pressureExponent, pressureMinimum);
    b.depth = workingDepth();
    if (what != ABrush::POSITION) {
        int const x = int(std::floor(b.screen.x));
        int const y = view.height - 1 - int(std::floor(b.screen.y));
        picker.request(view.Layers.get(), x, y);
        if (now)
            b.pick = picker.wait();
        else if (!picker.latest(b.pick))
            b.pick = TPickResult();
        Scene& scene = Scene::instance();
        if (b.pick.hit && scene.findObjects(b.pick.entry() + 1, b.object, b.tool)) {
            b.depth = b.pick.depth;
            b.element = b.tool->element.get();
            b.normal = projection.normal_screen_to_world(Vector3<double>(b.pick.viewNormal)).normalize();
            b.tool->worldTransform(b.pick.toolMatrix, true);
            b.elementMatrix = b.element ? b.element->Transform(1.0f) * b.pick.toolMatrix : b.pick.toolMatrix;
        } else {
            b.pick.hit = false;
            b.object = b.tool = nullptr;
        }
    }
    b.world = projection.point_screen_to_world({b.screen.x, b.screen.y, b.depth});
    b.pick.position = b.world;
    b.pick.normal = b.normal;
    return b;
}

std::vector<Tool*> ViewportInput::hitTargets(ABrush const& brush) const
{
    std::vector<Tool*> out;
    if (!brush.object)
        return out;
    if (brush.object->flags & Tool::FLAG_SELECTED)
        return SelectedTools();
    brush.object->selectObjects(out, linked(), false);
    return out;
}

void ViewportInput::select(ABrush const& brush)
{
    targets = hitTargets(brush);
    if (brush.object && !(brush.object->flags & Tool::FLAG_SELECTED)) {
        if (!keys.shift())
            ClearSelection();
        Tool::select(targets, false, false);
    }
    Sculptor::gSculptAction = 81;
}

void ViewportInput::clickSelect(ABrush const& brush, bool add)
{
    if (!add)
        ClearSelection();
    if (brush.object)
        brush.object->select(linked(), false);
}

bool ViewportInput::MainLoopSelect()
{
    if (!view.inside() && gesture == NONE) {
        hoverId = 0;
        view.hovered = nullptr;
        return false;
    }
    if (gesture != NONE)
        return false; // the dragged tools are drawn later; nothing to hover
    ABrush const now = selection(ABrush::OBJECT, false);
    // With the sticky setting a pointer over nothing keeps the last hit.
    if (now.hit() || !gStickySelection)
        current = now;
    hoverId = current.hit() ? (current.pick.objectId & ID_BITS) : 0;
    view.hovered = current.tool;
    return false;
}

// ---------------------------------------------------------------------------------------------
// The mouse handlers

void ViewportInput::dispatch()
{
    if (gAllActionsBlocked)
        return;
    if (!view.inside() && gesture == NONE)
        return;
    mouseDown();
    // The pointer may have moved on before the release of the same frame: the gesture
    // follows it there first, so the last stretch of a drag is never lost.
    mouseMove();
    if (gesture != NONE && !mouse.left && !mouse.right && !mouse.middle)
        mouseUp(true);
    if (gesture == TRANSFORM) {
        // The list of the frame was made before the move: the moved tools go again.
        Scene& scene = Scene::instance();
        scene.clearTemporary();
        for (Tool* t : transform.targets)
            scene.temporary.append(t, false);
    }
}

void ViewportInput::navigate()
{
    if (gesture != ORBIT && gesture != PAN)
        return;
    ABrush const before = current;
    current = selection(ABrush::POSITION, false);
    float const dx = current.screen.x - before.screen.x, dy = current.screen.y - before.screen.y;
    if (dx == 0 && dy == 0)
        return;
    Camera& camera = view.camera;
    if (gesture == ORBIT) {
        camera.rotateAbout(center, dy * ROTATE_PER_PIXEL, dx * ROTATE_PER_PIXEL, 0.0);
        return;
    }
    // The point under the pointer stays under it, in the plane of the press; the projection
    // is still the one the camera had.
    Vector3<double> const now = pointerWorld(press.depth);
    Vector3<double> const was = projection.point_screen_to_world({before.screen.x, before.screen.y, press.depth});
    camera.position = camera.position - (now - was);
}

void ViewportInput::mouseDown()
{
    bool const left = mouse.left && !mouse.pleft;
    bool const right = mouse.right && !mouse.pright;
    bool const middle = mouse.middle && !mouse.pmiddle;
    if (!(left || right || middle) || !view.inside() || gIsSelectedObjectMenu)
        return;
    if (middle)
        middlePressed = true;
    // A second button during a transform takes the transform back.
    if (gesture == TRANSFORM && (right || middle)) {
        transform.cancel();
        resetState();
        return;
    }
    if (gesture != NONE)
        return;
    press = current = selection(ABrush::OBJECT, true);
    pressUnit = projection.pixelSize(projection.depthScreen(press.depth));
    gestureLinked = linked();
    view.drag = true;
    if (!left) {
        gesture = PAN;
        return;
    }
    if (iActionMode == MODE_SCULPT && press.hit()) {
        // A stroke on a surface; on nothing the press orbits.
        press = current = sculptBrush();
        gesture = sculpt.begin(press, iSculptAction, iSculptSelect, iSculptProperty) ? SCULPT : CLICK;
        return;
    }
    int const action = iAssembleAction;
    if (iActionMode != MODE_ASSEMBLE || !press.hit()) {
        gesture = ORBIT;
        center = press.hit() ? press.world : view.camera.position;
        return;
    }
    if (IsTransformAction(action)) {
        select(press);
        beginTransform();
        return;
    }
    if (action == ACTION_SPEED || action == ACTION_DELAY) {
        targets = hitTargets(press);
        startValue = action == ACTION_SPEED ? press.object->speed : press.object->delay;
        gesture = VALUE;
        return;
    }
    if (action == ACTION_FLIP_NORMALS || action == ACTION_FLIP_NORMALS_ALT)
        AssembleActions::FlipNormals(hitTargets(press));
    gesture = CLICK;
}

void ViewportInput::beginTransform()
{
    std::vector<Tool*> tools = targets;
    if (copying) {
        // The copies are what moves; the originals stay.
        History::instance().superBegin("Copy", false);
        Scene& scene = Scene::instance();
        std::vector<Tool*> copies;
        for (Tool* t : TransformGesture::Targets(tools))
            for (Tool* c : scene.addObjectsOnParent(t, t->Parent, Matrix34<double>(), {Matrix34<double>()}))
                copies.push_back(c);
        ClearSelection();
        Tool::select(copies, false, false);
        tools = copies;
        scene.dirty = true;
    }
    Vector3<double> const c = tools.empty() ? press.world : Origin(TransformGesture::Targets(tools).front());
    if (transform.begin(tools, c)) {
        gesture = TRANSFORM;
    } else {
        if (copying)
            History::instance().superEnd();
        gesture = CLICK;
    }
}

void ViewportInput::dragTransform()
{
    Vector2<float> const d{current.screen.x - press.screen.x, current.screen.y - press.screen.y};
    Vector3<double> const shift = pointerWorld(press.depth) - pressWorld(press.depth);
    // The axes of rotations and mirrors: the view's, the world's or the first target's.
    Vector3<double> right = projection.normal_screen_to_world({1, 0, 0});
    Vector3<double> up = projection.normal_screen_to_world({0, 1, 0});
    Vector3<double> const towards = projection.normal_screen_to_world({0, 0, 1});
    if (frameType == FRAME_WORLD) {
        right = {1, 0, 0};
        up = {0, 1, 0};
    } else if (frameType != FRAME_SCREEN && !transform.targets.empty()) {
        Matrix3<double> const R = RotationOf(transform.frames.front());
        right = Vector3<double>(1, 0, 0) * R;
        up = Vector3<double>(0, 1, 0) * R;
    }
    Vector3<double> const& c = transform.center;
    double const ax = d.x * ROTATE_PER_PIXEL, ay = d.y * ROTATE_PER_PIXEL;
    double const grow = std::exp(-d.y * SCALE_PER_PIXEL);
    int action = iAssembleAction;
    if (action > ACTION_ROTATE_SCALE && action <= ACTION_ROTATE_SCALE + ACTION_COPY_OFFSET)
        action -= ACTION_COPY_OFFSET;
    Matrix34<double> X;
    switch (action) {
    case ACTION_ROTATE:
    case ACTION_ROTATION_MULTIPLIER:
        X = TransformGesture::RotateAbout(c, up, ax) * TransformGesture::RotateAbout(c, right, ay);
        break;
    case ACTION_SCALE:
    case ACTION_SCALE_ALT:
        X = TransformGesture::ScaleAbout(c, grow);
        break;
    case ACTION_MIRROR:
        X = TransformGesture::MirrorAbout(c, right) * TransformGesture::Move(shift);
        break;
    case ACTION_ROTATE_SCALE:
        X = TransformGesture::RotateAbout(c, towards, ax) * TransformGesture::ScaleAbout(c, grow);
        break;
    default: // Move and Pose
        X = TransformGesture::Move(shift);
        break;
    }
    transform.apply(X);
}

void ViewportInput::mouseMove()
{
    // Orbit and pan moved the camera before the frame's matrices (navigate).
    if (gesture == NONE || gesture == ORBIT || gesture == PAN)
        return;
    if (gesture == SCULPT) {
        // One sample per pointer event: a still pointer adds none.
        ABrush const now = sculptBrush();
        if (!ABrush::SameMousePosition(now, current) || now.pressure != current.pressure) {
            current = now;
            sculpt.progress(current);
        }
        return;
    }
    current = selection(ABrush::POSITION, false);
    if (gesture == TRANSFORM)
        dragTransform();
}

ABrush ViewportInput::sculptBrush()
{
    ABrush b = selection(ABrush::OBJECT, true);
    // Off the sculpted tool the stroke goes on at the last sample's depth, facing as it did.
    if (gesture == SCULPT && b.tool != sculpt.target) {
        ABrush const& last = current;
        b.tool = last.tool;
        b.object = last.object;
        b.element = last.element;
        b.pick = last.pick;
        b.normal = last.normal;
        b.elementMatrix = last.elementMatrix;
        b.depth = last.depth;
        b.world = projection.point_screen_to_world({b.screen.x, b.screen.y, b.depth});
    }
    if (!gPenPressure)
        b.pressure = 1.0f;
    b.select = iSculptSelect;
    b.property = iSculptProperty;
    b.material = BrushMaterial;
    b.mask = uint16_t(BrushMaterialMask);
    double const unit = projection.pixelSize(projection.depthScreen(b.depth));
    b.size = sculpt.worldSize(unit > 0.0 ? 1.0 / unit : 0.0);
    return b;
}

void ViewportInput::brushHint()
{
    bool const sculpting = gesture == SCULPT || (gesture == NONE && iActionMode == MODE_SCULPT && current.hit());
    // The circle is this hint's only while it shows it: others may draw it too.
    if (!sculpting || !view.inside()) {
        if (brushShown)
            view.brushVisible = brushShown = false;
        return;
    }
    view.brushVisible = brushShown = true;
    double const unit = projection.pixelSize(projection.depthScreen(current.depth));
    view.brushCenter = current.world;
    view.brushNormal = current.normal;
    view.brushRadius = 0.5 * double(sculpt.worldSize(unit > 0.0 ? 1.0 / unit : 0.0));
}

void ViewportInput::updateSculpt()
{
    if (gesture == SCULPT && sculpt.brushChanged)
        sculpt.step();
}

void ViewportInput::mouseUp(bool apply)
{
    if (gesture == NONE)
        return;
    float const moved = std::hypot(current.screen.x - press.screen.x, current.screen.y - press.screen.y);
    bool const click = moved < CLICK_PIXELS;
    switch (gesture) {
    case SCULPT:
        if (apply)
            sculpt.end(current = sculptBrush());
        else
            sculpt.cancel();
        break;
    case TRANSFORM: {
        bool const changed = transform.moved();
        if (apply)
            transform.finish();
        else
            transform.cancel();
        if (copying)
            History::instance().superEnd();
        if (!changed && !copying)
            clickSelect(press, keys.shift());
        break;
    }
    case ORBIT:
        if (click && !keys.shift())
            ClearSelection();
        break;
    case VALUE:
        if (apply && !click) {
            double const dy = current.screen.y - press.screen.y;
            if (iAssembleAction == ACTION_SPEED)
                AssembleActions::SetSpeed(targets, float(startValue * std::exp(-dy * SPEED_PER_PIXEL)));
            else
                AssembleActions::SetDelay(targets, float(startValue - dy * DELAY_PER_PIXEL));
        }
        break;
    case CLICK:
        if (apply && click)
            releaseAction(press);
        break;
    default:
        break;
    }
    resetState();
}

void ViewportInput::mouseWheel()
{
    if (mouse.wheel == 0 || !view.inside() || gAllActionsBlocked)
        return;
    if (keys.shift()) {
        // The brush size, a tenth a notch of Qt's 120.
        sculpt.mulSize(std::pow(1.1f, mouse.wheel / 120.0f));
        return;
    }
    ABrush const at = selection(ABrush::OBJECT, true);
    Camera& camera = view.camera;
    camera.zoomAbout(at.world, std::pow(ZOOM_PER_WHEEL, double(mouse.wheel)));
    // The depth range goes with the distance, as when the view was framed.
    view.zNear = float(camera.distance * NEAR_OF_DISTANCE);
    view.zFar = float(camera.distance * FAR_OF_DISTANCE);
}

// ---------------------------------------------------------------------------------------------
// Assemble actions on release

void ViewportInput::releaseAction(ABrush const& brush)
{
    std::vector<Tool*> const hits = hitTargets(brush);
    Vector3<float> const normal(brush.normal);
    switch (iAssembleAction) {
    case ACTION_MATERIAL:
        AssembleActions::ApplyMaterial(hits, activeMaterial, -1);
        break;
    case ACTION_LINK:
        if (!linkFirst) {
            linkFirst = brush.object;
            clickSelect(brush, false);
        } else {
            AssembleActions::Link(linkFirst, brush.object);
            linkFirst = nullptr;
        }
        break;
    case ACTION_UNLINK:
        if (brush.object)
            AssembleActions::Unlink({brush.object});
        break;
    case ACTION_CONSTRAIN_ROTATION:
    case ACTION_COUNTER_CONSTRAIN_ROTATION:
        AssembleActions::ConstrainRotation(hits, iAssembleAction == ACTION_CONSTRAIN_ROTATION ? normal : -normal);
        break;
    case ACTION_CONSTRAIN_TRANSLATION:
    case ACTION_COUNTER_CONSTRAIN_TRANSLATION:
        AssembleActions::ConstrainTranslation(hits, iAssembleAction == ACTION_CONSTRAIN_TRANSLATION ? normal : -normal);
        break;
    case ACTION_REMOVE_ROTATION_CONSTRAINT:
        AssembleActions::ConstrainRotation(hits, {});
        break;
    case ACTION_REMOVE_TRANSLATION_CONSTRAINT:
        AssembleActions::ConstrainTranslation(hits, {});
        break;
    case ACTION_SET_PARENT:
        AssembleActions::SetParent(SelectedTools(), brush.tool);
        Scene::instance().dirty = true;
        break;
    case ACTION_ALIGN:
    case ACTION_ALIGN_ALT: {
        // The rotation of each target becomes the frame's: world axes, the view's, or the
        // surface under the pointer.
        Matrix3<double> frame;
        if (frameType == FRAME_SCREEN)
            frame = inv(view.camera.rotation);
        else if (frameType != FRAME_WORLD)
            frame = Matrix3<double>::Frame_Y(brush.normal, false);
        History::instance().superBegin("Align", false);
        for (Tool* t : TransformGesture::Targets(hits)) {
            Matrix34<double> W;
            t->worldTransform(W, true);
            Vector3<double> const o = W.translation();
            if (!transform.begin({t}, o))
                continue;
            Matrix34<double> const turn(inv(RotationOf(W)) * frame);
            transform.apply(Matrix34<double>::Translation(-o) * turn * Matrix34<double>::Translation(o));
            transform.finish();
        }
        History::instance().superEnd();
        break;
    }
    default:
        clickSelect(brush, keys.shift());
        break;
    }
}

// ---------------------------------------------------------------------------------------------
// Selection feedback

void ViewportInput::selectionMaskIDS(int hover, int masks[4][4]) const
{
    for (int i = 0; i < 4; ++i)
        std::fill(masks[i], masks[i] + 4, 0);
    int(&oieMask)[4] = masks[0];
    int(&oieIds)[4] = masks[1];
    int(&cpfMask)[4] = masks[2];
    int(&cpfIds)[4] = masks[3];
    if (iActionMode != MODE_SCULPT) {
        // The selected bit alone: every selected tool, whatever its id.
        oieMask[0] = oieIds[0] = SELECTED_BIT;
        return;
    }
    if (hover == 0)
        return;
    TPickResult const& p = current.pick;
    oieMask[0] = ID_BITS;
    oieIds[0] = hover;
    if (iSculptSelect == 0) {
        oieMask[2] = -1;
        oieIds[2] = p.element;
    } else if (iSculptSelect == 1) {
        cpfMask[0] = cpfMask[1] = -1;
        cpfIds[0] = p.component;
        cpfIds[1] = p.patch;
    } else if (iSculptSelect == 3) {
        cpfMask[0] = -1;
        cpfIds[0] = p.component;
    }
}

void ViewportInput::contourSelection()
{
    // A full-screen pass costs the software rasteriser a good part of a frame: none when
    // nothing is hovered or marked.
    int const hover = gesture == NONE ? hoverId : 0;
    if (hover == 0) {
        Scene const& scene = Scene::instance();
        bool marked = false;
        for (ToolList const* list : {&scene.list, &scene.temporary})
            for (RenderItem const& item : list->items)
                marked = marked || (item.tool->flags & (Tool::FLAG_SELECTED | Tool::FLAG_HIGHLIGHTED));
        if (!marked)
            return;
    }
    int masks[4][4];
    selectionMaskIDS(hoverId, masks);
    // Blended over the picture in place, as the object-type tint.
    VEL_ASSERT(view.enableDraw());
    glDrawBuffer(GLenum(view.current()->attachment));
    glViewport(0, 0, view.width, view.height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    GLLayer* layer = view.Layers.get();
    GLMachine m{ShaderManager::instance().ShaderContourSelection, layer->ObjectItemsElement, layer->ComponentPatchFaces};
    VEL_ASSERT(m.enable());
    Shader::setUniform("ObjectItemsElement", layer->ObjectItemsElement->activeTexture());
    Shader::setUniform("ComponentPatchFaces", layer->ComponentPatchFaces->activeTexture());
    char const* const names[4] = {"OIEMask", "OIEIds", "CPFMask", "CPFIds"};
    for (int i = 0; i < 4; ++i)
        Shader::setUniform(names[i], masks[i][0], masks[i][1], masks[i][2], masks[i][3]);
    Shader::setUniform("HoverId", hover);
    Shader::setUniform("Selection", TINT_SELECTION[0], TINT_SELECTION[1], TINT_SELECTION[2], TINT_SELECTION[3]);
    Shader::setUniform("Hover", TINT_HOVER[0], TINT_HOVER[1], TINT_HOVER[2], TINT_HOVER[3]);
    Shader::setUniform("Contour", TINT_CONTOUR[0], TINT_CONTOUR[1], TINT_CONTOUR[2], TINT_CONTOUR[3]);
    // The tint mixes colour only: the picture's alpha is its coverage, which the later
    // passes and the merge with the hints read. The picture is not yet clamped, so the
    // selected pixels are first held under a ceiling that the tint can still colour.
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE);
    glBlendEquationSeparate(GL_MIN, GL_FUNC_ADD);
    Shader::setUniform("CeilingPass", 1);
    Shader::setUniform("Ceiling", TINT_CEILING[0], TINT_CEILING[1], TINT_CEILING[2], 1.0f);
    GLFill();
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    Shader::setUniform("CeilingPass", 0);
    GLFill();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_BLEND);
    m.disable();
}

} // namespace vel
