// Material: what a Tool has as a whole: a packed Pbr, a scalar and the material's own flag
// word. Per-vertex data stores bare Pbr values.
//
// The mask of set() selects by bit which parts of a source are taken:
//   1 colour, 2 light colour, 4 rough, 8 metal, 16 alpha, 32 thickness (through Pbr::set),
//   64, 128, 0x100, 0x200, 0x400, 0x800, 0x2000, 0x4000: the flag bit of the same value,
//   0x1000: the scalar.
#pragma once

#include "Math/Pbr.h"

namespace vel {

struct Material {
    static constexpr int DEFAULT_FLAGS = 1856; // 64 | 0x100 | 0x200 | 0x400
    static constexpr int FLAG_FLIPPED_NORMALS = 0x800; // xor-ed with the render state when drawn
    static constexpr int MASK_SCALAR = 0x1000;
    static constexpr int MASK_FLAG_BITS = 64 | 128 | 0x100 | 0x200 | 0x400 | 0x800 | 0x2000 | 0x4000;
    // Files written before this date get 0x400 added to their flags on reading.
    static constexpr int FLAG_0x400_SINCE = 20180605;

    Pbr pbr;
    float scalar = 1.0f;
    int flags = DEFAULT_FLAGS;

    // Takes the parts of `other` that `mask` selects.
    void set(Material const& other, int mask)
    {
        pbr.set(other.pbr, static_cast<unsigned char>(mask & 63));
        int bits = mask & MASK_FLAG_BITS;
        flags = (flags & ~bits) | (other.flags & bits);
        if (mask & MASK_SCALAR)
            scalar = other.scalar;
    }

    bool operator==(Material const& o) const { return pbr == o.pbr && scalar == o.scalar && flags == o.flags; }
    bool operator!=(Material const& o) const { return !(*this == o); }
};

} // namespace vel
