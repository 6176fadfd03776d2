#include "Math/ExactPredicates.h"

#include "Core/Assert.h"

#include <cfenv>
#include <cmath>
#include <limits>

// Index
// - Arithmetic constants and error bounds
// - Exact two-term operations: Two-Sum, Two-Diff, Dekker split, Two-Product
// - Expansions: sum, scale, estimate
// - Pieces shared by the determinants: exact differences, 2x2 minors
// - Orient2D
// - Orient3D and InCircle
// - InSphere
// - InitExactPredicates
//
// Every predicate runs the same ladder. Stage A: the plain determinant, accepted when it
// exceeds a static error bound proportional to its permanent (the same expression with
// every term made positive). Stage B: the determinant of the rounded coordinate
// differences, evaluated exactly as an expansion; accepted when it exceeds a bound on what
// the differences' own rounding can change. Stage C: a first-order correction by those
// rounding errors (the "tails"), in doubles. Stage D: exact. Stages B to D only run for
// nearly degenerate input, so the plain path stays short and branch-predictable.

// The error-free transformations below rely on every operation being rounded exactly once,
// to nearest: fast-math reassociation or a fused multiply-add would silently break them.
// Clang contracts a * b + c by default and is told not to here; GCC contracts only in its
// GNU dialects (this project builds with -std=c++17, CMAKE_CXX_EXTENSIONS OFF).
#if defined(__FAST_MATH__)
#error "ExactPredicates.cpp needs strict IEEE-754 arithmetic: build it without -ffast-math"
#endif
#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#endif

