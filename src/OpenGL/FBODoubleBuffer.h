// FBODoubleBuffer: one colour target without depth; shader layers hold two and swap them
// each frame, reading the one drawn last while drawing the other.
#pragma once

#include "OpenGL/FBO.h"

namespace vel {

class FBODoubleBuffer : public FBO {
public:
    FBODoubleBuffer(int width, int height, int internalFormat = GL_RGBA32F, int format = GL_RGBA,
                    int type = GL_FLOAT, int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);

    Texture2D* texture() const { return attachments.front().get(); }
};

} // namespace vel
