// Environment: the cube that lights the PBR style, made from an HDR panorama.
//
// Level 0 is the panorama resampled on the CPU (TextureCube::compile). The other levels are made
// on the GPU at the first compile, each from the one before: "CopySkyBox" halves it into a
// working cube, and "FilterSkyBox" averages seven taps of that (a ring one texel of the level
// wide) into the level. As the texels double at each step, the kernel widens with the level,
// so "CompositPBR" picks a level by roughness and takes the coarsest one as irradiance: a cube
// of 256 with 6 levels ends with 8 x 8 texels.
#pragma once

#include "Math/Matrix3.h"
#include "OpenGL/TextureCube.h"

#include <string>

namespace vel {

class Environment : public TextureCube {
public:
    int size = 0;   // of level 0
    int levels = 0; // mip levels, level 0 included; size >> (levels - 1) is the coarsest

    // An empty cube: RGB32F, clamped, linear.
    Environment(int size, int levels);
    // From a Radiance HDR panorama; a file that can't be read sets `loadFailed`.
    Environment(std::string const& path, int size, int levels);

    bool compile() override;
    void clear() override;
    // The panorama through TextureCube::loadhdr.
    bool load(std::string const& path) override;

    // The highest mip level (levels - 1, within what the size allows): the irradiance level.
    int maxLevel() const;

    // For a face 0 to 5 (GL's order: +X, -X, +Y, -Y, +Z, -Z), the rotation that turns the view
    // direction (0, 0, -1) to the face's centre, and a point (x, y, -1) of the quad to the
    // direction of the face texel drawn there. Any other index leaves `rotation` as it is.
    static void rotation(int face, Matrix3<float>& rotation);

private:
    // Levels 1 to maxLevel() from level 0, on the GPU; restores the state it changes.
    void filterLevels();
    // The levels sampling may read (GL_TEXTURE_BASE_LEVEL, GL_TEXTURE_MAX_LEVEL).
    void sampleLevels(int base, int top);
};

} // namespace vel
