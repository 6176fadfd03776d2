// Subdivision, smoothing, welding and local edits: each test checks the half-edge invariants
// after every operation, and what the operation promises about geometry.
#include "Scene/Elements/Mesh/Mesh.h"

#include "MeshFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace vel {
namespace {

using test::LogCapture;

// The largest |coordinate|: 0.5 on the surface of the cube of side 1.
float CubeExtent(Vector3<float> p)
{
    return std::max(std::abs(p.x), std::max(std::abs(p.y), std::abs(p.z)));
}

TEST(MeshSubdivide, SharpCubeStaysFlatAndKeepsItsCorners)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    // Two levels: sharp lines stay straight, so every face stays flat.
    for (int level = 1; level <= 2; ++level) {
        m->subdivide(true);
        ASSERT_MESH_VALID(*m);
        for (std::size_t v = 0; v < m->verts.size(); ++v)
            EXPECT_FLOAT_EQ(CubeExtent(m->verts[v].position), 0.5f) << "level " << level << " vertex " << v;
        if (level == 1) {
            EXPECT_EQ(m->faces.size(), 24u);
            EXPECT_EQ(m->verts.size(), 8u + 12u + 6u);
            EXPECT_EQ(test::SharpEdgeCount(*m), 24);
        }
    }
    for (int v = 0; v < 8; ++v)
        EXPECT_EQ(m->verts[v].position, test::ClosedCube()->verts[v].position);
}

// Without smoothing the old vertices stay; a smooth edge's point is the mean of its ends and
// of its two face centres, so on a cube its sorted |coordinates| are (0, 3/8, 3/8).
TEST(MeshSubdivide, WithoutSmoothingOldVerticesStayAndEdgePointsAverageFaceCentres)
{
    auto m = test::ClosedCube();
    auto before = *m;
    m->subdivide(false);
    ASSERT_MESH_VALID(*m);
    for (std::size_t v = 0; v < before.verts.size(); ++v)
        EXPECT_EQ(m->verts[v].position, before.verts[v].position);
    std::map<std::vector<float>, int> kinds;
    for (std::size_t v = 0; v < m->verts.size(); ++v) {
        Vector3<float> p = m->verts[v].position;
        std::vector<float> a = {std::abs(p.x), std::abs(p.y), std::abs(p.z)};
        std::sort(a.begin(), a.end());
        ++kinds[a];
    }
    EXPECT_EQ(kinds, (std::map<std::vector<float>, int>{{{0.5f, 0.5f, 0.5f}, 8}, {{0, 0, 0.5f}, 6}, {{0, 0.375f, 0.375f}, 12}}));
}

// Smoothing moves an old vertex halfway to its smoothed place, unless it is an anchor.
TEST(MeshSubdivide, AnchorsStayWhenSmoothing)
{
    for (bool anchor : {false, true}) {
        auto m = test::QuadGrid(2);
        m->verts[1].position = {0.5f, 0.2f, 0.4f}; // a rim vertex pulled off the rim
        if (anchor)
            m->verts[1].set(MeshVert::ANCHOR);
        m->subdivide(true);
        ASSERT_MESH_VALID(*m);
        // Unanchored, it goes halfway to the mean of its new rim neighbours (0.5, 0.1, 0.2).
        EXPECT_EQ(m->verts[1].position, anchor ? Vector3<float>(0.5f, 0.2f, 0.4f) : Vector3<float>(0.5f, 0.15f, 0.3f));
    }
}

TEST(MeshSubdivide, QuadBesideATriangleSharesOneEdgeVertex)
{
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0.5f, 0}}, {{0, 1, 2, 3}, {1, 4, 2}});
    m->subdivide(false);
    ASSERT_MESH_VALID(*m);
    // 5 old, 1 quad centre, 6 edge vertices: the shared edge has one.
    EXPECT_EQ(m->verts.size(), 12u);
    EXPECT_EQ(m->faces.size(), 8u);
    EXPECT_EQ(m->components, 1);
    EXPECT_EQ(test::BorderCount(*m), 2 * 5);
}