namespace vel {
namespace {

//-------------------------------------------------------------------------------------------
// Arithmetic constants and error bounds
//-------------------------------------------------------------------------------------------

struct Arithmetic {
    double epsilon;  // bound on the relative error of one rounded operation (2^-53 for doubles)
    double splitter; // 2^ceil(p/2) + 1: multiplying by it splits a p-bit double in two halves
};

// Halves epsilon until adding it to one changes nothing (or stops changing the sum, which
// happens under a directed rounding mode). The splitter doubles on every second step, so it
// ends as 2^ceil(p/2) + 1 for a p-bit mantissa. At compile time `one` is the literal 1.0;
// at run time it comes from a volatile, so that the loop runs on the real hardware.
constexpr Arithmetic measureArithmetic(double one)
{
    double epsilon = one;
    double splitter = one;
    double check = one;
    double lastCheck = 0.0;
    bool doubleSplitter = true;
    do {
        lastCheck = check;
        epsilon *= 0.5;
        if (doubleSplitter)
            splitter *= 2.0;
        doubleSplitter = !doubleSplitter;
        check = one + epsilon;
    } while (check != one && check != lastCheck);
    return {epsilon, splitter + one};
}

// Bounds on the rounding error of each stage, relative to the permanent of the determinant.
// The coefficients come from counting the roundings along each stage's evaluation order;
// the stage code keeps exactly that order.
struct ErrorBounds {
    double result; // relative error of an expansion's estimate, the value stage C corrects
    double orient2dA;
    double orient2dB;
    double orient2dC;
    double orient3dA;
    double orient3dB;
    double orient3dC;
    double inCircleA;
    double inCircleB;
    double inCircleC;
    double inSphereA;
    double inSphereB;
    double inSphereC;
};

constexpr ErrorBounds errorBounds(double e)
{
    ErrorBounds b{};
    b.result = (3.0 + 8.0 * e) * e;
    b.orient2dA = (3.0 + 16.0 * e) * e;
    b.orient2dB = (2.0 + 12.0 * e) * e;
    b.orient2dC = (9.0 + 64.0 * e) * e * e;
    b.orient3dA = (7.0 + 56.0 * e) * e;
    b.orient3dB = (3.0 + 28.0 * e) * e;
    b.orient3dC = (26.0 + 288.0 * e) * e * e;
    b.inCircleA = (10.0 + 96.0 * e) * e;
    b.inCircleB = (4.0 + 48.0 * e) * e;
    b.inCircleC = (44.0 + 576.0 * e) * e * e;
    b.inSphereA = (16.0 + 224.0 * e) * e;
    b.inSphereB = (5.0 + 72.0 * e) * e;
    b.inSphereC = (71.0 + 1408.0 * e) * e * e;
    return b;
}

constexpr Arithmetic kArithmetic = measureArithmetic(1.0);
constexpr ErrorBounds kBounds = errorBounds(kArithmetic.epsilon);

static_assert(std::numeric_limits<double>::is_iec559, "the predicates need IEEE-754 doubles");
static_assert(kArithmetic.epsilon == std::numeric_limits<double>::epsilon() / 2,
              "compile-time double arithmetic is not 53-bit round-to-nearest");
static_assert(kArithmetic.splitter == 134217729.0, "the splitter of a 53-bit mantissa is 2^27 + 1");

//-------------------------------------------------------------------------------------------
// Exact two-term operations
//-------------------------------------------------------------------------------------------

// head + tail is exactly the result: head is the rounded value, tail what rounding dropped.
struct TwoTerms {
    double head;
    double tail;
};

// Knuth's Two-Sum: recovers the rounding error of a + b, whatever their magnitudes.
inline TwoTerms twoSum(double a, double b)
{
    const double sum = a + b;
    const double bVirtual = sum - a;
    const double aVirtual = sum - bVirtual;
    const double bRoundoff = b - bVirtual;
    const double aRoundoff = a - aVirtual;
    return {sum, aRoundoff + bRoundoff};
}

// Dekker's Fast-Two-Sum: the same for |a| >= |b| (or a == 0), in three operations.
inline TwoTerms fastTwoSum(double a, double b)
{
    const double sum = a + b;
    const double bVirtual = sum - a;
    return {sum, b - bVirtual};
}

// The rounding error of difference == a - b, given that rounded difference.
inline double twoDiffTail(double a, double b, double difference)
{
    const double bVirtual = a - difference;
    const double aVirtual = difference + bVirtual;
    const double bRoundoff = bVirtual - b;
    const double aRoundoff = a - aVirtual;
    return aRoundoff + bRoundoff;
}

inline TwoTerms twoDiff(double a, double b)
{
    const double difference = a - b;
    return {difference, twoDiffTail(a, b, difference)};
}

// Dekker's split: a == high + low with each half at most 26 significant bits, so that the
// product of any two halves is exact in a double.
inline TwoTerms split(double a)
{
    const double c = kArithmetic.splitter * a;
    const double aBig = c - a;
    const double high = c - aBig;
    return {high, a - high};
}

// The rounding error of product == a * b, with b already split (it is often reused).
// Subtracting the exact partial products from the rounded product, largest first, leaves
// exactly what rounding dropped.
inline double twoProductTail(double a, TwoTerms bSplit, double product)
{
    const TwoTerms aSplit = split(a);
    const double error1 = product - aSplit.head * bSplit.head;
    const double error2 = error1 - aSplit.tail * bSplit.head;
    const double error3 = error2 - aSplit.head * bSplit.tail;
    return aSplit.tail * bSplit.tail - error3;
}

inline TwoTerms twoProduct(double a, double b)
{
    const double product = a * b;
    return {product, twoProductTail(a, split(b), product)};
}

//-------------------------------------------------------------------------------------------
// Expansions
//-------------------------------------------------------------------------------------------

// An exact value held as a sum of doubles that do not overlap bitwise, ordered by increasing
// magnitude, so that the last term carries the sign and approximates the whole. Zero terms
// may appear inside short fixed expansions; the sums and scalings drop them. An expansion
// without terms is zero. N is the capacity, fixed at compile time so that the adaptive
// stages never allocate.
template <int N>
struct Expansion {
    double term[N];
    int length = 0;

    // Adds an expansion to this one, exactly.
    template <int M>
    void add(const Expansion<M>& part);

    // The terms summed in doubles: close to the value, and what the stage bounds assume.
    double estimate() const
    {
        double sum = 0.0;
        for (int i = 0; i < length; ++i)
            sum += term[i];
        return sum;
    }

