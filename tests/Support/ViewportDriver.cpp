#include "Support/ViewportDriver.h"

#include "OpenGL/GLView.h"
#include "OpenGL/Mouse.h"

namespace vel::test {

void PointMouse(float x, float y, bool left)
{
    mouse.moveTo(x, y);
    mouse.pleft = mouse.left;
    mouse.left = left;
}

FBO* MainLoopFrame(GLView& view)
{
    view.MainLoopPreRender(0.0, 0.016);
    FBO* shown = view.MainLoopRender(0.016);
    view.MainLoopPostRender();
    return shown;
}

} // namespace vel::test
