#include "OpenGL/GLLayer.h"

#include "Core/Assert.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/GLPick.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "Scene/ToolList.h"

namespace vel {

GLLayer::GLLayer(FBO* owner)
    : FBO(owner, true)
{
    ObjectItemsElement = addColor(GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    ComponentPatchFaces = addColor(GL_RGB32I, GL_RGB_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    Normal = addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    RoughMetal = addColor(GL_RG16F, GL_RG, GL_HALF_FLOAT);
    ColorAlpha = addColor(GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    LightThick = addColor(GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    NormalNormalized = addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
}

void GLLayer::setDrawBuffers(TRenderState const& state)
{
    VEL_ASSERT(enableDraw());
    static GLenum const buffers[TARGETS] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2,
                                            GL_COLOR_ATTACHMENT3, GL_COLOR_ATTACHMENT4, GL_COLOR_ATTACHMENT5};
    glDrawBuffers(state.kind == KIND_PLAIN ? 3 : TARGETS, buffers);
    glViewport(0, 0, width, height);
}

void GLLayer::renderClear(TRenderState const& state, GLLayer* source)
{
    setDrawBuffers(state);
    glStencilMask(255);
    glDepthMask(GL_TRUE);
    glClearBufferfi(GL_DEPTH_STENCIL, 0, 1.0f, 0);
    static GLint const zeroInt[4] = {0, 0, 0, 0};
    static GLfloat const zero[4] = {0, 0, 0, 0};
    glClearBufferiv(GL_COLOR, 0, zeroInt);
    glClearBufferiv(GL_COLOR, 1, zeroInt);
    glClearBufferfv(GL_COLOR, 2, zero);
    if (state.kind != KIND_PLAIN) {
        Rendering const& r = Rendering::instance();
        glClearBufferfv(GL_COLOR, 3, zero);
        // The sky box draws the background itself.
        if (!(Rendering::hasMaterials(r.style) && r.showEnvironment)) {
            Vector4<float> c = r.clearColor();
            GLfloat const color[4] = {c.x, c.y, c.z, c.w};
            glClearBufferfv(GL_COLOR, 4, color);
        }
        glClearBufferfv(GL_COLOR, 5, zero);
    }
    if (source) {
        VEL_ASSERT(source->enableRead());
        glBlitFramebuffer(0, 0, source->width, source->height, 0, 0, width, height, GL_DEPTH_BUFFER_BIT,
                          GL_NEAREST);
    }
}

void GLLayer::render(TRenderState const& state, bool clear, ToolList& list, GLLayer* source)
{
    VEL_ASSERT(enableDraw());
    if (clear)
        renderClear(state, source);
    int const set = state.kind == 1 ? ToolList::DRAW_TRANSPARENT : ToolList::DRAW_OPAQUE;
    if (list.sorted[set].empty()) {
        gl_Depth_Test.set(false);
        gl_Stencil_Test.set(false);
        return;
    }
    setDrawBuffers(state);
    Rendering const& r = Rendering::instance();
    gl_Cull_Face.set(false);
    gl_Depth_Test.set(r.DepthTest);
    glDepthMask(GL_TRUE);
    glColorMaski(2, GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl_Stencil_Test.set(true);
    glStencilMask(255);
    glStencilFunc(GL_ALWAYS, 1, 1);
    glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    if (r.wireframe)
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    int counter = 0;
    list.render(state, r.showBoundingBoxes, counter);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl_Stencil_Test.set(false);
    gl_Cull_Face.set(false);
    gl_Depth_Test.set(false);
}

void GLLayer::normalizeNormals()
{
    VEL_ASSERT(enableDraw());
    glViewport(0, 0, width, height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    GLNormalize(Normal, NormalNormalized);
}

TPickResult GLLayer::pick(int x, int y)
{
    unsigned char bytes[GLPick::BYTES] = {};
    GLPick::Read(this, x, y, bytes);
    return GLPick::Decode(bytes);
}

} // namespace vel
