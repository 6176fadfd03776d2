// MeshVert: one vertex record of a half-edge mesh (16 bytes).
#pragma once

#include "Math/Vector3.h"

namespace vel {

struct MeshVert {
    // Flag bits; the low five are stored in files.
    static constexpr unsigned ACTIVE = 1;
    static constexpr unsigned SHARP = 2;  // an incident edge is sharp or on a border
    static constexpr unsigned ANCHOR = 4; // a corner of sharp lines: smoothing keeps it
    static constexpr unsigned BORDER = 8; // a border half-edge arrives here
    static constexpr unsigned USER = 16;  // reserved for the element's own use

    Vector3<float> position;
    signed int edge : 27;  // a half-edge arriving here (its v[1] is this vertex); -1 unset
    unsigned int flags : 5;

    MeshVert()
        : edge(-1)
        , flags(0)
    {
    }
    MeshVert(Vector3<float> const& p, int edge, unsigned flags)
        : position(p)
        , edge(edge)
        , flags(flags)
    {
    }

    bool is(unsigned f) const { return (flags & f) != 0; }
    void set(unsigned f) { flags = flags | f; }
    void clear(unsigned f) { flags = flags & ~f; }
};

static_assert(sizeof(MeshVert) == 16, "a vertex is a position and one packed word");

} // namespace vel
