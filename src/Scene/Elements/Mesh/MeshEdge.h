// MeshEdge: one half-edge of a mesh, which is also the corner of its face at v[1] (28 bytes).
#pragma once

#include "Math/Vector3.h"

#include <cstdint>

namespace vel {

struct MeshEdge {
    static constexpr unsigned ACTIVE = 1;
    static constexpr unsigned SHARP = 2; // both halves of a pair carry it, or neither

    int v[2];        // start and end vertex
    int e[2];        // previous and next half-edge of the face ring
    int half;        // the opposite half-edge; -1 on a border or a broken non-manifold pair
    uint32_t normal; // corner normal, packed 10:10:10 (see PackNormal)
    signed int face : 27;
    unsigned int flags : 5;

    MeshEdge()
        : v{-1, -1}
        , e{-1, -1}
        , half(-1)
        , normal(0)
        , face(-1)
        , flags(0)
    {
    }

    bool is(unsigned f) const { return (flags & f) != 0; }
    void set(unsigned f) { flags = flags | f; }
    void clear(unsigned f) { flags = flags & ~f; }
    bool border() const { return half < 0; }
};

static_assert(sizeof(MeshEdge) == 28, "seven words per half-edge");

// x, y, z as signed 10-bit values scaled by 511: x in bits 0-9, y 10-19, z 20-29.
inline uint32_t PackNormal(Vector3<float> const& n)
{
    auto q = [](float c) {
        c = c < -1.f ? -1.f : (c > 1.f ? 1.f : c);
        return uint32_t(int(c * 511.f)) & 0x3FFu;
    };
    return q(n.x) | q(n.y) << 10 | q(n.z) << 20;
}

inline Vector3<float> UnpackNormal(uint32_t p)
{
    auto d = [](uint32_t bits) {
        int v = int(bits & 0x3FFu);
        return float(v >= 512 ? v - 1024 : v) / 511.f;
    };
    return {d(p), d(p >> 10), d(p >> 20)};
}

} // namespace vel
