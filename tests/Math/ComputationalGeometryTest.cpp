// Triangulation of outlines: the triangles tile the outline exactly (area, winding, boundary
// kept or refined), refinement meets its angle bound, and bad input is refused with a log
// line instead of a crash.
#include "Math/ComputationalGeometry.h"

#include "Scene/Elements/Mesh/MeshFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace vel {
namespace {

using CG = ComputationalGeometry;

double Area(std::vector<double> const& p, int a, int b, int c)
{
    return 0.5 * ((p[2 * b] - p[2 * a]) * (p[2 * c + 1] - p[2 * a + 1]) -
                  (p[2 * c] - p[2 * a]) * (p[2 * b + 1] - p[2 * a + 1]));
}

double PolygonArea(std::vector<double> const& p)
{
    double s = 0;
    int n = int(p.size() / 2);
    for (int i = 0; i < n; ++i) {
        int j = (i + 1) % n;
        s += p[2 * i] * p[2 * j + 1] - p[2 * j] * p[2 * i + 1];
    }
    return 0.5 * s;
}

double MinAngleDegrees(std::vector<double> const& p, int a, int b, int c)
{
    int v[3] = {a, b, c};
    double best = 180;
    for (int k = 0; k < 3; ++k) {
        int o = v[k], u = v[(k + 1) % 3], w = v[(k + 2) % 3];
        double ux = p[2 * u] - p[2 * o], uy = p[2 * u + 1] - p[2 * o + 1];
        double wx = p[2 * w] - p[2 * o], wy = p[2 * w + 1] - p[2 * o + 1];
        double cosine = (ux * wx + uy * wy) / std::sqrt((ux * ux + uy * uy) * (wx * wx + wy * wy));
        best = std::min(best, std::acos(std::max(-1.0, std::min(1.0, cosine))) * 180 / M_PI);
    }
    return best;
}

// Edges used by one triangle only: the boundary of the triangulated region.
int BoundaryEdges(std::vector<int> const& t)
{
    std::map<std::pair<int, int>, int> uses;
    for (std::size_t i = 0; i < t.size(); i += 3)
        for (int k = 0; k < 3; ++k) {
            int a = t[i + std::size_t(k)], b = t[i + std::size_t((k + 1) % 3)];
            ++uses[{std::min(a, b), std::max(a, b)}];
        }
    return int(std::count_if(uses.begin(), uses.end(), [](auto const& u) { return u.second == 1; }));
}

std::vector<int> Ring(int n)
{
    std::vector<int> s;
    for (int i = 0; i < n; ++i)
        s.insert(s.end(), {i, (i + 1) % n});
    return s;
}

struct Outline {
    char const* name;
    std::vector<double> points; // counter-clockwise
};

std::vector<Outline> Outlines()
{
    return {
        {"square", {0, 0, 1, 0, 1, 1, 0, 1}},
        {"L shape", {0, 0, 2, 0, 2, 1, 1, 1, 1, 2, 0, 2}},
        {"collinear points", {0, 0, 0.5, 0, 1, 0, 1, 0.5, 1, 1, 0, 1}},
        {"thin comb", {0, 0, 5, 0, 5, 1, 4, 1, 4, 0.2, 3, 0.2, 3, 1, 0, 1}},
    };
}

TEST(ComputationalGeometry, OutlinesAreTiledExactly)
{
    for (auto const& o : Outlines())
        for (bool quality : {false, true})
            for (bool keepBoundary : {false, true}) {
                SCOPED_TRACE(std::string(o.name) + (quality ? " quality" : "") + (keepBoundary ? " Y" : ""));
                int n = int(o.points.size() / 2);
                std::vector<int> seg = Ring(n);
                std::vector<double> out;
                std::vector<int> tri;
                ASSERT_TRUE(CG::triangulate(o.points.data(), n, seg.data(), n, keepBoundary, quality, out, tri));
                ASSERT_GE(out.size(), o.points.size());
                EXPECT_TRUE(std::equal(o.points.begin(), o.points.end(), out.begin())) << "input points come first";
                double area = 0;
                for (std::size_t t = 0; t < tri.size(); t += 3) {
                    double a = Area(out, tri[t], tri[t + 1], tri[t + 2]);
                    EXPECT_GT(a, 0) << "counter-clockwise";
                    area += a;
                    if (quality && !keepBoundary) {
                        EXPECT_GE(MinAngleDegrees(out, tri[t], tri[t + 1], tri[t + 2]), 30 - 1e-6);
                    }
                }
                EXPECT_NEAR(area, PolygonArea(o.points), 1e-9);
                if (!quality) {
                    EXPECT_EQ(tri.size(), 3u * std::size_t(n - 2)) << "no point added";
                }
                if (keepBoundary) {
                    EXPECT_EQ(BoundaryEdges(tri), n) << "the boundary gained a point";
                }
                if (quality && !keepBoundary && std::string(o.name) == "thin comb") {
                    EXPECT_GT(out.size(), o.points.size()) << "refinement adds points";
                }
            }
}

TEST(ComputationalGeometry, WithoutSegmentsTheHullIsTriangulated)
{
    std::vector<double> p = {0, 0, 2, 0, 2, 2, 0, 2, 1, 1.5};
    std::vector<double> out;
    std::vector<int> tri;
    ASSERT_TRUE(CG::triangulate(p.data(), 5, nullptr, 0, false, false, out, tri));
    EXPECT_EQ(tri.size(), 3u * 4u);
}

TEST(ComputationalGeometry, BadInputIsRefusedWithALogLine)
{
    double nan = std::nan("");
    struct Case {
        char const* name;
        std::vector<double> points;
        std::vector<int> segments;
    } cases[] = {
        {"collinear", {0, 0, 1, 1, 2, 2, 3, 3}, Ring(4)},
        {"repeated", {1, 1, 1, 1, 1, 1}, Ring(3)},
        {"two points", {0, 0, 1, 0}, {0, 1}},
        {"not a number", {0, 0, 1, 0, nan, 1}, Ring(3)},
        {"segment out of range", {0, 0, 1, 0, 0, 1}, {0, 1, 1, 7}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        test::LogCapture log;
        std::vector<double> out;
        std::vector<int> tri;
        EXPECT_FALSE(CG::triangulate(c.points.data(), int(c.points.size() / 2), c.segments.data(),
                                     int(c.segments.size() / 2), false, true, out, tri));
        EXPECT_TRUE(tri.empty());
        ASSERT_EQ(log.entries.size(), 1u);
        EXPECT_TRUE(log.entries[0].first.startsWith("Triangulation: ")) << log.all().toStdString();
    }
}

TEST(ComputationalGeometry, SwitchStringsBecomeOptions)
{
    struct Case {
        std::string switches;
        bool segments, keepBoundary;
        double angle;
    } cases[] = {
        {CG::Switches(true, false, true), true, false, 30}, {CG::Switches(true, true, false), true, true, 0},
        {CG::Switches(false, false, false), false, true, 0}, {"pq", true, false, 20},
        {"Qq33.5Yz", false, true, 33.5},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.switches);
        auto o = CG::Options::FromSwitches(c.switches);
        EXPECT_EQ(o.segments, c.segments);
        EXPECT_EQ(o.keepBoundary, c.keepBoundary);
        EXPECT_DOUBLE_EQ(o.minAngleDegrees, c.angle);
    }
}

TEST(ComputationalGeometry, PlaneFitRoundTripsAndJudgesFlatness)
{
    Vector3<double> u = Vector3<double>(1, 2, 0.5).normalize(), v = Vector3<double>(-2, 1, 0).normalize();
    v = (v - u * u.dot(v)).normalize();
    Vector3<double> origin(3, -1, 2);
    std::deque<Vector3<double>> points;
    for (auto [a, b] : {std::pair{0., 0.}, {2., 0.}, {2., 1.}, {0.5, 3.}, {-1., 1.}})
        points.push_back(origin + u * a + v * b);
    std::deque<Vector2<double>> flat;
    Matrix34<double> frame;
    ASSERT_TRUE(CG::planar(points, flat, frame, 1e-4));
    ASSERT_EQ(flat.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        EXPECT_LT((Vector3<double>(flat[i].x, flat[i].y, 0) * frame - points[i]).length(), 1e-9);
    points[2] = points[2] + u.cross(v) * 0.01;
    EXPECT_FALSE(CG::planar(points, flat, frame, 1e-4));
    std::deque<Vector3<double>> line = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}};
    EXPECT_FALSE(CG::planar(line, flat, frame, 1e-4));
    EXPECT_TRUE(flat.empty());
}

TEST(ComputationalGeometry, CleaningDropsRepeatsAndSpikesOnly)
{
    struct Case {
        char const* name;
        std::deque<Vector3<double>> in;
        std::size_t kept;
    } cases[] = {
        {"repeat", {{0, 0, 0}, {1, 0, 0}, {1, 0, 0.00001}, {1, 1, 0}, {0, 0, 0}}, 3},
        {"spike", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 3, 0}, {1, 1.5, 0}, {0, 1, 0}}, 5},
        {"collinear kept", {{0, 0, 0}, {0.5, 0, 0}, {1, 0, 0}, {1, 1, 0}}, 4},
        {"nothing left", {{0, 0, 0}, {0, 0, 0}, {1, 0, 0}}, 0},
    };
    for (auto c : cases) {
        SCOPED_TRACE(c.name);
        CG::clean_degenerate(c.in, 0.0001);
        EXPECT_EQ(c.in.size(), c.kept);
    }
}

} // namespace
} // namespace vel
