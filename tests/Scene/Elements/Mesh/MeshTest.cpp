// Building, repair, queries, lifecycle and extraction of Mesh, on the named fixtures.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Communicate.h"
#include "MeshFixtures.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

using test::LogCapture;

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
    EXPECT_FLOAT_EQ(m->faceCenter(1).z, 0.5f);
}

TEST(MeshBuild, BadRingsAndTooFewVerticesAreRefusedUntouched)
{
    auto m = test::MakeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {});
    for (std::vector<int> const& ring : {std::vector<int>{0, 1}, {0, 1, 3}, {0, 1, -1}, {0, 1, 0}})
        EXPECT_EQ(m->faceFromIndices(ring), -1) << ring.size() << " " << ring.back();
    EXPECT_EQ(m->edges.size(), 0u);
    EXPECT_EQ(m->faces.size(), 0u);
    EXPECT_EQ(m->faceFromIndices({0, 1, 2}), 0);
    EXPECT_EQ(m->triangles, 1);

    Mesh one;
    one.vertAdd({0, 0, 0});
    one.initialize(1);
    EXPECT_EQ(one.verts[0].edge, -1);
    EXPECT_EQ(one.components, 0);
}

// Each repair on its own input, and all at once: the mesh comes out valid, with the one log
// line naming what was repaired, in order.
TEST(MeshRepair, EachRepairIsMadeAndReportedInOneLine)
{
    using Make = std::unique_ptr<Mesh> (*)();
    struct Case {
        char const* name;
        Make make;
        char const* log;
        std::size_t verts;
        int components, borders;
    } cases[] = {
        {"opposite winding", [] { return test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2}, {1, 2, 3}}); },
         "Fixed orientations. ", 4, 1, 4},
        {"flipped faces of a closed mesh", &test::FlippedFaces, "Fixed orientations. ", 6, 1, 0},
        // The three sheets also touch only at the edge's ends: those vertices are split too.
        {"three faces on an edge", &test::NonManifoldEdge, "Mesh has non-manifold edges. Fixed non-manifold vertices. ", 9, 3, 9},
        {"two cones touching at a vertex", &test::NonManifoldVertex, "Fixed non-manifold vertices. ", 10, 2, 0},
        {"quads touching at a corner, unused vertices",
         [] {
             return test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}, {0, 2, 0}, {1, 2, 0}, {2, 2, 0}},
                                    {{0, 1, 4, 3}, {4, 5, 8, 7}});
         },
         "Fixed non-manifold vertices. ", 8, 2, 8},
        {"all at once",
         [] {
             return test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {3, 0, 0}, {4, 1, 0}, {4, -1, 0}, {2, 1, 0}, {2, -1, 0}},
                                    {{0, 1, 2}, {0, 1, 3}, {1, 0, 4}, {5, 6, 7}, {5, 8, 9}});
         },
         "Mesh has non-manifold edges. Fixed orientations. Fixed non-manifold vertices. ", 15, 5, 15},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        auto m = c.make();
        EXPECT_MESH_VALID(*m);
        EXPECT_FALSE(m->invalid);
        ASSERT_EQ(log.entries.size(), 1u);
        EXPECT_EQ(log.entries[0].first.toStdString(), c.log);
        EXPECT_EQ(log.entries[0].second, 1);
        EXPECT_EQ(m->verts.size(), c.verts);
        EXPECT_EQ(m->components, c.components);
        EXPECT_EQ(test::BorderCount(*m), c.borders);
    }
    // Turned back as a whole: the enclosed volume is the octahedron's (4/3).
    EXPECT_NEAR(std::abs(test::SignedVolume(*test::FlippedFaces())), 4.0 / 3.0, 1e-9);
}

