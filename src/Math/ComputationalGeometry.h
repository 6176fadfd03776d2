// ComputationalGeometry: constrained Delaunay triangulation of planar point sets and
// outlines, with optional quality refinement, and the plane fit that brings 3D outlines
// into the plane.
//
// The triangulator lives in one translation unit (ComputationalGeometry.cpp) and nothing of
// it shows here: it is heavy to compile, and this header is included by mesh code.
//
// Options are written as switch strings, one letter each:
//   "Q"   quiet (the only mode: nothing is printed)
//   "p"   the input is a planar straight-line graph: segments are constraints, and the
//         triangles reachable from outside without crossing a segment are dropped
//   "Y"   no point may be added on a segment (the boundary keeps its points)
//   "q30" quality: refine until no triangle has an angle below 30 degrees ("q" alone: 20)
//   "z"   indices count from zero (the only mode)
// The output points are the input points, in order, followed by the added ones; a repeated
// input point is kept in the list but used by no triangle.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector2.h"
#include "Math/Vector3.h"

#include <deque>
#include <string>
#include <vector>

namespace vel {

class ComputationalGeometry {
public:
    struct Options {
        bool segments = false;        // "p"
        bool keepBoundary = false;    // "Y"
        double minAngleDegrees = 0;   // "q<angle>"; 0: no refinement
        // Reads a switch string as above; unknown letters are ignored.
        static Options FromSwitches(std::string const& switches);
    };

    // The switch string for a call: "Q", "p" with segments, "Y" when the boundary must not
    // gain points, "q30" with quality (else "Y": no refinement adds nothing), then "z".
    static std::string Switches(bool segments, bool keepBoundary, bool quality);

    // Raw form. `points` holds n (x, y) pairs, `segments` m index pairs (may be null with
    // m == 0: the convex hull is triangulated). Fills `outPoints` with (x, y) pairs and
    // `triangles` with counter-clockwise index triples. False, with a log line, when the
    // input has no three points off one line, or the triangulation fails.
    static bool triangulate(double const* points, int n, int const* segments, int m, bool keepBoundary,
                            bool quality, std::vector<double>& outPoints, std::vector<int>& triangles);
    static bool triangulate(double const* points, int n, int const* segments, int m, Options const& options,
                            std::vector<double>& outPoints, std::vector<int>& triangles);

    // 2D deque form: the points are a closed outline.
    static bool triangulate(std::deque<Vector2<double>> const& outline, bool keepBoundary, bool quality,
                            std::deque<Vector2<double>>& outPoints, std::vector<int>& triangles);
    // 3D deque form: a closed outline near a plane. The fitted plane (tolerance 0.0001)
    // carries it to 2D; input points keep their positions and added points are lifted back
    // onto the plane. Triangles are wound like the outline.
    static bool triangulate(std::deque<Vector3<double>> const& outline, bool keepBoundary, bool quality,
                            std::deque<Vector3<double>>& outPoints, std::vector<int>& triangles);

    // Best-fit plane of the points. `frame` maps plane coordinates (x, y, 0) to space: its
    // rows are the in-plane axes and the normal, its translation the centroid. True when
    // every point lies within `tolerance` of the plane. With fewer than three points, or all
    // on one line, there is no plane: false and `projected` empty.
    static bool planar(std::deque<Vector3<double>> const& points, std::deque<Vector2<double>>& projected,
                       Matrix34<double>& frame, double tolerance);

    // Removes from a closed outline the points within `tolerance` of their predecessor and
    // the spikes: points where the outline turns back on itself within `tolerance`.
    static void clean_degenerate(std::deque<Vector3<double>>& points, double tolerance);
};

} // namespace vel
