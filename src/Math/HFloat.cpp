#include "Math/HFloat.h"

#include <cstdint>
#include <cstring>

namespace vel {

namespace {

constexpr uint32_t LARGEST_HALF_AS_FLOAT = 0x477FE000; // 65504.0f
constexpr uint32_t FLOAT_EXPONENT_MASK = 0x7F800000;

uint32_t Bits(float f)
{
    uint32_t u;
    std::memcpy(&u, &f, sizeof u);
    return u;
}

float FromBits(uint32_t u)
{
    float f;
    std::memcpy(&f, &u, sizeof f);
    return f;
}

} // namespace

unsigned short HFloat::compress(float value)
{
    uint32_t u = Bits(value);
    uint16_t sign = uint16_t((u >> 16) & 0x8000);
    uint32_t magnitude = u & 0x7FFFFFFF;

    if ((magnitude & FLOAT_EXPONENT_MASK) == FLOAT_EXPONENT_MASK) {
        if (magnitude & 0x007FFFFF) // NaN: keep it quiet and keep the top payload bits
            return uint16_t(sign | 0x7E00 | ((magnitude >> 13) & 0x01FF));
        return uint16_t(sign | 0x7C00);
    }
    // Above the largest half: infinity, even where truncation alone would give 65504.
    if (magnitude > LARGEST_HALF_AS_FLOAT)
        return uint16_t(sign | 0x7C00);

    int exponent = int(magnitude >> 23) - 127 + 15;
    uint32_t mantissa = magnitude & 0x007FFFFF;
    if (exponent >= 1)
        return uint16_t(sign | (exponent << 10) | (mantissa >> 13));

    // Subnormal half: value = m * 2^-24, with the float's implicit bit made explicit.
    int shift = 14 - exponent;
    if (shift > 24)
        return sign;
    return uint16_t(sign | ((mantissa | 0x00800000) >> shift));
}

float HFloat::decompress(unsigned short half)
{
    uint32_t sign = uint32_t(half & 0x8000) << 16;
    uint32_t exponent = (half >> 10) & 0x1F;
    uint32_t mantissa = half & 0x03FF;

    if (exponent == 0x1F) // infinity or NaN
        return FromBits(sign | FLOAT_EXPONENT_MASK | (mantissa << 13));
    if (exponent != 0)
        return FromBits(sign | ((exponent - 15 + 127) << 23) | (mantissa << 13));
    if (mantissa == 0)
        return FromBits(sign);
    // Subnormal half: normalise into a float, which has range to spare.
    int e = -1;
    do {
        ++e;
        mantissa <<= 1;
    } while ((mantissa & 0x0400) == 0);
    return FromBits(sign | uint32_t(127 - 15 - e) << 23 | ((mantissa & 0x03FF) << 13));
}

} // namespace vel