// A Moebius strip cannot be oriented: one pair on the seam is broken into borders, which also
// splits the vertices at its ends, and the strip becomes a band cut open.
TEST(MeshRepair, AMoebiusStripIsCutOpen)
{
    int const n = 8;
    std::vector<Vector3<float>> p;
    for (int i = 0; i < n; ++i) {
        double t = 2 * M_PI * i / n;
        Vector3<double> radial(std::cos(t), std::sin(t), 0), width = radial * std::cos(t / 2) * 0.3 + Vector3<double>(0, 0, std::sin(t / 2) * 0.3);
        p.push_back(Vector3<float>(radial + width));
        p.push_back(Vector3<float>(radial - width));
    }
    std::vector<std::vector<int>> faces;
    for (int i = 0; i + 1 < n; ++i)
        faces.push_back({2 * i, 2 * i + 1, 2 * i + 3, 2 * i + 2});
    faces.push_back({2 * n - 2, 2 * n - 1, 0, 1}); // the half twist
    LogCapture log;
    auto m = test::BuildMesh(p, faces);
    EXPECT_MESH_VALID(*m);
    EXPECT_TRUE(m->repairs & Mesh::REPAIRED_ORIENTATION);
    EXPECT_EQ(m->components, 1);
    EXPECT_EQ(test::BorderCount(*m), 2 * n + 2);
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

TEST(MeshVertexFlags, BorderVerticesStartTheirFanAtTheBorder)
{
    auto m = test::OpenWithHoles();
    EXPECT_MESH_VALID(*m);
    int border = 0;
    for (std::size_t v = 0; v < m->verts.size(); ++v) {
        EXPECT_FALSE(m->verts[v].is(MeshVert::ANCHOR)) << "a rim alone makes no anchor: " << v;
        if (m->verts[v].is(MeshVert::BORDER)) {
            ++border;
            EXPECT_EQ(m->edges[m->verts[v].edge].half, -1);
            EXPECT_TRUE(m->verts[v].is(MeshVert::SHARP));
        }
    }
    EXPECT_EQ(border, 20 + 8); // 20 on the outer rim, 4 around each hole
    EXPECT_EQ(m->repairs, 0u);
    EXPECT_EQ(m->components, 1);
}

TEST(MeshVertexFlags, SharpLineEndsAreNotAnchorsButCrossingsAre)
{
    // A 2x2 grid with the middle row of edges sharp: a line through the centre 4.
    auto m = test::QuadGrid(2);
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        MeshEdge& e = m->edges[i];
        if (m->verts[e.v[0]].position.y == 0.5f && m->verts[e.v[1]].position.y == 0.5f)
            e.set(MeshEdge::SHARP);
    }
    m->initialize(0);
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->patches, 2);
    EXPECT_TRUE(m->verts[4].is(MeshVert::SHARP));
    // Where the line meets the border, the border vertex has three lines: an anchor.
    for (std::size_t v = 0; v < m->verts.size(); ++v)
        EXPECT_EQ(m->verts[v].is(MeshVert::ANCHOR), v == 3 || v == 5) << v;
}

// The fan group of every half-edge begins at its edgeStart: a half-edge arriving at the same
// vertex from which the forward walk reaches it before any other sharp half-edge.
TEST(MeshVertexFlags, EdgeStartBeginsTheSmoothFanOfEachHalfEdge)
{
    auto sharpCube = test::ClosedCube();
    sharpCube->makeSharp(30);
    auto crossed = test::QuadGrid(3);
    for (int e : {crossed->findEdge(5, 6), crossed->findEdge(6, 10)})
        crossed->edges[e].set(MeshEdge::SHARP);
    crossed->initialize(0);
    auto smoothCube = test::ClosedCube();
    auto holes = test::OpenWithHoles();
    Mesh const* meshes[] = {sharpCube.get(), smoothCube.get(), holes.get(), crossed.get()};
    for (Mesh const* m : meshes) {
        for (std::size_t e = 0; e < m->edges.size(); ++e) {
            int s = m->edgeStart(int(e));
            ASSERT_GE(s, 0);
            ASSERT_EQ(m->edges[s].v[1], m->edges[e].v[1]) << e;
            bool reached = false;
            for (int c = s, steps = 0; c >= 0 && steps < 64 && !reached; ++steps) {
                reached = c == int(e);
                c = m->edges[m->edges[c].e[1]].half;
                if (c == s || (c >= 0 && m->edges[c].is(MeshEdge::SHARP)))
                    break;
            }
            EXPECT_TRUE(reached) << "half-edge " << e;
        }
    }
}

// makeSharp by angle: a flat pair's diagonal only at 0 degrees; all of a cube's edges at 30,
// which makes every corner an anchor; makeSmooth undoes it.
TEST(MeshSharpness, AngleDecidesSharpEdgesPatchesAndAnchors)
{
    struct Case {
        char const* name;
        std::unique_ptr<Mesh> (*make)();
        float angle;
        int sharp, patches;
        bool anchors; // every vertex
    } const cases[] = {
        {"flat pair at 0", &test::FlatPair, 0, 5, 2, false},
        {"flat pair at 30", &test::FlatPair, 30, 4, 1, false},
        {"cube at 30", &test::ClosedCube, 30, 12, 6, true},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        auto m = c.make();
        m->makeSharp(c.angle);
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(test::SharpEdgeCount(*m), c.sharp);
        EXPECT_EQ(m->patches, c.patches);
        if (c.anchors) {
            for (std::size_t v = 0; v < m->verts.size(); ++v)
                EXPECT_TRUE(m->verts[v].is(MeshVert::ANCHOR)) << v;
        }
        m->makeSmooth();
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(test::SharpEdgeCount(*m), 0);
        EXPECT_EQ(m->patches, 1);
    }
}

