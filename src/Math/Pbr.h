// Pbr: the packed 16-byte material value, with the same bits in files, vertex buffers and
// shaders (a uvec4 attribute there).
//
// Word i (w[0] .. w[3]) holds:
//   bits 31..19  channel i of colour and alpha (13 bits, 8192 = 1.0): red, green, blue, alpha
//   bits 18..6   channel i of light and thickness (13 bits): light red, green, blue, thickness
//   bits  5..0   a piece of rough or metal:
//                rough = (w0 & 63) << 6 | (w2 & 63), metal = (w1 & 63) << 6 | (w3 & 63)
// rough and metal are 12-bit numbers: in the signed reading 2048 is 0 and (value - 2048) / 2048
// spans -1 .. almost 1; the unsigned reading divides by 4096.
//
// The default is colour and alpha 8191, light and thickness 0, rough and metal 2048.
#pragma once

#include "Math/PackedVectors.h"
#include "Math/Vector4.h"

#include <cstdint>

namespace vel {

struct fPbr;

struct Pbr {
    static constexpr int CHANNEL_MAX = 8191; // 13-bit channel
    static constexpr int PIECE_MAX = 4095;   // 12-bit rough and metal
    static constexpr int SIGNED_BIAS = 2048;

    // Mask bits of set(): which parts of the source are taken.
    static constexpr int MASK_COLOR = 1;
    static constexpr int MASK_LIGHT = 2;
    static constexpr int MASK_ROUGH = 4;
    static constexpr int MASK_METAL = 8;
    static constexpr int MASK_ALPHA = 16;
    static constexpr int MASK_THICKNESS = 32;

    uint32_t w[4] = {0xFFF80020u, 0xFFF80020u, 0xFFF80000u, 0xFFF80000u};

    Pbr() = default;
    // 16-bit channels keep their top 13 bits; rough and metal are signed 16-bit numbers.
    Pbr(wvec4 color, wvec4 light, int rough, int metal);
    explicit Pbr(fPbr const& f, bool isSigned);

    int color(int i) const { return int(w[i] >> 19); }
    int light(int i) const { return int((w[i] >> 6) & 0x1FFF); }
    int rough() const { return int((w[0] & 63) << 6 | (w[2] & 63)); }
    int metal() const { return int((w[1] & 63) << 6 | (w[3] & 63)); }

    void setColor(int i, int value);
    void setLight(int i, int value);
    void setRough(int value);
    void setMetal(int value);

    // Colour and alpha from integer units, or from 0..1 when `normalized` (times 8192, clamped).
    void set_color_alpha(Vector4<float> const& c, bool normalized);
    // Light colour and thickness, the same way.
    void set_light_thick(Vector4<float> const& l, bool normalized);
    // From integer units; rough and metal in the signed reading when `isSigned`.
    void fromFPbr(Vector4<float> const& color, Vector4<float> const& light, float rough, float metal, bool isSigned);
    // Takes the parts of `other` that the six low bits of `mask` select.
    void set(Pbr const& other, unsigned char mask);

    bool operator==(Pbr const& o) const { return w[0] == o.w[0] && w[1] == o.w[1] && w[2] == o.w[2] && w[3] == o.w[3]; }
    bool operator!=(Pbr const& o) const { return !(*this == o); }

    // Channel-wise mean, rough and metal in the signed reading.
    static Pbr avg(Pbr const& a, Pbr const& b);
};

// The unpacked material in integer units: what arithmetic on materials works with.
struct fPbr {
    float color[4] = {0, 0, 0, 0};
    float light[4] = {0, 0, 0, 0};
    float rough = 0;
    float metal = 0;

    fPbr() = default;
    fPbr(Pbr const& p, bool isSigned);
};

static_assert(sizeof(Pbr) == 16, "Pbr is 16 bytes in files, buffers and shaders");

} // namespace vel
