// Building, repair, queries, lifecycle and extraction of Mesh, on the named fixtures.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Communicate.h"
#include "MeshFixtures.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

using test::LogCapture;

TEST(MeshFixtures, AllFixturesSatisfyTheInvariants)
{
    for (auto* make : {&test::ClosedCube, &test::ClosedOctahedron, &test::OpenWithHoles, &test::FlippedFaces,
                       &test::NonManifoldEdge, &test::NonManifoldVertex}) {
        auto m = make();
        EXPECT_MESH_VALID(*m);
        EXPECT_FALSE(m->invalid);
    }
}

TEST(MeshBuild, ClosedCubeCountsAndRings)
{
    LogCapture log;
    auto m = test::ClosedCube();
    EXPECT_EQ(m->verts.size(), 8u);
    EXPECT_EQ(m->edges.size(), 24u);
    EXPECT_EQ(m->faces.size(), 6u);
    EXPECT_EQ(m->triangles, 12);
    EXPECT_EQ(m->components, 1);
    EXPECT_EQ(m->patches, 1);
    EXPECT_EQ(m->repairs, 0u);
    EXPECT_TRUE(log.entries.empty());
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        EXPECT_GE(m->edges[i].half, 0);
    // The ring's first half-edge ends at the face's first index.
    EXPECT_EQ(m->faceVerts(0), (std::vector<int>{0, 2, 3, 1}));
    EXPECT_EQ(m->faceCount(0), 4);
    EXPECT_EQ(m->faceFaces(0), (std::vector<int>{2, 3, 4, 5}));
    EXPECT_EQ(m->vertVerts(0).size(), 3u);
    EXPECT_EQ(m->vertInEdges(0).size(), 3u);
    EXPECT_EQ(m->vertEdgesSet(0).size(), 6u);
    int e = m->findEdge(0, 2);
    ASSERT_GE(e, 0);
    EXPECT_EQ(m->edges[e].v[0], 0);
    EXPECT_EQ(m->edges[e].v[1], 2);
    EXPECT_EQ(m->findFace(0, 2), 0);
    EXPECT_EQ(m->findEdge(0, 7), -1);
    EXPECT_EQ(m->vertexOfRecord(m->verts[5]), 5);
    Vector3<float> c = m->faceCenter(1);
    EXPECT_FLOAT_EQ(c.z, 0.5f);
}

TEST(MeshBuild, FaceFromIndicesRefusesBadRingsAndLeavesTheMeshUntouched)
{
    auto m = test::MakeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {});
    EXPECT_EQ(m->faceFromIndices({0, 1}), -1);
    EXPECT_EQ(m->faceFromIndices({0, 1, 3}), -1);
    EXPECT_EQ(m->faceFromIndices({0, 1, -1}), -1);
    EXPECT_EQ(m->faceFromIndices({0, 1, 0}), -1);
    EXPECT_EQ(m->edges.size(), 0u);
    EXPECT_EQ(m->faces.size(), 0u);
    EXPECT_EQ(m->faceFromIndices({0, 1, 2}), 0);
    EXPECT_EQ(m->triangles, 1);
}

TEST(MeshBuild, FewerThanThreeVerticesStayUninitialised)
{
    Mesh m;
    m.vertAdd({0, 0, 0});
    m.initialize(1);
    EXPECT_EQ(m.verts[0].edge, -1);
    EXPECT_EQ(m.components, 0);
}

TEST(MeshRepair, OppositeWindingIsFixedAndLogged)
{
    LogCapture log;
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2}, {1, 2, 3}});
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(log.all(), "Fixed orientations. \n");
    EXPECT_EQ(m->repairs, Mesh::REPAIRED_ORIENTATION);
    ASSERT_EQ(log.entries.size(), 1u);
    EXPECT_EQ(log.entries[0].second, 1);
    // Both faces now agree: the shared edge is paired.
    int e = m->findEdge(1, 2) >= 0 ? m->findEdge(1, 2) : m->findEdge(2, 1);
    ASSERT_GE(e, 0);
    EXPECT_GE(m->edges[e].half, 0);
    EXPECT_EQ(m->components, 1);
}