    // Has the exact sign of the value.
    double mostSignificant() const { return length > 0 ? term[length - 1] : 0.0; }
};

// Appends a term unless it is zero: zero elimination keeps the expansions short.
inline void appendNonzero(double* h, int& length, double term)
{
    if (term != 0.0)
        h[length++] = term;
}

// h = e + f, exactly (Shewchuk's fast expansion sum with zero elimination). The terms of
// both are merged by magnitude and fed one by one into a running sum; each rounding error
// that falls out of it is final and becomes the next term of h. h must hold eLength + fLength
// terms and must not alias e or f.
int sumExpansions(const double* e, int eLength, const double* f, int fLength, double* h)
{
    int ei = 0;
    int fi = 0;
    int hLength = 0;
    double running = 0.0;
    while (ei < eLength || fi < fLength) {
        const bool takeE = fi == fLength || (ei < eLength && std::fabs(e[ei]) <= std::fabs(f[fi]));
        const double next = takeE ? e[ei++] : f[fi++];
        const TwoTerms sum = twoSum(running, next);
        appendNonzero(h, hLength, sum.tail);
        running = sum.head;
    }
    appendNonzero(h, hLength, running);
    return hLength;
}

// h = e * b, exactly, with zero elimination. Each term's product is taken as its rounded
// value and its exact error; the error, then the rounded value, join the running sum, and
// what each addition drops is a finished term of h. h must hold 2 * eLength terms.
int scaleExpansion(const double* e, int eLength, double b, double* h)
{
    if (eLength == 0)
        return 0;
    const TwoTerms bSplit = split(b);
    int hLength = 0;
    const double product = e[0] * b;
    appendNonzero(h, hLength, twoProductTail(e[0], bSplit, product));
    double running = product;
    for (int i = 1; i < eLength; ++i) {
        const double termProduct = e[i] * b;
        const TwoTerms low = twoSum(running, twoProductTail(e[i], bSplit, termProduct));
        appendNonzero(h, hLength, low.tail);
        const TwoTerms high = fastTwoSum(termProduct, low.head);
        appendNonzero(h, hLength, high.tail);
        running = high.head;
    }
    appendNonzero(h, hLength, running);
    return hLength;
}

template <int N>
template <int M>
void Expansion<N>::add(const Expansion<M>& part)
{
    VEL_ASSERT_MSG(length + part.length <= N, "expansion capacity is sized for the worst case");
    double sum[N];
    const int sumLength = sumExpansions(term, length, part.term, part.length, sum);
    for (int i = 0; i < sumLength; ++i)
        term[i] = sum[i];
    length = sumLength;
}

template <int N, int M>
Expansion<N + M> operator+(const Expansion<N>& e, const Expansion<M>& f)
{
    Expansion<N + M> h;
    h.length = sumExpansions(e.term, e.length, f.term, f.length, h.term);
    return h;
}

template <int N>
Expansion<2 * N> operator*(const Expansion<N>& e, double b)
{
    Expansion<2 * N> h;
    h.length = scaleExpansion(e.term, e.length, b, h.term);
    return h;
}

template <int N>
Expansion<N> operator-(const Expansion<N>& e)
{
    Expansion<N> negated;
    negated.length = e.length;
    for (int i = 0; i < e.length; ++i)
        negated.term[i] = -e.term[i];
    return negated;
}

// (a.head + a.tail) - (b.head + b.tail) as four nonoverlapping terms, smallest first:
// b's tail is subtracted from the two-term a, then b's head from the three-term result.
inline Expansion<4> twoTwoDiff(TwoTerms a, TwoTerms b)
{
    const TwoTerms lowest = twoDiff(a.tail, b.tail);
    const TwoTerms carry = twoSum(a.head, lowest.head);
    const TwoTerms low = twoDiff(carry.tail, b.head);
    const TwoTerms high = twoSum(carry.head, low.head);
    return {{lowest.tail, low.tail, high.tail, high.head}, 4};
}

// a * b - c * d, exactly.
inline Expansion<4> productDifference(double a, double b, double c, double d)
{
    return twoTwoDiff(twoProduct(a, b), twoProduct(c, d));
}

//-------------------------------------------------------------------------------------------
// Pieces shared by the determinants
//-------------------------------------------------------------------------------------------

// A point minus the reference point of a determinant, per axis: the rounded difference that
// stages A and B use, and its rounding error, so that x + xTail is the exact difference.
struct Difference {
    double x;
    double y;
    double z;
    double xTail;
    double yTail;
    double zTail;

