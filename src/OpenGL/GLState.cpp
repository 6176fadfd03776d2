#include "OpenGL/GLState.h"

namespace vel {

GLState gl_Depth_Test(GL_DEPTH_TEST, false);
GLState gl_Cull_Face(GL_CULL_FACE, false);
GLState gl_Stencil_Test(GL_STENCIL_TEST, false);

GLState::GLState(GLenum capability, bool value)
    : capability(capability)
    , value(value)
{
}

void GLState::set(bool newValue, bool force)
{
    if (!force && value == newValue)
        return;
    value = newValue;
    if (newValue)
        glEnable(capability);
    else
        glDisable(capability);
}

} // namespace vel
