#include "OpenGL/GLComposit.h"

#include "Core/Assert.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"

namespace vel {

GLComposit::GLComposit(int width, int height, bool mipmaps)
    : FBO(dsDepthStencil, width, height)
    , mipmaps(mipmaps)
{
    // Plain linear filtering: generateMipMaps switches minification to the mipmaps itself.
    colors.push_back(addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT));
    colors.push_back(addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT));
    Layers = Shared<GLLayer>(new GLLayer(this));
}

void GLComposit::beginPass()
{
    VEL_ASSERT(enableDraw());
    glDrawBuffer(GLenum(next()->attachment));
    glViewport(0, 0, this->width, this->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
}

void GLComposit::endPass()
{
    flip();
    if (mipmaps)
        current()->generateMipMaps(-1);
}

void GLComposit::objectType()
{
    // Blended over the picture in place: no flip.
    VEL_ASSERT(enableDraw());
    glDrawBuffer(GLenum(current()->attachment));
    glViewport(0, 0, this->width, this->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    GLMachine m{ShaderManager::instance().ShaderObjectType, Layers->Normal};
    VEL_ASSERT(m.enable());
    Shader::setUniform("Flags", Layers->Normal->activeTexture());
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    GLFill();
    glDisable(GL_BLEND);
}

// ---- screen effects

void GLComposit::beginEffect()
{
    beginPass();
    glDepthMask(GL_FALSE);
}

void GLComposit::endEffect()
{
    glDepthMask(GL_TRUE);
    endPass();
}

void GLComposit::edgeDetection()
{
    beginEffect();
    GLEdgeDetection(current(), Layers->ObjectItemsElement, Layers->NormalNormalized, next(), EDGE_LIMIT,
                    Rendering::instance().fast);
    endEffect();
}

void GLComposit::SSAO()
{
    beginEffect();
    GLSSAO(current(), DepthStencil(), Layers->NormalNormalized, next(), SSAO_RADIUS,
           Rendering::instance().ssaoStrength, effectTime, SSAO_SAMPLES);
    endEffect();
}

void GLComposit::SSSS()
{
    beginEffect();
    GLSSSS(current(), DepthStencil(), Layers->NormalNormalized, next(), SSAO_RADIUS,
           Rendering::instance().ssssStrength, effectTime, SSAO_SAMPLES);
    endEffect();
}

bool GLComposit::resize(int w, int h)
{
    // The layer shares the depth-stencil texture: whichever resizes first remakes it.
    bool changed = FBO::resize(w, h);
    changed = Layers->resize(w, h) || changed;
    return changed;
}

} // namespace vel
