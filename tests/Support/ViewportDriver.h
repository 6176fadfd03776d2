// Drives a view the way the widget's frame loop does, for the tests and benchmarks that act
// on the viewport.
#pragma once

namespace vel {
class FBO;
class GLView;
} // namespace vel

namespace vel::test {

// The pointer at (x, y) of the view with the left button as given; the last position and
// button become the previous ones.
void PointMouse(float x, float y, bool left);
// One frame of the main loop at 60 Hz; the framebuffer handed to the widget.
FBO* MainLoopFrame(GLView& view);

} // namespace vel::test
