#include "OpenGL/GLFunctions.h"

#include "Core/Assert.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"

#include <glad/gl.h>

namespace vel {

void GLInit()
{
    gl_Depth_Test.set(true);
    gl_Cull_Face.set(false);
    gl_Stencil_Test.set(false);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LESS);
    glDisable(GL_MULTISAMPLE);
    glDisable(GL_BLEND);
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
}

void GLFill()
{
    if (gl_Cull_Face.value)
        gl_Cull_Face.set(false);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void GLSegment()
{
    glDrawArrays(GL_LINES, 0, 2);
}

void GLCopy(Texture2D* source)
{
    GLMachine m{ShaderManager::instance().ShaderCopy, source};
    VEL_ASSERT(m.enable());
    Shader::setUniform("Image", source->activeTexture());
    GLFill();
}

void BindDrawBuffer(Texture2D* target)
{
    VEL_ASSERT_MSG(!target || target->attachment >= 0, "a filter's target must be attached to the bound framebuffer");
    glDrawBuffer(GLenum(target ? target->attachment : GL_COLOR_ATTACHMENT0));
}

void GLSimpleFilter(Shader* shader, Texture2D* source, Texture2D* target)
{
    BindDrawBuffer(target);
    GLMachine m{shader, source};
    VEL_ASSERT(m.enable());
    Shader::setUniform("Image", source->activeTexture());
    GLFill();
}

} // namespace vel
