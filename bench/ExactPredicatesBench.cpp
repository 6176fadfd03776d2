#include "Math/ExactPredicates.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

// Orient3D and InSphere against the plain double determinant of the same form, on a few
// thousand point sets per run so that no single cached case is measured. The plain
// determinants are kept out of line like the predicates, so that both pay one call per set
// and the difference is the arithmetic; an inlined variant shows what a caller writing the
// determinant by hand would get. Degenerate sets show the cost of the adaptive stages:
// integer coordinates, exactly degenerate with exact differences (decided by the exact
// determinant of the differences); points with full mantissas rounded onto the plane or
// sphere, nearly degenerate (mostly decided by the first-order correction); and exactly
// degenerate points of very different magnitudes, whose differences are inexact (the exact
// last stage, the worst case).

namespace {

using P3 = std::array<double, 3>;

constexpr int kSets = 4096;

struct Sets {
    std::vector<P3> points; // kSets groups of 4 (Orient3D) or 5 (InSphere) points
    int perSet = 0;
};

P3 randomPoint(std::mt19937& engine)
{
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    return {uniform(engine), uniform(engine), uniform(engine)};
}

Sets randomSets(int perSet)
{
    std::mt19937 engine(7);
    Sets sets{{}, perSet};
    for (int i = 0; i < kSets * perSet; ++i)
        sets.points.push_back(randomPoint(engine));
    return sets;
}

// Four integer points on the plane z = 2x - 3y + 5.
Sets coplanarIntegerSets()
{
    std::mt19937 engine(8);
    std::uniform_int_distribution<int> coordinate(-1000, 1000);
    Sets sets{{}, 4};
    for (int i = 0; i < kSets * 4; ++i) {
        const double x = coordinate(engine), y = coordinate(engine);
        sets.points.push_back({x, y, 2 * x - 3 * y + 5});
    }
    return sets;
}

// Three random points and a fourth computed onto their plane, so off it by rounding only.
Sets coplanarRoundedSets()
{
    std::mt19937 engine(9);
    std::uniform_real_distribution<double> weight(-1.0, 2.0);
    Sets sets{{}, 4};
    for (int i = 0; i < kSets; ++i) {
        const P3 a = randomPoint(engine), b = randomPoint(engine), c = randomPoint(engine);
        const double s = weight(engine), t = weight(engine);
        P3 d;
        for (int k = 0; k < 3; ++k)
            d[k] = a[k] + s * (b[k] - a[k]) + t * (c[k] - a[k]);
        sets.points.insert(sets.points.end(), {a, b, c, d});
    }
    return sets;
}

// A coordinate of up to 21 bits at the given binary exponent.
double mixedMagnitude(std::mt19937& engine, int exponent)
{
    std::uniform_int_distribution<int> mantissa(-(1 << 20), 1 << 20);
    return std::ldexp(mantissa(engine), exponent);
}

// Four points of the plane z = x / 2 - 3y / 4 + 5 / 4, alternately at binary exponents -30
// and 10: exact in doubles, but the differences between the two kinds are not.
Sets coplanarMixedSets()
{
    std::mt19937 engine(12);
    Sets sets{{}, 4};
    for (int i = 0; i < kSets * 4; ++i) {
        const int e = i % 2 == 0 ? -30 : 10;
        const double x = mixedMagnitude(engine, e), y = mixedMagnitude(engine, e);
        sets.points.push_back({x, y, 0.5 * x - 0.75 * y + 1.25});
    }
    return sets;
}

// Four points of the circle x^2 + y^2 = (65 * 2^30)^2 at z = 3, and a fifth point anywhere:
// five points on a common sphere. The fifth has coordinates at binary exponents from -30 to
// -20, so the differences are inexact.
Sets cocircularMixedSets()
{
    std::vector<P3> circle;
    for (int x = -65; x <= 65; ++x) {
        const int y = int(std::lround(std::sqrt(double(65 * 65 - x * x))));
        if (x * x + y * y == 65 * 65)
            circle.push_back({std::ldexp(x, 30), std::ldexp(y, 30), 3.0});
    }
    std::mt19937 engine(13);
    std::uniform_int_distribution<size_t> pick(0, circle.size() - 1);
    std::uniform_int_distribution<int> exponent(-30, -20);
    Sets sets{{}, 5};
    for (int i = 0; i < kSets; ++i) {
        for (int k = 0; k < 4; ++k)
            sets.points.push_back(circle[pick(engine)]);
        sets.points.push_back({mixedMagnitude(engine, exponent(engine)), mixedMagnitude(engine, exponent(engine)),
                               mixedMagnitude(engine, exponent(engine))});
    }
    return sets;
}

// Five integer points of the sphere x^2 + y^2 + z^2 = 45^2, shifted by an integer offset.
Sets cosphericalIntegerSets()
{
    std::vector<P3> sphere;
    const int r = 45;
    for (int x = -r; x <= r; ++x)
        for (int y = -r; y <= r; ++y) {
            const int rest = r * r - x * x - y * y;
            const int z = rest >= 0 ? int(std::lround(std::sqrt(double(rest)))) : -1;
            if (z >= 0 && z * z == rest)
                sphere.push_back({double(x), double(y), double(z)});
        }
    std::mt19937 engine(10);
    std::uniform_int_distribution<size_t> pick(0, sphere.size() - 1);
    std::uniform_int_distribution<int> offset(-100, 100);
    Sets sets{{}, 5};
    for (int i = 0; i < kSets; ++i) {
        const P3 shift = {double(offset(engine)), double(offset(engine)), double(offset(engine))};
        for (int k = 0; k < 5; ++k) {
            const P3& p = sphere[pick(engine)];
            sets.points.push_back({p[0] + shift[0], p[1] + shift[1], p[2] + shift[2]});
        }
    }
    return sets;
}

// Five random points computed onto a random sphere, so off it by rounding only.
Sets cosphericalRoundedSets()
{
    std::mt19937 engine(11);
    std::normal_distribution<double> normal;
    Sets sets{{}, 5};
    for (int i = 0; i < kSets; ++i) {
        const P3 centre = randomPoint(engine);
        for (int k = 0; k < 5; ++k) {
            P3 v = {normal(engine), normal(engine), normal(engine)};
            const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            sets.points.push_back({centre[0] + v[0] / length, centre[1] + v[1] / length, centre[2] + v[2] / length});
        }
    }
    return sets;
}

inline double plainOrient3D(double const* a, double const* b, double const* c, double const* d)
{
    const double adx = a[0] - d[0], bdx = b[0] - d[0], cdx = c[0] - d[0];
    const double ady = a[1] - d[1], bdy = b[1] - d[1], cdy = c[1] - d[1];
    const double adz = a[2] - d[2], bdz = b[2] - d[2], cdz = c[2] - d[2];
    return adz * (bdx * cdy - cdx * bdy) + bdz * (cdx * ady - adx * cdy) + cdz * (adx * bdy - bdx * ady);
}

inline double plainInSphere(double const* a, double const* b, double const* c, double const* d, double const* e)
{
    const double aex = a[0] - e[0], bex = b[0] - e[0], cex = c[0] - e[0], dex = d[0] - e[0];
    const double aey = a[1] - e[1], bey = b[1] - e[1], cey = c[1] - e[1], dey = d[1] - e[1];
    const double aez = a[2] - e[2], bez = b[2] - e[2], cez = c[2] - e[2], dez = d[2] - e[2];
    const double ab = aex * bey - bex * aey, bc = bex * cey - cex * bey, cd = cex * dey - dex * cey;
    const double da = dex * aey - aex * dey, ac = aex * cey - cex * aey, bd = bex * dey - dex * bey;
    const double abc = aez * bc - bez * ac + cez * ab;
    const double bcd = bez * cd - cez * bd + dez * bc;
    const double cda = cez * da + dez * ac + aez * cd;
    const double dab = dez * ab + aez * bd + bez * da;
    const double aLift = aex * aex + aey * aey + aez * aez, bLift = bex * bex + bey * bey + bez * bez;
    const double cLift = cex * cex + cey * cey + cez * cez, dLift = dex * dex + dey * dey + dez * dez;
    return (dLift * abc - cLift * dab) + (bLift * cda - aLift * bcd);
}

__attribute__((noinline)) double plainOrient3DCall(double const* a, double const* b, double const* c, double const* d)
{
    return plainOrient3D(a, b, c, d);
}

__attribute__((noinline)) double plainInSphereCall(double const* a, double const* b, double const* c, double const* d,
                                                   double const* e)
{
    return plainInSphere(a, b, c, d, e);
}

// The predicates under test, as plain function pointers (the names are overloaded).
double (*const exactOrient3D)(double const*, double const*, double const*, double const*) = vel::Orient3D;
double (*const exactInSphere)(double const*, double const*, double const*, double const*, double const*) = vel::InSphere;

// Runs one determinant over every set; the sum of signs keeps the work observable.
template <typename Determinant>
void runOrient3D(benchmark::State& state, const Sets& sets, Determinant determinant)
{
    for (auto _ : state) {
        int signs = 0;
        for (int i = 0; i < kSets; ++i) {
            const P3* p = &sets.points[size_t(4 * i)];
            const double det = determinant(p[0].data(), p[1].data(), p[2].data(), p[3].data());
            signs += (det > 0.0) - (det < 0.0);
        }
        benchmark::DoNotOptimize(signs);
    }
    state.SetItemsProcessed(state.iterations() * kSets);
}

template <typename Determinant>
void runInSphere(benchmark::State& state, const Sets& sets, Determinant determinant)
{
    for (auto _ : state) {
        int signs = 0;
        for (int i = 0; i < kSets; ++i) {
            const P3* p = &sets.points[size_t(5 * i)];
            const double det = determinant(p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data());
            signs += (det > 0.0) - (det < 0.0);
        }
        benchmark::DoNotOptimize(signs);
    }
    state.SetItemsProcessed(state.iterations() * kSets);
}

const Sets& randomOrient3DSets()
{
    static const Sets sets = randomSets(4);
    return sets;
}

const Sets& randomInSphereSets()
{
    static const Sets sets = randomSets(5);
    return sets;
}

void BM_Orient3D_Random_Plain(benchmark::State& state)
{
    runOrient3D(state, randomOrient3DSets(), plainOrient3DCall);
}
BENCHMARK(BM_Orient3D_Random_Plain);

void BM_Orient3D_Random_PlainInlined(benchmark::State& state)
{
    runOrient3D(state, randomOrient3DSets(), [](auto... p) { return plainOrient3D(p...); });
}
BENCHMARK(BM_Orient3D_Random_PlainInlined);

void BM_Orient3D_Random_Exact(benchmark::State& state)
{
    runOrient3D(state, randomOrient3DSets(), exactOrient3D);
}
BENCHMARK(BM_Orient3D_Random_Exact);

void BM_Orient3D_CoplanarInteger_Exact(benchmark::State& state)
{
    static const Sets sets = coplanarIntegerSets();
    runOrient3D(state, sets, exactOrient3D);
}
BENCHMARK(BM_Orient3D_CoplanarInteger_Exact);

void BM_Orient3D_CoplanarRounded_Exact(benchmark::State& state)
{
    static const Sets sets = coplanarRoundedSets();
    runOrient3D(state, sets, exactOrient3D);
}
BENCHMARK(BM_Orient3D_CoplanarRounded_Exact);

void BM_Orient3D_CoplanarMixedMagnitude_Exact(benchmark::State& state)
{
    static const Sets sets = coplanarMixedSets();
    runOrient3D(state, sets, exactOrient3D);
}
BENCHMARK(BM_Orient3D_CoplanarMixedMagnitude_Exact);

void BM_InSphere_Random_Plain(benchmark::State& state)
{
    runInSphere(state, randomInSphereSets(), plainInSphereCall);
}
BENCHMARK(BM_InSphere_Random_Plain);

void BM_InSphere_Random_PlainInlined(benchmark::State& state)
{
    runInSphere(state, randomInSphereSets(), [](auto... p) { return plainInSphere(p...); });
}
BENCHMARK(BM_InSphere_Random_PlainInlined);

void BM_InSphere_Random_Exact(benchmark::State& state)
{
    runInSphere(state, randomInSphereSets(), exactInSphere);
}
BENCHMARK(BM_InSphere_Random_Exact);

void BM_InSphere_CosphericalInteger_Exact(benchmark::State& state)
{
    static const Sets sets = cosphericalIntegerSets();
    runInSphere(state, sets, exactInSphere);
}
BENCHMARK(BM_InSphere_CosphericalInteger_Exact);

void BM_InSphere_CosphericalRounded_Exact(benchmark::State& state)
{
    static const Sets sets = cosphericalRoundedSets();
    runInSphere(state, sets, exactInSphere);
}
BENCHMARK(BM_InSphere_CosphericalRounded_Exact);

void BM_InSphere_CosphericalMixedMagnitude_Exact(benchmark::State& state)
{
    static const Sets sets = cocircularMixedSets();
    runInSphere(state, sets, exactInSphere);
}
BENCHMARK(BM_InSphere_CosphericalMixedMagnitude_Exact);

} // namespace