TEST(MeshRepair, FlippedFacesOfAClosedMeshAreTurnedBack)
{
    LogCapture log;
    auto m = test::FlippedFaces();
    EXPECT_MESH_VALID(*m);
    EXPECT_TRUE(log.all().contains("Fixed orientations. "));
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        EXPECT_GE(m->edges[i].half, 0) << "closed mesh has no border after repair";
    // All faces turned the same way: the signed volume is that of the octahedron (4/3).
    double volume = test::SignedVolume(*m);
    EXPECT_NEAR(std::abs(volume), 4.0 / 3.0, 1e-9);
}

TEST(MeshRepair, ThreeFacesOnAnEdgeBecomeBordersAndStayUsable)
{
    LogCapture log;
    auto m = test::NonManifoldEdge();
    EXPECT_MESH_VALID(*m);
    EXPECT_TRUE(log.all().contains("Mesh has non-manifold edges. "));
    EXPECT_TRUE(m->repairs & Mesh::REPAIRED_NON_MANIFOLD_EDGES);
    // The three sheets also touch only at the edge's ends: those vertices are split too.
    EXPECT_TRUE(m->repairs & Mesh::REPAIRED_NON_MANIFOLD_VERTICES);
    int onEdge = 0;
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        MeshEdge const& e = m->edges[i];
        Vector3<float> a = m->verts[e.v[0]].position, b = m->verts[e.v[1]].position;
        if (a.y == 0 && b.y == 0 && a.z == 0 && b.z == 0) {
            ++onEdge;
            EXPECT_EQ(e.half, -1);
        }
    }
    EXPECT_EQ(onEdge, 3);
    EXPECT_FALSE(m->invalid);
    EXPECT_EQ(m->components, 3);
}

TEST(MeshRepair, TwoConesTouchingAtAVertexAreSplit)
{
    LogCapture log;
    auto m = test::NonManifoldVertex();
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(log.all(), "Fixed non-manifold vertices. \n");
    EXPECT_EQ(m->verts.size(), 10u);
    EXPECT_EQ(m->verts[9].position, m->verts[0].position);
    EXPECT_EQ(m->components, 2);
}

TEST(MeshRepair, HolesTouchingAtACornerSplitThatVertex)
{
    LogCapture log;
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}, {0, 2, 0}, {1, 2, 0}, {2, 2, 0}},
                             {{0, 1, 4, 3}, {4, 5, 8, 7}}); // two quads meeting at vertex 4 only
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(log.all(), "Fixed non-manifold vertices. \n");
    EXPECT_EQ(m->verts.size(), 8u);
}

TEST(MeshRepair, AllRepairsAreReportedInOneLineInOrder)
{
    LogCapture log;
    // A non-manifold edge (three faces on 0-1), a flipped face, and a bow-tie vertex (5).
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {3, 0, 0}, {4, 1, 0}, {4, -1, 0},
                              {2, 1, 0}, {2, -1, 0}},
                             {{0, 1, 2}, {0, 1, 3}, {1, 0, 4}, {5, 6, 7}, {5, 8, 9}});
    EXPECT_MESH_VALID(*m);
    ASSERT_EQ(log.entries.size(), 1u);
    EXPECT_EQ(log.entries[0].first, "Mesh has non-manifold edges. Fixed orientations. Fixed non-manifold vertices. ");
}

TEST(MeshRepair, QuietSwallowsTheRepairReportOnce)
{
    LogCapture log;
    Communicate::instance().quiet = true;
    test::FlippedFaces();
    EXPECT_TRUE(log.entries.empty());
    EXPECT_FALSE(Communicate::instance().quiet);
    test::FlippedFaces();
    EXPECT_EQ(log.entries.size(), 1u);
}

