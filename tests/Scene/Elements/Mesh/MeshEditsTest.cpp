// Local edits: every accepted edit leaves a valid mesh with the expected change of counts and
// Euler characteristic; every refusal leaves the records untouched. Partial normals agree
// bit for bit with a full recompute.
#include "Scene/Elements/Mesh/Mesh.h"

#include "MeshFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace vel {
namespace {

int Euler(Mesh const& m)
{
    int edges = 0;
    for (std::size_t i = 0; i < m.edges.size(); ++i)
        edges += m.edges[i].half < 0 || std::size_t(m.edges[i].half) > i;
    return int(m.verts.size()) - edges + int(m.faces.size());
}

TEST(MeshEdgeSplit, OneSidedSplitLeavesTheTwinToTheCaller)
{
    auto m = test::ClosedCube();
    int chi = Euler(*m), tri = m->triangles;
    MeshEdge const r = m->edges[0];
    int v = m->edgeSplit(0, r.v[0], -1);
    ASSERT_EQ(v, 8);
    EXPECT_EQ(m->verts[8].position, (m->verts[r.v[0]].position + m->verts[r.v[1]].position) * 0.5f);
    EXPECT_NE(test::Violations(*m), "") << "the twin still names the split half-edge";
    // The caller's part: split the twin at the same vertex and pair the halves crosswise.
    int h = r.half, e2 = m->edges[0].e[1];
    ASSERT_EQ(m->edgeSplit(h, m->edges[h].v[0], v), v);
    int h2 = m->edges[h].e[1];
    m->edges[0].half = h2;
    m->edges[h2].half = 0;
    m->edges[h].half = e2;
    m->edges[e2].half = h;
    m->vertUpdate(v);
    EXPECT_MESH_VALID(*m);
    EXPECT_EQ(m->triangles, tri + 2);
    EXPECT_EQ(Euler(*m), chi);

    // A border half-edge has no other side: the split is complete.
    auto g = test::QuadGrid(2);
    int b = g->findEdge(0, 1), borders = test::BorderCount(*g);
    ASSERT_TRUE(b >= 0 && g->edges[b].half < 0);
    ASSERT_GE(g->edgeSplit(b, g->edges[b].v[0], -1), 0);
    EXPECT_MESH_VALID(*g);
    EXPECT_EQ(test::BorderCount(*g), borders + 1);
}

TEST(MeshEdgeSplit, RefusalsLeaveTheMeshUntouched)
{
    auto m = test::ClosedCube();
    Mesh before = *m;
    MeshEdge const r = m->edges[3];
    int const cases[][3] = {{-1, 0, -1}, {99, 0, -1}, {3, r.v[1], -1}, {3, r.v[0], r.v[1]}, {3, r.v[0], 50}};
    for (auto const& c : cases) {
        EXPECT_EQ(m->edgeSplit(c[0], c[1], c[2]), -1) << c[0] << " " << c[1] << " " << c[2];
        EXPECT_EQ(test::RecordDifference(before, *m), "");
    }
}

TEST(MeshEdgeCollapse, KeepsAManifoldOrRefuses)
{
    auto twoQuads = [] {
        return test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}},
                               {{0, 1, 4, 3}, {1, 2, 5, 4}});
    };
    struct Case {
        char const* name;
        std::function<std::unique_ptr<Mesh>()> make;
        int from, to; // the collapsed edge; `from` is kept
        bool accepted;
        int verts, faces; // change when accepted
    } cases[] = {
        {"octahedron", test::ClosedOctahedron, 0, 2, true, -1, -2},
        {"cube: quads lose a side", test::ClosedCube, 0, 1, true, -1, 0},
        {"grid inside", [] { return test::QuadGrid(3); }, 5, 6, true, -1, 0},
        {"grid border", [] { return test::QuadGrid(2); }, 0, 1, true, -1, 0},
        {"tetrahedron tips keep two edges", &Mesh::Tetrahedron, 0, 1, false, 0, 0},
        {"border vertices across the inside", twoQuads, 1, 4, false, 0, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto m = c.make();
        int e = m->findEdge(c.from, c.to);
        ASSERT_GE(e, 0);
        Mesh before = *m;
        EXPECT_FALSE(m->edgeCollapse(e, c.to, c.from)) << "wrong start";
        EXPECT_FALSE(m->edgeCollapse(e, c.from, 99)) << "keep is not an end";
        ASSERT_EQ(m->edgeCollapse(e, c.from, c.from), c.accepted);
        if (!c.accepted) {
            EXPECT_EQ(test::RecordDifference(before, *m), "");
            continue;
        }
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(m->repairs, 0u);
        EXPECT_EQ(int(m->verts.size()) - int(before.verts.size()), c.verts);
        EXPECT_EQ(int(m->faces.size()) - int(before.faces.size()), c.faces);
        EXPECT_EQ(Euler(*m), Euler(before));
        EXPECT_EQ(m->verts[std::size_t(c.from)].position, before.verts[std::size_t(c.from)].position);
    }
}

