// Mesh factories: unit-sized shapes about the origin, initialised, wound outward.
//
// Index
// - helpers
// - flat shapes: Quad, NGon
// - solids: Tetrahedron, Box, CubeHandle, Octahedron, Icosahedron, Dodecahedron, Sphere
// - shapes of revolution: Cylinder, Cone, Capsule
// - Gear
// - Helix, Test, Trihedral, HalfCube, BiCapsule, Heightmap, FromPolygonTriangulation
#include "Scene/Elements/Mesh/MeshGeometry.h"

#include "Core/Communicate.h"
#include "Math/ComputationalGeometry.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <algorithm>
#include <cmath>

namespace vel {

namespace {

constexpr double PI = 3.14159265358979323846;

using PointList = std::vector<Vector3<float>>;
using FaceList = std::vector<std::vector<int>>;

struct Face {
    std::vector<int> indices;
    std::vector<bool> sharp; // per corner: the half-edge arriving at the corner; may be empty
};

std::unique_ptr<Mesh> build(PointList const& points, std::vector<Face> const& faces)
{
    auto m = std::make_unique<Mesh>();
    for (auto const& p : points)
        m->vertAdd(p);
    for (auto const& f : faces)
        m->faceFromIndices(f.indices, f.sharp);
    m->initialize(2);
    return m;
}

std::unique_ptr<Mesh> build(PointList const& points, FaceList const& faces, float sharpAngle)
{
    std::vector<Face> list;
    for (auto const& f : faces)
        list.push_back({f, {}});
    auto m = build(points, list);
    if (sharpAngle >= 0)
        m->makeSharp(sharpAngle);
    return m;
}

// Turns a face of a convex solid about the origin so that it faces outward.
std::vector<int> outward(PointList const& p, std::vector<int> idx)
{
    std::vector<Vector3<double>> ring;
    Vector3<double> centre;
    for (int i : idx) {
        ring.push_back(Vector3<double>(p[std::size_t(i)]));
        centre += ring.back();
    }
    if (NormalFromPolygon(ring.data(), int(ring.size())).dot(centre) < 0)
        std::reverse(idx.begin(), idx.end());
    return idx;
}

// All triples of points whose pairwise distances equal `edge`: the faces of a deltahedron.
FaceList trianglesOfLength(PointList const& p, float edge)
{
    FaceList faces;
    auto near = [&](int a, int b) {
        return std::abs((p[std::size_t(a)] - p[std::size_t(b)]).length() - edge) < 1e-3f * edge;
    };
    int n = int(p.size());
    for (int i = 0; i < n; ++i)
        for (int j = i + 1; j < n; ++j)
            for (int k = j + 1; k < n; ++k)
                if (near(i, j) && near(j, k) && near(i, k))
                    faces.push_back(outward(p, {i, j, k}));
    return faces;
}

PointList scaledTo(PointList p, float radius)
{
    for (auto& v : p)
        v = v.normalize() * radius;
    return p;
}

PointList circle(int sides, float radius, float z, float phase = 0)
{
    PointList p;
    for (int i = 0; i < sides; ++i) {
        double a = 2 * PI * i / sides + phase;
        p.push_back({float(std::cos(a)) * radius, float(std::sin(a)) * radius, z});
    }
    return p;
}

// A closed surface of revolution about z from a profile of (radius, z) running from the top
// pole to the bottom pole; the poles (radius 0) become single vertices.
std::unique_ptr<Mesh> revolve(std::vector<std::pair<float, float>> const& profile, int sides)
{
    PointList p = {{0, 0, profile.front().second}};
    std::vector<int> ringStart;
    for (std::size_t k = 1; k + 1 < profile.size(); ++k) {
        ringStart.push_back(int(p.size()));
        PointList ring = circle(sides, profile[k].first, profile[k].second);
        p.insert(p.end(), ring.begin(), ring.end());
    }
    int bottom = int(p.size());
    p.push_back({0, 0, profile.back().second});
    FaceList f;
    for (int i = 0; i < sides; ++i) {
        int j = (i + 1) % sides;
        f.push_back({0, ringStart[0] + i, ringStart[0] + j});
        for (std::size_t k = 0; k + 1 < ringStart.size(); ++k) {
            int u = ringStart[k], l = ringStart[k + 1];
            f.push_back({l + i, l + j, u + j, u + i});
        }
        int l = ringStart.back();
        f.push_back({bottom, l + j, l + i});
    }
    return build(p, f, -1);
}

// Orients each face of a convex solid away from the solid's centroid.
FaceList outwardAboutCentroid(PointList p, FaceList faces)
{
    Vector3<float> c;
    for (auto const& v : p)
        c += v;
    c = c / float(p.size());
    for (auto& v : p)
        v -= c;
    for (auto& f : faces)
        f = outward(p, f);
    return faces;
}

} // namespace

// ---- flat shapes ------------------------------------------------------------------------------

std::unique_ptr<Mesh> Mesh::Quad()
{
    return NGon(4);
}

std::unique_ptr<Mesh> Mesh::NGon(int sides)
{
    sides = std::max(sides, 3);
    PointList p = circle(sides, 0.5f, 0, sides == 4 ? float(PI / 4) : 0);
    if (sides == 4)
        p = {{-0.5f, -0.5f, 0}, {0.5f, -0.5f, 0}, {0.5f, 0.5f, 0}, {-0.5f, 0.5f, 0}};
    std::vector<int> ring((std::size_t)sides);
    for (int i = 0; i < sides; ++i)
        ring[std::size_t(i)] = i;
    return build(p, {{ring, {}}});
}

// ---- solids -----------------------------------------------------------------------------------

std::unique_ptr<Mesh> Mesh::Tetrahedron()
{
    PointList p = scaledTo({{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}}, 0.5f);
    return build(p, trianglesOfLength(p, (p[0] - p[1]).length()), 30);
}

std::unique_ptr<Mesh> Mesh::Box(int sharp)
{
    auto m = CubeHandle();
    if (sharp)
        m->makeSharp(30);
    return m;
}

std::unique_ptr<Mesh> Mesh::CubeHandle()
{
    PointList p;
    for (int i = 0; i < 8; ++i)
        p.push_back({i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.5f : -0.5f});
    FaceList f = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (auto& face : f)
        face = outward(p, face);
    return build(p, f, -1);
}

std::unique_ptr<Mesh> Mesh::Octahedron()
{
    PointList p = {{0.5f, 0, 0}, {-0.5f, 0, 0}, {0, 0.5f, 0}, {0, -0.5f, 0}, {0, 0, 0.5f}, {0, 0, -0.5f}};
    return build(p, trianglesOfLength(p, std::sqrt(0.5f)), 30);
}

static PointList icosahedronPoints()
{
    float g = float((1 + std::sqrt(5.0)) / 2);
    PointList p;
    for (int i = 0; i < 4; ++i) {
        float a = i & 1 ? -1.f : 1.f, b = i & 2 ? -g : g;
        p.push_back({0, a, b});
        p.push_back({a, b, 0});
        p.push_back({b, 0, a});
    }
    return scaledTo(p, 0.5f);
}

std::unique_ptr<Mesh> Mesh::Icosahedron()
{
    PointList p = icosahedronPoints();
    float edge = 1e9f;
    for (std::size_t i = 1; i < p.size(); ++i)
        edge = std::min(edge, (p[0] - p[i]).length());
    return build(p, trianglesOfLength(p, edge), 30);
}

// The dual of the icosahedron: a vertex per triangle, a pentagon per icosahedron vertex.
std::unique_ptr<Mesh> Mesh::Dodecahedron()
{
    auto ico = Icosahedron();
    PointList p;
    for (std::size_t f = 0; f < ico->faces.size(); ++f)
        p.push_back(ico->faceCenter(int(f)));
    p = scaledTo(p, 0.5f);
    FaceList faces;
    for (std::size_t v = 0; v < ico->verts.size(); ++v) {
        std::vector<int> ring;
        for (int e : ico->vertInEdges(int(v)))
            ring.push_back(ico->edges[std::size_t(e)].face);
        faces.push_back(outward(p, ring));
    }
    return build(p, faces, 30);
}

std::unique_ptr<Mesh> Mesh::Sphere(std::unique_ptr<Mesh> base, int levels, int dataType, float size, bool smooth)
{
    std::unique_ptr<Mesh> m = base ? std::move(base) : CubeHandle();
    m->makeSmooth();
    m->center = Vector3<float>();
    m->scale = size;
    m->spherize();
    for (int i = 0; i < levels; ++i) {
        m->subdivide(smooth);
        m->center = Vector3<float>();
        m->scale = size;
        m->spherize();
    }
    m->setDataType(dataType);
    m->calculateSize(2);
    return m;
}

// ---- shapes of revolution (axis z) ------------------------------------------------------------

std::unique_ptr<Mesh> Mesh::Cylinder(int sides)
{
    sides = std::max(sides, 3);
    PointList p = circle(sides, 0.5f, -0.5f);
    PointList top = circle(sides, 0.5f, 0.5f);
    p.insert(p.end(), top.begin(), top.end());
    std::vector<Face> f;
    std::vector<int> bottomCap, topCap;
    for (int i = 0; i < sides; ++i) {
        int j = (i + 1) % sides;
        // Corners: b(i) <- t(i) (seam, smooth), b(j) <- b(i) (rim), t(j) <- b(j), t(i) <- t(j) (rim).
        f.push_back({{i, j, sides + j, sides + i}, {false, true, false, true}});
        bottomCap.push_back(sides - 1 - i);
        topCap.push_back(sides + i);
    }
    f.push_back({bottomCap, std::vector<bool>(std::size_t(sides), true)});
    f.push_back({topCap, std::vector<bool>(std::size_t(sides), true)});
    return build(p, f);
}

std::unique_ptr<Mesh> Mesh::Cone(int sides)
{
    sides = std::max(sides, 3);
    PointList p = circle(sides, 0.5f, -0.5f);
    p.push_back({0, 0, 0.5f});
    std::vector<Face> f;
    std::vector<int> base;
    for (int i = 0; i < sides; ++i) {
        f.push_back({{i, (i + 1) % sides, sides}, {false, true, false}});
        base.push_back(sides - 1 - i);
    }
    f.push_back({base, std::vector<bool>(std::size_t(sides), true)});
    return build(p, f);
}

// Radius 0.25 and a straight part of length 0.5: the capsule fills the unit box along z.
std::unique_ptr<Mesh> Mesh::Capsule(int sides, int rings)
{
    sides = std::max(sides, 3);
    rings = std::max(rings, 1);
    float r = 0.25f, h = 0.25f;
    std::vector<std::pair<float, float>> profile = {{0.f, h + r}};
    for (int j = 1; j <= 2 * rings; ++j) {
        int k = j <= rings ? j : j - 1; // the equator appears twice, at +h and -h
        double theta = PI / 2 * k / rings;
        profile.push_back({float(r * std::sin(theta)), float(r * std::cos(theta)) + (j <= rings ? h : -h)});
    }
    profile.push_back({0.f, -h - r});
    return revolve(profile, sides);
}

// ---- Gear -------------------------------------------------------------------------------------

// Per step i: hub H (r0), foot F (r1) and tip T (r2) on top and bottom. Tips lean a quarter
// step ahead on odd steps and behind on even ones, so an odd step and the next even one lean
// together: that pair is a tooth (foot, tip, tip, foot); the others are gaps on the foot ring.
std::unique_ptr<Mesh> Mesh::Gear(int teeth, float r0, float r1, float r2, float halfWidth, float bevel)
{
    teeth = std::max(teeth, 2);
    float t = float(std::tan(double(bevel) * PI / 180.0)) * halfWidth;
    int n = 2 * teeth;
    float s = float(2 * PI / n);
    PointList p;
    float a = 0;
    for (int i = 0; i < n; ++i, a += s) {
        float b = a + float(2 * (i & 1) - 1) * s * 0.25f;
        for (float side : {1.f, -1.f}) {
            float d = side * t;
            p.push_back({std::cos(a) * (r0 + d), std::sin(a) * (r0 + d), side * halfWidth});
            p.push_back({std::cos(a) * (r1 + d), std::sin(a) * (r1 + d), side * halfWidth});
            p.push_back({std::cos(b) * (r2 + d), std::sin(b) * (r2 + d), side * halfWidth});
        }
    }
    auto H = [n](int i, int bottom) { return ((i % n) * 6) + bottom * 3; };
    auto F = [&](int i, int bottom) { return H(i, bottom) + 1; };
    auto T = [&](int i, int bottom) { return H(i, bottom) + 2; };
    auto reversed = [](std::vector<int> v) {
        std::reverse(v.begin(), v.end());
        return v;
    };
    FaceList f;
    for (int i = 0; i < n; ++i) {
        int j = i + 1;
        bool tooth = (i & 1) == 1;
        f.push_back({H(i, 0), F(i, 0), F(j, 0), H(j, 0)});               // hub ring, top
        f.push_back(reversed({H(i, 1), F(i, 1), F(j, 1), H(j, 1)}));     // hub ring, bottom
        f.push_back({H(j, 1), H(i, 1), H(i, 0), H(j, 0)});               // inner wall
        if (tooth) {
            f.push_back({F(i, 0), T(i, 0), T(j, 0), F(j, 0)});           // tooth, top
            f.push_back(reversed({F(i, 1), T(i, 1), T(j, 1), F(j, 1)})); // tooth, bottom
            f.push_back({T(i, 1), T(j, 1), T(j, 0), T(i, 0)});           // tip wall
            f.push_back({F(i, 0), F(i, 1), T(i, 1), T(i, 0)});           // leading flank
            f.push_back({F(j, 0), T(j, 0), T(j, 1), F(j, 1)});           // trailing flank
        } else {
            f.push_back({F(i, 1), F(j, 1), F(j, 0), F(i, 0)});           // foot wall in the gap
        }
    }
    return build(p, f, 30);
}

// ---- more shapes ------------------------------------------------------------------------------

// The centre line climbs from z = -0.5 + radius to 0.5 - radius on a circle of 0.5 - radius.
// Each ring lies across the tangent t, in the frame (N radial, B = t x N), so that rings run
// counter-clockwise about t and the side quads face outward.
std::unique_ptr<Mesh> Mesh::Helix(int sides, int steps, float turns, float radius)
{
    sides = std::max(sides, 3);
    steps = std::max(steps, 3);
    turns = std::max(turns, 0.1f);
    radius = std::min(std::max(radius, 0.01f), 0.2f);
    int rings = std::max(2, int(std::ceil(double(steps) * turns)) + 1);
    double R = 0.5 - radius, height = 1.0 - 2.0 * radius;
    double sweep = 2 * PI * turns;
    PointList p;
    for (int i = 0; i < rings; ++i) {
        double s = double(i) / (rings - 1), a = s * sweep;
        Vector3<double> c(R * std::cos(a), R * std::sin(a), -0.5 + radius + s * height);
        Vector3<double> t = Vector3<double>(-R * std::sin(a) * sweep, R * std::cos(a) * sweep, height).normalize();
        Vector3<double> N(std::cos(a), std::sin(a), 0);
        N = (N - t * t.dot(N)).normalize();
        Vector3<double> B = t.cross(N);
        for (int k = 0; k < sides; ++k) {
            double phi = 2 * PI * k / sides;
            p.push_back(Vector3<float>(c + (N * std::cos(phi) + B * std::sin(phi)) * double(radius)));
        }
    }
    std::vector<Face> f;
    std::vector<int> first, last;
    for (int i = 0; i + 1 < rings; ++i)
        for (int k = 0; k < sides; ++k) {
            int l = (k + 1) % sides;
            f.push_back({{i * sides + k, i * sides + l, (i + 1) * sides + l, (i + 1) * sides + k}, {}});
        }
    for (int k = 0; k < sides; ++k) {
        first.push_back(sides - 1 - k);
        last.push_back((rings - 1) * sides + k);
    }
    std::vector<bool> rim(std::size_t(sides), true);
    f.push_back({first, rim});
    f.push_back({last, rim});
    return build(p, f);
}

// A box (z from -0.5 to 0.3) under a low pyramid roof: at 45 degrees the walls, the floor and
// the eaves are sharp, the roof is one smooth patch, and the box corners are anchors.
std::unique_ptr<Mesh> Mesh::Test()
{
    PointList p;
    for (int i = 0; i < 8; ++i)
        p.push_back({i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.3f : -0.5f});
    p.push_back({0, 0, 0.5f});
    FaceList f = {{0, 2, 3, 1}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5},
                  {4, 5, 8}, {5, 7, 8}, {7, 6, 8}, {6, 4, 8}};
    return build(p, outwardAboutCentroid(p, f), 45);
}

