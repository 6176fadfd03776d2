#include "Math/Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace vel {
namespace {

TEST(NoiseTest, TablesArePermutationsAndCubeEdges)
{
    Noise::init();
    std::vector<int> seen(Noise::p, Noise::p + 256);
    std::sort(seen.begin(), seen.end());
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(seen[i], i);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(Noise::p[i + 256], Noise::p[i]);
        EXPECT_EQ(Noise::perm[i], Noise::p[i]);
        EXPECT_EQ(Noise::permMod12[i], Noise::p[i] % 12);
    }
    for (auto const& g : Noise::grad3)
        EXPECT_EQ(std::abs(g[0]) + std::abs(g[1]) + std::abs(g[2]), 2);
}

TEST(NoiseTest, BoundedContinuousAndNotConstant)
{
    float lo = 1e9f, hi = -1e9f, maxStep = 0;
    float previous = Noise::noise(0.0f, 0.3f);
    for (int i = 1; i < 20000; ++i) {
        float x = float(i) * 0.01f;
        float v2 = Noise::noise(x, 0.3f);
        float v3 = Noise::noise(x, 0.3f, -1.7f);
        lo = std::min({lo, v2, v3});
        hi = std::max({hi, v2, v3});
        maxStep = std::max(maxStep, std::abs(v2 - previous));
        previous = v2;
    }
    EXPECT_GE(lo, -1.001f);
    EXPECT_LE(hi, 1.001f);
    EXPECT_LT(lo, -0.5f);
    EXPECT_GT(hi, 0.5f);
    EXPECT_LT(maxStep, 0.1f) << "noise must be continuous";
    // Zero at lattice points of the skewed grid.
    EXPECT_EQ(Noise::noise(0.0f, 0.0f), 0.0f);
    EXPECT_EQ(Noise::noise(0.0f, 0.0f, 0.0f), 0.0f);
}

TEST(NoiseTest, FractalNoiseDependsOnSeedAndOctaves)
{
    float a = Noise::noise2(0.37f, 0.81f, 1, 2.0f, 0.5f, 4);
    EXPECT_EQ(a, Noise::noise2(0.37f, 0.81f, 1, 2.0f, 0.5f, 4));
    EXPECT_NE(a, Noise::noise2(0.37f, 0.81f, 2, 2.0f, 0.5f, 4));
    EXPECT_EQ(Noise::noise2(0.37f, 0.81f, 5, 2.0f, 0.5f, 0), 0.0f);
    // Two octaves: the second at `lacunarity` times the frequency and `gain` times the
    // amplitude; octave i is offset by the table entries at seed + i and octaves + seed + i.
    struct Case {
        int seed;
        float lacunarity, gain;
    } cases[] = {{5, 2.0f, 0.5f}, {40, 3.0f, -0.7f}, {254, 0.5f, 2.0f}};
    float x = 0.37f, y = 0.81f;
    for (Case const& c : cases) {
        SCOPED_TRACE(c.seed);
        auto at = [](int i) { return float(Noise::p[i & 255]); };
        float first = Noise::noise(x + at(c.seed), y + at(c.seed + 2));
        float second = Noise::noise(x * c.lacunarity + at(c.seed + 1), y * c.lacunarity + at(c.seed + 3));
        EXPECT_NEAR(Noise::noise2(x, y, c.seed, c.lacunarity, c.gain, 2), first + c.gain * second, 1e-5);
    }
}

TEST(NoiseTest, FourierProfileIsPeriodicWithDecayingTerms)
{
    std::srand(1);
    std::vector<float> v(256);
    Noise::fourier1(v, 5);
    // k whole waves over the length: the profile wraps smoothly.
    EXPECT_NEAR(v.front(), v.back(), 0.2f);
    float bound = 0;
    for (int k = 1; k <= 5; ++k)
        bound += float(std::pow(1.5, -k));
    for (float x : v)
        EXPECT_LE(std::abs(x), bound + 1e-5f);
    float mean = std::accumulate(v.begin(), v.end(), 0.0f) / float(v.size());
    EXPECT_NEAR(mean, 0.0f, 1e-4f);
    std::vector<float> empty;
    Noise::fourier1(empty, 3);
    EXPECT_TRUE(empty.empty());
}

} // namespace
} // namespace vel
