#include "OpenGL/FBODoubleBuffer.h"

namespace vel {

FBODoubleBuffer::FBODoubleBuffer(int width, int height, int internalFormat, int format, int type, int wrap,
                                 int filter)
    : FBO(dsNone, width, height)
{
    addColor(internalFormat, format, type, wrap, filter);
}

} // namespace vel
