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

//-------------------------------------------------------------------------------------------
// Exact references: rows of differences to the last point, as the predicates document
//-------------------------------------------------------------------------------------------

mpq_class det2(const mpq_class& a, const mpq_class& b, const mpq_class& c, const mpq_class& d)
{
    return a * d - b * c;
}

// Rows r0, r1, r2 of a 3x3 matrix.
mpq_class det3(const mpq_class* r0, const mpq_class* r1, const mpq_class* r2)
{
    return r0[0] * det2(r1[1], r1[2], r2[1], r2[2]) - r0[1] * det2(r1[0], r1[2], r2[0], r2[2])
           + r0[2] * det2(r1[0], r1[1], r2[0], r2[1]);
}

template <size_t N>
std::array<mpq_class, N> exactDifference(const std::array<double, N>& p, const std::array<double, N>& q)
{
    std::array<mpq_class, N> d;
    for (size_t i = 0; i < N; ++i)
        d[i] = mpq_class(p[i]) - mpq_class(q[i]);
    return d;
}

int exactOrient2D(const P2& a, const P2& b, const P2& c)
{
    const auto ac = exactDifference(a, c);
    const auto bc = exactDifference(b, c);
    return sgn(det2(ac[0], ac[1], bc[0], bc[1]));
}

int exactOrient3D(const P3& a, const P3& b, const P3& c, const P3& d)
{
    const auto ad = exactDifference(a, d);
    const auto bd = exactDifference(b, d);
    const auto cd = exactDifference(c, d);
    return sgn(det3(ad.data(), bd.data(), cd.data()));
}

int exactInCircle(const P2& a, const P2& b, const P2& c, const P2& d)
{
    std::array<std::array<mpq_class, 3>, 3> rows;
    const P2* points[3] = {&a, &b, &c};
    for (int i = 0; i < 3; ++i) {
        const auto v = exactDifference(*points[i], d);
        rows[i] = {v[0], v[1], v[0] * v[0] + v[1] * v[1]};
    }
    return sgn(det3(rows[0].data(), rows[1].data(), rows[2].data()));
}

int exactInSphere(const P3& a, const P3& b, const P3& c, const P3& d, const P3& e)
{
    std::array<std::array<mpq_class, 4>, 4> rows;
    const P3* points[4] = {&a, &b, &c, &d};
    for (int i = 0; i < 4; ++i) {
        const auto v = exactDifference(*points[i], e);
        rows[i] = {v[0], v[1], v[2], v[0] * v[0] + v[1] * v[1] + v[2] * v[2]};
    }
    // Expansion along the last column.
    mpq_class det = 0;
    for (int skip = 0; skip < 4; ++skip) {
        std::array<mpq_class, 3> minor[3];
        for (int i = 0, k = 0; i < 4; ++i)
            if (i != skip)
                minor[k++] = {rows[i][0], rows[i][1], rows[i][2]};
        const mpq_class term = rows[skip][3] * det3(minor[0].data(), minor[1].data(), minor[2].data());
        det += (skip % 2 == 1) ? term : -term;
    }
    return sgn(det);
}

//-------------------------------------------------------------------------------------------
// Tallies of verdicts against the exact sign
//-------------------------------------------------------------------------------------------

template <size_t N>
std::string describe(std::initializer_list<std::array<double, N>> points)
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

    template <typename Describe>
    void record(int expected, double predicate, Describe describePoints)
    {
        ++cases;
        if (sign(predicate) == expected)
            return;
        if (mismatches++ == 0)
            firstMismatch = describePoints() + "expected sign " + std::to_string(expected) + ", got "
                            + std::to_string(predicate);
    }
};

void expectAllMatch(const Tally& tally, int minimumCases)
{
    EXPECT_GE(tally.cases, minimumCases);
    EXPECT_EQ(tally.mismatches, 0) << "first: " << tally.firstMismatch;
}

void checkOrient2D(Tally& t, const P2& a, const P2& b, const P2& c)
{
    const int s = exactOrient2D(a, b, c);
    t.record(s, Orient2D(a.data(), b.data(), c.data()), [&] { return describe({a, b, c}); });
    t.record(s, Orient2D(b.data(), c.data(), a.data()), [&] { return describe({b, c, a}); });
    t.record(-s, Orient2D(b.data(), a.data(), c.data()), [&] { return describe({b, a, c}); });
}

