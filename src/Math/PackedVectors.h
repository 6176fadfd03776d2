// Small integer vectors for colours, ids and packed attributes.
#pragma once

namespace vel {

// Four bytes: a colour.
struct bvec4 {
    unsigned char x = 0;
    unsigned char y = 0;
    unsigned char z = 0;
    unsigned char w = 0;
    bool operator==(bvec4 const& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
};

struct ivec4 {
    int x = 0;
    int y = 0;
    int z = 0;
    int w = 0;
    bool operator==(ivec4 const& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
};

// Four 16-bit channels.
struct wvec4 {
    unsigned short x = 0;
    unsigned short y = 0;
    unsigned short z = 0;
    unsigned short w = 0;
    bool operator==(wvec4 const& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
};

static_assert(sizeof(bvec4) == 4 && sizeof(ivec4) == 16 && sizeof(wvec4) == 8, "packed vectors");

} // namespace vel
