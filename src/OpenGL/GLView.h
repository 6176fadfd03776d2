// GLView: the viewport. The frame loop of GLWidget calls it three times a frame
// (MainLoopPreRender, MainLoopRender, MainLoopPostRender); everything it draws goes into its
// own framebuffers, and the picture it hands the widget is `image`.
//
// render() is one frame of the pipeline: matrices, the scene's two lists into the G-buffer,
// the composite of the style, transparency, shadow, the screen effects in their fixed order,
// accumulation of jittered samples, film noise, the hints over the picture, and a pending
// save. Steps that belong to subsystems still to come (shader layers, picking and selection
// feedback, the viewport's mouse actions) keep their places in render() as comments.
//
// Index (GLView.cpp)
// - construction and size
// - frame entry points
// - the frame
// - shadows
// - hints
// - accumulation and saving
#pragma once

#include "Math/Matrix3.h"
#include "Memory/Shared.h"
#include "OpenGL/Camera.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLVisual.h"

#include <deque>
#include <memory>
#include <string>
#include <unordered_set>

namespace vel {

struct CameraState;

class Element;
class TextureCube;
class Tool;
class ToolList;
class ViewportInput;

class GLView : public GLVisual {
public:
    static constexpr int SHADOW_SIZE = 1024; // faces of the light's depth cube

    int windowWidth;           // the window in device pixels; width and height are the targets'
    int windowHeight;
    float scale = 1.0f;        // pointer coordinates are device pixels times this
    Camera camera; // the navigation sphere shows the rows of its rotation

    // Pointer state, set by the frame loop.
    bool captured = false; // a button went down inside and is held
    bool outside = true;   // the pointer is over the interface or off the view
    bool drag = false;     // a gesture is moving something
    bool hideCursor = false;
    bool modal = false;    // a modal step of the viewport refuses to close the window
    bool turntable = false;
    int state = 0;         // 0 idle; 10 forbids the pointer
    bool renderOnly = false; // no hints over the picture (thumbnails, clean renders)
    Tool* hovered = nullptr;
    Tool* drawing = nullptr;

    long frame = 0;           // frames rendered
    double unchanged = 0.0;   // seconds without a change, for hiding the cursor
    double time = 0.0;        // seconds of the scene clock, for turning light and noise
    bool postRendered = true; // MainLoopPostRender ran since the last pre-render

    // Accumulation: the sum of the frames since the first sample (in one of its two
    // textures, by accumulationIndex), and their count.
    Shared<FBO> Accumulation;
    int accumulationIndex = 0;
    int accumulated = 0;
    int samples = 0;          // frames to average without a save; 0: none
    int renderSamples = 16;   // "Samples" of a render to file: the frames its mean takes
    // The overlay target: colour and depth of the hints, merged with the picture by depth.
    Shared<FBO> HintsLayer;
    // The ground grid and the axes: off until the interface has its switches for them.
    bool showGrid = false;
    bool showAxes = false;
    // The brush circle, drawn while a brush is over a surface.
    bool brushVisible = false;
    Vector3<double> brushCenter;
    Vector3<double> brushNormal{0.0, 1.0, 0.0};
    double brushRadius = 1.0;
    // The light's depth cube and the framebuffer its faces are drawn through.
    Shared<TextureCube> ShadowMap;
    unsigned shadowFramebuffer = 0;
    float shadowNear = 1.0f;
    float shadowFar = 100000.0f;
    // A pending save: the path and the frames still to accumulate.
    bool saveRequested = false;
    int saveSamples = 0;
    std::string savePath;
    int savedSamples = 0; // frames in the mean of the last image written

    std::unique_ptr<FBOTexture> image; // what MainLoopRender hands the widget
    // The viewport's state machine: camera moves, picking, selection and the assemble
    // actions. The handlers below hand over to it; render() calls them in their places.
    std::unique_ptr<ViewportInput> input;

    GLView(int width, int height);
    ~GLView() override;

    // False, and nothing new is drawn, unless a post-render has happened since the last
    // pre-render. Advances the clocks and reads the keyboard.
    bool MainLoopPreRender(double totalTime, double dt);
    // Renders the frame; returns the framebuffer to show.
    FBO* MainLoopRender(double dt);
    void MainLoopPostRender();

    // The window's size; the targets take it times 0.5 in half-size mode.
    bool resize(int width, int height) override;
    void enterEvent();
    void leaveEvent();
    bool inside() const { return !outside; }
    bool idle() const { return state == 0 && !drag && !captured; }
    // The camera turned by `angle` radians about the vertical.
    void turn(double angle);
    // Asks for a file and saves the selected objects alone (.vob, or .obj).
    void quickSave();
    // The camera's part of a scene file's camera block, both ways.
    void saveCamera(CameraState& state) const;
    void loadCamera(CameraState const& state);

    // Frames the whole scene (Scene::fit): the camera looks at its centre from where the
    // field of view holds it, and the depth range follows the distance.
    void viewAll();

    // ---- input, within the frame (ViewportInput)
    void setState();
    bool MainLoopSelect();
    void mouseDown();
    void mouseMove();
    void mouseUp(bool apply);
    void mouseWheel();
    void resetState();
    bool linked() const;
    void UNDO();
    void REDO();

    // ---- brush settings (the brush of Sculptor::gSculptAction; clamps in SculptGesture)
    void setBrushFalloff(float value);
    void setBrushStrength(float value);
    void setBrushElevation(float value);
    void setBrushSize(float pixels);
    // Scales the size; during a stamp drag the strength.
    void mulBrushSize(float factor);
    // A setting changed during a stamp drag: the stroke's step runs again.
    void updateSculpt();

    // ---- the frame
    void render();
    // The Shader transforms of the camera at the targets' size; the frame's pass (`overlay`
    // false) moves the projection by the jitter while samples accumulate.
    void buildMatricesInViewport(bool overlay);
    // The sub-pixel offset of this frame's samples: a fixed sequence over the unit square.
    Vector2<float> jitter() const;
    // Whether frames are being averaged: a save is pending or samples are asked for.
    bool accumulating() const { return saveRequested || samples > 0; }

    // ---- shadows
    // Depth of the lists around the light into ShadowMap, one face at a time.
    void renderShadow(std::deque<ToolList*> const& lists, bool transparentToo);
    // The cube's face transforms: face f (GL order +x, -x, +y, -y, +z, -z) seen from `light`.
    Matrix4<double> shadowFaceMatrix(int face, Vector3<double> const& light) const;
    // Darkens the picture where the light is hidden: "ShadowComposit".
    void shadow(Matrix4<float> const& screenToWorld, Matrix3<float> const& rotation);
    // Window coordinates (0..1) and depth to world, for the shadow pass.
    Matrix4<double> screenToWorld() const;

    // ---- hints
    void renderHints();

    // ---- saving
    // Writes the mean of `samples` (at least 1) further frames to `path` at quality 90.
    void saveImage(std::string const& path, int samples);

private:
    // Lets each element of the list upload what changed, once however many tools show it.
    void prepareElements(ToolList& list);
    std::unordered_set<Element*> prepared; // this frame's, kept for its buckets
    void accumulate();
    void finishSave();
    void ensureShadowTargets();
};

extern GLView* main_view;

} // namespace vel
