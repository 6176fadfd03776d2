#include "Math/ExactPredicates.h"

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

// Every predicate is checked against the sign of the same determinant in exact rational
// arithmetic, on random input and on input built to be degenerate or within a few ulps of it,
// at ordinary, tiny and huge scales. Each case is also checked with its points reordered:
// the determinants alternate under odd permutations, and a different order changes which
// differences the predicate rounds.

namespace vel {
namespace {

using P2 = std::array<double, 2>;
using P3 = std::array<double, 3>;

// NaN gets a sign of its own, so that it never passes for the zero of a degenerate case.
int sign(double value)
{
    if (std::isnan(value))
        return 2;
    return (value > 0.0) - (value < 0.0);
}

template <size_t N, size_t K>
using Points = std::array<std::array<double, N>, K>; // K = N + 1: orientation; N + 2: in-circle, in-sphere

//-------------------------------------------------------------------------------------------
// Exact references: rows of differences to the last point, as the predicates document
//-------------------------------------------------------------------------------------------

using Rows = std::vector<std::vector<mpq_class>>;

// Laplace expansion along row r over the columns not in `used`.
mpq_class determinant(Rows const& m, size_t r = 0, unsigned used = 0)
{
    if (r == m.size())
        return 1;
    mpq_class sum = 0;
    int sign = 1;
    for (size_t j = 0; j < m.size(); ++j) {
        if (used & (1u << j))
            continue;
        if (m[r][j] != 0)
            sum += sign * m[r][j] * determinant(m, r + 1, used | (1u << j));
        sign = -sign;
    }
    return sum;
}

// Rows p[i] - p[K-1], lifted by their squared length for the in-circle and in-sphere tests.
template <size_t N, size_t K>
int exactSign(Points<N, K> const& p)
{
    Rows rows(K - 1);
    for (size_t i = 0; i + 1 < K; ++i) {
        mpq_class square = 0;
        for (size_t k = 0; k < N; ++k) {
            rows[i].push_back(mpq_class(p[i][k]) - mpq_class(p[K - 1][k]));
            square += rows[i].back() * rows[i].back();
        }
        if (K == N + 2)
            rows[i].push_back(square);
    }
    return sgn(determinant(rows));
}

double evaluate(Points<2, 3> const& p) { return Orient2D(p[0].data(), p[1].data(), p[2].data()); }
double evaluate(Points<3, 4> const& p) { return Orient3D(p[0].data(), p[1].data(), p[2].data(), p[3].data()); }
double evaluate(Points<2, 4> const& p) { return InCircle(p[0].data(), p[1].data(), p[2].data(), p[3].data()); }
double evaluate(Points<3, 5> const& p)
{
    return InSphere(p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data());
}

//-------------------------------------------------------------------------------------------
// Tallies of verdicts against the exact sign
//-------------------------------------------------------------------------------------------

template <size_t N, size_t K>
std::string describe(Points<N, K> const& points)
{
    std::string text;
    char buffer[64];
    for (const auto& p : points) {
        text += "(";
        for (size_t i = 0; i < N; ++i) {
            std::snprintf(buffer, sizeof buffer, "%s%a", i ? ", " : "", p[i]);
            text += buffer;
        }
        text += ") ";
    }
    return text;
}

// Counts one predicate's cases and the disagreements with the exact sign, keeping the first
// for the failure message.
struct Tally {
    int cases = 0;
    int mismatches = 0;
    std::string firstMismatch;

    template <size_t N, size_t K>
    void record(int expected, Points<N, K> const& p)
    {
        ++cases;
        const double predicate = evaluate(p);
        if (sign(predicate) == expected)
            return;
        if (mismatches++ == 0)
            firstMismatch = describe(p) + "expected sign " + std::to_string(expected) + ", got "
                            + std::to_string(predicate);
    }
};

void expectAllMatch(const Tally& tally, int minimumCases)
{
    EXPECT_GE(tally.cases, minimumCases);
    EXPECT_EQ(tally.mismatches, 0) << "first: " << tally.firstMismatch;
}

// Orient2D, Orient3D, InCircle, InSphere.
using Tallies = std::array<Tally, 4>;

template <size_t N, size_t K>
constexpr size_t indexOf()
{
    return (N - 2) + 2 * (K - N - 1);
}

// The points as given, in an even permutation, and in an odd one.
template <size_t N, size_t K>
void check(Tallies& t, Points<N, K> p)
{
    Tally& tally = t[indexOf<N, K>()];
    const int s = exactSign(p);
    tally.record(s, p);
    std::swap(p[0], p[1]);
    std::swap(p[K - 2], p[K - 1]);
    tally.record(s, p);
    std::swap(p[0], p[1]);
    tally.record(-s, p);
}

//-------------------------------------------------------------------------------------------
// Input builders
//-------------------------------------------------------------------------------------------

class Source {
public:
    explicit Source(unsigned seed) : engine_(seed) {}

    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
    int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
    double dyadic(int range, int denominator) { return double(integer(-range, range)) / denominator; }

