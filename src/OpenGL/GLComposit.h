// GLComposit: turns a G-buffer into colour. It owns the GLLayer (`Layers`) that shares its
// depth-stencil texture, and two GL_RGBA32F colour targets used as a ping-pong: a pass reads
// texture `index` and writes texture 1 - index, then flips the index, so that effects chain
// without allocating.
//
// The first screen effects of the post chain (edge detection, SSAO, SSSS) are members here
// too, each a pass from current() into next() with the settings of Rendering.
#pragma once

#include "Memory/Shared.h"
#include "OpenGL/EdgeTiles.h"
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
    // The ping-pong pair without the depth-stencil: the passes that sample the depth draw here.
    Shared<FBO> ColorOnly;

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
    // SSAO and SSSS gather at 1 / EFFECT_REDUCTION of the size each way, with fewer samples
    // than a full-size pass would need: the rotating start angle, which moves with time,
    // spreads them, and the upsample by depth keeps the silhouettes sharp.
    static constexpr int SSAO_SAMPLES = 16;
    static constexpr int EFFECT_REDUCTION = 2;
    // The gathered values of SSAO and SSSS: one target at the reduced size.
    Shared<FBO> Reduced;
    static constexpr float EDGE_LIMIT = 0.8f;  // the cosine of the angle between normals that is an edge
    float effectTime = 0.0f; // seconds; moves the noise of the sampling effects
    int effectFrame = 0;     // frames composited; changes the jitter of the rays
    // Black edges between objects and across creases; by ids alone for the fast setting,
    // whose normals come from depth. In place: current() stays, no flip.
    void edgeDetection();
    // The tile summaries of edgeDetection and GLVisual::contour, at this size.
    Shared<EdgeTiles> Tiles;
    void SSAO();
    void SSSS();
    // The reduced size of a side.
    static int reduced(int side) { return (side + EFFECT_REDUCTION - 1) / EFFECT_REDUCTION; }
    // beginPass for a pass that samples the depth texture: it draws into ColorOnly, since
    // sampling a texture attached to the framebuffer being drawn is undefined in GL, depth
    // mask or not (a driver may read depth it has compressed and not yet resolved).
    // endEffect ends the pass.
    void beginEffect();
    void endEffect();
    // Binds Reduced for drawing over its whole size, depth and stencil tests off.
    void beginReduced();
    // In-place effects: current() bound for drawing, with the depth-stencil attached, so that a
    // pass blends over the picture instead of reading it and writing a copy. The depth test, every
    // fragment at depth 1, leaves out before any shading the background (Surfaces: passing
    // GREATER) or what was drawn (Background: passing LEQUAL); a pass that reads the depths takes
    // them from copyDepth(). endInPlace() gives the depth state back and builds the mipmaps when
    // asked for.
    enum class Cover { All, Surfaces, Background };
    void beginInPlace(Cover cover);
    void endInPlace();
    // A copy of the depth-stencil, for passes that sample the depth while it stays attached
    // for their stencil or depth test (the shader layers). Made at each call; the draw and
    // read framebuffers are left unbound.
    Texture2D* copyDepth();
    Shared<FBO> DepthCopy;
    // The depth copy for the screen effects: made once for each composite (effectFrame), since
    // no effect draws into the depth and a copy costs as much as a pass on a software rasteriser.
    Texture2D* effectDepth();
    int depthCopyFrame = -1; // the effectFrame of DepthCopy's contents; -1: none

    bool resize(int width, int height) override;
};

} // namespace vel