TEST(MeshVertSplit, SplitKeepsTheSurfaceRipOpensIt)
{
    enum Op { Split, Rip };
    struct Case {
        char const* name;
        std::function<std::unique_ptr<Mesh>()> make;
        int vertex, from, to; // from and to index the vertex's fan (vertInEdges)
        Op op;
        bool accepted;
        int euler, borders, triangles; // change when accepted
    } cases[] = {
        {"split apex", test::ClosedOctahedron, 4, 0, 2, Split, true, 0, 0, 2},
        {"split neighbours", test::ClosedOctahedron, 4, 0, 1, Split, true, 0, 0, 2},
        {"split on a border", [] { return test::QuadGrid(2); }, 1, 0, 1, Split, true, 0, 0, 2},
        {"split needs two corners", test::ClosedOctahedron, 4, 1, 1, Split, false, 0, 0, 0},
        {"split open fan backwards", [] { return test::QuadGrid(2); }, 1, 1, 0, Split, false, 0, 0, 0},
        {"rip one corner", test::ClosedOctahedron, 4, 0, 0, Rip, true, -1, 4, 0},
        {"rip two corners", test::ClosedOctahedron, 4, 3, 0, Rip, true, -1, 4, 0},
        {"rip at a border", [] { return test::QuadGrid(2); }, 1, 0, 0, Rip, true, 0, 2, 0},
        {"rip the whole fan", test::ClosedOctahedron, 4, 1, 0, Rip, false, 0, 0, 0},
        {"rip towards a border", [] { return test::QuadGrid(2); }, 4, 0, 0, Rip, false, 0, 0, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto m = c.make();
        Mesh before = *m;
        std::vector<int> fan = m->vertInEdges(c.vertex);
        int from = fan[std::size_t(c.from)], to = fan[std::size_t(c.to)];
        int w = c.op == Split ? m->vertSplit(c.vertex, from, to) : m->vertSeparate(c.vertex, from, to);
        if (!c.accepted) {
            EXPECT_EQ(w, -1);
            EXPECT_EQ(test::RecordDifference(before, *m), "");
            continue;
        }
        ASSERT_EQ(w, int(before.verts.size()));
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(m->verts[std::size_t(w)].position, m->verts[std::size_t(c.vertex)].position);
        EXPECT_EQ(Euler(*m) - Euler(before), c.euler);
        EXPECT_EQ(test::BorderCount(*m) - test::BorderCount(before), c.borders);
        EXPECT_EQ(m->triangles - before.triangles, c.triangles);
    }
}

TEST(MeshSmoothingTargets, SculptSmoothAndRelax)
{
    // Grid 2 x 2: 4 is the centre; 1 lies on the border between 0 and 2, and corner 0
    // between 1 and 3; an anchor stays.
    struct Case {
        int vertex;
        bool anchor;
        Vector3<float> moved, smooth;
    } cases[] = {
        {4, false, {0.6f, 0.45f, 0.3f}, {0.5f, 0.5f, 0}},
        {1, false, {0.5f, 0.1f, 0.2f}, {0.5f, 0, 0}},
        {0, false, {0.1f, 0.1f, 0}, {0.25f, 0.25f, 0}},
        {0, true, {0.1f, 0.1f, 0}, {0.1f, 0.1f, 0}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.vertex);
        auto m = test::QuadGrid(2);
        m->verts[std::size_t(c.vertex)].position = c.moved;
        if (c.anchor)
            m->verts[std::size_t(c.vertex)].set(MeshVert::ANCHOR);
        Vector3<float> s = m->PointSculptSmooth(c.vertex);
        EXPECT_NEAR((s - c.smooth).length(), 0, 1e-6);
        // Relaxing keeps the offset along the normal and takes the rest of the move.
        Vector3<float> r = m->vertRelaxPosition(m->verts[std::size_t(c.vertex)], {0, 0, 2});
        EXPECT_NEAR((r - Vector3<float>(s.x, s.y, c.moved.z)).length(), 0, 1e-6);
    }
}

TEST(MeshAppendExisting, CapsCloseAnOpenTube)
{
    std::vector<Vector3<float>> p;
    auto cap = Mesh::NGon(8);
    for (float z : {-0.5f, 0.5f})
        for (int i = 0; i < 8; ++i)
            p.push_back(cap->verts[std::size_t(i)].position + Vector3<float>(0, 0, z));
    std::vector<std::vector<int>> f;
    for (int i = 0; i < 8; ++i)
        f.push_back({i, (i + 1) % 8, 8 + (i + 1) % 8, 8 + i});
    auto tube = test::BuildMesh(p, f);
    ASSERT_EQ(Euler(*tube), 0);
    std::unordered_map<int, int> top, bottom;
    for (int i = 0; i < 8; ++i) {
        top[i] = 8 + i;
        bottom[i] = i;
    }
    tube->appendExisting(cap.get(), top, 0, Matrix34<double>::Translation({0, 0, 0.5}));
    EXPECT_MESH_VALID(*tube);
    EXPECT_EQ(Euler(*tube), 1);
    // The mirror turns the bottom cap to face down.
    tube->appendExisting(cap.get(), bottom, 0, Matrix34<double>(Matrix3<double>::Scale({1, 1, -1})));
    EXPECT_MESH_VALID(*tube);
    EXPECT_EQ(tube->repairs, 0u);
    EXPECT_EQ(tube->verts.size(), 16u);
    EXPECT_EQ(test::BorderCount(*tube), 0);
    EXPECT_EQ(Euler(*tube), 2);
    EXPECT_GT(test::SignedVolume(*tube), 0);
}

TEST(MeshNormals, PartialUpdateEqualsFullRecompute)
{
    struct Case {
        char const* name;
        std::function<std::unique_ptr<Mesh>()> make;
    } cases[] = {
        {"sharp box of quads", [] {
             auto m = Mesh::Box(1);
             m->subdivide(true);
             m->subdivide(true);
             return m;
         }},
        {"triangles, quads, a smooth patch", [] {
             auto m = Mesh::Test();
             m->subdivide(false);
             return m;
         }},
        {"open grid", [] { return test::OpenWithHoles(); }},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto m = c.make();
        m->calculateNormals();
        Mesh const original = *m;
        Mesh full = *m;
        std::vector<int> touched;
        for (std::size_t v = 0; v < m->verts.size(); v += 3) {
            touched.push_back(int(v));
            float k = float(v % 7) * 0.01f;
            Vector3<float> d(k, -0.5f * k, 0.3f * k);
            m->verts[v].position += d;
            full.verts[v].position += d;
        }
        full.calculateNormals();
        m->updateNormals(touched);
        int changed = 0;
        for (std::size_t e = 0; e < m->edges.size(); ++e) {
            EXPECT_EQ(m->edges[e].normal, full.edges[e].normal) << "corner " << e;
            changed += m->edges[e].normal != original.edges[e].normal;
        }
        EXPECT_GT(changed, 0);
    }
}

TEST(MeshScans, AgreeWithTheFanWalksOnAValidMesh)
{
    for (auto const& m : {test::ClosedCube(), test::OpenWithHoles(), Mesh::Test()}) {
        for (int v = 0; v < int(m->verts.size()); ++v) {
            std::vector<int> all = m->vertEdges(v), out = m->vertOutEdges(v);
            std::sort(all.begin(), all.end());
            std::sort(out.begin(), out.end());
            EXPECT_EQ(m->vertEdgesActive(v), all) << v;
            EXPECT_EQ(m->vertStartEdges(v), out) << v;
        }
        // Fanned, every face is one triangle of the soup.
        m->triangulate(true);
        EXPECT_EQ(m->points_count(), 3 * int(m->faces.size()));
    }
}

} // namespace
} // namespace vel
