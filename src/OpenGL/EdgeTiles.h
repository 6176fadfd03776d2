// EdgeTiles: the scratch targets of the edge and contour passes (GLEdgeDetection, GLContour).
// Both change few pixels of a picture, near silhouettes and creases; a summary of each tile of
// TILE x TILE pixels tells the tiles where no pixel can change, which the full-size pass then
// leaves after one fetch. Made with the picture's targets and resized with them, so that no
// frame makes a texture.
#pragma once

#include "Memory/Shared.h"
#include "OpenGL/FBO.h"

namespace vel {

class EdgeTiles {
public:
    static constexpr int TILE = 8; // the side of a tile in pixels; the shaders' TILE

    // Per tile: attachment 0 (GL_RGBA32I) the lowest and highest object id and the contour
    // flag; 1 and 2 (GL_RGBA32F) the cone of the normals and their lengths (see "EdgeTiles").
    Shared<FBO> Summary;
    // Per tile (GL_R8): 1 where the full test must run.
    Shared<FBO> Mask;

    // For a picture of width x height.
    EdgeTiles(int width, int height);
    void resize(int width, int height);
    // The number of tiles along a side of `pixels`.
    static int tiles(int pixels) { return (pixels + TILE - 1) / TILE; }
};

} // namespace vel