    bool hasXYTail() const { return xTail != 0.0 || yTail != 0.0; }
    bool hasTail() const { return hasXYTail() || zTail != 0.0; }
};

Difference difference2(double const* p, double const* reference)
{
    const TwoTerms x = twoDiff(p[0], reference[0]);
    const TwoTerms y = twoDiff(p[1], reference[1]);
    return {x.head, y.head, 0.0, x.tail, y.tail, 0.0};
}

Difference difference3(double const* p, double const* reference)
{
    const TwoTerms x = twoDiff(p[0], reference[0]);
    const TwoTerms y = twoDiff(p[1], reference[1]);
    const TwoTerms z = twoDiff(p[2], reference[2]);
    return {x.head, y.head, z.head, x.tail, y.tail, z.tail};
}

// The xy minor p.x * q.y - q.x * p.y of the rounded differences, exactly.
inline Expansion<4> headMinor(const Difference& p, const Difference& q)
{
    return productDifference(p.x, q.y, q.x, p.y);
}

// The same minor in doubles, with its first-order change by the tails: what stage C adds.
inline double approximateMinor(const Difference& p, const Difference& q)
{
    return p.x * q.y - p.y * q.x;
}

inline double minorFirstOrderTail(const Difference& p, const Difference& q)
{
    return (p.x * q.yTail + q.y * p.xTail) - (p.y * q.xTail + q.x * p.yTail);
}

// A 2x2 minor p * q - r * s in doubles for stage A, with |p * q| + |r * s|, its share of the
// permanent.
struct PlainMinor {
    double value;
    double magnitude;
};

inline PlainMinor plainMinor(double p, double q, double r, double s)
{
    const double left = p * q;
    const double right = r * s;
    return {left - right, std::fabs(left) + std::fabs(right)};
}

// Everything the exact xy minor of the true differences,
// (p.x + p.xTail)(q.y + q.yTail) - (p.y + p.yTail)(q.x + q.xTail), has beyond headMinor:
// the first-order terms of each point's tails and the product of both tails. Pieces whose
// tails are zero are skipped, which is the common case for integer-like input.
Expansion<12> minorTail(const Difference& p, const Difference& q)
{
    Expansion<12> tail;
    if (p.hasXYTail())
        tail.add(productDifference(p.xTail, q.y, p.yTail, q.x));
    if (q.hasXYTail())
        tail.add(productDifference(p.x, q.yTail, p.y, q.xTail));
    if (p.hasXYTail() && q.hasXYTail())
        tail.add(productDifference(p.xTail, q.yTail, p.yTail, q.xTail));
    return tail;
}

//-------------------------------------------------------------------------------------------
// Orient2D: the sign of | a-c ; b-c |
//-------------------------------------------------------------------------------------------

__attribute__((noinline)) double orient2dAdaptive(double const* pa, double const* pb, double const* pc,
                                                  double detSum)
{
    const Difference a = difference2(pa, pc);
    const Difference b = difference2(pb, pc);

    // Stage B.
    const Expansion<4> head = headMinor(a, b);
    double det = head.estimate();
    if (std::fabs(det) >= kBounds.orient2dB * detSum)
        return det;
    if (!a.hasXYTail() && !b.hasXYTail())
        return det; // the differences were exact, so stage B was the exact determinant

    // Stage C.
    const double errorBound = kBounds.orient2dC * detSum + kBounds.result * std::fabs(det);
    det += minorFirstOrderTail(a, b);
    if (std::fabs(det) >= errorBound)
        return det;

    // Stage D.
    return (head + minorTail(a, b)).mostSignificant();
}

//-------------------------------------------------------------------------------------------
// Orient3D and InCircle: sums over the rotations of (a, b, c) of weight(a) * minor(b, c)
//-------------------------------------------------------------------------------------------

// Both determinants, expanded along their last column, are the sum over the rotations of
// (a, b, c) of a weight of a times the xy minor of (b, c):
//   Orient3D, rows (p-d):           weight a.z;
//   InCircle, rows (p-d, |p-d|^2):  weight the lift a.x^2 + a.y^2.
// A weight says how it scales an exact minor by its head (stage B), its value and
// first-order change in doubles (stage C), and what its tails add exactly (stage D); and
// which axes of the differences the determinant reads, for the test of exact differences.

struct ZWeight {
    static constexpr int kExactLength = 24 + 3 * (24 + 32); // stage B, then per rotation at most

    template <int N>
    static Expansion<2 * N> timesHead(const Expansion<N>& m, const Difference& a)
    {
        return m * a.z;
    }
    static double value(const Difference& a) { return a.z; }
    static double firstOrder(const Difference& a) { return a.zTail; }
    static bool hasTail(const Difference& a) { return a.hasTail(); }

    // (a.z + a.zTail) * minor - a.z * minor, for the minor head + tail.
    template <int N>
    static void addTailTimes(Expansion<N>& sum, const Difference& a, const Expansion<4>& head,
                             const Expansion<12>& tail)
    {
        if (a.zTail != 0.0)
            sum.add((head + tail) * a.zTail);
    }
};

// m * (x^2 + y^2), exactly, as two scalings per axis.
template <int N>
Expansion<8 * N> liftedXY(const Expansion<N>& m, double x, double y)
{
    return (m * x) * x + (m * y) * y;
}

struct LiftWeight {
    static constexpr int kExactLength = 96 + 3 * (96 + 2 * 128);

    template <int N>
    static Expansion<8 * N> timesHead(const Expansion<N>& m, const Difference& a)
    {
        return liftedXY(m, a.x, a.y);
    }
    static double value(const Difference& a) { return a.x * a.x + a.y * a.y; }
    static double firstOrder(const Difference& a) { return 2.0 * (a.x * a.xTail + a.y * a.yTail); }
    static bool hasTail(const Difference& a) { return a.hasXYTail(); }

