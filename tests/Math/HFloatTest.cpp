#include "Math/HFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace vel {
namespace {

uint32_t Bits(float f)
{
    uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}

// Reference decoding by arithmetic rather than bit moves.
double ReferenceHalf(unsigned short h)
{
    int sign = h & 0x8000 ? -1 : 1;
    int exponent = (h >> 10) & 31;
    int mantissa = h & 1023;
    if (exponent == 0)
        return sign * std::ldexp(double(mantissa), -24);
    if (exponent == 31)
        return mantissa ? std::numeric_limits<double>::quiet_NaN() : sign * std::numeric_limits<double>::infinity();
    return sign * std::ldexp(double(1024 + mantissa), exponent - 25);
}

TEST(HFloatTest, EveryHalfDecompressesExactlyAndRoundTrips)
{
    for (int h = 0; h < 65536; ++h) {
        float f = HFloat::decompress(static_cast<unsigned short>(h));
        double ref = ReferenceHalf(static_cast<unsigned short>(h));
        if (std::isnan(ref)) {
            EXPECT_TRUE(std::isnan(f)) << h;
            EXPECT_TRUE(std::isnan(HFloat::decompress(HFloat::compress(f)))) << h;
            continue;
        }
        ASSERT_EQ(double(f), ref) << "half " << h;
        ASSERT_EQ(HFloat::compress(f), h) << "half " << h;
    }
}

// Truncation, not rounding; infinity above the largest half; subnormals and signed zero
// below the smallest normal one.
TEST(HFloatTest, CompressTruncatesSaturatesToInfinityAndKeepsSubnormals)
{
    float inf = std::numeric_limits<float>::infinity();
    struct Case {
        float value;
        unsigned short half;
    } cases[] = {
        {1.0f + 2047.0f / 2048.0f, 0x3FFF}, // just below 2: would round up to 0x4000
        {-(1.0f + 2047.0f / 2048.0f), 0xBFFF},
        {65504.0f, 0x7BFF},
        {65520.0f, 0x7C00},
        {65504.01f, 0x7C00},
        {-1e10f, 0xFC00},
        {inf, 0x7C00},
        {-inf, 0xFC00},
        {std::numeric_limits<float>::max(), 0x7C00},
        {std::ldexp(1.0f, -24), 0x0001},
        {std::ldexp(1.0f, -15), 0x0200},
        {std::ldexp(3.0f, -25), 0x0001}, // 1.5 ulp truncates to 1
        {1e-8f, 0x0000},
        {-1e-8f, 0x8000},
        {std::numeric_limits<float>::denorm_min(), 0x0000},
    };
    for (Case const& c : cases)
        EXPECT_EQ(HFloat::compress(c.value), c.half) << c.value;
    EXPECT_EQ(Bits(HFloat::decompress(0x8000)), 0x80000000u);
}

TEST(HFloatTest, NaNStaysNaNWhateverItsPayload)
{
    for (uint32_t payload : {1u, 0x400000u, 0x1FFFu, 0x7FFFFFu}) {
        uint32_t u = 0x7F800000u | payload;
        float nan;
        std::memcpy(&nan, &u, 4);
        unsigned short h = HFloat::compress(nan);
        EXPECT_EQ(h & 0x7C00, 0x7C00);
        EXPECT_NE(h & 0x03FF, 0) << "payload " << payload << " turned into infinity";
    }
}

TEST(HFloatTest, VectorsConvertPerComponent)
{
    hvec3 h(Vector3<float>(0.5f, -2.0f, 1e6f));
    Vector3<float> back(h);
    EXPECT_EQ(back.x, 0.5f);
    EXPECT_EQ(back.y, -2.0f);
    EXPECT_TRUE(std::isinf(back.z));
    hvec2 h2(Vector2<float>(3.0f, 0.25f));
    EXPECT_EQ(Vector2<float>(h2), Vector2<float>(3.0f, 0.25f));
}

} // namespace
} // namespace vel
