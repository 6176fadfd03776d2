#include "OpenGL/FBODoubleBuffer.h"

#include "Core/Assert.h"

#include <glad/gl.h>

namespace vel {

FBODoubleBuffer::FBODoubleBuffer(int width, int height, int internalFormat, int format, int type, int wrap,
                                 int filter)
    : FBO(dsNone, width, height)
{
    addColor(internalFormat, format, type, wrap, filter);
    addColor(internalFormat, format, type, wrap, filter);
}

void FBODoubleBuffer::copyBackToFront()
{
    VEL_ASSERT(enable());
    glReadBuffer(GLenum(back()->attachment));
    glDrawBuffer(GLenum(front()->attachment));
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
}

} // namespace vel