TEST(MeshSubdivide, MaterialFormAveragesCorners)
{
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
    m->setDataType(1);
    Pbr black;
    for (int i = 0; i < 3; ++i)
        black.setColor(i, 0);
    int e0 = m->faces[0].edge; // arrives at vertex 0
    m->materials[e0] = black;
    m->subdivide(false);
    ASSERT_MESH_VALID(*m);
    ASSERT_TRUE(m->hasPbr());
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        MeshEdge const& e = m->edges[i];
        Vector3<float> p = m->verts[e.v[1]].position;
        int red = m->materials[i].color(0);
        if (p == Vector3<float>(0, 0, 0))
            EXPECT_EQ(red, 0);
        else if (p == Vector3<float>(0.5f, 0, 0) || p == Vector3<float>(0, 0.5f, 0))
            EXPECT_NEAR(red, 8191 / 2, 1);
        else
            EXPECT_EQ(red, 8191);
    }
}

TEST(MeshSubdivide, EmptyMeshDoesNothing)
{
    Mesh m;
    m.subdivide(true);
    EXPECT_EQ(m.verts.size(), 0u);
    EXPECT_EQ(m.weld(0), 0);
}

TEST(MeshSmooth, SharpVerticesFollowTheirLinesAndAnchorsStay)
{
    auto box = test::ClosedCube();
    box->makeSharp(30);
    box->subdivide(false);
    auto before = *box;
    box->smoothAll(1.0f);
    ASSERT_MESH_VALID(*box);
    for (std::size_t v = 0; v < box->verts.size(); ++v) {
        Vector3<float> p = box->verts[v].position;
        EXPECT_FLOAT_EQ(CubeExtent(p), 0.5f);
        if (before.verts[v].is(MeshVert::ANCHOR)) {
            EXPECT_EQ(p, before.verts[v].position);
        }
    }
    EXPECT_TRUE(box->geometryChanged);
}

// An inner vertex goes to the mean of its ring, a rim vertex to the mean of its two rim
// neighbours: open meshes lose jagged rims too.
TEST(MeshSmooth, InnerAndRimVerticesGoToTheMeanOfTheirNeighbours)
{
    struct Case {
        int vertex;
        Vector3<float> pulled, smoothed;
    } cases[] = {{4, {0.5f, 0.5f, 1}, {0.5f, 0.5f, 0}}, {1, {0.5f, 0.2f, 0.4f}, {0.5f, 0, 0}}, {5, {0.8f, 0.5f, -1}, {1, 0.5f, 0}}};
    for (Case const& c : cases) {
        auto m = test::QuadGrid(2);
        m->verts[c.vertex].position = c.pulled;
        EXPECT_EQ(m->vertSmoothPosition(m->verts[c.vertex]), c.smoothed) << c.vertex;
        m->smoothAll(0.5f);
        EXPECT_EQ(m->verts[c.vertex].position, (c.pulled + c.smoothed) * 0.5f) << c.vertex;
        ASSERT_MESH_VALID(*m);
    }
}

TEST(MeshSmooth, SpherizePutsEveryVertexOnTheSphere)
{
    auto m = test::ClosedCube();
    m->initialize(2);
    m->subdivide(true);
    m->spherize();
    for (std::size_t v = 0; v < m->verts.size(); ++v)
        EXPECT_NEAR((m->verts[v].position - m->center).length(), 0.5f * m->scale, 1e-5f);
}

// Every face of `m` on vertices of its own, each copy moved by offset(face, corner).
std::unique_ptr<Mesh> Separated(Mesh const& m, Vector3<float> (*offset)(int, int))
{
    std::vector<Vector3<float>> p;
    std::vector<std::vector<int>> f;
    for (std::size_t face = 0; face < m.faces.size(); ++face) {
        f.emplace_back();
        for (int v : m.faceVerts(int(face))) {
            f.back().push_back(int(p.size()));
            p.push_back(m.verts[v].position + offset(int(face), int(f.back().size())));
        }
    }
    return test::BuildMesh(p, f);
}

Vector3<float> NoOffset(int, int)
{
    return {};
}

// Up to a quarter of the weld distance per axis: copies of grid points, which lie on cell
// boundaries, land on both sides of them.
Vector3<float> Jitter(int face, int corner)
{
    auto h = [&](int k) { return float(((face * 7919 + corner * 104729 + k * 1299709) % 1000) - 500) * 0.5e-6f; };
    return {h(1), h(2), h(3)};
}