void checkOrient3D(Tally& t, const P3& a, const P3& b, const P3& c, const P3& d)
{
    const int s = exactOrient3D(a, b, c, d);
    t.record(s, Orient3D(a.data(), b.data(), c.data(), d.data()), [&] { return describe({a, b, c, d}); });
    t.record(s, Orient3D(b.data(), a.data(), d.data(), c.data()), [&] { return describe({b, a, d, c}); });
    t.record(-s, Orient3D(a.data(), b.data(), d.data(), c.data()), [&] { return describe({a, b, d, c}); });
}

void checkInCircle(Tally& t, const P2& a, const P2& b, const P2& c, const P2& d)
{
    const int s = exactInCircle(a, b, c, d);
    t.record(s, InCircle(a.data(), b.data(), c.data(), d.data()), [&] { return describe({a, b, c, d}); });
    t.record(s, InCircle(b.data(), a.data(), d.data(), c.data()), [&] { return describe({b, a, d, c}); });
    t.record(-s, InCircle(a.data(), b.data(), d.data(), c.data()), [&] { return describe({a, b, d, c}); });
}

void checkInSphere(Tally& t, const P3& a, const P3& b, const P3& c, const P3& d, const P3& e)
{
    const int s = exactInSphere(a, b, c, d, e);
    t.record(s, InSphere(a.data(), b.data(), c.data(), d.data(), e.data()), [&] { return describe({a, b, c, d, e}); });
    t.record(s, InSphere(b.data(), a.data(), c.data(), e.data(), d.data()), [&] { return describe({b, a, c, e, d}); });
    t.record(-s, InSphere(a.data(), b.data(), c.data(), e.data(), d.data()), [&] { return describe({a, b, c, e, d}); });
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

struct Tallies {
    Tally orient2d;
    Tally orient3d;
    Tally inCircle;
    Tally inSphere;
};

// Uniform points, clusters far from the origin, and small integers (degenerate by chance).
void checkRandom(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    for (int i = 0; i < count; ++i) {
        const int kind = i % 3;
        const double offset = kind == 1 ? 1000.0 : 0.0;
        const double spread = kind == 1 ? 1e-6 : 1.0;
        auto p2 = [&] {
            if (kind == 2)
                return scaled(P2{source.dyadic(3, 1), source.dyadic(3, 1)}, scale);
            return scaled(P2{offset + source.uniform(-spread, spread), offset + source.uniform(-spread, spread)},
                          scale);
        };
        auto p3 = [&] {
            if (kind == 2)
                return scaled(P3{source.dyadic(3, 1), source.dyadic(3, 1), source.dyadic(3, 1)}, scale);
            return scaled(P3{offset + source.uniform(-spread, spread), offset + source.uniform(-spread, spread),
                             offset + source.uniform(-spread, spread)},
                          scale);
        };
        checkOrient2D(t.orient2d, p2(), p2(), p2());
        checkOrient3D(t.orient3d, p3(), p3(), p3(), p3());
        checkInCircle(t.inCircle, p2(), p2(), p2(), p2());
        checkInSphere(t.inSphere, p3(), p3(), p3(), p3(), p3());
    }
}

// Exactly collinear / coplanar / cocircular / cospherical dyadic points, each case also with
// its last point moved by one ulp per coordinate in every direction.
void checkExactlyDegenerate(Tallies& t, double scale, unsigned seed, int count)
{
    Source source(seed);
    const std::vector<P2> circle = latticeCircle(1105);
    const std::vector<P3> sphere = latticeSphere(45);
    auto onCircle = [&](const P2& offset) {
        const P2& p = circle[size_t(source.integer(0, int(circle.size()) - 1))];
        return scaled(P2{p[0] + offset[0], p[1] + offset[1]}, scale);
    };
    auto onSphere = [&](const P3& offset) {
        const P3& p = sphere[size_t(source.integer(0, int(sphere.size()) - 1))];
        return scaled(P3{p[0] + offset[0], p[1] + offset[1], p[2] + offset[2]}, scale);
    };
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
            return scaled(P3{x, y, slopeX * x + slopeY * y + height}, scale);
        };
        const P3 a3 = onPlane(), b3 = onPlane(), c3 = onPlane(), d3 = onPlane();

        const P2 circleOffset = {source.dyadic(800, 8), source.dyadic(800, 8)};
        const P2 ca = onCircle(circleOffset), cb = onCircle(circleOffset), cc = onCircle(circleOffset),
                 cd = onCircle(circleOffset);

        const P3 sphereOffset = {source.dyadic(800, 8), source.dyadic(800, 8), source.dyadic(800, 8)};
        const P3 sa = onSphere(sphereOffset), sb = onSphere(sphereOffset), sc = onSphere(sphereOffset),
                 sd = onSphere(sphereOffset), se = onSphere(sphereOffset);

        const P2 a2s = scaled(a2, scale), b2s = scaled(b2, scale), c2s = scaled(c2, scale);
        for (int code = 0; code < 27; ++code) {
            if (code < 9) {
                checkOrient2D(t.orient2d, a2s, b2s, nudged(c2s, code));
                checkInCircle(t.inCircle, ca, cb, cc, nudged(cd, code));
            }
            checkOrient3D(t.orient3d, a3, b3, c3, nudged(d3, code));
            checkInSphere(t.inSphere, sa, sb, sc, sd, nudged(se, code));
        }
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
            return scaled(P2{x, m * x + k}, scale);
        };
        auto onPlane = [&] {
            const int exponent = source.integer(-30, 10);
            const double x = mixed(exponent), y = mixed(exponent);
            return scaled(P3{x, y, m * x + n * y + k}, scale);
        };
        const P2 a2 = onLine(), b2 = onLine(), c2 = onLine(), d2 = onLine();
        const P3 a3 = onPlane(), b3 = onPlane(), c3 = onPlane(), d3 = onPlane();

        const double height = source.dyadic(64, 4);
        auto onCircle = [&] {
            const P2& p = circle[size_t(source.integer(0, int(circle.size()) - 1))];
            return scaled(P3{p[0] * 0x1p30, p[1] * 0x1p30, height}, scale);
        };
        const P3 sa = onCircle(), sb = onCircle(), sc = onCircle(), sd = onCircle();
        const P3 se = scaled(P3{mixed(source.integer(-30, 10)), mixed(source.integer(-30, 10)),
                                mixed(source.integer(-30, 10))},
                             scale);
        for (int code = 0; code < 27; ++code) {
            if (code < 9) {
                checkOrient2D(t.orient2d, a2, b2, nudged(c2, code));
                checkInCircle(t.inCircle, a2, b2, c2, nudged(d2, code));
            }
            checkOrient3D(t.orient3d, a3, b3, c3, nudged(d3, code));
            checkInSphere(t.inSphere, sa, sb, sc, nudged(sd, code), se);
        }
    }
}

