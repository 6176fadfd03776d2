// Exact geometric predicates: orientation and in-circle / in-sphere tests on double
// coordinates whose sign is always right.
//
// Each predicate evaluates its determinant in plain doubles first and answers at once
// when the result is larger than a static bound on that evaluation's rounding error.
// Only nearly degenerate input goes on to adaptive stages, which refine the value with
// floating-point expansions (exact sums of doubles) until the sign is certain, the last
// stage being an exact evaluation. So the common case costs little more than the plain
// determinant, and the rare hard case is still exact.
//
// Every predicate returns an approximation of its determinant whose sign is exact:
// zero means exactly degenerate input.
//
// Preconditions, checked where they can be by InitExactPredicates():
// - IEEE-754 double arithmetic rounding to nearest-even, without extended precision and
//   without fused multiply-add contraction (never build ExactPredicates.cpp with
//   -ffast-math);
// - no intermediate product overflows or underflows. The exact stages multiply up to five
//   coordinates (InSphere), down to their lowest bits; coordinates that are zero or of
//   magnitude between 1e-40 and 1e40 are safe for all four predicates;
// - stack: the exact last stage of InSphere keeps its expansions on the stack, about 150 KB
//   at the deepest (the others need at most 30 KB); nothing is allocated on the heap.
//
// Initialisation: the machine epsilon, the splitter and the error bounds of every stage
// are computed at compile time, so the predicates are correct even before
// InitExactPredicates() runs. InitExactPredicates() remains the start-up call: it measures
// the same quantities on the running hardware and asserts that they agree with the
// compiled ones and that the rounding mode is to nearest, so an environment that would
// make the predicates wrong stops the program at start instead of giving wrong signs later.
#pragma once

#include "Math/Vector2.h"
#include "Math/Vector3.h"

namespace vel {

// Measures epsilon and the splitter at run time and asserts that the arithmetic is what
// the predicates were compiled for. Call once, first thing at start-up; repeating it is harmless.
void InitExactPredicates();

// Positive when a, b, c (2 doubles each) are in counter-clockwise order, negative when
// clockwise, zero when collinear. The value approximates twice the signed triangle area.
double Orient2D(double const* a, double const* b, double const* c);

// Positive when d lies below the plane through a, b, c (3 doubles each), "below" meaning
// that a, b, c appear counter-clockwise seen from above; negative above; zero when the four
// points are coplanar. The value approximates six times the signed tetrahedron volume.
double Orient3D(double const* a, double const* b, double const* c, double const* d);

// Positive when d lies inside the circle through a, b, c, which must be in
// counter-clockwise order (the sign flips otherwise); negative outside; zero on the circle.
double InCircle(double const* a, double const* b, double const* c, double const* d);

// Positive when e lies inside the sphere through a, b, c, d, which must be ordered so that
// Orient3D(a, b, c, d) > 0 (the sign flips otherwise); negative outside; zero on the sphere.
double InSphere(double const* a, double const* b, double const* c, double const* d, double const* e);

// The same on vectors, whose components are contiguous doubles.
inline double Orient2D(Vector2<double> const& a, Vector2<double> const& b, Vector2<double> const& c)
{
    return Orient2D(&a.x, &b.x, &c.x);
}
inline double Orient3D(Vector3<double> const& a, Vector3<double> const& b, Vector3<double> const& c,
                       Vector3<double> const& d)
{
    return Orient3D(&a.x, &b.x, &c.x, &d.x);
}
inline double InCircle(Vector2<double> const& a, Vector2<double> const& b, Vector2<double> const& c,
                       Vector2<double> const& d)
{
    return InCircle(&a.x, &b.x, &c.x, &d.x);
}
inline double InSphere(Vector3<double> const& a, Vector3<double> const& b, Vector3<double> const& c,
                       Vector3<double> const& d, Vector3<double> const& e)
{
    return InSphere(&a.x, &b.x, &c.x, &d.x, &e.x);
}

static_assert(sizeof(Vector3<double>) == 3 * sizeof(double), "vector components must be contiguous");

} // namespace vel
