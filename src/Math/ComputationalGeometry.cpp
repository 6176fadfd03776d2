// ComputationalGeometry: the one translation unit that includes the triangulator (CGAL's
// constrained Delaunay triangulation and its Delaunay refinement). Keep it that way: a unit
// with these headers takes a gigabyte and many seconds to compile.
//
// Index
// - switch strings
// - raw triangulation
// - outline forms (2D, 3D)
// - plane fit and outline cleaning
#include "Math/ComputationalGeometry.h"

#include "Core/Communicate.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_criteria_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_vertex_base_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Delaunay_mesher_no_edge_refinement_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>

namespace vel {

namespace {

struct PointIndex {
    int index = -1; // position in the output point list; -1 until numbered
};

using K = CGAL::Exact_predicates_inexact_constructions_kernel;
using Vb = CGAL::Triangulation_vertex_base_with_info_2<PointIndex, K, CGAL::Delaunay_mesh_vertex_base_2<K>>;
using Fb = CGAL::Delaunay_mesh_face_base_2<K>;
using Tds = CGAL::Triangulation_data_structure_2<Vb, Fb>;
// Exact_predicates_tag: crossing segments are split at their intersection instead of
// failing, which outlines drawn by hand and cut graphs both produce.
using CDT = CGAL::Constrained_Delaunay_triangulation_2<K, Tds, CGAL::Exact_predicates_tag>;
using Criteria = CGAL::Delaunay_mesh_criteria_2<CDT>;

// Refinement at angles above ~20.7 degrees is not guaranteed to end; a cap on inserted
// points keeps a hard input from hanging the program.
constexpr int REFINE_POINTS_PER_INPUT = 200;
constexpr int REFINE_POINTS_MIN = 100000;

void Log(char const* text)
{
    LogInfo(QString("Triangulation: ") + text, 1);
}

// Faces reachable from outside without crossing a constraint leave the domain; the others
// are in it. This is what a planar straight-line graph without hole marks describes.
void markDomain(CDT& cdt)
{
    for (auto f = cdt.all_faces_begin(); f != cdt.all_faces_end(); ++f)
        f->set_in_domain(true);
    std::vector<CDT::Face_handle> queue{cdt.infinite_face()};
    cdt.infinite_face()->set_in_domain(false);
    while (!queue.empty()) {
        CDT::Face_handle f = queue.back();
        queue.pop_back();
        for (int i = 0; i < 3; ++i) {
            CDT::Face_handle n = f->neighbor(i);
            if (n->is_in_domain() && !cdt.is_constrained(CDT::Edge(f, i))) {
                n->set_in_domain(false);
                queue.push_back(n);
            }
        }
    }
}

template <class Mesher>
void refine(CDT& cdt, double minAngleDegrees, int inputPoints)
{
    double s = std::sin(minAngleDegrees * 3.14159265358979323846 / 180.0);
    Mesher mesher(cdt, Criteria(s * s));
    mesher.init(true);
    int cap = std::max(REFINE_POINTS_MIN, REFINE_POINTS_PER_INPUT * inputPoints);
    int steps = 0;
    while (!mesher.is_refinement_done()) {
        if (++steps > cap) {
            Log("quality refinement stopped early: the input has angles too small for the bound.");
            break;
        }
        mesher.step_by_step_refine_mesh();
    }
}

} // namespace

// ---- switch strings ---------------------------------------------------------------------------

ComputationalGeometry::Options ComputationalGeometry::Options::FromSwitches(std::string const& switches)
{
    Options o;
    for (std::size_t i = 0; i < switches.size(); ++i) {
        char c = switches[i];
        if (c == 'p') {
            o.segments = true;
        } else if (c == 'Y') {
            o.keepBoundary = true;
        } else if (c == 'q') {
            char const* start = switches.c_str() + i + 1;
            char* end = nullptr;
            double angle = std::strtod(start, &end);
            o.minAngleDegrees = end == start ? 20.0 : angle;
            i += std::size_t(end - start);
        }
    }
    return o;
}

std::string ComputationalGeometry::Switches(bool segments, bool keepBoundary, bool quality)
{
    std::string s = "Q";
    if (segments)
        s += "p";
    if (keepBoundary)
        s += "Y";
    s += quality ? "q30" : (keepBoundary ? "" : "Y");
    return s + "z";
}

// ---- raw triangulation ------------------------------------------------------------------------

bool ComputationalGeometry::triangulate(double const* points, int n, int const* segments, int m, bool keepBoundary,
                                        bool quality, std::vector<double>& outPoints, std::vector<int>& triangles)
{
    return triangulate(points, n, segments, m, Options::FromSwitches(Switches(m > 0, keepBoundary, quality)),
                       outPoints, triangles);
}

bool ComputationalGeometry::triangulate(double const* points, int n, int const* segments, int m,
                                        Options const& options, std::vector<double>& outPoints,
                                        std::vector<int>& triangles)
{
    outPoints.clear();
    triangles.clear();
    if (n < 3 || !points) {
        Log("fewer than three points.");
        return false;
    }
    for (int i = 0; i < 2 * n; ++i)
        if (!std::isfinite(points[i])) {
            Log("a point is not a finite number.");
            return false;
        }
    if (options.segments && m > 0) {
        if (!segments) {
            Log("segments missing.");
            return false;
        }
        for (int i = 0; i < 2 * m; ++i)
            if (segments[i] < 0 || segments[i] >= n) {
                Log("a segment names a point that does not exist.");
                return false;
            }
    }
    try {
        CDT cdt;
        std::vector<CDT::Vertex_handle> handle(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i) {
            handle[std::size_t(i)] = cdt.insert(CDT::Point(points[2 * i], points[2 * i + 1]));
            if (handle[std::size_t(i)]->info().index < 0) // a repeated point keeps the first index
                handle[std::size_t(i)]->info().index = i;
        }
        if (cdt.dimension() < 2) {
            Log("the points lie on one line.");
            return false;
        }
        if (options.segments && m > 0) {
            for (int i = 0; i < m; ++i) {
                CDT::Vertex_handle a = handle[std::size_t(segments[2 * i])], b = handle[std::size_t(segments[2 * i + 1])];
                if (a != b)
                    cdt.insert_constraint(a, b);
            }
        } else {
            // The convex hull bounds the domain, and refinement treats it as a boundary.
            std::vector<std::pair<CDT::Vertex_handle, CDT::Vertex_handle>> hull;
            for (auto e = cdt.finite_edges_begin(); e != cdt.finite_edges_end(); ++e)
                if (cdt.is_infinite(e->first) || cdt.is_infinite(e->first->neighbor(e->second)))
                    hull.emplace_back(e->first->vertex(CDT::cw(e->second)), e->first->vertex(CDT::ccw(e->second)));
            for (auto const& h : hull)
                cdt.insert_constraint(h.first, h.second);
        }
        markDomain(cdt);
        if (options.minAngleDegrees > 0) {
            if (options.keepBoundary)
                refine<CGAL::Delaunay_mesher_no_edge_refinement_2<CDT, Criteria>>(cdt, options.minAngleDegrees, n);
            else
                refine<CGAL::Delaunay_mesher_2<CDT, Criteria>>(cdt, options.minAngleDegrees, n);
            markDomain(cdt);
        }
        outPoints.assign(points, points + 2 * n);
        int next = n;
        for (auto f = cdt.finite_faces_begin(); f != cdt.finite_faces_end(); ++f) {
            if (!f->is_in_domain())
                continue;
            for (int k = 0; k < 3; ++k) {
                PointIndex& p = f->vertex(k)->info();
                if (p.index < 0) {
                    p.index = next++;
                    outPoints.push_back(f->vertex(k)->point().x());
                    outPoints.push_back(f->vertex(k)->point().y());
                }
                triangles.push_back(p.index);
            }
        }
    } catch (std::exception const& e) {
        outPoints.clear();
        triangles.clear();
        LogInfo(QString("Triangulation: failed (%1).").arg(e.what()), 1);
        return false;
    }
    if (triangles.empty()) {
        Log("the outline encloses no area.");
        return false;
    }
    return true;
}

// ---- outline forms ----------------------------------------------------------------------------

bool ComputationalGeometry::triangulate(std::deque<Vector2<double>> const& outline, bool keepBoundary, bool quality,
                                        std::deque<Vector2<double>>& outPoints, std::vector<int>& triangles)
{
    int n = int(outline.size());
    std::vector<double> in(2 * outline.size());
    std::vector<int> segments(2 * outline.size());
    for (int i = 0; i < n; ++i) {
        in[std::size_t(2 * i)] = outline[std::size_t(i)].x;
        in[std::size_t(2 * i + 1)] = outline[std::size_t(i)].y;
        segments[std::size_t(2 * i)] = i;
        segments[std::size_t(2 * i + 1)] = (i + 1) % n;
    }
    std::vector<double> out;
    bool ok = triangulate(in.data(), n, segments.data(), n, keepBoundary, quality, out, triangles);
    outPoints.clear();
    for (std::size_t i = 0; i + 1 < out.size(); i += 2)
        outPoints.emplace_back(out[i], out[i + 1]);
    return ok;
}

bool ComputationalGeometry::triangulate(std::deque<Vector3<double>> const& outline, bool keepBoundary, bool quality,
                                        std::deque<Vector3<double>>& outPoints, std::vector<int>& triangles)
{
    outPoints.clear();
    triangles.clear();
    std::deque<Vector2<double>> flat, out;
    Matrix34<double> frame;
    planar(outline, flat, frame, 0.0001);
    if (flat.empty()) {
        Log("the points lie on one line.");
        return false;
    }
    // Wind the plane like the outline, so counter-clockwise triangles face its way.
    double area = 0;
    for (std::size_t i = 0; i < flat.size(); ++i) {
        Vector2<double> const& a = flat[i];
        Vector2<double> const& b = flat[(i + 1) % flat.size()];
        area += a.x * b.y - a.y * b.x;
    }
    if (!triangulate(flat, keepBoundary, quality, out, triangles))
        return false;
    if (area < 0)
        for (std::size_t t = 0; t < triangles.size(); t += 3)
            std::swap(triangles[t + 1], triangles[t + 2]);
    outPoints = outline;
    for (std::size_t i = outline.size(); i < out.size(); ++i)
        outPoints.push_back(Vector3<double>(out[i].x, out[i].y, 0) * frame);
    return true;
}

// ---- plane fit and outline cleaning -----------------------------------------------------------

bool ComputationalGeometry::planar(std::deque<Vector3<double>> const& points, std::deque<Vector2<double>>& projected,
                                   Matrix34<double>& frame, double tolerance)
{
    projected.clear();
    std::size_t n = points.size();
    if (n < 3)
        return false;
    Vector3<double> lo = points[0], hi = points[0], centre;
    for (auto const& p : points) {
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], p[k]);
            hi[k] = std::max(hi[k], p[k]);
        }
        centre += p;
    }
    centre = centre / double(n);
    double extent = std::max(hi.x - lo.x, std::max(hi.y - lo.y, hi.z - lo.z));
    if (!(extent > 0) || !std::isfinite(extent))
        return false;
    // Sums of products of centred coordinates, scaled by the extent to stay well conditioned.
    double xx = 0, xy = 0, xz = 0, yy = 0, yz = 0, zz = 0;
    for (auto const& p : points) {
        Vector3<double> d = (p - centre) / extent;
        xx += d.x * d.x;
        xy += d.x * d.y;
        xz += d.x * d.z;
        yy += d.y * d.y;
        yz += d.y * d.z;
        zz += d.z * d.z;
    }
    // The normal solves the 2x2 system of the two other axes; the axis whose system is best
    // conditioned (largest determinant) is the one the plane is most across.
    double dx = yy * zz - yz * yz, dy = xx * zz - xz * xz, dz = xx * yy - xy * xy;
    double best = std::max(dx, std::max(dy, dz));
    if (!(best > 1e-18 * double(n) * double(n)))
        return false; // every point on one line
    Vector3<double> normal;
    if (best == dx)
        normal = {dx, xz * yz - xy * zz, xy * yz - xz * yy};
    else if (best == dy)
        normal = {xz * yz - xy * zz, dy, xy * xz - yz * xx};
    else
        normal = {xy * yz - xz * yy, xy * xz - yz * xx, dz};
    normal = normal.normalize();
    // In-plane axes: the largest box axis, made orthogonal to the normal.
    int major = (hi.x - lo.x >= hi.y - lo.y && hi.x - lo.x >= hi.z - lo.z) ? 0 : (hi.y - lo.y >= hi.z - lo.z ? 1 : 2);
    Vector3<double> u;
    u[major] = 1;
    u = (u - normal * normal.dot(u));
    if (u.length2() < 1e-12) {
        u = Vector3<double>();
        u[(major + 1) % 3] = 1;
        u = u - normal * normal.dot(u);
    }
    u = u.normalize();
    Vector3<double> v = normal.cross(u);
    frame = Matrix34<double>(Matrix3<double>(u, v, normal), centre);
    bool flat = true;
    for (auto const& p : points) {
        Vector3<double> d = p - centre;
        projected.emplace_back(d.dot(u), d.dot(v));
        if (std::abs(d.dot(normal)) > tolerance)
            flat = false;
    }
    return flat;
}

void ComputationalGeometry::clean_degenerate(std::deque<Vector3<double>>& points, double tolerance)
{
    double t2 = tolerance * tolerance;
    bool changed = true;
    while (changed && points.size() >= 3) {
        changed = false;
        for (std::size_t i = 0; i < points.size() && points.size() >= 3; ++i) {
            std::size_t n = points.size();
            Vector3<double> const& a = points[(i + n - 1) % n];
            Vector3<double> const& b = points[i];
            Vector3<double> const& c = points[(i + 1) % n];
            bool repeated = (b - a).length2() <= t2;
            // A spike: b lies within tolerance of the line a-c, beyond c seen from a or
            // before a, so the outline goes out to b and comes back.
            Vector3<double> ac = c - a;
            double l2 = ac.length2();
            bool spike = false;
            if (!repeated && (b - a).dot(c - b) < 0) {
                double t = l2 > 0 ? (b - a).dot(ac) / l2 : 0;
                spike = ((a + ac * t) - b).length2() <= t2;
            }
            if (repeated || spike) {
                points.erase(points.begin() + std::ptrdiff_t(i));
                changed = true;
                --i;
            }
        }
    }
    if (points.size() < 3)
        points.clear();
}

} // namespace vel
