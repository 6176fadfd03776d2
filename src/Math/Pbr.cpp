#include "Math/Pbr.h"

#include <algorithm>

namespace vel {

namespace {

int Clamp(float v, int high)
{
    if (!(v > 0)) // also catches NaN
        return 0;
    if (v >= float(high))
        return high;
    return int(v);
}

} // namespace

Pbr::Pbr(wvec4 color, wvec4 light, int rough, int metal)
{
    unsigned short const c[4] = {color.x, color.y, color.z, color.w};
    unsigned short const l[4] = {light.x, light.y, light.z, light.w};
    for (int i = 0; i < 4; ++i) {
        w[i] = 0;
        setColor(i, c[i] >> 3);
        setLight(i, l[i] >> 3);
    }
    setRough(std::clamp((rough + 32768) >> 4, 0, PIECE_MAX));
    setMetal(std::clamp((metal + 32768) >> 4, 0, PIECE_MAX));
}

Pbr::Pbr(fPbr const& f, bool isSigned)
{
    fromFPbr({f.color[0], f.color[1], f.color[2], f.color[3]}, {f.light[0], f.light[1], f.light[2], f.light[3]},
             f.rough, f.metal, isSigned);
}

void Pbr::setColor(int i, int value)
{
    w[i] = (w[i] & 0x0007FFFFu) | uint32_t(std::clamp(value, 0, CHANNEL_MAX)) << 19;
}

void Pbr::setLight(int i, int value)
{
    w[i] = (w[i] & 0xFFF8003Fu) | uint32_t(std::clamp(value, 0, CHANNEL_MAX)) << 6;
}

void Pbr::setRough(int value)
{
    uint32_t v = uint32_t(std::clamp(value, 0, PIECE_MAX));
    w[0] = (w[0] & ~63u) | (v >> 6);
    w[2] = (w[2] & ~63u) | (v & 63);
}

void Pbr::setMetal(int value)
{
    uint32_t v = uint32_t(std::clamp(value, 0, PIECE_MAX));
    w[1] = (w[1] & ~63u) | (v >> 6);
    w[3] = (w[3] & ~63u) | (v & 63);
}

void Pbr::set_color_alpha(Vector4<float> const& c, bool normalized)
{
    float scale = normalized ? 8192.0f : 1.0f;
    for (int i = 0; i < 4; ++i)
        setColor(i, Clamp(c[i] * scale, CHANNEL_MAX));
}

void Pbr::set_light_thick(Vector4<float> const& l, bool normalized)
{
    float scale = normalized ? 8192.0f : 1.0f;
    for (int i = 0; i < 4; ++i)
        setLight(i, Clamp(l[i] * scale, CHANNEL_MAX));
}

void Pbr::fromFPbr(Vector4<float> const& color, Vector4<float> const& light, float rough, float metal, bool isSigned)
{
    set_color_alpha(color, false);
    set_light_thick(light, false);
    float bias = isSigned ? float(SIGNED_BIAS) : 0.0f;
    setRough(Clamp(rough + bias, PIECE_MAX));
    setMetal(Clamp(metal + bias, PIECE_MAX));
}

void Pbr::set(Pbr const& other, unsigned char mask)
{
    for (int i = 0; i < 3; ++i) {
        if (mask & MASK_COLOR)
            setColor(i, other.color(i));
        if (mask & MASK_LIGHT)
            setLight(i, other.light(i));
    }
    if (mask & MASK_ALPHA)
        setColor(3, other.color(3));
    if (mask & MASK_THICKNESS)
        setLight(3, other.light(3));
    if (mask & MASK_ROUGH)
        setRough(other.rough());
    if (mask & MASK_METAL)
        setMetal(other.metal());
}

Pbr Pbr::avg(Pbr const& a, Pbr const& b)
{
    fPbr fa(a, true), fb(b, true), mean;
    for (int i = 0; i < 4; ++i) {
        mean.color[i] = (fa.color[i] + fb.color[i]) * 0.5f;
        mean.light[i] = (fa.light[i] + fb.light[i]) * 0.5f;
    }
    mean.rough = (fa.rough + fb.rough) * 0.5f;
    mean.metal = (fa.metal + fb.metal) * 0.5f;
    return Pbr(mean, true);
}

fPbr::fPbr(Pbr const& p, bool isSigned)
{
    for (int i = 0; i < 4; ++i) {
        color[i] = float(p.color(i));
        light[i] = float(p.light(i));
    }
    float bias = isSigned ? float(Pbr::SIGNED_BIAS) : 0.0f;
    rough = float(p.rough()) - bias;
    metal = float(p.metal()) - bias;
}

} // namespace vel
