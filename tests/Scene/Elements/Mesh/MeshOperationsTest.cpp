// Subdivision, smoothing, welding and local edits: each test checks the half-edge invariants
// after every operation, and what the operation promises about geometry.
#include "Scene/Elements/Mesh/Mesh.h"

#include "MeshFixtures.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

using test::LogCapture;

// Edge records by value, to show that a refused edit changed nothing.
std::vector<int> Snapshot(Mesh const& m)
{
    std::vector<int> s;
    for (std::size_t i = 0; i < m.edges.size(); ++i) {
        MeshEdge const& e = m.edges[i];
        s.insert(s.end(), {e.v[0], e.v[1], e.e[0], e.e[1], e.half, int(e.face), int(e.flags)});
    }
    s.push_back(int(m.verts.size()));
    s.push_back(int(m.faces.size()));
    return s;
}

TEST(MeshSubdivide, SharpCubeStaysFlatAndKeepsItsCorners)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    m->subdivide(true);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 24u);
    EXPECT_EQ(m->verts.size(), 8u + 12u + 6u);
    EXPECT_EQ(test::SharpEdgeCount(*m), 24);
    for (std::size_t v = 0; v < m->verts.size(); ++v) {
        Vector3<float> p = m->verts[v].position;
        float extent = std::max(std::abs(p.x), std::max(std::abs(p.y), std::abs(p.z)));
        EXPECT_FLOAT_EQ(extent, 0.5f) << "vertex " << v << " left the cube's surface";
    }
    for (int v = 0; v < 8; ++v)
        EXPECT_EQ(m->verts[v].position, test::ClosedCube()->verts[v].position);
    // A second level keeps the faces flat too: sharp lines stay straight.
    m->subdivide(true);
    ASSERT_MESH_VALID(*m);
    for (std::size_t v = 0; v < m->verts.size(); ++v) {
        Vector3<float> p = m->verts[v].position;
        EXPECT_FLOAT_EQ(std::max(std::abs(p.x), std::max(std::abs(p.y), std::abs(p.z))), 0.5f);
    }
}

TEST(MeshSubdivide, WithoutSmoothingOldVerticesStay)
{
    auto m = test::ClosedOctahedron();
    auto before = *m;
    m->subdivide(false);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 32u);
    EXPECT_EQ(m->triangles, 32);
    for (std::size_t v = 0; v < before.verts.size(); ++v)
        EXPECT_EQ(m->verts[v].position, before.verts[v].position);
}

TEST(MeshSubdivide, SmoothCubeRoundsOff)
{
    auto m = test::ClosedCube();
    m->subdivide(true);
    ASSERT_MESH_VALID(*m);
    for (int v = 0; v < 8; ++v)
        EXPECT_LT(m->verts[v].position.length(), std::sqrt(0.75f) - 0.05f);
    EXPECT_GT(test::SignedVolume(*m), 0.3);
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
    int borders = 0;
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        borders += m->edges[i].half < 0;
    EXPECT_EQ(borders, 2 * 5);
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
        EXPECT_FLOAT_EQ(std::max(std::abs(p.x), std::max(std::abs(p.y), std::abs(p.z))), 0.5f);
        if (before.verts[v].is(MeshVert::ANCHOR)) {
            EXPECT_EQ(p, before.verts[v].position);
        }
    }
    EXPECT_TRUE(box->geometryChanged);
}

TEST(MeshSmooth, SmoothVertexGoesToTheMeanOfItsRing)
{
    auto m = test::QuadGrid(2);
    m->verts[4].position.z = 1;
    EXPECT_EQ(m->vertSmoothPosition(m->verts[4]), Vector3<float>(0.5f, 0.5f, 0));
    m->smoothAll(0.5f);
    EXPECT_FLOAT_EQ(m->verts[4].position.z, 0.5f);
    ASSERT_MESH_VALID(*m);
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

TEST(MeshWeld, SeparateQuadsOfACubeBecomeOneClosedCube)
{
    std::vector<Vector3<float>> p;
    std::vector<std::vector<int>> f;
    auto cube = test::ClosedCube();
    for (std::size_t face = 0; face < 6; ++face) {
        std::vector<int> ring;
        for (int v : cube->faceVerts(int(face))) {
            ring.push_back(int(p.size()));
            // A little noise, well inside the weld distance.
            p.push_back(cube->verts[v].position + Vector3<float>(1e-6f * float(face), 0, 0));
        }
        f.push_back(ring);
    }
    auto m = test::BuildMesh(p, f);
    EXPECT_EQ(m->components, 6);
    EXPECT_EQ(m->weld(1e-4f), 16);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->verts.size(), 8u);
    EXPECT_EQ(m->components, 1);
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        EXPECT_GE(m->edges[i].half, 0);
}

