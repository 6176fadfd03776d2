// Half-precision floats for large per-vertex arrays.
//
// HFloat converts IEEE binary32 <-> binary16: the sign is kept, the mantissa truncated (no
// rounding), subnormals preserved, values above the largest half (65504) go to infinity and
// a NaN stays a NaN. Decompression is exact.
#pragma once

#include "Math/Vector2.h"
#include "Math/Vector3.h"

namespace vel {

class HFloat {
public:
    static unsigned short compress(float value);
    static float decompress(unsigned short half);
};

// One half float.
struct hfloat {
    unsigned short bits = 0;

    hfloat() = default;
    explicit hfloat(float f)
        : bits(HFloat::compress(f))
    {
    }
    explicit operator float() const { return HFloat::decompress(bits); }
};

struct hvec2 {
    hfloat x;
    hfloat y;

    hvec2() = default;
    explicit hvec2(Vector2<float> const& v)
        : x(v.x)
        , y(v.y)
    {
    }
    explicit operator Vector2<float>() const { return {float(x), float(y)}; }
};

struct hvec3 {
    hfloat x;
    hfloat y;
    hfloat z;

    hvec3() = default;
    explicit hvec3(Vector3<float> const& v)
        : x(v.x)
        , y(v.y)
        , z(v.z)
    {
    }
    explicit operator Vector3<float>() const { return {float(x), float(y), float(z)}; }
};

static_assert(sizeof(hfloat) == 2 && sizeof(hvec2) == 4 && sizeof(hvec3) == 6, "half vectors must be packed");

} // namespace vel
