#include "OpenGL/GLState.h"

#include "OpenGL/FBO.h"
#include "OpenGL/Shader.h"
#include "OpenGL/Texture.h"

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

void ResyncGLMirrors()
{
    GLint program = 0, draw = 0, read = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    Shader::id = unsigned(program);
    if (Shader::Current && Shader::Current->program != Shader::id)
        Shader::Current = nullptr;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    FBO::DRAW_ID = unsigned(draw);
    FBO::READ_ID = unsigned(read);
    for (GLState* state : {&gl_Depth_Test, &gl_Cull_Face, &gl_Stencil_Test})
        state->value = glIsEnabled(state->capability) == GL_TRUE;
    Texture::ResyncUnits();
}

} // namespace vel