// Points computed onto a line / plane / circle / sphere in doubles (so within rounding of
// it, not on it), then moved by one ulp per coordinate in every direction.
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
        const P2 ca = onCircle(), cb = onCircle(), cc = onCircle(), cd = onCircle();

        const P3 center3 = source.point3(-1, 1);
        const double radius3 = source.uniform(0.1, 2.0);
        auto onSphere = [&] {
            const P3 v = source.direction();
            return P3{center3[0] + radius3 * v[0], center3[1] + radius3 * v[1], center3[2] + radius3 * v[2]};
        };
        const P3 sa = onSphere(), sb = onSphere(), sc = onSphere(), sd = onSphere(), se = onSphere();

        for (int code = 0; code < 27; ++code) {
            if (code < 9) {
                checkOrient2D(t.orient2d, scaled(a2, scale), scaled(b2, scale), nudged(scaled(c2, scale), code));
                checkInCircle(t.inCircle, scaled(ca, scale), scaled(cb, scale), scaled(cc, scale),
                              nudged(scaled(cd, scale), code));
            }
            checkOrient3D(t.orient3d, scaled(a3, scale), scaled(b3, scale), scaled(c3, scale),
                          nudged(scaled(d3, scale), code));
            checkInSphere(t.inSphere, scaled(sa, scale), scaled(sb, scale), scaled(sc, scale), scaled(sd, scale),
                          nudged(scaled(se, scale), code));
        }
    }
}

void expectAllMatch(const Tallies& t, int minimumCases)
{
    SCOPED_TRACE("Orient2D");
    expectAllMatch(t.orient2d, minimumCases);
    SCOPED_TRACE("Orient3D");
    expectAllMatch(t.orient3d, minimumCases);
    SCOPED_TRACE("InCircle");
    expectAllMatch(t.inCircle, minimumCases);
    SCOPED_TRACE("InSphere");
    expectAllMatch(t.inSphere, minimumCases);
}

