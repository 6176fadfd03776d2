// GLView: the viewport. The frame loop of GLWidget calls it three times a frame
// (MainLoopPreRender, MainLoopRender, MainLoopPostRender); everything it draws goes into its
// own framebuffer, which the widget copies to the screen.
//
// So far it keeps the state the frame loop and the interface read (pointer flags, scale,
// rotation, idle clock) and renders an empty stage; the frame pipeline and the viewport's
// mouse handlers grow inside MainLoopRender.
#pragma once

#include "Math/Matrix3.h"
#include "Memory/Shared.h"
#include "OpenGL/FBOTexture.h"

#include <memory>

namespace vel {

class Tool;

class GLView {
public:
    int width;
    int height;
    float scale = 1.0f; // pointer coordinates are device pixels times this
    Matrix3<double> rotation; // of the camera; the navigation sphere shows its rows

    // Pointer state, set by the frame loop.
    bool captured = false; // a button went down inside and is held
    bool outside = true;   // the pointer is over the interface or off the view
    bool drag = false;     // a gesture is moving something
    bool hideCursor = false;
    bool modal = false;    // a modal step of the viewport refuses to close the window
    bool turntable = false;
    int state = 0;         // 0 idle; 10 forbids the pointer
    Tool* hovered = nullptr;
    Tool* drawing = nullptr;

    long frame = 0;           // frames rendered
    double unchanged = 0.0;   // seconds without a change, for hiding the cursor
    bool postRendered = true; // MainLoopPostRender ran since the last pre-render

    std::unique_ptr<FBOTexture> image; // what MainLoopRender hands the widget

    GLView(int width, int height);
    virtual ~GLView();

    // False, and nothing new is drawn, unless a post-render has happened since the last
    // pre-render. Advances the clocks and reads the keyboard.
    bool MainLoopPreRender(double totalTime, double dt);
    // The framebuffer to show.
    FBO* MainLoopRender(double dt);
    void MainLoopPostRender();

    virtual void resize(int width, int height);
    void enterEvent();
    void leaveEvent();
    bool inside() const { return !outside; }
    bool idle() const { return state == 0 && !drag && !captured; }
    // The camera turned by `angle` radians about the vertical.
    void turn(double angle);
    // Asks for a file and saves the selected objects alone (.vob, or .obj).
    void quickSave();
};

extern GLView* main_view;

} // namespace vel
