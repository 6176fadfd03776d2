// GLComposit: turns a G-buffer into colour. It owns the GLLayer (`Layers`) that shares its
// depth-stencil texture, and two GL_RGBA32F colour targets used as a ping-pong: a pass reads
// texture `index` and writes texture 1 - index, then flips the index, so that effects chain
// without allocating.
//
// The screen effects of the later post chain (edge detection, SSAO, SSSS) are members here
// too; so far only the object-type tint is.
#pragma once

#include "Memory/Shared.h"
#include "OpenGL/FBO.h"
#include "OpenGL/GLLayer.h"

#include <vector>

namespace vel {

class GLComposit : public FBO {
public:
    Shared<GLLayer> Layers;
    std::vector<Texture2D*> colors; // the ping-pong pair
    int index = 0;                  // the texture holding the latest picture
    bool mipmaps = false;           // the pair gets mipmaps after each composite

    GLComposit(int width, int height, bool mipmaps);

    Texture2D* current() const { return colors[size_t(index)]; }
    Texture2D* next() const { return colors[size_t(1 - index)]; }
    void flip() { index = 1 - index; }
    // Binds this framebuffer for drawing into next(), over the whole target, with depth and
    // stencil tests off.
    void beginPass();
    // Flips, and builds the mipmaps of the new picture when asked for.
    void endPass();

    // Tints curves, bones and rigid bodies over the current picture ("ObjectType").
    void objectType();

    bool resize(int width, int height) override;
};

} // namespace vel