constexpr double kUlpAtHalf = 0x1p-53; // spacing of the doubles in [0.5, 1)

//-------------------------------------------------------------------------------------------
// Tests
//-------------------------------------------------------------------------------------------

TEST(ExactPredicatesTest, SignsFollowTheDocumentedGeometry)
{
    const P2 o = {0, 0}, x = {1, 0}, y = {0, 1};
    EXPECT_GT(Orient2D(o.data(), x.data(), y.data()), 0.0);
    EXPECT_LT(Orient2D(o.data(), y.data(), x.data()), 0.0);
    const P2 onLine = {7, 0};
    EXPECT_EQ(Orient2D(o.data(), x.data(), onLine.data()), 0.0);
    EXPECT_EQ(exactOrient2D(o, x, y), 1);

    // a, b, c counter-clockwise seen from +z; "below" is -z.
    const P3 a = {0, 0, 0}, b = {1, 0, 0}, c = {0, 1, 0}, below = {0, 0, -1}, above = {0, 0, 1}, in = {5, 7, 0};
    EXPECT_GT(Orient3D(a.data(), b.data(), c.data(), below.data()), 0.0);
    EXPECT_LT(Orient3D(a.data(), b.data(), c.data(), above.data()), 0.0);
    EXPECT_EQ(Orient3D(a.data(), b.data(), c.data(), in.data()), 0.0);
    EXPECT_EQ(exactOrient3D(a, b, c, below), 1);

    const P2 east = {1, 0}, north = {0, 1}, west = {-1, 0}, south = {0, -1}, far = {2, 2};
    EXPECT_GT(InCircle(east.data(), north.data(), west.data(), o.data()), 0.0);
    EXPECT_LT(InCircle(east.data(), north.data(), west.data(), far.data()), 0.0);
    EXPECT_EQ(InCircle(east.data(), north.data(), west.data(), south.data()), 0.0);
    EXPECT_LT(InCircle(west.data(), north.data(), east.data(), o.data()), 0.0); // clockwise flips
    EXPECT_EQ(exactInCircle(east, north, west, o), 1);

    const P3 e3 = {1, 0, 0}, n3 = {0, 1, 0}, w3 = {-1, 0, 0}, bottom = {0, 0, -1}, top = {0, 0, 1},
             centre = {0, 0, 0}, outside = {3, 3, 3};
    ASSERT_GT(Orient3D(e3.data(), n3.data(), w3.data(), bottom.data()), 0.0);
    EXPECT_GT(InSphere(e3.data(), n3.data(), w3.data(), bottom.data(), centre.data()), 0.0);
    EXPECT_LT(InSphere(e3.data(), n3.data(), w3.data(), bottom.data(), outside.data()), 0.0);
    EXPECT_EQ(InSphere(e3.data(), n3.data(), w3.data(), bottom.data(), top.data()), 0.0);
    EXPECT_EQ(exactInSphere(e3, n3, w3, bottom, centre), 1);
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
        std::function<void(Tally&, int, int)> check;
    } cases[] = {
        {"Orient2D, the line x == y", 256,
         [&](Tally& t, int i, int j) { checkOrient2D(t, {12, 12}, {24, 24}, P2{at(i), at(j)}); }},
        {"Orient3D, the plane x == z", 128,
         [&](Tally& t, int i, int j) { checkOrient3D(t, {12, 12, 12}, {24, 24, 24}, {0, 1, 0}, P3{at(i), 0.5, at(j)}); }},
        {"InCircle, radius 12 around (0.5, 12.5)", 128,
         [&](Tally& t, int i, int j) {
             checkInCircle(t, {12.5, 12.5}, {0.5, 24.5}, {-11.5, 12.5}, P2{at(i), at(j)});
         }},
        {"InSphere, radius 12 around (0.5, 0.5, 12.5)", 128,
         [&](Tally& t, int i, int j) {
             checkInSphere(t, {12.5, 0.5, 12.5}, {0.5, 12.5, 12.5}, {-11.5, 0.5, 12.5}, {0.5, 0.5, 24.5},
                           P3{at(i), at(i ^ j), at(j)});
         }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        Tally t;
        for (int i = 0; i < c.side; ++i)
            for (int j = 0; j < c.side; ++j)
                c.check(t, i, j);
        expectAllMatch(t, 3 * c.side * c.side);
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
            wrong += sign(Orient2D(q.data(), r.data(), p.data())) != exactOrient2D(q, r, p);
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
