// MeshFace: one face record of a mesh (12 bytes). The face is the ring of half-edges
// starting at `edge`; it has any number of sides, three or more.
#pragma once

namespace vel {

struct MeshFace {
    static constexpr unsigned ACTIVE = 1;

    int edge;                 // first half-edge of the ring
    int patch;                // faces joined across non-sharp edges; -1 until assigned
    signed int component : 27; // faces joined across any edge; -1 until assigned
    unsigned int flags : 5;

    MeshFace()
        : edge(-1)
        , patch(-1)
        , component(-1)
        , flags(0)
    {
    }
    MeshFace(int edge, int component, int patch)
        : edge(edge)
        , patch(patch)
        , component(component)
        , flags(ACTIVE)
    {
    }

    bool is(unsigned f) const { return (flags & f) != 0; }
    void set(unsigned f) { flags = flags | f; }
    void clear(unsigned f) { flags = flags & ~f; }
};

static_assert(sizeof(MeshFace) == 12, "three words per face");

} // namespace vel