TEST(MeshRepair, UnusedVerticesAreDropped)
{
    auto m = test::BuildMesh({{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {8, 8, 8}}, {{1, 2, 3}});
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->verts.size(), 3u);
    EXPECT_EQ(m->verts[0].position, Vector3<float>(0, 0, 0));
}

TEST(MeshVertexFlags, BorderVerticesStartTheirFanAtTheBorder)
{
    auto m = test::OpenWithHoles();
    EXPECT_MESH_VALID(*m);
    int border = 0;
    for (std::size_t v = 0; v < m->verts.size(); ++v)
        if (m->verts[v].is(MeshVert::BORDER)) {
            ++border;
            EXPECT_EQ(m->edges[m->verts[v].edge].half, -1);
            EXPECT_TRUE(m->verts[v].is(MeshVert::SHARP));
        }
    // 20 on the outer rim, 4 around each hole.
    EXPECT_EQ(border, 20 + 8);
    EXPECT_EQ(m->repairs, 0u);
    EXPECT_EQ(m->components, 1);
}

TEST(MeshVertexFlags, CubeCornersBecomeAnchorsWhenAllEdgesAreSharp)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(test::SharpEdgeCount(*m), 12);
    EXPECT_EQ(m->patches, 6);
    for (std::size_t v = 0; v < m->verts.size(); ++v)
        EXPECT_TRUE(m->verts[v].is(MeshVert::ANCHOR));
    m->makeSmooth();
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(test::SharpEdgeCount(*m), 0);
    EXPECT_EQ(m->patches, 1);
}

TEST(MeshVertexFlags, SharpLineEndsAreNotAnchorsButCrossingsAre)
{
    // A 2x2 grid with the middle row of edges sharp: a line through the centre.
    auto m = test::QuadGrid(2);
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        MeshEdge& e = m->edges[i];
        Vector3<float> a = m->verts[e.v[0]].position, b = m->verts[e.v[1]].position;
        if (a.y == 0.5f && b.y == 0.5f)
            e.set(MeshEdge::SHARP);
    }
    m->initialize(0);
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->patches, 2);
    int centre = 4;
    EXPECT_TRUE(m->verts[centre].is(MeshVert::SHARP));
    EXPECT_FALSE(m->verts[centre].is(MeshVert::ANCHOR));
    // Where the line meets the border, the border vertex has three lines: an anchor.
    EXPECT_TRUE(m->verts[3].is(MeshVert::ANCHOR));
    EXPECT_TRUE(m->verts[5].is(MeshVert::ANCHOR));
}

TEST(MeshSharpness, ZeroAngleMarksEverythingEvenAFlatPair)
{
    auto pair = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    pair->makeSharp(0);
    EXPECT_MESH_VALID(*pair);
    for (std::size_t i = 0; i < pair->edges.size(); ++i)
        EXPECT_TRUE(pair->edges[i].is(MeshEdge::SHARP));
    EXPECT_EQ(pair->patches, 2);
}

TEST(MeshSharpness, CoplanarFacesStaySoftAt30Degrees)
{
    auto m = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    m->makeSharp(30);
    EXPECT_MESH_VALID(*m);
    int diagonal = m->findEdge(0, 2) >= 0 ? m->findEdge(0, 2) : m->findEdge(2, 0);
    ASSERT_GE(diagonal, 0);
    EXPECT_FALSE(m->edges[diagonal].is(MeshEdge::SHARP));
    EXPECT_EQ(test::SharpEdgeCount(*m), 4); // the border
}