TEST(MeshNormals, SharpCubeCornersTakeTheirFaceNormalSmoothCubeTheDiagonal)
{
    auto m = test::ClosedCube();
    m->makeSharp(30);
    m->calculateNormalsCenters();
    EXPECT_FALSE(m->geometryChanged);
    for (std::size_t f = 0; f < m->faces.size(); ++f) {
        Vector3<float> n(m->calculatePreciseFaceNormal(int(f)).normalize());
        for (int e : m->edgeLoop(m->faces[f].edge))
            EXPECT_NEAR(UnpackNormal(m->edges[e].normal).dot(n), 1.0f, 1e-3f);
    }
    m->makeSmooth();
    m->calculateNormalsCenters();
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        Vector3<float> p = m->verts[m->edges[i].v[1]].position.normalize();
        EXPECT_NEAR(UnpackNormal(m->edges[i].normal).dot(p), 1.0f, 1e-3f);
    }
}

// The bit layout is the shaders' to agree with: the clay and mesh draw tests compare them.
TEST(MeshNormals, PackingKeepsTenBitsPerAxis)
{
    for (Vector3<float> n : {Vector3<float>(0.3f, -0.4f, 0.866f), Vector3<float>(1, 0, -1)})
        EXPECT_LT((UnpackNormal(PackNormal(n)) - n).length(), 3e-3f) << n.x << " " << n.y << " " << n.z;
}

// What files leave out (rings, twins, faces) is rebuilt by initializeDataLoad; initializeData
// keeps the faces but rewrites the rings' face indices.
TEST(MeshLifecycle, InitializeRebuildsWhatFilesLeaveOut)
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

    auto o = test::ClosedOctahedron();
    for (std::size_t i = 0; i < o->edges.size(); ++i)
        o->edges[i].face = -1;
    o->initializeData();
    EXPECT_MESH_VALID(*o);
    EXPECT_EQ(o->triangles, 8);
}

TEST(MeshLifecycle, ResizeStylesCentreAndScale)
{
    struct Case {
        int style;
        Vector3<float> center;
        float scale;
    } cases[] = {{0, {7, 7, 7}, 3}, {1, {4.f / 3, 2.f / 3, 0}, 2 * std::sqrt(68.f) / 3}, {2, {2, 1, 0}, 4}};
    for (Case const& c : cases) {
        auto m = test::MakeMesh({{0, 0, 0}, {4, 0, 0}, {0, 2, 0}}, {{0, 1, 2}});
        m->center = {7, 7, 7};
        m->scale = 3;
        m->initialize(c.style);
        EXPECT_NEAR((m->center - c.center).length(), 0, 1e-6) << c.style;
        EXPECT_NEAR(m->scale, c.scale, 1e-5) << c.style;
    }
}

// Every index field holds INDEX_MAX, the largest index any record may get.
TEST(MeshLifecycle, IndexFieldsHoldTheLargestIndex)
{
    MeshVert v;
    MeshEdge e;
    MeshFace f;
    v.edge = e.face = f.component = Mesh::INDEX_MAX;
    EXPECT_EQ(v.edge, Mesh::INDEX_MAX);
    EXPECT_EQ(e.face, Mesh::INDEX_MAX);
    EXPECT_EQ(f.component, Mesh::INDEX_MAX);
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
    EXPECT_EQ(test::RecordDifference(*m, snapshot), "");
    std::unique_ptr<Mesh> copy(m->clone());
    EXPECT_EQ(test::RecordDifference(*copy, snapshot), "");
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

// Components come out as their own meshes; a patch keeps its materials only when asked.
TEST(MeshExtraction, ComponentsAndPatches)
{
    auto cones = test::NonManifoldVertex();
    ASSERT_EQ(cones->components, 2);
    for (int c = 0; c < 2; ++c) {
        auto part = cones->GetComponentGeometry(c);
        EXPECT_MESH_VALID(*part);
        EXPECT_EQ(part->faces.size(), 5u);
        EXPECT_EQ(part->verts.size(), 5u);
        EXPECT_EQ(part->components, 1);
    }

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
    EXPECT_FALSE(m->GetPatchGeometry(m->faces[0].patch)->hasPbr());
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
