// The cursor snapshot: two snapshots on one pixel are the same position, and the pen's
// pressure curve keeps its floor, its end and its order, whatever the pen reports.
#include "OpenGL/ABrush.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

TEST(ABrush, SamePositionMeansSamePixel)
{
    ABrush a, b;
    a.screen = {10.2f, 5.9f};
    b.screen = {10.8f, 5.1f};
    EXPECT_TRUE(ABrush::SameMousePosition(a, b));
    b.screen = {11.0f, 5.1f};
    EXPECT_FALSE(ABrush::SameMousePosition(a, b));
}

TEST(ABrush, PressureCurveStaysInItsRangeAndRises)
{
    struct Row {
        float exponent, minimum;
    };
    for (Row r : {Row{1, 0}, Row{2, 0.1f}, Row{0.5f, 0.3f}, Row{0, 0}}) {
        EXPECT_FLOAT_EQ(PressureCurve(0, r.exponent, r.minimum), r.minimum);
        EXPECT_FLOAT_EQ(PressureCurve(1, r.exponent, r.minimum), 1.0f);
        float last = -1;
        for (float p = 0; p <= 1.0f; p += 0.125f) {
            float const v = PressureCurve(p, r.exponent, r.minimum);
            EXPECT_GE(v, last) << r.exponent;
            last = v;
        }
        // What a broken pen reports ends in range.
        for (float bad : {-3.0f, 7.0f, std::nanf("")}) {
            float const v = PressureCurve(bad, r.exponent, r.minimum);
            EXPECT_GE(v, r.minimum);
            EXPECT_LE(v, 1.0f);
        }
    }
    EXPECT_FLOAT_EQ(PressureCurve(0.5f, 2, 0), 0.25f);
}

} // namespace
} // namespace vel
