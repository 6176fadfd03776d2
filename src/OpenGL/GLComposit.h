// GLComposit: turns a G-buffer into colour. It owns the GLLayer (`Layers`) that shares its
// depth-stencil texture, and two GL_RGBA32F colour targets used as a ping-pong: a pass reads
// texture `index` and writes texture 1 - index, then flips the index, so that effects chain
// without allocating.
//
// The first screen effects of the post chain (edge detection, SSAO, SSSS) are members here
// too, each a pass from current() into next() with the settings of Rendering.
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

    // ---- screen effects
    static constexpr float SSAO_RADIUS = 0.1f; // of the picture's height
    static constexpr int SSAO_SAMPLES = 32;
    static constexpr float EDGE_LIMIT = 0.8f;  // the cosine of the angle between normals that is an edge
    float effectTime = 0.0f; // seconds; moves the noise of the sampling effects
    int effectFrame = 0;     // frames composited; changes the jitter of the rays
    // Black edges between objects and across creases; by ids alone for the fast setting,
    // whose normals come from depth.
    void edgeDetection();
    void SSAO();
    void SSSS();
    // beginPass for a pass that reads the depth texture of this framebuffer: depth writes off,
    // until endEffect (which ends the pass).
    void beginEffect();
    void endEffect();

    bool resize(int width, int height) override;
};

} // namespace vel