std::unique_ptr<Mesh> Mesh::Trihedral()
{
    PointList p = {{-0.5f, -0.5f, -0.5f}, {0.5f, -0.5f, -0.5f}, {-0.5f, 0.5f, -0.5f}, {-0.5f, -0.5f, 0.5f},
                   {0.5f, 0.5f, -0.5f},   {0.5f, -0.5f, 0.5f},  {-0.5f, 0.5f, 0.5f}};
    FaceList f = {outward(p, {0, 1, 4, 2}), outward(p, {0, 3, 5, 1}), outward(p, {0, 2, 6, 3})};
    return build(p, f, 30);
}

std::unique_ptr<Mesh> Mesh::HalfCube()
{
    PointList p = {{-0.5f, -0.5f, -0.5f}, {0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, -0.5f},
                   {-0.5f, 0.5f, -0.5f},  {-0.5f, -0.5f, 0.5f}, {-0.5f, 0.5f, 0.5f}};
    FaceList f = {{0, 1, 2, 3}, {0, 3, 5, 4}, {1, 4, 5, 2}, {0, 1, 4}, {3, 2, 5}};
    return build(p, outwardAboutCentroid(p, f), 30);
}

std::unique_ptr<Mesh> Mesh::BiCapsule(int sides, int rings, float r0, float r1)
{
    sides = std::max(sides, 3);
    rings = std::max(rings, 1);
    r0 = std::min(std::max(r0, 0.01f), 0.5f);
    r1 = std::min(std::max(r1, 0.01f), 0.5f);
    if (r0 + r1 > 0.9f) { // keep the two centres apart, so the equators stay distinct
        float k = 0.9f / (r0 + r1);
        r0 *= k;
        r1 *= k;
    }
    float z1 = 0.5f - r1, z0 = -0.5f + r0;
    std::vector<std::pair<float, float>> profile;
    for (int k = 0; k <= rings; ++k) {
        double theta = PI / 2 * k / rings;
        profile.push_back({k == 0 ? 0.f : float(r1 * std::sin(theta)), float(z1 + r1 * std::cos(theta))});
    }
    for (int k = rings; k <= 2 * rings; ++k) {
        double theta = PI / 2 * k / rings;
        profile.push_back({k == 2 * rings ? 0.f : float(r0 * std::sin(theta)), float(z0 + r0 * std::cos(theta))});
    }
    return revolve(profile, sides);
}

