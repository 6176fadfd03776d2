#include "OpenGL/EdgeTiles.h"

#include <glad/gl.h>

namespace vel {

EdgeTiles::EdgeTiles(int width, int height)
    : Summary(new FBO(dsNone, tiles(width), tiles(height)))
    , Mask(new FBO(dsNone, tiles(width), tiles(height)))
{
    Summary->addColor(GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    Summary->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    Summary->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    Mask->addColor(GL_R8, GL_RED, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_NEAREST);
}

void EdgeTiles::resize(int width, int height)
{
    Summary->resize(tiles(width), tiles(height));
    Mask->resize(tiles(width), tiles(height));
}

} // namespace vel