TEST(MeshNormals, SharpCubeCornersTakeTheirFaceNormalSmoothCubeTheDiagonal)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    m->calculateNormalsCenters();
    EXPECT_FALSE(m->geometryChanged);
    for (std::size_t f = 0; f < m->faces.size(); ++f) {
        Vector3<float> n(m->calculatePreciseFaceNormal(int(f)).normalize());
        for (int e : m->edgeLoop(m->faces[f].edge)) {
            Vector3<float> c = UnpackNormal(m->edges[e].normal);
            EXPECT_NEAR(c.dot(n), 1.0f, 1e-3f);
        }
    }
    m->makeSmooth();
    m->calculateNormalsCenters();
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        Vector3<float> c = UnpackNormal(m->edges[i].normal);
        Vector3<float> p = m->verts[m->edges[i].v[1]].position.normalize();
        EXPECT_NEAR(c.dot(p), 1.0f, 1e-3f);
    }
}

TEST(MeshNormals, PackingKeepsTenBitsPerAxis)
{
    uint32_t p = PackNormal({1, 0, -1});
    EXPECT_EQ(p & 0x3FF, 511u);
    EXPECT_EQ((p >> 10) & 0x3FF, 0u);
    EXPECT_EQ((p >> 20) & 0x3FF, uint32_t(-511) & 0x3FF);
    Vector3<float> n = UnpackNormal(PackNormal(Vector3<float>(0.3f, -0.4f, 0.866f)));
    EXPECT_NEAR(n.x, 0.3f, 2e-3f);
    EXPECT_NEAR(n.y, -0.4f, 2e-3f);
    EXPECT_NEAR(n.z, 0.866f, 2e-3f);
}

TEST(MeshLifecycle, InitializeDataLoadRebuildsWhatFilesLeaveOut)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    Mesh stripped = *m;
    for (std::size_t i = 0; i < stripped.edges.size(); ++i) {
        MeshEdge& e = stripped.edges[i];
        e.v[0] = e.e[1] = e.half = e.face = -1;
    }
    stripped.faces.clear();
    stripped.initializeDataLoad();
    EXPECT_MESH_VALID(stripped);
    EXPECT_EQ(stripped.faces.size(), 6u);
    EXPECT_EQ(stripped.triangles, 12);
    EXPECT_EQ(test::SharpEdgeCount(stripped), 12);
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        EXPECT_EQ(stripped.edges[i].v[0], m->edges[i].v[0]);
        EXPECT_EQ(stripped.edges[i].half, m->edges[i].half);
    }
}

TEST(MeshLifecycle, InitializeDataKeepsFacesAndRewritesRings)
{
    auto m = test::ClosedOctahedron();
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        m->edges[i].face = -1;
    m->initializeData();
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->triangles, 8);
}

TEST(MeshLifecycle, ResizeStyles)
{
    auto m = test::MakeMesh({{0, 0, 0}, {4, 0, 0}, {0, 2, 0}}, {{0, 1, 2}});
    m->initialize(2);
    EXPECT_EQ(m->center, Vector3<float>(2, 1, 0));
    EXPECT_FLOAT_EQ(m->scale, 4);
    m->calculateSize(1);
    EXPECT_NEAR(m->center.x, 4.f / 3, 1e-6);
    m->calculateSize(0);
    EXPECT_NEAR(m->center.x, 4.f / 3, 1e-6);
}

TEST(MeshLifecycle, CopyAndSwapSnapshotTheWholeMesh)
{
    auto m = test::ClosedCube();
    Mesh snapshot = *m;
    auto other = test::ClosedOctahedron();
    m->swap(*other);
    EXPECT_EQ(m->faces.size(), 8u);
    EXPECT_EQ(other->faces.size(), 6u);
    m->swap(*other);
    EXPECT_EQ(m->verts.size(), snapshot.verts.size());
    for (std::size_t i = 0; i < m->edges.size(); ++i)
        EXPECT_EQ(m->edges[i].half, snapshot.edges[i].half);
    EXPECT_MESH_VALID(*m);
    std::unique_ptr<Mesh> copy(m->clone());
    EXPECT_MESH_VALID(*copy);
    EXPECT_EQ(copy->edges.size(), 24u);
}

