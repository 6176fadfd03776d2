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
    ColorOnly = FBO::ColorsOf(this);
    DepthCopy = Shared<FBO>(new FBO(dsDepthStencil, width, height));
    Reduced = Shared<FBO>(new FBO(dsNone, reduced(width), reduced(height)));
    // Full floats: the view depths in a weigh the upsample, and half floats are slower to read here.
    Reduced->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    Tiles = Shared<EdgeTiles>(new EdgeTiles(width, height));
}

Texture2D* GLComposit::copyDepth()
{
    VEL_ASSERT(enableRead());
    VEL_ASSERT(DepthCopy->enableDraw());
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    FBO::disable(fbRead);
    FBO::disable(fbDraw);
    depthCopyFrame = -1; // a shader layer's copy may be of a depth still being drawn
    return DepthCopy->DepthStencil();
}

Texture2D* GLComposit::effectDepth()
{
    if (depthCopyFrame != effectFrame) {
        copyDepth();
        depthCopyFrame = effectFrame;
    }
    return DepthCopy->DepthStencil();
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
    VEL_ASSERT(ColorOnly->enableDraw());
    glDrawBuffer(GLenum(next()->attachment));
    glViewport(0, 0, this->width, this->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
}

void GLComposit::endEffect()
{
    endPass();
}

void GLComposit::edgeDetection()
{
    beginEffect();
    // In place: only the edges are written, so the picture stays current().
    GLEdgeDetection(current(), Layers->ObjectItemsElement, Layers->NormalNormalized, *Tiles, current(), EDGE_LIMIT,
                    Rendering::instance().fast);
    if (mipmaps)
        current()->generateMipMaps(-1);
}

void GLComposit::SSAO()
{
    float const strength = Rendering::instance().ssaoStrength;
    Texture2D* gathered = Reduced->color(0);
    if (strength != 0) { // at zero the apply pass multiplies by 1 and reads nothing gathered
        beginReduced();
        GLSSAOGather(DepthStencil(), Layers->NormalNormalized, gathered, SSAO_RADIUS, effectTime, SSAO_SAMPLES);
    }
    Texture2D* depth = effectDepth();
    beginInPlace(Cover::Surfaces);
    GLSSAOApply(depth, gathered, current(), strength);
    endInPlace();
}

void GLComposit::SSSS()
{
    float const strength = Rendering::instance().ssssStrength;
    Texture2D* gathered = Reduced->color(0);
    if (strength != 0) {
        beginReduced();
        GLSSSSGather(current(), DepthStencil(), Layers->NormalNormalized, gathered, SSAO_RADIUS, effectTime,
                     SSAO_SAMPLES);
    }
    Texture2D* depth = effectDepth();
    beginInPlace(Cover::Surfaces);
    GLSSSSApply(depth, gathered, current(), strength);
    endInPlace();
}

void GLComposit::beginReduced()
{
    VEL_ASSERT(Reduced->enableDraw());
    glViewport(0, 0, Reduced->width, Reduced->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
}

void GLComposit::beginInPlace(Cover cover)
{
    VEL_ASSERT(enableDraw());
    glDrawBuffer(GLenum(current()->attachment));
    glViewport(0, 0, this->width, this->height);
    gl_Stencil_Test.set(false);
    gl_Depth_Test.set(cover != Cover::All);
    if (cover != Cover::All) {
        glDepthMask(GL_FALSE);
        glDepthFunc(cover == Cover::Surfaces ? GL_GREATER : GL_LEQUAL);
        glDepthRange(1.0, 1.0);
    }
}

void GLComposit::endInPlace()
{
    glDepthRange(0.0, 1.0);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    gl_Depth_Test.set(false);
    if (mipmaps)
        current()->generateMipMaps(-1);
}

bool GLComposit::resize(int w, int h)
{
    // The layer shares the depth-stencil texture: whichever resizes first remakes it.
    bool changed = FBO::resize(w, h);
    changed = Layers->resize(w, h) || changed;
    changed = ColorOnly->resize(w, h) || changed;
    DepthCopy->resize(w, h);
    depthCopyFrame = -1;
    Reduced->resize(reduced(w), reduced(h));
    Tiles->resize(w, h);
    return changed;
}

} // namespace vel