    P2 point2(double low, double high) { return {uniform(low, high), uniform(low, high)}; }
    P3 point3(double low, double high) { return {uniform(low, high), uniform(low, high), uniform(low, high)}; }

    P3 direction()
    {
        std::normal_distribution<double> normal;
        P3 v = {normal(engine_), normal(engine_), normal(engine_)};
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        return {v[0] / length, v[1] / length, v[2] / length};
    }

private:
    std::mt19937 engine_;
};

template <size_t N>
std::array<double, N> scaled(std::array<double, N> p, double scale)
{
    for (double& x : p)
        x *= scale;
    return p;
}

// One ulp towards +infinity, towards -infinity, or none, per coordinate. Zero stays: its
// neighbours are subnormal, outside the range where the predicates promise exactness.
double nudge(double x, int direction)
{
    if (direction == 0 || x == 0.0)
        return x;
    return std::nextafter(x, direction > 0 ? std::numeric_limits<double>::infinity()
                                           : -std::numeric_limits<double>::infinity());
}

P2 nudged(const P2& p, int code)
{
    return {nudge(p[0], code % 3 - 1), nudge(p[1], code / 3 % 3 - 1)};
}

P3 nudged(const P3& p, int code)
{
    return {nudge(p[0], code % 3 - 1), nudge(p[1], code / 3 % 3 - 1), nudge(p[2], code / 9 % 3 - 1)};
}

// Integer points on the circle x^2 + y^2 = r^2 and on the sphere x^2 + y^2 + z^2 = r^2:
// exactly cocircular and cospherical in doubles.
std::vector<P2> latticeCircle(int r)
{
    std::vector<P2> points;
    for (int x = -r; x <= r; ++x) {
        const int y = int(std::lround(std::sqrt(double(r * r - x * x))));
        if (x * x + y * y != r * r)
            continue;
        points.push_back({double(x), double(y)});
        if (y != 0)
            points.push_back({double(x), double(-y)});
    }
    return points;
}

std::vector<P3> latticeSphere(int r)
{
    std::vector<P3> points;
    for (int x = -r; x <= r; ++x)
        for (int y = -r; y <= r; ++y) {
            const int rest = r * r - x * x - y * y;
            if (rest < 0)
                continue;
            const int z = int(std::lround(std::sqrt(double(rest))));
            if (z * z != rest)
                continue;
            points.push_back({double(x), double(y), double(z)});
            if (z != 0)
                points.push_back({double(x), double(y), double(-z)});
        }
    return points;
}

//-------------------------------------------------------------------------------------------
// Families of input, each at a given scale
//-------------------------------------------------------------------------------------------

// A case with its point `moved` shifted by one ulp per coordinate in every direction.
template <size_t N, size_t K>
void checkNudged(Tallies& t, Points<N, K> p, double scale, size_t moved = K - 1)
{
    for (auto& point : p)
        point = scaled(point, scale);
    const auto at = p[moved];
    for (int code = 0; code < (N == 2 ? 9 : 27); ++code) {
        p[moved] = nudged(at, code);
        check(t, p);
    }
}

// Uniform points, clusters far from the origin, and small integers (degenerate by chance).
void checkRandom(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    for (int i = 0; i < count; ++i) {
        const int kind = i % 3;
        const double offset = kind == 1 ? 1000.0 : 0.0;
        const double spread = kind == 1 ? 1e-6 : 1.0;
        auto x = [&] {
            return scale * (kind == 2 ? source.dyadic(3, 1) : offset + source.uniform(-spread, spread));
        };
        auto p2 = [&] { return P2{x(), x()}; };
        auto p3 = [&] { return P3{x(), x(), x()}; };
        check(t, Points<2, 3>{p2(), p2(), p2()});
        check(t, Points<3, 4>{p3(), p3(), p3(), p3()});
        check(t, Points<2, 4>{p2(), p2(), p2(), p2()});
        check(t, Points<3, 5>{p3(), p3(), p3(), p3(), p3()});
    }
}

// Exactly collinear / coplanar / cocircular / cospherical dyadic points and their last
// point's ulp neighbours.
void checkExactlyDegenerate(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    const std::vector<P2> circle = latticeCircle(1105);
    const std::vector<P3> sphere = latticeSphere(45);
    for (int i = 0; i < count; ++i) {
        const P2 a2 = {source.dyadic(1000, 16), source.dyadic(1000, 16)};
        const P2 step = {source.dyadic(64, 8), source.dyadic(64, 8)};
        const int s = source.integer(-20, 20);
        const int u = source.integer(-20, 20);
        const P2 b2 = {a2[0] + s * step[0], a2[1] + s * step[1]};
        const P2 c2 = {a2[0] + u * step[0], a2[1] + u * step[1]};

        const double slopeX = source.dyadic(8, 4), slopeY = source.dyadic(8, 4), height = source.dyadic(64, 4);
        auto onPlane = [&] {
            const double x = source.dyadic(1000, 8), y = source.dyadic(1000, 8);
            return P3{x, y, slopeX * x + slopeY * y + height};
        };
        const Points<3, 4> plane = {onPlane(), onPlane(), onPlane(), onPlane()};

        const P2 circleOffset = {source.dyadic(800, 8), source.dyadic(800, 8)};
        auto onCircle = [&] {
            const P2& p = circle[size_t(source.integer(0, int(circle.size()) - 1))];
            return P2{p[0] + circleOffset[0], p[1] + circleOffset[1]};
        };
        const Points<2, 4> cocircular = {onCircle(), onCircle(), onCircle(), onCircle()};

        const P3 sphereOffset = {source.dyadic(800, 8), source.dyadic(800, 8), source.dyadic(800, 8)};
        auto onSphere = [&] {
            const P3& p = sphere[size_t(source.integer(0, int(sphere.size()) - 1))];
            return P3{p[0] + sphereOffset[0], p[1] + sphereOffset[1], p[2] + sphereOffset[2]};
        };
        const Points<3, 5> cospherical = {onSphere(), onSphere(), onSphere(), onSphere(), onSphere()};

        checkNudged(t, Points<2, 3>{a2, b2, c2}, scale);
        checkNudged(t, cocircular, scale);
        checkNudged(t, plane, scale);
        checkNudged(t, cospherical, scale);
    }
}

// Exactly degenerate points whose coordinates differ by up to 2^40 in magnitude, so that
// their differences do not fit a double: the adaptive stages have tails to carry all the way
// to the exact last stage. Lines y = m x + k and planes z = m x + n y + k with a few-bit m,
// n, k keep every coordinate exact. Four collinear points are degenerate for InCircle too,
// and four cocircular ones make five points degenerate for InSphere whatever the fifth (the
// circle is widened by 2^30 so that its differences to the fifth point are inexact too).
void checkMixedMagnitudeDegenerate(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    const std::vector<P2> circle = latticeCircle(65);
    auto mixed = [&](int exponent) { return std::ldexp(source.integer(-(1 << 20), 1 << 20), exponent); };
    for (int i = 0; i < count; ++i) {
        const double m = source.dyadic(8, 4), n = source.dyadic(8, 4), k = source.dyadic(16, 4);
        auto onLine = [&] {
            const double x = mixed(source.integer(-30, 10));
            return P2{x, m * x + k};
        };
        auto onPlane = [&] {
            const int exponent = source.integer(-30, 10);
            const double x = mixed(exponent), y = mixed(exponent);
            return P3{x, y, m * x + n * y + k};
        };
        const Points<2, 4> line = {onLine(), onLine(), onLine(), onLine()};
        const Points<3, 4> plane = {onPlane(), onPlane(), onPlane(), onPlane()};

        const double height = source.dyadic(64, 4);
        auto onCircle = [&] {
            const P2& p = circle[size_t(source.integer(0, int(circle.size()) - 1))];
            return P3{p[0] * 0x1p30, p[1] * 0x1p30, height};
        };
        Points<3, 5> sphere = {onCircle(), onCircle(), onCircle(), onCircle()};
        sphere[4] = P3{mixed(source.integer(-30, 10)), mixed(source.integer(-30, 10)), mixed(source.integer(-30, 10))};

        checkNudged(t, Points<2, 3>{line[0], line[1], line[2]}, scale);
        checkNudged(t, line, scale);
        checkNudged(t, plane, scale);
        checkNudged(t, sphere, scale, 3);
    }
}

// Points computed onto a line / plane / circle / sphere in doubles (so within rounding of
// it, not on it), then their last point's ulp neighbours.
void checkRoundedOnto(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    for (int i = 0; i < count; ++i) {
        const P2 a2 = source.point2(-1, 1), b2 = source.point2(-1, 1);
        const double along = source.uniform(-1, 2);
        const P2 c2 = {a2[0] + along * (b2[0] - a2[0]), a2[1] + along * (b2[1] - a2[1])};

        const P3 a3 = source.point3(-1, 1), b3 = source.point3(-1, 1), c3 = source.point3(-1, 1);
        const double s = source.uniform(-1, 2), u = source.uniform(-1, 2);
        P3 d3;
        for (int k = 0; k < 3; ++k)
            d3[k] = a3[k] + s * (b3[k] - a3[k]) + u * (c3[k] - a3[k]);

        const P2 center2 = source.point2(-1, 1);
        const double radius2 = source.uniform(0.1, 2.0);
        auto onCircle = [&] {
            const double angle = source.uniform(0.0, 6.283185307179586);
            return P2{center2[0] + radius2 * std::cos(angle), center2[1] + radius2 * std::sin(angle)};
        };
        const Points<2, 4> circle = {onCircle(), onCircle(), onCircle(), onCircle()};

        const P3 center3 = source.point3(-1, 1);
        const double radius3 = source.uniform(0.1, 2.0);
        auto onSphere = [&] {
            const P3 v = source.direction();
            return P3{center3[0] + radius3 * v[0], center3[1] + radius3 * v[1], center3[2] + radius3 * v[2]};
        };
        const Points<3, 5> sphere = {onSphere(), onSphere(), onSphere(), onSphere(), onSphere()};

        checkNudged(t, Points<2, 3>{a2, b2, c2}, scale);
        checkNudged(t, circle, scale);
        checkNudged(t, Points<3, 4>{a3, b3, c3, d3}, scale);
        checkNudged(t, sphere, scale);
    }
}

void expectAllMatch(const Tallies& t, int minimumCases)
{
    const char* names[] = {"Orient2D", "Orient3D", "InCircle", "InSphere"};
    for (size_t i = 0; i < t.size(); ++i) {
        SCOPED_TRACE(names[i]);
        expectAllMatch(t[i], minimumCases);
    }
}

constexpr double kUlpAtHalf = 0x1p-53; // spacing of the doubles in [0.5, 1)

//-------------------------------------------------------------------------------------------
// Tests
//-------------------------------------------------------------------------------------------

// Each predicate is positive in its documented configuration: c left of a->b; d below the
// counter-clockwise a, b, c seen from +z; d inside the counter-clockwise circle a, b, c; e
// inside the sphere through a, b, c, d with Orient3D(a, b, c, d) > 0. The exact references
// agree, so that the comparisons below pin the predicates to the geometry.
TEST(ExactPredicatesTest, SignsFollowTheDocumentedGeometry)
{
    const P2 o = {0, 0}, x = {1, 0}, y = {0, 1}, w = {-1, 0};
    const P3 O = {0, 0, 0}, X = {1, 0, 0}, Y = {0, 1, 0}, W = {-1, 0, 0}, below = {0, 0, -1};
    auto positive = [](const auto& points) {
        EXPECT_GT(evaluate(points), 0.0) << describe(points);
        EXPECT_EQ(exactSign(points), 1) << describe(points);
    };
    positive(Points<2, 3>{o, x, y});
    positive(Points<3, 4>{O, X, Y, below});
    positive(Points<2, 4>{x, y, w, o});
    positive(Points<3, 5>{X, Y, W, below, O});
}

TEST(ExactPredicatesTest, EachFamilyOfInputMatchesExactSigns)
{
    struct Case {
        const char* what;
        void (*check)(Tallies&, double, unsigned, int);
        unsigned seed;
        int count, minimumCases;
    } cases[] = {
        {"random", checkRandom, 1, 3000, 9000},
        {"exactly degenerate and its ulp neighbours", checkExactlyDegenerate, 2, 150, 4000},
        {"degenerate with inexact differences", checkMixedMagnitudeDegenerate, 7, 150, 4000},
        {"rounded onto the degenerate set", checkRoundedOnto, 3, 150, 4000},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        Tallies t;
        c.check(t, 1.0, c.seed, c.count);
        expectAllMatch(t, c.minimumCases);
    }
}

TEST(ExactPredicatesTest, TinyAndHugeCoordinatesMatchExactSigns)
{
    // Powers of two keep degenerate input exactly degenerate; the others only nearly so.
    for (const double scale : {0x1p-100, 0x1p100, 1e-30, 1e30, 1e-40, 1e40}) {
        SCOPED_TRACE(scale);
        Tallies t;
        checkRandom(t, scale, 4, 300);
        checkExactlyDegenerate(t, scale, 5, 20);
        checkRoundedOnto(t, scale, 6, 20);
        checkMixedMagnitudeDegenerate(t, scale, 8, 20);
        expectAllMatch(t, 2000);
    }
}

// Points within a few hundred ulps of a line, circle, plane or sphere on a grid of ulp steps
// around (0.5, 0.5), where rounding makes the plain determinant's sign erratic. The moving
// point comes last, so its differences to the others are inexact and the adaptive stages
// have tails to correct.
TEST(ExactPredicatesTest, OnAnUlpGridNearTheDegenerateSetEachPredicateIsExact)
{
    auto at = [](int i) { return 0.5 + i * kUlpAtHalf; };
    struct Case {
        const char* what;
        int side; // grid points per side
        std::function<void(Tallies&, int, int)> check;
    } cases[] = {
        {"Orient2D, the line x == y", 256,
         [&](Tallies& t, int i, int j) { check(t, Points<2, 3>{{{12, 12}, {24, 24}, {at(i), at(j)}}}); }},
        {"Orient3D, the plane x == z", 128,
         [&](Tallies& t, int i, int j) {
             check(t, Points<3, 4>{{{12, 12, 12}, {24, 24, 24}, {0, 1, 0}, {at(i), 0.5, at(j)}}});
         }},
        {"InCircle, radius 12 around (0.5, 12.5)", 128,
         [&](Tallies& t, int i, int j) {
             check(t, Points<2, 4>{{{12.5, 12.5}, {0.5, 24.5}, {-11.5, 12.5}, {at(i), at(j)}}});
         }},
        {"InSphere, radius 12 around (0.5, 0.5, 12.5)", 128,
         [&](Tallies& t, int i, int j) {
             check(t, Points<3, 5>{{{12.5, 0.5, 12.5},
                                    {0.5, 12.5, 12.5},
                                    {-11.5, 0.5, 12.5},
                                    {0.5, 0.5, 24.5},
                                    {at(i), at(i ^ j), at(j)}}});
         }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        Tallies t;
        for (int i = 0; i < c.side; ++i)
            for (int j = 0; j < c.side; ++j)
                c.check(t, i, j);
        const Tally& tally = t[size_t(&c - cases)];
        expectAllMatch(tally, 3 * c.side * c.side);
    }
}

TEST(ExactPredicatesDeathTest, PredicatesAreExactBeforeInitialisation)
{
    // A re-executed child runs only this test, so nothing has called InitExactPredicates.
    const std::string style = GTEST_FLAG_GET(death_test_style);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto countWrongSigns = [] {
        const P2 q = {12, 12}, r = {24, 24};
        int wrong = 0;
        for (int i = 0; i < 64; ++i) {
            const P2 p = {0.5 + i * kUlpAtHalf, 0.5 + (63 - i) * kUlpAtHalf};
            wrong += sign(evaluate(Points<2, 3>{q, r, p})) != exactSign(Points<2, 3>{q, r, p});
        }
        return wrong;
    };
    EXPECT_EXIT(std::exit(countWrongSigns()), testing::ExitedWithCode(0), "");
    GTEST_FLAG_SET(death_test_style, style);
}

TEST(ExactPredicatesDeathTest, InitialisationAcceptsThisMachineAndRefusesDirectedRounding)
{
    InitExactPredicates();
    InitExactPredicates(); // repeating it is harmless
    EXPECT_DEATH(
        {
            std::fesetround(FE_UPWARD);
            InitExactPredicates();
        },
        "round-to-nearest");
}

} // namespace
} // namespace vel