TEST(MeshWeld, CoincidentVerticesMergeAndOnlyWhatStaysMergedCounts)
{
    auto touching = test::ClosedCube();
    touching->append(test::ClosedCube().get(), Matrix34<double>::Translation({1, 1, 1})); // one corner shared
    struct Case {
        char const* name;
        std::unique_ptr<Mesh> mesh;
        float distance;
        int merged;
        std::size_t verts, faces;
        int components;
    } cases[] = {
        {"quads of a cube", Separated(*test::ClosedCube(), Jitter), 1e-3f, 16, 8, 6, 1},
        {"quads of a grid", Separated(*test::QuadGrid(10), Jitter), 1e-3f, 400 - 121, 121, 100, 1},
        {"sliver", test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1e-7f, 0}, {0, 1, 0}}, {{0, 1, 3}, {1, 2, 3}}), 1e-5f, 1, 3, 1, 1},
        {"cubes touching at a corner", std::move(touching), 1e-4f, 0, 16, 12, 2},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.mesh->weld(c.distance), c.merged);
        EXPECT_MESH_VALID(*c.mesh);
        EXPECT_EQ(c.mesh->verts.size(), c.verts);
        EXPECT_EQ(c.mesh->faces.size(), c.faces);
        EXPECT_EQ(c.mesh->components, c.components);
    }
}

// UV meshes stay UV meshes: welding keeps each corner's UV, subdividing gives new corners the
// mean of their neighbours'. With UVs equal to positions, every corner's UV is its position.
TEST(MeshWeld, WeldAndSubdivideKeepUVs)
{
    auto m = Separated(*test::BuildMesh({{0, 0, 0}, {0.5f, 0, 0}, {0.5f, 1, 0}, {0, 1, 0}, {1, 0.5f, 0}}, {{0, 1, 2, 3}, {1, 4, 2}}),
                       NoOffset);
    m->setDataType(2);
    for (std::size_t e = 0; e < m->edges.size(); ++e) {
        Vector3<float> p = m->verts[m->edges[e].v[1]].position;
        m->uvs[e] = uint32_t(std::lround(p.x * 65535)) | uint32_t(std::lround(p.y * 65535)) << 16;
    }
    auto expectUVsAtPositions = [](Mesh const& mesh) {
        ASSERT_MESH_VALID(mesh);
        ASSERT_TRUE(mesh.hasUVs());
        for (std::size_t e = 0; e < mesh.edges.size(); ++e) {
            Vector3<float> p = mesh.verts[mesh.edges[e].v[1]].position;
            EXPECT_NEAR(double(mesh.uvs[e] & 0xFFFF), p.x * 65535.0, 1.0) << e;
            EXPECT_NEAR(double(mesh.uvs[e] >> 16), p.y * 65535.0, 1.0) << e;
        }
    };
    EXPECT_EQ(m->weld(1e-4f), 2);
    expectUVsAtPositions(*m);
    m->makeSharp(0); // edge points at the midpoints, where UVs are the mean of the ends
    m->subdivide(false);
    EXPECT_EQ(m->faces.size(), 4u + 4u);
    expectUVsAtPositions(*m);
}

// Fans of triangles: a sharp cube keeps its patches and face normals; a hexagon with UVs
// stays one piece.
TEST(MeshTriangulate, FacesBecomeFansKeepingPatchesAndNormals)
{
    auto cube = test::ClosedCube();
    cube->makeSharp(30);
    cube->calculateNormalsCenters();
    auto hexagon = Mesh::NGon(6);
    hexagon->setDataType(2);
    for (Mesh* m : {cube.get(), hexagon.get()}) {
        int const triangles = m->triangles;
        m->triangulate(true);
        ASSERT_MESH_VALID(*m);
        EXPECT_EQ(int(m->faces.size()), triangles);
        EXPECT_EQ(m->components, 1);
        for (std::size_t f = 0; f < m->faces.size(); ++f)
            EXPECT_EQ(m->faceCount(int(f)), 3);
    }
    EXPECT_EQ(cube->patches, 6);
    for (std::size_t f = 0; f < cube->faces.size(); ++f) {
        Vector3<float> n(cube->calculatePreciseFaceNormal(int(f)).normalize());
        for (int e : cube->edgeLoop(cube->faces[f].edge))
            EXPECT_NEAR(UnpackNormal(cube->edges[e].normal).dot(n), 1.0f, 1e-3f);
    }
    EXPECT_FALSE(cube->faceTriangulateFan(0, true)); // already a triangle
}

