#include "Math/Pbr.h"
#include "Scene/Material.h"

#include <gtest/gtest.h>

#include <array>

namespace vel {
namespace {

using Fields = std::array<int, 10>; // colour and alpha, light and thickness, rough, metal

Fields Read(Pbr const& p)
{
    return {p.color(0), p.color(1), p.color(2), p.color(3), p.light(0),
            p.light(1), p.light(2), p.light(3), p.rough(),  p.metal()};
}

TEST(PbrTest, DefaultsAndTheBitsOfEachField)
{
    Pbr p;
    EXPECT_EQ(Read(p), (Fields{8191, 8191, 8191, 8191, 0, 0, 0, 0, 2048, 2048}));
    EXPECT_EQ(fPbr(p, true).rough, 0.0f);
    EXPECT_EQ(fPbr(p, true).metal, 0.0f);
    p.set_color_alpha({1, 2, 3, 4}, false);
    p.set_light_thick({5, 6, 7, 8}, false);
    p.setRough(0xABC);
    p.setMetal(0x123);
    // The layout the shaders unpack.
    EXPECT_EQ(p.w[0], (1u << 19) | (5u << 6) | (0xABCu >> 6));
    EXPECT_EQ(p.w[1], (2u << 19) | (6u << 6) | (0x123u >> 6));
    EXPECT_EQ(p.w[2], (3u << 19) | (7u << 6) | (0xABCu & 63));
    EXPECT_EQ(p.w[3], (4u << 19) | (8u << 6) | (0x123u & 63));
}

// Each setter and constructor clamps into its own field, never into a neighbour's bits.
TEST(PbrTest, SettersAndConstructorsScaleAndClamp)
{
    Pbr p;
    p.set_color_alpha({0.5f, -3.0f, 1.0f, 7.0f}, true); // 1.0 is 8192: one past the field
    p.set_light_thick({0.5f, 0.25f, 1.0f, 0.125f}, true);
    EXPECT_EQ(Read(p), (Fields{4096, 0, 8191, 8191, 4096, 2048, 8191, 1024, 2048, 2048}));
    p.set_light_thick({100000.0f, -1.0f, 12.0f, 0.0f}, false);
    EXPECT_EQ(Read(p), (Fields{4096, 0, 8191, 8191, 8191, 0, 12, 0, 2048, 2048}));
    // 16-bit channels keep their top 13 bits; rough and metal are biased and clamped.
    EXPECT_EQ(Read(Pbr(wvec4{65535, 8, 7, 32768}, wvec4{16, 0, 65535, 9}, -32768, 32767)),
              (Fields{8191, 1, 0, 4096, 2, 0, 8191, 1, 0, 4095}));
    EXPECT_EQ(Read(Pbr(wvec4{}, wvec4{}, 0, 0))[8], 2048);
    EXPECT_EQ(Read(Pbr(wvec4{}, wvec4{}, 1 << 20, -(1 << 20)))[8], 4095);
    EXPECT_EQ(Read(Pbr(wvec4{}, wvec4{}, 1 << 20, -(1 << 20)))[9], 0);
}

TEST(PbrTest, MaskTakesOnlyTheSelectedParts)
{
    Pbr source;
    source.set_color_alpha({10, 20, 30, 40}, false);
    source.set_light_thick({50, 60, 70, 80}, false);
    source.setRough(100);
    source.setMetal(200);
    Fields const from = Read(source), fallback = Read(Pbr());
    // Which fields each mask bit takes: colour, light, rough, metal, alpha, thickness.
    std::array<int, 10> const bitOfField = {1, 1, 1, 16, 2, 2, 2, 32, 4, 8};
    for (unsigned mask : {1u, 2u, 4u, 8u, 16u, 32u, 63u, 64u | 128u}) {
        SCOPED_TRACE(mask);
        Pbr target;
        target.set(source, (unsigned char)mask);
        Fields expected;
        for (size_t i = 0; i < expected.size(); ++i)
            expected[i] = (mask & unsigned(bitOfField[i])) ? from[i] : fallback[i];
        EXPECT_EQ(Read(target), expected);
    }
}

TEST(PbrTest, AverageUsesTheSignedReadingAndFPbrRoundTrips)
{
    Pbr a, b;
    a.set_color_alpha({0, 100, 8191, 8191}, false);
    b.set_color_alpha({8190, 300, 8191, 1}, false);
    a.setRough(0);
    b.setRough(4094);
    a.setMetal(1000);
    b.setMetal(3000);
    EXPECT_EQ(Read(Pbr::avg(a, b)), (Fields{4095, 200, 8191, 4096, 0, 0, 0, 0, 2047, 2000}));
    EXPECT_EQ(Pbr::avg(a, a), a);

    Pbr p;
    p.set_color_alpha({1, 8191, 4000, 0}, false);
    p.set_light_thick({8191, 0, 3, 77}, false);
    p.setRough(4095);
    p.setMetal(1);
    EXPECT_EQ(Pbr(fPbr(p, true), true), p);
    EXPECT_EQ(Pbr(fPbr(p, false), false), p);
}

TEST(MaterialTest, MaskedCopyTakesTheSelectedPartsAndFlagBits)
{
    Material other;
    other.flags = 0x800 | 128 | 0x4000;
    other.scalar = 3.5f;
    other.pbr.set_color_alpha({1, 2, 3, 4}, false);

    Material flipOnly;
    flipOnly.set(other, 0x800);
    EXPECT_EQ(flipOnly.flags, 1856 | 0x800);
    EXPECT_EQ(flipOnly.scalar, 1.0f);
    EXPECT_EQ(flipOnly.pbr, Pbr());

    Material clearBits;
    clearBits.set(other, 64 | 0x1000 | 1);
    EXPECT_EQ(clearBits.flags, 1856 & ~64);
    EXPECT_EQ(clearBits.scalar, 3.5f);
    EXPECT_EQ(clearBits.pbr.color(0), 1);
    EXPECT_EQ(clearBits.pbr.color(3), 8191);
}

} // namespace
} // namespace vel