TEST(MeshLifecycle, RemoveInactiveCompactsInOrderAndRepointsIndices)
{
    auto m = test::QuadGrid(2);
    // Drop the first face by hand: its half-edges and the corner vertex only it used.
    for (int e : m->edgeLoop(m->faces[0].edge))
        m->edges[e].clear(MeshEdge::ACTIVE);
    m->faces[0].clear(MeshFace::ACTIVE);
    m->triangles -= 2;
    m->hasInactive = true;
    m->initialize(0);
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->faces.size(), 3u);
    EXPECT_EQ(m->verts.size(), 8u);
}

TEST(MeshExtraction, ComponentsComeOutAsTheirOwnMeshes)
{
    auto m = test::NonManifoldVertex();
    ASSERT_EQ(m->components, 2);
    for (int c = 0; c < 2; ++c) {
        auto part = m->GetComponentGeometry(c);
        EXPECT_MESH_VALID(*part);
        EXPECT_EQ(part->faces.size(), 5u);
        EXPECT_EQ(part->verts.size(), 5u);
        EXPECT_EQ(part->components, 1);
    }
}

TEST(MeshExtraction, PatchesKeepMaterialsWhenAsked)
{
    auto m = test::ClosedCube();
    m->setDataType(1);
    Pbr red;
    red.setColor(1, 0);
    red.setColor(2, 0);
    for (int e : m->edgeLoop(m->faces[0].edge))
        m->materials[e] = red;
    m->makeSharp(30);
    auto patch = m->GetPatchGeometryMaterial(m->faces[0].patch);
    EXPECT_MESH_VALID(*patch);
    ASSERT_EQ(patch->faces.size(), 1u);
    ASSERT_TRUE(patch->hasPbr());
    for (std::size_t i = 0; i < patch->edges.size(); ++i)
        EXPECT_EQ(patch->materials[i], red);
    EXPECT_EQ(test::SharpEdgeCount(*patch), 4);
    auto plain = m->GetPatchGeometry(m->faces[0].patch);
    EXPECT_FALSE(plain->hasPbr());
}

TEST(MeshMerging, AppendTransformsAndKeepsBothParts)
{
    auto m = test::ClosedCube();
    auto o = test::ClosedOctahedron();
    m->append(o.get(), Matrix34<double>::Translation({5, 0, 0}));
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->components, 2);
    EXPECT_EQ(m->triangles, 12 + 8);
    EXPECT_EQ(m->verts[8].position, Vector3<float>(6, 0, 0));
    // A mirror turns the copy inside out unless its rings are reversed.
    auto n = test::ClosedCube();
    auto c = test::ClosedCube();
    n->append(c.get(), Matrix34<double>::Mirror({3, 0, 0}, {1, 0, 0}));
    EXPECT_MESH_VALID(*n);
    EXPECT_EQ(n->repairs, 0u);
    // Both halves enclose the same volume: the copy was not turned inside out.
    EXPECT_NEAR(test::SignedVolume(*n), 2 * test::SignedVolume(*test::ClosedCube()), 1e-9);
}

TEST(MeshValidate, ReportsCorruptionWithoutHanging)
{
    auto m = test::ClosedCube();
    Mesh bad = *m;
    bad.edges[0].half = 5; // not its twin
    auto list = bad.validate();
    ASSERT_FALSE(list.empty());
    bool found = false;
    for (auto const& v : list)
        found = found || (v.kind == 'e' && v.index == 0 && v.rule == "twin of twin");
    EXPECT_TRUE(found);

    Mesh loop = *m;
    loop.edges[1].e[1] = 1; // a ring that never returns to its face's first edge
    EXPECT_FALSE(loop.validate().empty());

    Mesh wild = *m;
    wild.edges[2].e[0] = 1 << 20;
    wild.verts[3].edge = -7;
    wild.faces[1].edge = 99;
    EXPECT_GE(wild.validate().size(), 3u);
}

} // namespace
} // namespace vel