// A pair gains one vertex on both sides, a border edge one on its only side.
TEST(MeshEdgeSplit, SplittingAPairOrABorderEdgeAndRefusals)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    int e = m->findEdge(0, 2);
    int v = m->edgeSplit(e, -1);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(v, 8);
    EXPECT_EQ(m->verts[v].position, (m->verts[0].position + m->verts[2].position) * 0.5f);
    EXPECT_EQ(m->triangles, 14);
    EXPECT_TRUE(m->verts[v].is(MeshVert::SHARP));
    EXPECT_EQ(m->faceCount(m->edges[e].face), 5);

    auto g = test::QuadGrid(1);
    e = g->findEdge(0, 1);
    ASSERT_GE(e, 0);
    v = g->edgeSplit(e, -1);
    ASSERT_MESH_VALID(*g);
    EXPECT_TRUE(g->verts[v].is(MeshVert::BORDER));
    Mesh before = *g;
    EXPECT_EQ(g->edgeSplit(-1, -1), -1);
    EXPECT_EQ(g->edgeSplit(e, 0), -1); // vertex 0 is in use
    EXPECT_EQ(test::RecordDifference(before, *g), "");
}

TEST(MeshEdgeFlip, DiagonalOfAFlatPairTurns)
{
    auto m = test::FlatPair();
    int e = test::EdgeBetween(*m, 0, 2);
    EXPECT_TRUE(m->edgeFlip(e));
    ASSERT_MESH_VALID(*m);
    EXPECT_GE(test::EdgeBetween(*m, 1, 3), 0);
    EXPECT_LT(test::EdgeBetween(*m, 0, 2), 0);
    EXPECT_NEAR(test::SignedVolume(*m), 0, 1e-12);
    EXPECT_TRUE(m->edgeFlip(e)); // and back
    ASSERT_MESH_VALID(*m);
}

TEST(MeshEdgeFlip, RefusalsLeaveTheMeshUntouched)
{
    auto tet = Mesh::Tetrahedron();
    tet->makeSmooth();
    auto sharp = test::FlatPair();
    sharp->makeSharp(0);
    struct Case {
        char const* name;
        std::unique_ptr<Mesh> mesh;
        int a, b; // the edge's ends
    } cases[] = {
        {"quads", test::ClosedCube(), 0, 1},
        {"the other diagonal already exists", std::move(tet), 0, 1},
        {"border", test::FlatPair(), 0, 1},
        {"sharp", std::move(sharp), 0, 2},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        Mesh before = *c.mesh;
        EXPECT_FALSE(c.mesh->edgeFlip(test::EdgeBetween(*c.mesh, c.a, c.b)));
        EXPECT_EQ(test::RecordDifference(before, *c.mesh), "");
    }
}

TEST(MeshFlip, FlipNormalsTurnsEveryFaceAndTwiceRestores)
{
    auto m = test::ClosedOctahedron();
    m->setDataType(1);
    Pbr dark;
    dark.setColor(0, 100);
    int corner = m->faces[0].edge;
    int at = m->edges[corner].v[1];
    m->materials[corner] = dark;
    double volume = test::SignedVolume(*m);
    m->flipNormals();
    ASSERT_MESH_VALID(*m);
    EXPECT_NEAR(test::SignedVolume(*m), -volume, 1e-9);
    // The material stays at its corner: face 0, vertex `at`.
    for (int e : m->edgeLoop(m->faces[0].edge))
        EXPECT_EQ(m->materials[e] == dark, m->edges[e].v[1] == at);
    m->flipNormals();
    ASSERT_MESH_VALID(*m);
    EXPECT_NEAR(test::SignedVolume(*m), volume, 1e-9);
    auto open = test::OpenWithHoles(); // border vertices keep their fan start
    open->flipNormals();
    EXPECT_MESH_VALID(*open);
}

} // namespace
} // namespace vel