    // ((x + xTail)^2 + (y + yTail)^2 - x^2 - y^2) * minor, for the minor head + tail: per
    // axis (2 x xTail + xTail^2) * minor.
    template <int N>
    static void addTailTimes(Expansion<N>& sum, const Difference& a, const Expansion<4>& head,
                             const Expansion<12>& tail)
    {
        if (!a.hasXYTail())
            return;
        const Expansion<16> minor = head + tail;
        const double axis[2] = {a.x, a.y};
        const double axisTail[2] = {a.xTail, a.yTail};
        for (int i = 0; i < 2; ++i) {
            if (axisTail[i] == 0.0)
                continue;
            const Expansion<32> byTail = minor * axisTail[i];
            sum.add(byTail * (2.0 * axis[i]));
            sum.add(byTail * axisTail[i]);
        }
    }
};

// Stage C's term of one rotation: the weight times the minor's first-order change, plus the
// weight's first-order change times the minor.
template <typename Weight>
double rotationFirstOrder(const Difference& a, const Difference& b, const Difference& c)
{
    return Weight::value(a) * minorFirstOrderTail(b, c) + Weight::firstOrder(a) * approximateMinor(b, c);
}

// What the exact term of one rotation has beyond stage B's head weight times head minor:
// the head weight times the minor's tail, and the weight's tails times the whole minor.
template <typename Weight, int N>
void addRotationRemainder(Expansion<N>& sum, const Difference& a, const Difference& b, const Difference& c,
                          const Expansion<4>& head)
{
    const Expansion<12> tail = minorTail(b, c);
    sum.add(Weight::timesHead(tail, a));
    Weight::addTailTimes(sum, a, head, tail);
}

template <typename Weight>
double rotationSumAdaptive(const Difference& a, const Difference& b, const Difference& c, double permanent,
                           double boundB, double boundC)
{
    // Stage B.
    const Expansion<4> bc = headMinor(b, c);
    const Expansion<4> ca = headMinor(c, a);
    const Expansion<4> ab = headMinor(a, b);
    const auto head = (Weight::timesHead(bc, a) + Weight::timesHead(ca, b)) + Weight::timesHead(ab, c);
    double det = head.estimate();
    if (std::fabs(det) >= boundB * permanent)
        return det;
    if (!Weight::hasTail(a) && !Weight::hasTail(b) && !Weight::hasTail(c))
        return det;

    // Stage C.
    const double errorBound = boundC * permanent + kBounds.result * std::fabs(det);
    det += (rotationFirstOrder<Weight>(a, b, c) + rotationFirstOrder<Weight>(b, c, a))
           + rotationFirstOrder<Weight>(c, a, b);
    if (std::fabs(det) >= errorBound)
        return det;

    // Stage D.
    Expansion<Weight::kExactLength> exact;
    exact.add(head);
    addRotationRemainder<Weight>(exact, a, b, c, bc);
    addRotationRemainder<Weight>(exact, b, c, a, ca);
    addRotationRemainder<Weight>(exact, c, a, b, ab);
    return exact.mostSignificant();
}

__attribute__((noinline)) double orient3dAdaptive(double const* pa, double const* pb, double const* pc,
                                                  double const* pd, double permanent)
{
    return rotationSumAdaptive<ZWeight>(difference3(pa, pd), difference3(pb, pd), difference3(pc, pd), permanent,
                                        kBounds.orient3dB, kBounds.orient3dC);
}

__attribute__((noinline)) double inCircleAdaptive(double const* pa, double const* pb, double const* pc,
                                                  double const* pd, double permanent)
{
    return rotationSumAdaptive<LiftWeight>(difference2(pa, pd), difference2(pb, pd), difference2(pc, pd),
                                           permanent, kBounds.inCircleB, kBounds.inCircleC);
}

//-------------------------------------------------------------------------------------------
// InSphere: the sign of the 4x4 determinant with rows (p-e, |p-e|^2) for p = a, b, c, d,
// expanded along the lift column: d.lift*abc - c.lift*dab + b.lift*cda - a.lift*bcd, where
// pqr is the 3x3 minor p.z*qr + q.z*rp + r.z*pq over the xy minors
//-------------------------------------------------------------------------------------------

// m * (x^2 + y^2 + z^2), exactly.
template <int N>
Expansion<12 * N> liftedXYZ(const Expansion<N>& m, double x, double y, double z)
{
    return liftedXY(m, x, y) + (m * z) * z;
}

// The determinant exactly from the original coordinates, for when the adaptive stages
// cannot decide: the 5x5 determinant with rows (p, |p|^2, 1), which equals the one above.
// Expanding along the lift column gives five terms lift(p) * O(the other four), where O is
// the 4x4 determinant with rows (p, 1): exactly Orient3D of those four points.

// The xy minor p.x * q.y - q.x * p.y of original coordinates, exactly.
inline Expansion<4> rawMinor(double const* p, double const* q)
{
    return productDifference(p[0], q[1], q[0], p[1]);
}

// The 3x3 determinant with rows p, q, r, exactly: p.z*qr + q.z*rp + r.z*pq.
Expansion<24> rawTriple(double const* p, double const* q, double const* r)
{
    return (rawMinor(q, r) * p[2] + rawMinor(r, p) * q[2]) + rawMinor(p, q) * r[2];
}

// The 4x4 determinant with rows (p, 1), exactly, expanded along the column of ones.
Expansion<96> rawOrientation(double const* p, double const* q, double const* r, double const* s)
{
    return (rawTriple(p, q, r) + -rawTriple(p, q, s)) + (rawTriple(p, r, s) + -rawTriple(q, r, s));
}

__attribute__((noinline)) double inSphereExact(double const* pa, double const* pb, double const* pc,
                                               double const* pd, double const* pe)
{
    Expansion<5 * 1152> exact;
    exact.add(-liftedXYZ(rawOrientation(pb, pc, pd, pe), pa[0], pa[1], pa[2]));
    exact.add(liftedXYZ(rawOrientation(pa, pc, pd, pe), pb[0], pb[1], pb[2]));
    exact.add(-liftedXYZ(rawOrientation(pa, pb, pd, pe), pc[0], pc[1], pc[2]));
    exact.add(liftedXYZ(rawOrientation(pa, pb, pc, pe), pd[0], pd[1], pd[2]));
    exact.add(-liftedXYZ(rawOrientation(pa, pb, pc, pd), pe[0], pe[1], pe[2]));
    return exact.mostSignificant();
}

// An xy minor in doubles and its first-order change by the tails, for stage C.
struct FirstOrderMinor {
    double value;
    double tail;
};

struct InSphereMinors {
    FirstOrderMinor ab;
    FirstOrderMinor bc;
    FirstOrderMinor cd;
    FirstOrderMinor da;
    FirstOrderMinor ac;
    FirstOrderMinor bd;
};

inline double lift(const Difference& p)
{
    return p.x * p.x + p.y * p.y + p.z * p.z;
}

inline double liftFirstOrder(const Difference& p)
{
    return p.x * p.xTail + p.y * p.yTail + p.z * p.zTail;
}

// The first-order correction of stage C: each 3x3 minor changes by its z's times the xy
// minors' first-order changes plus its z tails times the xy minors; each lift changes by
// twice the dot product of head and tail.
double inSphereFirstOrder(const Difference& a, const Difference& b, const Difference& c, const Difference& d,
                          const InSphereMinors& m)
{
    const double abc = a.z * m.bc.value - b.z * m.ac.value + c.z * m.ab.value;
    const double bcd = b.z * m.cd.value - c.z * m.bd.value + d.z * m.bc.value;
    const double cda = c.z * m.da.value + d.z * m.ac.value + a.z * m.cd.value;
    const double dab = d.z * m.ab.value + a.z * m.bd.value + b.z * m.da.value;
    const double abcTail = (a.z * m.bc.tail - b.z * m.ac.tail + c.z * m.ab.tail)
                           + (a.zTail * m.bc.value - b.zTail * m.ac.value + c.zTail * m.ab.value);
    const double bcdTail = (b.z * m.cd.tail - c.z * m.bd.tail + d.z * m.bc.tail)
                           + (b.zTail * m.cd.value - c.zTail * m.bd.value + d.zTail * m.bc.value);
    const double cdaTail = (c.z * m.da.tail + d.z * m.ac.tail + a.z * m.cd.tail)
                           + (c.zTail * m.da.value + d.zTail * m.ac.value + a.zTail * m.cd.value);
    const double dabTail = (d.z * m.ab.tail + a.z * m.bd.tail + b.z * m.da.tail)
                           + (d.zTail * m.ab.value + a.zTail * m.bd.value + b.zTail * m.da.value);
    return ((lift(b) * cdaTail + lift(d) * abcTail) - (lift(a) * bcdTail + lift(c) * dabTail))
           + 2.0 * ((liftFirstOrder(b) * cda + liftFirstOrder(d) * abc)
                    - (liftFirstOrder(a) * bcd + liftFirstOrder(c) * dab));
}

__attribute__((noinline)) double inSphereAdaptive(double const* pa, double const* pb, double const* pc,
                                                  double const* pd, double const* pe, double permanent)
{
    const Difference a = difference3(pa, pe);
    const Difference b = difference3(pb, pe);
    const Difference c = difference3(pc, pe);
    const Difference d = difference3(pd, pe);

    // Stage B.
    const Expansion<4> ab = headMinor(a, b);
    const Expansion<4> bc = headMinor(b, c);
    const Expansion<4> cd = headMinor(c, d);
    const Expansion<4> da = headMinor(d, a);
    const Expansion<4> ac = headMinor(a, c);
    const Expansion<4> bd = headMinor(b, d);
    const Expansion<24> abc = (bc * a.z + ac * -b.z) + ab * c.z;
    const Expansion<24> bcd = (cd * b.z + bd * -c.z) + bc * d.z;
    const Expansion<24> cda = (da * c.z + ac * d.z) + cd * a.z;
    const Expansion<24> dab = (ab * d.z + bd * a.z) + da * b.z;
    const Expansion<1152> head = (liftedXYZ(abc, d.x, d.y, d.z) + -liftedXYZ(dab, c.x, c.y, c.z))
                                 + (liftedXYZ(cda, b.x, b.y, b.z) + -liftedXYZ(bcd, a.x, a.y, a.z));
    double det = head.estimate();
    if (std::fabs(det) >= kBounds.inSphereB * permanent)
        return det;
    if (!a.hasTail() && !b.hasTail() && !c.hasTail() && !d.hasTail())
        return det;

    // Stage C. The xy minors enter through their most significant term.
    const double errorBound = kBounds.inSphereC * permanent + kBounds.result * std::fabs(det);
    const InSphereMinors minors = {{ab.term[3], minorFirstOrderTail(a, b)}, {bc.term[3], minorFirstOrderTail(b, c)},
                                   {cd.term[3], minorFirstOrderTail(c, d)}, {da.term[3], minorFirstOrderTail(d, a)},
                                   {ac.term[3], minorFirstOrderTail(a, c)}, {bd.term[3], minorFirstOrderTail(b, d)}};
    det += inSphereFirstOrder(a, b, c, d, minors);
    if (std::fabs(det) >= errorBound)
        return det;

    // Stage D: continuing from stage B would need expansions far longer than an exact
    // evaluation from the original coordinates.
    return inSphereExact(pa, pb, pc, pd, pe);
}

// Run-time input the optimiser cannot see through, so that InitExactPredicates measures
// the hardware instead of folding the measurement to the compiled constants.
volatile double gOne = 1.0;

} // namespace

//-------------------------------------------------------------------------------------------
// The public predicates: stage A here, the rest out of line
//-------------------------------------------------------------------------------------------

double Orient2D(double const* pa, double const* pb, double const* pc)
{
    const double detLeft = (pa[0] - pc[0]) * (pb[1] - pc[1]);
    const double detRight = (pa[1] - pc[1]) * (pb[0] - pc[0]);
    const double det = detLeft - detRight;

    // With products of opposite signs (or a zero), the subtraction cannot cancel: the sign is right.
    double detSum;
    if (detLeft > 0.0) {
        if (detRight <= 0.0)
            return det;
        detSum = detLeft + detRight;
    } else if (detLeft < 0.0) {
        if (detRight >= 0.0)
            return det;
        detSum = -detLeft - detRight;
    } else {
        return det;
    }
    if (std::fabs(det) >= kBounds.orient2dA * detSum)
        return det;
    return orient2dAdaptive(pa, pb, pc, detSum);
}

double Orient3D(double const* pa, double const* pb, double const* pc, double const* pd)
{
    const double adx = pa[0] - pd[0], bdx = pb[0] - pd[0], cdx = pc[0] - pd[0];
    const double ady = pa[1] - pd[1], bdy = pb[1] - pd[1], cdy = pc[1] - pd[1];
    const double adz = pa[2] - pd[2], bdz = pb[2] - pd[2], cdz = pc[2] - pd[2];

    const PlainMinor bc = plainMinor(bdx, cdy, cdx, bdy);
    const PlainMinor ca = plainMinor(cdx, ady, adx, cdy);
    const PlainMinor ab = plainMinor(adx, bdy, bdx, ady);
    const double det = adz * bc.value + bdz * ca.value + cdz * ab.value;
    const double permanent =
        bc.magnitude * std::fabs(adz) + ca.magnitude * std::fabs(bdz) + ab.magnitude * std::fabs(cdz);
    if (std::fabs(det) > kBounds.orient3dA * permanent)
        return det;
    return orient3dAdaptive(pa, pb, pc, pd, permanent);
}

double InCircle(double const* pa, double const* pb, double const* pc, double const* pd)
{
    const double adx = pa[0] - pd[0], bdx = pb[0] - pd[0], cdx = pc[0] - pd[0];
    const double ady = pa[1] - pd[1], bdy = pb[1] - pd[1], cdy = pc[1] - pd[1];

    const PlainMinor bc = plainMinor(bdx, cdy, cdx, bdy);
    const PlainMinor ca = plainMinor(cdx, ady, adx, cdy);
    const PlainMinor ab = plainMinor(adx, bdy, bdx, ady);
    const double aLift = adx * adx + ady * ady;
    const double bLift = bdx * bdx + bdy * bdy;
    const double cLift = cdx * cdx + cdy * cdy;
    const double det = aLift * bc.value + bLift * ca.value + cLift * ab.value;
    const double permanent = bc.magnitude * aLift + ca.magnitude * bLift + ab.magnitude * cLift;
    if (std::fabs(det) > kBounds.inCircleA * permanent)
        return det;
    return inCircleAdaptive(pa, pb, pc, pd, permanent);
}

double InSphere(double const* pa, double const* pb, double const* pc, double const* pd, double const* pe)
{
    const double aex = pa[0] - pe[0], bex = pb[0] - pe[0], cex = pc[0] - pe[0], dex = pd[0] - pe[0];
    const double aey = pa[1] - pe[1], bey = pb[1] - pe[1], cey = pc[1] - pe[1], dey = pd[1] - pe[1];
    const double aez = pa[2] - pe[2], bez = pb[2] - pe[2], cez = pc[2] - pe[2], dez = pd[2] - pe[2];

    // The six xy minors, then the four 3x3 minors over them.
    const PlainMinor ab = plainMinor(aex, bey, bex, aey);
    const PlainMinor bc = plainMinor(bex, cey, cex, bey);
    const PlainMinor cd = plainMinor(cex, dey, dex, cey);
    const PlainMinor da = plainMinor(dex, aey, aex, dey);
    const PlainMinor ac = plainMinor(aex, cey, cex, aey);
    const PlainMinor bd = plainMinor(bex, dey, dex, bey);
    const double abc = aez * bc.value - bez * ac.value + cez * ab.value;
    const double bcd = bez * cd.value - cez * bd.value + dez * bc.value;
    const double cda = cez * da.value + dez * ac.value + aez * cd.value;
    const double dab = dez * ab.value + aez * bd.value + bez * da.value;

    const double aLift = aex * aex + aey * aey + aez * aez;
    const double bLift = bex * bex + bey * bey + bez * bez;
    const double cLift = cex * cex + cey * cey + cez * cez;
    const double dLift = dex * dex + dey * dey + dez * dez;
    const double det = (dLift * abc - cLift * dab) + (bLift * cda - aLift * bcd);

    const double aezAbs = std::fabs(aez), bezAbs = std::fabs(bez), cezAbs = std::fabs(cez), dezAbs = std::fabs(dez);
    const double permanent =
        (cd.magnitude * bezAbs + bd.magnitude * cezAbs + bc.magnitude * dezAbs) * aLift
        + (da.magnitude * cezAbs + ac.magnitude * dezAbs + cd.magnitude * aezAbs) * bLift
        + (ab.magnitude * dezAbs + bd.magnitude * aezAbs + da.magnitude * bezAbs) * cLift
        + (bc.magnitude * aezAbs + ac.magnitude * bezAbs + ab.magnitude * cezAbs) * dLift;
    if (std::fabs(det) > kBounds.inSphereA * permanent)
        return det;
    return inSphereAdaptive(pa, pb, pc, pd, pe, permanent);
}

//-------------------------------------------------------------------------------------------
// InitExactPredicates
//-------------------------------------------------------------------------------------------

void InitExactPredicates()
{
    VEL_ASSERT_MSG(std::fegetround() == FE_TONEAREST, "the exact predicates need round-to-nearest");
    const Arithmetic measured = measureArithmetic(gOne);
    VEL_ASSERT_MSG(measured.epsilon == kArithmetic.epsilon && measured.splitter == kArithmetic.splitter,
                   "run-time double arithmetic is not 53-bit round-to-nearest");
    // (1 + 2^-30)^2 = 1 + 2^-29 + 2^-60: the product must round to 1 + 2^-29 and leave 2^-60 exactly.
    const double slightlyAboveOne = gOne + std::ldexp(1.0, -30);
    const TwoTerms square = twoProduct(slightlyAboveOne, slightlyAboveOne);
    VEL_ASSERT_MSG(square.head == 1.0 + std::ldexp(1.0, -29) && square.tail == std::ldexp(1.0, -60),
                   "Two-Product lost its rounding error: fused multiply-add or excess precision?");
}

} // namespace vel
