#include "Deformers/Deformers.h"

#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

using test::Near;
using V = Vector3<float>;

TEST(Deformers, FalloffIsTheShadersSmoothstep)
{
    struct Row {
        float r, falloff, value;
    } const rows[] = {{0, 0, 1},      {1, 0, 0},      {0.5f, 0, 0.5f}, {0.25f, 0, 0.84375f}, {0.2f, 0.5f, 1},
                      {0.75f, 0.5f, 0.5f}, {0.5f, 1, 1}, {1, 1, 0},      {1.5f, 0.3f, 0}};
    for (Row const& row : rows)
        EXPECT_FLOAT_EQ(SculptFalloff(row.r, row.falloff), row.value) << row.r << " " << row.falloff;
}

// One vertex through one step kind, against the value worked out by hand.
TEST(Deformers, SingleVertexDisplacements)
{
    std::vector<V> const c = {V(1, 0, 0)};
    std::vector<V> const up = {V(0, 0, 2)}; // not unit: the forms normalise
    auto run = [](auto&& step, V position) {
        V sum;
        step(&position, &sum);
        return sum;
    };
    struct Row {
        char const* name;
        std::function<void(V const*, V*)> step;
        V position, expected;
    };
    float const q = 0.5f, w = (1 - q * q) * (1 - q * q);
    Row const rows[] = {
        {"add at centre", [&](V const* p, V* s) { SculptAddSub(1, p, s, c, up, 2, 0, 0.5f, 1, true); },
         V(1, 0, 0), V(0, 0, 2 * 0.5f * 1)},
        {"sub at centre", [&](V const* p, V* s) { SculptAddSub(1, p, s, c, up, 2, 0, 0.5f, 1, false); },
         V(1, 0, 0), V(0, 0, -1)},
        {"add above the height", [&](V const* p, V* s) { SculptAddSub(1, p, s, c, up, 2, 0, 1, 0.25f, true); },
         V(1, 0, 0.75f), V()},
        {"add at the rim", [&](V const* p, V* s) { SculptAddSub(1, p, s, c, up, 2, 0, 1, 1, true); },
         V(3, 0, 0), V()},
        {"deform halfway", [&](V const* p, V* s) { SculptDeform(1, p, s, c, {V(0, 4, 0)}, 2, 0); },
         V(2, 0, 0), V(0, 2, 0)},
        {"pinch", [&](V const* p, V* s) { SculptPinch(1, p, s, c, 0.5f, 2); }, V(2, 0, 0),
         V(-w * 0.5f, 0, 0)},
        {"grow", [&](V const* p, V* s) { SculptPinch(1, p, s, c, -0.5f, 2); }, V(2, 0, 0), V(w * 0.5f, 0, 0)},
        {"twist a quarter", [&](V const* p, V* s) { SculptTwist(1, p, s, c, up, 0, 1, 2); }, V(2, 0, 0),
         V(-w, w, 0)},
        {"rotate a quarter about z",
         [&](V const* p, V* s) {
             SculptRotate(1, p, s, c, {Matrix3<float>::RotationAroundUnitAxis(V(0, 0, 1), 1, 0)});
         },
         V(2, 0, 0), V(-1, 1, 0)},
        {"scale twice", [&](V const* p, V* s) { SculptScaleUniform(1, p, s, c, {2}); }, V(2, 1, 0), V(1, 1, 0)},
        {"scale along y", [&](V const* p, V* s) { SculptScale(1, p, s, c, {V(0, 3, 0)}, {2}); }, V(2, 1, 0),
         V(0, 1, 0)},
        {"skew", [&](V const* p, V* s) { SculptSkew(1, p, s, c, {V(1, 0, 0)}, {V(0, 2, 0)}); }, V(1, 1, 0),
         V(2, 0, 0)},
        {"taper", [&](V const* p, V* s) { SculptTaper(1, p, s, c, {V(1, 0, 0)}, {V(0, 1, 0)}); }, V(3, 1, 0),
         V(0, 2, 0)},
        {"swirl about z", [&](V const* p, V* s) { SculptSwirl(1, p, s, c, {1.5707963f}, 2); }, V(2, 0, 1),
         V(-1, 1, 0)},
        {"bend a quarter",
         [&](V const* p, V* s) { SculptBend(1, p, s, c, {V(1, 0, 0)}, {V(0, 1, 0)}, {2 / 1.5707963f}); },
         V(3, 0, 0), V(2 / 1.5707963f - 2, 2 / 1.5707963f * -1, 0)},
    };
    for (Row const& row : rows)
        EXPECT_TRUE(Near(run(row.step, row.position), row.expected, 1e-5)) << row.name;
}

// Two sculptors at one place add up; a point outside every brush gets nothing.
TEST(Deformers, SculptorsAddUpOnlyInsideTheirBrush)
{
    std::vector<V> p = {V(0, 0, 0), V(5, 0, 0)};
    std::vector<V> sum(2);
    SculptDeform(2, p.data(), sum.data(), {V(0, 0, 0), V(0, 0, 0)}, {V(1, 0, 0), V(0, 1, 0)}, 1, 0);
    EXPECT_TRUE(Near(sum[0], V(1, 1, 0)));
    EXPECT_EQ(sum[1], V());
    std::vector<float> weights(2, 0.0f);
    SculptPaintSelect(2, p.data(), weights.data(), {V(0, 0, 0), V(0, 0, 0)}, 1, 0, 0.3f);
    EXPECT_FLOAT_EQ(weights[0], 0.6f);
    EXPECT_EQ(weights[1], 0.0f);
    // Gradient: full at the centre, none past the direction's end.
    weights = {0, 0};
    SculptGradientSelect(2, p.data(), weights.data(), {V(0, 0, 0)}, {V(0.25f, 0, 0)}, 0.5f);
    EXPECT_FLOAT_EQ(weights[0], 0.5f);
    EXPECT_FLOAT_EQ(weights[1], 0.0f);
    // Smoothing moves towards each point's target.
    struct Targets {
        V PointSculptSmooth(int i) const { return i == 0 ? V(1, 0, 0) : V(9, 9, 9); }
    };
    sum = {V(), V()};
    SculptSmooth(2, p.data(), sum.data(), Targets{}, {V(0, 0, 0)}, 0.5f, 2);
    EXPECT_TRUE(Near(sum[0], V(0.5f, 0, 0)));
    EXPECT_EQ(sum[1], V());
}

} // namespace
} // namespace vel
