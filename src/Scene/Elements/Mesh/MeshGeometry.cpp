// Mesh factories: unit-sized shapes about the origin, initialised, wound outward.
//
// Index
// - helpers
// - flat shapes: Quad, NGon
// - solids: Tetrahedron, Box, CubeHandle, Octahedron, Icosahedron, Dodecahedron, Sphere
// - shapes of revolution: Cylinder, Cone, Capsule
// - Gear
#include "Scene/Elements/Mesh/MeshGeometry.h"

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
    PointList p = {{0, 0, h + r}};
    std::vector<int> ringStart;
    for (int j = 1; j <= 2 * rings; ++j) {
        int k = j <= rings ? j : j - 1; // the equator appears twice, at +h and -h
        double theta = PI / 2 * k / rings;
        float z = float(r * std::cos(theta)) + (j <= rings ? h : -h);
        ringStart.push_back(int(p.size()));
        PointList ring = circle(sides, float(r * std::sin(theta)), z);
        p.insert(p.end(), ring.begin(), ring.end());
    }
    int bottom = int(p.size());
    p.push_back({0, 0, -h - r});
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

} // namespace vel
