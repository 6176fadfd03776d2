#include "Math/Pbr.h"
#include "Scene/Material.h"

#include <gtest/gtest.h>

#include <cstring>

namespace vel {
namespace {

TEST(PbrTest, DefaultBytesAndReadings)
{
    Pbr p;
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(p.w[i], i < 2 ? 0xFFF80020u : 0xFFF80000u) << "word " << i;
    fPbr signedReading(p, true);
    EXPECT_EQ(signedReading.rough, 0.0f);
    EXPECT_EQ(signedReading.metal, 0.0f);
}

TEST(PbrTest, FieldsLandInTheirBits)
{
    Pbr p;
    p.set_color_alpha({1, 2, 3, 4}, false);
    p.set_light_thick({5, 6, 7, 8}, false);
    p.setRough(0xABC);
    p.setMetal(0x123);
    EXPECT_EQ(p.w[0], (1u << 19) | (5u << 6) | (0xABCu >> 6));
    EXPECT_EQ(p.w[1], (2u << 19) | (6u << 6) | (0x123u >> 6));
    EXPECT_EQ(p.w[2], (3u << 19) | (7u << 6) | (0xABCu & 63));
    EXPECT_EQ(p.w[3], (4u << 19) | (8u << 6) | (0x123u & 63));
}

TEST(PbrTest, NormalizedOneClampsTo8191)
{
    Pbr p;
    p.set_color_alpha({1.0f, 1.0f, 1.0f, 1.0f}, true);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(p.color(i), 8191);
    p.set_color_alpha({0.5f, -3.0f, 7.0f, 0.25f}, true);
    EXPECT_EQ(p.color(0), 4096);
    EXPECT_EQ(p.color(1), 0);
    EXPECT_EQ(p.color(2), 8191);
    EXPECT_EQ(p.color(3), 2048);
    p.set_light_thick({0.5f, 0.25f, 1.0f, 0.125f}, true);
    EXPECT_EQ(p.light(0), 4096);
    EXPECT_EQ(p.light(1), 2048);
    EXPECT_EQ(p.light(2), 8191);
    EXPECT_EQ(p.light(3), 1024);
    p.set_light_thick({100000.0f, -1.0f, 12.0f, 0.0f}, false);
    EXPECT_EQ(p.light(0), 8191);
    EXPECT_EQ(p.light(1), 0);
    EXPECT_EQ(p.light(2), 12);
    // Neighbouring fields are untouched by clamping.
    EXPECT_EQ(p.color(0), 4096);
    EXPECT_EQ(p.rough(), 2048);
}

TEST(PbrTest, SixteenBitConstructorCutsChannelsAndBiasesRoughMetal)
{
    Pbr p(wvec4{65535, 8, 7, 32768}, wvec4{16, 0, 65535, 9}, -32768, 32767);
    EXPECT_EQ(p.color(0), 8191);
    EXPECT_EQ(p.color(1), 1);
    EXPECT_EQ(p.color(2), 0);
    EXPECT_EQ(p.color(3), 4096);
    EXPECT_EQ(p.light(0), 2);
    EXPECT_EQ(p.light(2), 8191);
    EXPECT_EQ(p.light(3), 1);
    EXPECT_EQ(p.rough(), 0);
    EXPECT_EQ(p.metal(), 4095);
    Pbr zero(wvec4{}, wvec4{}, 0, 0);
    EXPECT_EQ(zero.rough(), 2048);
    // Out-of-range ints clamp instead of wrapping into other bits.
    Pbr wild(wvec4{}, wvec4{}, 1 << 20, -(1 << 20));
    EXPECT_EQ(wild.rough(), 4095);
    EXPECT_EQ(wild.metal(), 0);
}

TEST(PbrTest, MaskTakesOnlyTheSelectedParts)
{
    Pbr source;
    source.set_color_alpha({10, 20, 30, 40}, false);
    source.set_light_thick({50, 60, 70, 80}, false);
    source.setRough(100);
    source.setMetal(200);
    struct Case {
        unsigned char mask;
        bool color, light, rough, metal, alpha, thick;
    };
    for (Case c : {Case{1, 1, 0, 0, 0, 0, 0}, Case{2, 0, 1, 0, 0, 0, 0}, Case{4, 0, 0, 1, 0, 0, 0},
                   Case{8, 0, 0, 0, 1, 0, 0}, Case{16, 0, 0, 0, 0, 1, 0}, Case{32, 0, 0, 0, 0, 0, 1},
                   Case{63, 1, 1, 1, 1, 1, 1}, Case{64 | 128, 0, 0, 0, 0, 0, 0}}) {
        Pbr target;
        target.set(source, c.mask);
        Pbr d;
        EXPECT_EQ(target.color(0), c.color ? 10 : d.color(0)) << int(c.mask);
        EXPECT_EQ(target.color(2), c.color ? 30 : d.color(2)) << int(c.mask);
        EXPECT_EQ(target.light(1), c.light ? 60 : d.light(1)) << int(c.mask);
        EXPECT_EQ(target.rough(), c.rough ? 100 : 2048) << int(c.mask);
        EXPECT_EQ(target.metal(), c.metal ? 200 : 2048) << int(c.mask);
        EXPECT_EQ(target.color(3), c.alpha ? 40 : d.color(3)) << int(c.mask);
        EXPECT_EQ(target.light(3), c.thick ? 80 : d.light(3)) << int(c.mask);
    }
}

TEST(PbrTest, AverageUsesTheSignedReadingForRoughAndMetal)
{
    Pbr a, b;
    a.set_color_alpha({0, 100, 8191, 8191}, false);
    b.set_color_alpha({8190, 300, 8191, 1}, false);
    a.setRough(0);
    b.setRough(4094);
    a.setMetal(1000);
    b.setMetal(3000);
    Pbr m = Pbr::avg(a, b);
    EXPECT_EQ(m.color(0), 4095);
    EXPECT_EQ(m.color(1), 200);
    EXPECT_EQ(m.color(3), 4096);
    EXPECT_EQ(m.rough(), 2047);
    EXPECT_EQ(m.metal(), 2000);
    EXPECT_EQ(Pbr::avg(a, a), a);
}

TEST(PbrTest, FPbrRoundTripsEveryPackedValue)
{
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
    Material m;

    Material other;
    other.flags = 0x800 | 128 | 0x4000;
    other.scalar = 3.5f;
    other.pbr.set_color_alpha({1, 2, 3, 4}, false);

    Material flipOnly = m;
    flipOnly.set(other, 0x800);
    EXPECT_EQ(flipOnly.flags, 1856 | 0x800);
    EXPECT_EQ(flipOnly.scalar, 1.0f);
    EXPECT_EQ(flipOnly.pbr, Pbr());

    Material clearBits = m;
    clearBits.set(other, 64 | 0x1000 | 1);
    EXPECT_EQ(clearBits.flags, 1856 & ~64);
    EXPECT_EQ(clearBits.scalar, 3.5f);
    EXPECT_EQ(clearBits.pbr.color(0), 1);
    EXPECT_EQ(clearBits.pbr.color(3), 8191);
}

} // namespace
} // namespace vel
