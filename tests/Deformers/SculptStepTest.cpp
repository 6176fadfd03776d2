#include "Deformers/SculptStep.h"

#include "Deformers/BrushProperties.h"
#include "Deformers/Sculptor.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace vel {
namespace {

using test::IsRotation;
using test::Near;
using V = Vector3<float>;

SBrush Sample(V position, V normal, float radius, int x, float pressure = 1.0f)
{
    SBrush b;
    b.position = position;
    b.normal = normal;
    b.radius = radius;
    b.x = x;
    b.pressure = pressure;
    return b;
}

// A stroke of three samples F, P, C per copy; copy 1 is the mirror through x = 0.
struct Stroke {
    std::deque<std::unique_ptr<Sculptor>> owned;
    std::deque<Sculptor*> sculptors;

    Stroke(int action, bool mirrored, std::vector<SBrush> const& samples, V axis = V())
    {
        add(action, 1, samples, axis);
        if (mirrored) {
            std::vector<SBrush> m = samples;
            for (SBrush& b : m) {
                b.position.x = -b.position.x;
                b.normal.x = -b.normal.x;
            }
            add(action, -1, m, V(-axis.x, axis.y, axis.z) * -1.0f);
        }
    }
    void add(int action, signed char mirror, std::vector<SBrush> const& samples, V axis)
    {
        owned.push_back(std::make_unique<Sculptor>(action, 0, 0, mirror, false, axis));
        for (SBrush const& b : samples)
            owned.back()->add(b);
        sculptors.push_back(owned.back().get());
    }
    SculptStep step(int index, unsigned char phase, BrushProperties const& brush) const
    {
        return PrepareSculptStep(sculptors, index, phase, brush);
    }
};

BrushProperties Brush(float strength, float falloff = 0.25f, float elevation = 0.5f)
{
    return BrushProperties{strength, falloff, elevation, strength, falloff, elevation};
}

std::vector<SBrush> const kSamples = {Sample({1, 0, 0}, {0, 0, 1}, 2.0f, 100),
                                      Sample({2, 1, 0}, {0, 1, 0}, 3.0f, 150, 0.5f),
                                      Sample({2, 3, 0}, {1, 0, 0}, 4.0f, 400, 0.25f)};

TEST(SculptStep, CentresDirectionsAndNormalsFollowTheTable)
{
    V const F = kSamples[0].position, P = kSamples[1].position, C = kSamples[2].position;
    V const nF = kSamples[0].normal, nP = kSamples[1].normal;
    struct Row {
        int action;
        V center, second, third;
        float radius;
    } const rows[] = {
        {1, F, P, {}, 2},           {3, F, P, {}, 2},           {13, F, P, {}, 2},
        {17, P, C - P, nP, 3},      {20, P, C - P, nP, 3},      {21, F, C - F, nF, 2},
        {24, (F + C) * 0.5f, (C - F) * 0.5f, nF, 2},            {25, P, C - P, nP, 3},
        {29, P, C - P, nP, 3},      {30, P, C - P, {}, 3},      {32, P, {}, {}, 3},
        {37, P, {}, {}, 3},         {38, F, nF, {}, 2},         {39, F, {}, nF, 3},
        {41, P, {}, {}, 3},         {45, F, P - F, {}, 2},      {49, F, {}, {}, 2},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.action);
        SculptStep step = Stroke(row.action, false, kSamples, V(0, 0, 1)).step(2, 1, Brush(0.8f));
        EXPECT_EQ(step.action, row.action);
        ASSERT_EQ(step.centers.size(), 1u);
        EXPECT_TRUE(Near(step.centers[0], row.center, 1e-6));
        EXPECT_TRUE(Near(step.seconds[0], row.second, 1e-6));
        EXPECT_TRUE(Near(step.thirds[0], row.third, 1e-6));
        EXPECT_FLOAT_EQ(step.radius, row.radius);
    }
}

TEST(SculptStep, StrengthIsHalvedAtTheFirstStepExceptForPaint)
{
    struct Row {
        int action;
        unsigned char phase;
        float strength;
    } const rows[] = {{25, 0, 0.4f}, {25, 1, 0.8f}, {25, 2, 0.8f}, {29, 0, 0.4f},
                      {43, 0, 0.8f}, {42, 0, 0.8f}, {41, 0, 0.8f * 0.25f}, {41, 1, 0.8f * 0.25f}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.action);
        EXPECT_FLOAT_EQ(Stroke(row.action, false, kSamples).step(2, row.phase, Brush(0.8f)).strength, row.strength);
    }
}

TEST(SculptStep, SpeedScaledIntensities)
{
    float const moved = (kSamples[2].position - kSamples[1].position).length(); // 2
    float const s = 0.1f, pressure = 0.25f, radius = 3.0f;
    struct Row {
        int action;
        float strength;
        float intensity;
    } const rows[] = {
        {32, s, 4 * pressure * s * moved / radius}, // under the cap
        {32, 1.0f, 0.5f},                           // capped
        {33, 1.0f, 0.5f},
        {37, s, s * pressure * moved / radius},
        {36, s, -s * pressure * moved / radius},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.action);
        EXPECT_FLOAT_EQ(Stroke(row.action, false, kSamples).step(2, 1, Brush(row.strength)).intensity, row.intensity);
        // A motionless pen: C == P.
        std::vector<SBrush> still = {kSamples[0], kSamples[1], kSamples[1]};
        EXPECT_EQ(Stroke(row.action, false, still).step(2, 1, Brush(row.strength)).intensity, 0.0f);
    }
}