std::unique_ptr<Mesh> Mesh::Heightmap(std::vector<float> const& heights, int width, int depth)
{
    if (width < 2 || depth < 2 || std::size_t(width) * std::size_t(depth) != heights.size()) {
        LogInfo(QString("Heightmap: %1 heights do not fill a grid of %2 x %3 (at least 2 x 2).")
                    .arg(heights.size())
                    .arg(width)
                    .arg(depth),
                1);
        return std::make_unique<Mesh>();
    }
    PointList p;
    p.reserve(heights.size());
    int bad = 0;
    for (int j = 0; j < depth; ++j)
        for (int i = 0; i < width; ++i) {
            float h = heights[std::size_t(j) * std::size_t(width) + std::size_t(i)];
            if (!std::isfinite(h)) {
                h = 0;
                ++bad;
            }
            p.push_back({float(i) / float(width - 1) - 0.5f, float(j) / float(depth - 1) - 0.5f, h});
        }
    if (bad > 0)
        LogInfo(QString("Heightmap: %1 heights are not numbers; they read as 0.").arg(bad), 1);
    FaceList f;
    for (int j = 0; j + 1 < depth; ++j)
        for (int i = 0; i + 1 < width; ++i) {
            int a = j * width + i;
            f.push_back({a, a + 1, a + width + 1, a + width});
        }
    return build(p, f, -1);
}

std::unique_ptr<Mesh> Mesh::FromPolygonTriangulation(std::deque<Vector3<double>> points, bool quality,
                                                     bool keepBoundary, bool flip)
{
    auto m = std::make_unique<Mesh>();
    ComputationalGeometry::clean_degenerate(points, 0.0001);
    if (points.size() < 3) {
        LogInfo("Polygon: the outline has fewer than three distinct points.", 1);
        return m;
    }
    std::deque<Vector3<double>> out;
    std::vector<int> triangles;
    if (!ComputationalGeometry::triangulate(points, keepBoundary, quality, out, triangles))
        return m;
    for (auto const& q : out)
        m->vertAdd(Vector3<float>(q));
    for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
        int a = triangles[t], b = triangles[t + 1], c = triangles[t + 2];
        if (flip)
            std::swap(b, c);
        m->faceFromIndices({a, b, c});
    }
    m->initialize(0);
    return m;
}

} // namespace vel