TEST(MeshWeld, CollapsedFacesAreDropped)
{
    // The short edge of a sliver triangle welds shut: the triangle disappears.
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1e-7f, 0}, {0, 1, 0}}, {{0, 1, 3}, {1, 2, 3}});
    EXPECT_EQ(m->weld(1e-5f), 1);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 1u);
    EXPECT_EQ(m->verts.size(), 3u);
}

TEST(MeshTriangulate, CubeBecomesTwelveTrianglesKeepingPatchesAndNormals)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    m->calculateNormalsCenters();
    m->triangulate(true);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 12u);
    EXPECT_EQ(m->triangles, 12);
    EXPECT_EQ(m->patches, 6);
    for (std::size_t f = 0; f < m->faces.size(); ++f) {
        EXPECT_EQ(m->faceCount(int(f)), 3);
        Vector3<float> n(m->calculatePreciseFaceNormal(int(f)).normalize());
        for (int e : m->edgeLoop(m->faces[f].edge))
            EXPECT_NEAR(UnpackNormal(m->edges[e].normal).dot(n), 1.0f, 1e-3f);
    }
    EXPECT_FALSE(m->faceTriangulateFan(0, true)); // already a triangle
}

TEST(MeshTriangulate, HexagonFansFromItsFirstCorner)
{
    auto m = Mesh::NGon(6);
    m->setDataType(2);
    m->triangulate(true);
    ASSERT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 4u);
    EXPECT_EQ(m->components, 1);
}

TEST(MeshEdgeSplit, SplittingAPairAddsOneVertexOnBothSides)
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
}

TEST(MeshEdgeSplit, BorderEdgeAndRefusals)
{
    auto m = test::QuadGrid(1);
    int e = m->findEdge(0, 1);
    ASSERT_GE(e, 0);
    int v = m->edgeSplit(e, -1);
    ASSERT_MESH_VALID(*m);
    EXPECT_TRUE(m->verts[v].is(MeshVert::BORDER));
    auto before = Snapshot(*m);
    EXPECT_EQ(m->edgeSplit(-1, -1), -1);
    EXPECT_EQ(m->edgeSplit(e, 0), -1); // vertex 0 is in use
    EXPECT_EQ(Snapshot(*m), before);
}

TEST(MeshEdgeFlip, DiagonalOfAFlatPairTurns)
{
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    int e = m->findEdge(0, 2) >= 0 ? m->findEdge(0, 2) : m->findEdge(2, 0);
    EXPECT_TRUE(m->edgeFlip(e));
    ASSERT_MESH_VALID(*m);
    EXPECT_TRUE(m->findEdge(1, 3) >= 0 || m->findEdge(3, 1) >= 0);
    EXPECT_LT(m->findEdge(0, 2), 0);
    EXPECT_LT(m->findEdge(2, 0), 0);
    EXPECT_NEAR(test::SignedVolume(*m), 0, 1e-12);
    EXPECT_TRUE(m->edgeFlip(e)); // and back
    ASSERT_MESH_VALID(*m);
}

TEST(MeshEdgeFlip, RefusalsLeaveTheMeshUntouched)
{
    auto quads = test::ClosedCube();
    auto before = Snapshot(*quads);
    EXPECT_FALSE(quads->edgeFlip(0)); // quads
    EXPECT_EQ(Snapshot(*quads), before);

    auto tet = Mesh::Tetrahedron();
    tet->makeSmooth();
    before = Snapshot(*tet);
    EXPECT_FALSE(tet->edgeFlip(0)); // the other diagonal already exists
    EXPECT_EQ(Snapshot(*tet), before);

    auto pair = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    int border = pair->findEdge(0, 1);
    before = Snapshot(*pair);
    EXPECT_FALSE(pair->edgeFlip(border));
    pair->makeSharp(0);
    before = Snapshot(*pair);
    int diagonal = pair->findEdge(0, 2) >= 0 ? pair->findEdge(0, 2) : pair->findEdge(2, 0);
    EXPECT_FALSE(pair->edgeFlip(diagonal)); // sharp
    EXPECT_EQ(Snapshot(*pair), before);
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
}

TEST(MeshFlip, BorderVerticesKeepTheirFanStart)
{
    auto m = test::OpenWithHoles();
    m->flipNormals();
    ASSERT_MESH_VALID(*m);
}

} // namespace
} // namespace vel