TEST(SculptStep, DirectionalStrokesNeedTwoSamples)
{
    for (int action : {17, 18, 19, 20}) {
        Stroke stroke(action, false, kSamples);
        EXPECT_TRUE(stroke.step(0, 0, Brush(1)).skip) << action;
        EXPECT_FALSE(stroke.step(1, 1, Brush(1)).skip) << action;
    }
    EXPECT_FALSE(Stroke(25, false, kSamples).step(0, 0, Brush(1)).skip);
}

TEST(SculptStep, ScalarsComeFromTheFirstSculptor)
{
    SculptStep step = Stroke(32, true, kSamples).step(2, 1, Brush(0.1f));
    ASSERT_EQ(step.centers.size(), 2u);
    EXPECT_TRUE(Near(step.centers[1], V(-2, 1, 0)));
    EXPECT_EQ(step.flips, (std::vector<bool>{false, true}));
    EXPECT_FLOAT_EQ(step.radius, 3.0f);
    // Amount reads mouse x of P and F: (150 - 100) * 0.001.
    EXPECT_FLOAT_EQ(Stroke(5, true, kSamples).step(2, 1, Brush(1)).amount, 0.05f);
}

TEST(SculptStep, VolumeFrameIsOrthonormalAlongTheStep)
{
    SculptStep step = Stroke(30, false, kSamples).step(2, 1, Brush(1));
    ASSERT_EQ(step.frames.size(), 1u);
    EXPECT_TRUE(IsRotation(step.frames[0], 1e-6));
    EXPECT_TRUE(Near(step.frames[0].row(2), V(0, 1, 0), 1e-6));
    EXPECT_FLOAT_EQ(step.weight, 2.0f);
    std::vector<SBrush> still = {kSamples[0], kSamples[1], kSamples[1]};
    EXPECT_TRUE(Near(Stroke(30, false, still).step(2, 1, Brush(1)).frames[0], Matrix3<float>()));
}

TEST(SculptStep, MirroredTwistTurnsTheOtherWay)
{
    // Dragging a quarter turn round F about its normal z.
    std::vector<SBrush> samples = {Sample({0, 0, 0}, {0, 0, 1}, 1.0f, 0), Sample({1, 0, 0}, {0, 0, 1}, 1.0f, 0),
                                   Sample({0, 1, 0}, {0, 0, 1}, 1.0f, 0)};
    SculptStep step = Stroke(38, true, samples, V(0, 0, 1)).step(2, 1, Brush(1));
    ASSERT_FALSE(step.skip);
    EXPECT_NEAR(std::atan2(step.sinA, step.cosA), 1.5707963f, 1e-5);
    ASSERT_EQ(step.seconds.size(), 2u);
    // One angle, axes of opposite sense: the copy turns the other way.
    EXPECT_TRUE(Near(step.seconds[0], V(0, 0, 1)));
    EXPECT_TRUE(Near(step.seconds[1], V(0, 0, -1)));
    // A drag along the axis turns nothing.
    samples[2].position = V(0, 0, 5);
    EXPECT_TRUE(Stroke(38, false, samples, V(0, 0, 1)).step(2, 1, Brush(1)).skip);
}

TEST(SculptStep, RotationsAreProperAndZeroDragIsIdentity)
{
    SculptStep step = Stroke(3, true, kSamples, V(0, 0, 1)).step(2, 1, Brush(1));
    ASSERT_EQ(step.frames.size(), 2u);
    EXPECT_TRUE(IsRotation(step.frames[0], 1e-6));
    EXPECT_NEAR(std::atan2(step.frames[0](0, 1), step.frames[0](0, 0)), RotationAngle(0.05f), 1e-5);
    std::vector<SBrush> still = kSamples;
    still[1].x = still[0].x;
    EXPECT_TRUE(Near(Stroke(3, false, still, V(0, 0, 1)).step(2, 1, Brush(1)).frames[0], Matrix3<float>(), 1e-7));
    SculptStep bend = Stroke(13, false, still).step(2, 1, Brush(1));
    EXPECT_EQ(bend.axes[0], V());
    EXPECT_GT(bend.factors[0], 0.0f);
}

TEST(SculptStep, OppositeBrushesShareStrength)
{
    Brushes brushes;
    InitBrushes(brushes);
    brushes[25]->strength = 0.7f;
    EXPECT_FLOAT_EQ(Stroke(26, false, kSamples).step(2, 1, *brushes[26]).strength, 0.7f);
}

TEST(SculptAxes, SixPairsCycleAndZeroAboveFive)
{
    gAxes = 4;
    gSculptAxes = V(1, 0, 0);
    for (int i = 0; i < 6; ++i)
        AdvanceSculptAxes();
    EXPECT_EQ(gAxes, 4);
    EXPECT_EQ(gSculptAxes, V(1, 0, 0));
    AdvanceSculptAxes();
    EXPECT_EQ(gSculptAxes, V(0, 1, 0));
    EXPECT_EQ(SculptAxis(6), V());
    EXPECT_EQ(SculptModif(6), V());
    gAxes = 0;
    gSculptAxes = V(1, 0, 0);
}

} // namespace
} // namespace vel
