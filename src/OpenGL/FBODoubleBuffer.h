// FBODoubleBuffer: the buffer of a shader layer that draws by itself. Two colour targets of
// one size without depth: the layer draws into the back one while it reads the front one
// (its output of the last frame), and copyBackToFront publishes the new picture. So a
// simulation reads its previous state without a feedback loop, and other layers read the
// front, which is complete at any time.
#pragma once

#include "OpenGL/FBO.h"

namespace vel {

class FBODoubleBuffer : public FBO {
public:
    FBODoubleBuffer(int width, int height, int internalFormat = GL_RGBA32F, int format = GL_RGBA,
                    int type = GL_FLOAT, int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);

    Texture2D* back() const { return color(0); }
    Texture2D* front() const { return color(1); }
    // Front := back, by a blit inside the framebuffer; binds it for reading and drawing.
    void copyBackToFront();
};

} // namespace vel
