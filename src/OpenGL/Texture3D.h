// Texture3D: a volume, or an animation with one depth slice per frame (an animated GIF read
// through QImageReader). Object shaders animate a ".gif" texture by its third coordinate.
#pragma once

#include "OpenGL/Texture.h"

#include <string>

namespace vel {

class Texture3D : public Texture {
public:
    float frameDelay = 0.001f; // seconds between frames of an animation

    Texture3D(int width, int height, int depth, int internalFormat, int format, int type,
              int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);
    explicit Texture3D(std::string const& path, bool mirror = true);

    int Target() const override { return GL_TEXTURE_3D; }
    bool compile() override;
    bool load(std::string const& path) override;
    // Every frame of the file as an RGBA 8888 slice, mirrored vertically when asked.
    bool load(std::string const& path, bool mirror);
    void resize(int width, int height, int depth);
};

} // namespace vel
