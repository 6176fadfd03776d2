// OBJ exchange: export then import gives the same counts and sharp edges; imperfect and
// malformed files end in a usable mesh or a clear log line; a random-mutation fuzz run.
#include "Scene/Elements/Mesh/MeshFile.h"

#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Elements/Mesh/MeshGeometry.h"

#include "Core/Communicate.h"
#include "MeshFixtures.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <random>
#include <sstream>

namespace vel {
namespace {

using test::LogCapture;

std::string Export(Mesh const& m, bool normals, Matrix34<double> const& M = Matrix34<double>())
{
    std::ostringstream out;
    unsigned objects = 0, vertices = 0, faces = 0;
    m.appendOBJ(out, objects, vertices, faces, M, normals);
    return out.str();
}

// What the checks read back from exported text: positions, normals, and per face its corners
// as (position, normal) indices, 0 where a corner has no normal.
struct ObjText {
    std::vector<Vector3<double>> v, vn;
    std::vector<std::vector<std::pair<long, long>>> f;
};

ObjText Parse(std::string const& text)
{
    ObjText o;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::istringstream l(line);
        std::string tag, corner;
        l >> tag;
        Vector3<double> p;
        if (tag == "v" || tag == "vn") {
            l >> p.x >> p.y >> p.z;
            (tag == "v" ? o.v : o.vn).push_back(p);
        }
        if (tag == "f")
            for (o.f.emplace_back(); l >> corner;) {
                std::size_t slash = corner.find("//");
                o.f.back().emplace_back(std::stol(corner), slash == std::string::npos ? 0 : std::stol(corner.substr(slash + 2)));
            }
    }
    return o;
}

void ExpectRoundTrip(Mesh const& source, char const* name, int expectedSharp)
{
    SCOPED_TRACE(name);
    Mesh back;
    ASSERT_TRUE(back.loadOBJText(Export(source, true)));
    ASSERT_MESH_VALID(back);
    EXPECT_EQ(back.verts.size(), source.verts.size());
    EXPECT_EQ(back.faces.size(), source.faces.size());
    EXPECT_EQ(back.edges.size(), source.edges.size());
    // Border half-edges are sharp by nature, flagged or not: compare the paired ones.
    int sharp = 0;
    for (std::size_t i = 0; i < source.edges.size(); ++i) {
        if (source.edges[i].half < 0)
            continue;
        sharp += source.edges[i].is(MeshEdge::SHARP);
        EXPECT_EQ(back.edges[i].is(MeshEdge::SHARP), source.edges[i].is(MeshEdge::SHARP)) << "half-edge " << i;
    }
    EXPECT_EQ(sharp, expectedSharp);
    for (std::size_t v = 0; v < source.verts.size(); ++v)
        EXPECT_EQ(back.verts[v].position, source.verts[v].position);
}

TEST(MeshOBJ, ExportThenImportKeepsCountsAndSharpEdges)
{
    ExpectRoundTrip(*Mesh::Box(1), "box", 24);
    ExpectRoundTrip(*Mesh::Cylinder(12), "cylinder", 48);
    ExpectRoundTrip(*Mesh::Sphere(Mesh::CubeHandle(), 2), "smooth sphere", 0);
    ExpectRoundTrip(*Mesh::Gear(5, 0.2f, 0.4f, 0.5f, 0.1f, 15), "gear", test::SharpEdgeCount(*Mesh::Gear(5, 0.2f, 0.4f, 0.5f, 0.1f, 15)) * 2);
    ExpectRoundTrip(*test::OpenWithHoles(), "open grid", 0);
    // Sharp between coplanar faces: only per-group normal indices can carry that.
    auto pair = test::FlatPair();
    pair->makeSharp(0);
    ExpectRoundTrip(*pair, "flat pair, all sharp", 2);
}

TEST(MeshOBJ, WithoutNormalsThereAreNoSharpEdges)
{
    Mesh back;
    ASSERT_TRUE(back.loadOBJText(Export(*Mesh::Box(1), false)));
    EXPECT_MESH_VALID(back);
    EXPECT_EQ(test::SharpEdgeCount(back), 0);
    EXPECT_EQ(back.faces.size(), 6u);
}

TEST(MeshOBJ, AppendWritesObjectHeaderAndTransformedPositions)
{
    auto m = test::ClosedCube();
    std::string text = Export(*m, false, Matrix34<double>::Translation({10, 0, 0}));
    EXPECT_EQ(text.rfind("\no Object1\n# 8 verts, 6 faces\nv 9.5 -0.5 -0.5\n", 0), 0u);
    EXPECT_NE(text.find("\nf 1 3 4 2\n"), std::string::npos);
}

TEST(MeshOBJ, SaveWritesSeveralObjectsWithContinuingIndices)
{
    QTemporaryDir dir;
    std::string path = dir.filePath("scene").toStdString();
    auto cube = test::ClosedCube();
    // One element shown by two tools: two objects with their own coordinates.
    std::vector<PlacedMesh> list = {{cube.get(), Matrix34<double>()},
                                    {cube.get(), Matrix34<double>::Translation({3, 0, 0})}};
    ASSERT_TRUE(saveOBJ(list, path, true));
    std::ifstream in(path + ".obj");
    std::stringstream text;
    text << in.rdbuf();
    std::string s = text.str();
    EXPECT_EQ(s.rfind("# Vellumbra OBJ export\n# Global: 2 objects, 16 vertices, 12 faces\n", 0), 0u);
    EXPECT_NE(s.find("o Object2"), std::string::npos);
    EXPECT_NE(s.find("f 9//"), std::string::npos) << "the second object's indices continue";
    // Normal indices count from the start of the file: each "vn" line is used, none twice over
    // two objects, and none is relative.
    ObjText o = Parse(s);
    std::vector<int> uses(o.vn.size(), 0);
    for (std::size_t f = 0; f < o.f.size(); ++f)
        for (auto const& corner : o.f[f]) {
            ASSERT_GE(corner.second, 1);
            ASSERT_LE(corner.second, long(o.vn.size()));
            uses[std::size_t(corner.second - 1)] |= f < 6 ? 1 : 2;
        }
    for (int u : uses)
        EXPECT_TRUE(u == 1 || u == 2);
    AABB box;
    auto meshes = Mesh::loadSeparateOBJ(path + ".obj", box, true);
    ASSERT_EQ(meshes.size(), 2u);
    for (auto& m : meshes) {
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(m->faces.size(), 6u);
    }
    EXPECT_FLOAT_EQ(meshes[1]->verts[0].position.x, 2.5f);
    EXPECT_DOUBLE_EQ(box.max.x, 3.5);
    EXPECT_FALSE(saveOBJ(list, dir.filePath("missing/dir/x.obj").toStdString(), true));
}

TEST(MeshOBJ, LineEndsCommentsContinuationsAndAByteOrderMarkAreRead)
{
    std::string const v = "v 5 0 0\nv 1 0 0\nv 0 1 0\n";
    for (std::string text : {v + "f 1 2 3\n", std::string("v 5 0 0\rv 1 0 0\rv 0 1 0\rf 1 2 3\r"),
                             std::string("v 5 0 0\r\nv 1 0 0\r\nv 0 1 0\r\nf 1 2 3\r\n"), v + "f 1 2 3",
                             "\xEF\xBB\xBF" + v + "f 1 2 3\n", v + "f 1 2 3 # the first\n", v + "f 1 2 3# x\n",
                             v + "f 1 2 \\\n 3\n", v + "f 1 \\\r\n2 \\  \r\n 3\r\n", std::string("v 5 \\\n0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3")}) {
        SCOPED_TRACE(text);
        Mesh m;
        EXPECT_TRUE(m.loadOBJText(text));
        EXPECT_MESH_VALID(m);
        EXPECT_EQ(m.faces.size(), 1u);
        EXPECT_EQ(m.verts.size(), 3u);
        EXPECT_EQ(m.verts.empty() ? Vector3<float>() : m.verts[0].position, Vector3<float>(5, 0, 0));
    }
}

// A pair of faces is cut where the normal indices of its two sides differ at either end.
TEST(MeshOBJ, NormalIndicesThatDifferAtEitherEndMakeASharpEdge)
{
    struct Case {
        char const* faces;
        bool sharp;
    } cases[] = {
        {"f 1//1 2//1 3//1\nf 3//1 2//1 4//1\n", false},
        {"f 1//1 2//1 3//1\nf 3//1 2//2 4//2\n", true}, // differ at vertex 2 only
        {"f 1//1 2//1 3//1\nf 3//2 2//1 4//2\n", true}, // differ at vertex 3 only
        {"f 1//1 2//1 3//1\nf 3//2 2//2 4//2\n", true},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.faces);
        Mesh m;
        ASSERT_TRUE(m.loadOBJText(std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvn 0 0 1\nvn 0 0 1\n") + c.faces));
        EXPECT_MESH_VALID(m);
        int e = m.findEdge(1, 2);
        EXPECT_TRUE(e >= 0 && m.edges[e].half >= 0 && m.edges[e].is(MeshEdge::SHARP) == c.sharp);
    }
}

// Corner order and normals of the written faces agree with the transformed positions, for
// matrices that mirror, shear or scale unevenly: faces stay outward, normals perpendicular.
TEST(MeshOBJ, ExportedFacesAndNormalsFollowTheMatrix)
{
    using M3 = Matrix3<double>;
    struct Case {
        char const* name;
        Matrix34<double> M;
    } cases[] = {
        {"identity", Matrix34<double>()},
        {"translation", Matrix34<double>::Translation({3, -1, 2})},
        {"uneven scale", Matrix34<double>(M3::Scale(Vector3<double>(1, 4, 0.25)))},
        {"shear", Matrix34<double>(M3(1, 0, 0, 0.8, 1, 0, 0.3, 0, 1))},
        {"mirror", Matrix34<double>::Mirror({3, 0, 0}, {1, 0, 0})},
        {"mirror and shear", Matrix34<double>(M3(-1, 0, 0, 0.8, 1, 0, 0, 0, 2))},
    };
    auto solid = Mesh::Octahedron(); // sharp edges, and no face normal along an axis
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        ObjText o = Parse(Export(*solid, true, c.M));
        EXPECT_EQ(o.f.size(), 8u);
        Vector3<double> centre;
        for (auto const& p : o.v)
            centre += p / double(o.v.size());
        for (auto const& face : o.f) {
            std::vector<Vector3<double>> ring;
            for (auto const& corner : face)
                ring.push_back(o.v.at(std::size_t(corner.first - 1)));
            Vector3<double> n = NormalFromPolygon(ring.data(), int(ring.size())).normalize();
            EXPECT_GT(n.dot(ring[0] - centre), 0) << "the face points inward";
            for (auto const& corner : face)
                EXPECT_NEAR(o.vn.at(std::size_t(corner.second - 1)).dot(n), 1, 1e-6);
        }
    }
}

TEST(MeshOBJ, TextureIndicesNegativeIndicesAndOtherLinesAreHandled)
{
    LogCapture log;
    Mesh m;
    ASSERT_TRUE(m.loadOBJText("# comment\nmtllib x.mtl\no thing\ng group\ns 1\n"
                              "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\nusemtl red\n"
                              "f 1/1/1 2/1/1 3/1/1\nf -4 -2 -1\n\tf  2//1   4//1 3//1  \n"));
    EXPECT_MESH_VALID(m);
    EXPECT_EQ(m.faces.size(), 3u);
    EXPECT_EQ(m.faceVerts(1), (std::vector<int>{0, 2, 3})); // "-4 -2 -1" counts back from the last vertex
    EXPECT_TRUE(log.entries.empty()) << log.all().toStdString();
}

TEST(MeshOBJ, BadIndicesAndShortFacesAreSkippedWithOneWarning)
{
    LogCapture log;
    Mesh m;
    ASSERT_TRUE(m.loadOBJText("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\n"
                              "f 1 2 3\n"
                              "f 0 1 2\n"            // zero
                              "f 2 4 9\n"            // out of range
                              "f -9 1 2\n"           // relative, before the first vertex
                              "f 2 x 4\n"            // not a number
                              "f 99999999999999999999999 1 2\n" // overflows
                              "f 1 2\n"              // two corners
                              "f 3\n"                // one corner
                              "f 2 2 4 4\n"          // collapses to two distinct corners
                              "f\n"));                  // no corners: not a face line at all
    EXPECT_MESH_VALID(m);
    EXPECT_EQ(m.faces.size(), 1u);
    ASSERT_EQ(log.entries.size(), 1u);
    EXPECT_EQ(log.entries[0].second, 1);
    EXPECT_EQ(log.entries[0].first.toStdString(),
              "OBJ import: skipped 5 faces with an index that is zero, out of range or unreadable; "
              "skipped 3 faces with fewer than 3 distinct corners.");
}

TEST(MeshOBJ, MissingOrBadCoordinatesKeepTheIndexing)
{
    LogCapture log;
    Mesh m;
    ASSERT_TRUE(m.loadOBJText("v 0 0\nv 1 0 zz\nv 0 1 0\nv nan 1 1\nf 1 2 3\n"));
    EXPECT_MESH_VALID(m);
    EXPECT_EQ(m.verts.size(), 3u);
    EXPECT_EQ(m.verts[2].position, Vector3<float>(0, 1, 0));
    EXPECT_TRUE(log.all().contains("3 vertex lines with missing or unreadable coordinates"));
}

TEST(MeshOBJ, EmptyAndFacelessFilesSayWhy)
{
    for (std::string text : {std::string(), std::string("\n\n\r"), std::string("v 1 2 3\nv 4 5 6\n"),
                             std::string("# nothing\0here", 14)}) {
        LogCapture log;
        Mesh m;
        EXPECT_FALSE(m.loadOBJText(text));
        EXPECT_TRUE(m.empty());
        EXPECT_TRUE(log.all().contains("OBJ import: the file has no faces."));
    }
    LogCapture log;
    Mesh m;
    EXPECT_FALSE(m.loadOBJ("/nonexistent/file.obj"));
    EXPECT_TRUE(log.all().contains("Cannot open"));
}

TEST(MeshOBJ, AHugePolygonAndManyFacesLoad)
{
    std::ostringstream text;
    int n = 100000;
    for (int i = 0; i < n; ++i)
        text << "v " << std::cos(i * 6.283185307 / n) << " " << std::sin(i * 6.283185307 / n) << " 0\n";
    text << "f";
    for (int i = 1; i <= n; ++i)
        text << " " << i;
    text << "\n";
    Mesh m;
    ASSERT_TRUE(m.loadOBJText(text.str()));
    EXPECT_MESH_VALID(m);
    EXPECT_EQ(m.faceCount(0), n);
    EXPECT_EQ(m.triangles, n - 2);
}

TEST(MeshOBJ, SeparateObjectsStartAtVertexLinesAfterFaces)
{
    AABB box;
    auto meshes = Mesh::loadSeparateOBJText("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"
                                            "v 5 0 0\nv 6 0 0\nv 5 1 0\nv 6 1 0\nf 4 5 7 6\nf 1 2 3\n",
                                            box);
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(meshes[0]->faces.size(), 1u);
    EXPECT_EQ(meshes[1]->faces.size(), 1u) << "a face on another object's vertices is skipped";
    EXPECT_EQ(meshes[1]->verts.size(), 4u);
    EXPECT_DOUBLE_EQ(box.max.x, 6);
}

TEST(MeshOBJ, ImperfectRealWorldMeshImportsAndReportsItsRepairs)
{
    // A grid with a hole, one face listed backwards, and a second sheet touching at a corner.
    std::ostringstream text;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            text << "v " << x << " " << y << " 0\n";
    text << "v 4 4 0\nv 3 4 0\n";
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) {
            if (x == 1 && y == 1)
                continue; // the hole
            int a = y * 4 + x + 1;
            if (x == 2 && y == 0)
                text << "f " << a << " " << a + 4 << " " << a + 5 << " " << a + 1 << "\n"; // flipped
            else
                text << "f " << a << " " << a + 1 << " " << a + 5 << " " << a + 4 << "\n";
        }
    text << "f 16 17 18\n"; // touches the grid at its far corner only
    LogCapture log;
    Mesh m;
    ASSERT_TRUE(m.loadOBJText(text.str()));
    EXPECT_MESH_VALID(m);
    EXPECT_EQ(m.faces.size(), 9u);
    EXPECT_EQ(log.all(), "Fixed orientations. Fixed non-manifold vertices. \n");
    EXPECT_EQ(m.components, 2);
}

TEST(MeshOBJ, ImportRefusesNonManifoldMeshes)
{
    QTemporaryDir dir;
    std::string path = dir.filePath("bad.obj").toStdString();
    std::ofstream(path) << "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 -1 0\nv 0 0 1\nf 1 2 3\nf 1 2 4\nf 2 1 5\n"
                           "v 9 9 9\nv 8 9 9\nv 9 8 9\nf 6 7 8\n";
    LogCapture log;
    AABB box;
    auto meshes = importOBJ(path, box);
    ASSERT_EQ(meshes.size(), 1u) << "the clean second object stays";
    EXPECT_EQ(meshes[0]->faces.size(), 1u);
    EXPECT_TRUE(log.all().contains("Cannot import non-manifold mesh."));
}

// Found by the fuzz run below: faces wound both ways around shared edges once left rings
// half reversed, because single half-edges were turned instead of whole faces.
TEST(MeshOBJFuzz, RegressionMixedWindingKeepsRingsWhole)
{
    Mesh m;
    ASSERT_TRUE(m.loadOBJText(
        "v 0.491413683 -0.131673902 0.100000001\n"
        "v 0.0912511349 0 -0.100000001\n"
        "v 0.291251153 0 -0.100000001\n"
        "v 0.47451216 -0.127145156 -0.100000001\n"
        "v 0.0543744303 0.0941792876 0.100000001\n"
        "v 0.154374421 0.26738438 0.100000001\n"
        "v 0.131673917 0.491413683 0.100000001\n"
        "v 0.0456255637 0.079025805 -0.100000001\n"
        "v 0.145625561 0.252230912 -0.100000001\n"
        "v 0.127145171 0.47451216 -0.100000001\n"
        "v -0.0543744415 0.0941792801 0.100000001\n"
        "v -0.15437445 0.26738435 0.100000001\n"
        "v -0.131673962 0.491413683 0.100000001\n"
        "v -0.0456255712 0.0790257975 -0.100000001\n"
        "v -0.145625591 0.252230883 -0.100000001\n"
        "v -0.127145216 0.47451216 -0.100000001\n"
        "v -0.108748868 -9.50712842e-09 0.100000001\n"
        "v -0.308748871 -2.69916836e-08 0.100000001\n"
        "v -0.491413683 -0.131673917 0.100000001\n"
        "v -0.0912511349 -7.97742761e-09 -0.100000001\n"
        "v -0.291251153 -2.54619845e-08 -0.100000001\n"
        "v -0.47451216 -0.127145171 -0.100000001\n"
        "v -0.0543744229 -0.0941792876 0.100000001\n"
        "v -\x90"".154374406 -0.26738438 0.100000001\n"
        "v -0.359739721 -0.35973984 0.100000001\n"
        "v -0.04562556 -0.079025805 -0.100000001\n"
        "v -0.145625547 -0.252230912 -0.100000001\n"
        "v -0.347366959 -0.347367078 -0.100000001\n"
        "v 0.0543744229 -0.0941792876 0.100000001\n"
        "v 0.154374406 -0.26738438 0.100000001\n"
        "v 0.359739721 -0.3100000001\n"
        "v 0.04562556 -0.079025805 -0.100000001\n"
        "v 0.145625547 -0.252230912 -0.100000001\n"
        "v 0.347366959 -0.347367078 -0.100000001\n"
        "f 10//-72 4//-87 1//-96 7//-79\n"
        "f 28//-23 29//-21 23//-37 22//-39\n"
        "f 34//-8 28//-22 25//-30 31//-15\n"
        "f 4//-86 34//-6 31//-14 1//-94\n"
        "v 1 1 0\n"
        "f 3 4 10 9\n"
        "f 9 10 16 15\n"
        "f 15 16 22 21\n"
        "f 16 17 23 22\n"
        "f 28 29 35 34\n"));
    EXPECT_MESH_VALID(m);
}

// Random mutations of a valid file: whatever comes out is a valid mesh or nothing.
TEST(MeshOBJFuzz, MutatedFilesNeverBreakTheMesh)
{
    std::string seed = Export(*Mesh::Gear(3, 0.1f, 0.3f, 0.5f, 0.1f, 5), true) +
                       Export(*test::OpenWithHoles(), false) + "f 1 2 3\nf -1 -2 -3\n";
    std::mt19937 rng(1234);
    char const alphabet[] = "0123456789 -+./\nfv\r#e";
    for (int run = 0; run < 1500; ++run) {
        std::string text = seed;
        int edits = 1 + int(rng() % 8);
        for (int k = 0; k < edits && !text.empty(); ++k) {
            std::size_t at = rng() % text.size();
            switch (rng() % 5) {
            case 0: text[at] = alphabet[rng() % (sizeof(alphabet) - 1)]; break;
            case 1: text.erase(at, 1 + rng() % 40); break;
            case 2: text.insert(at, text.substr(rng() % text.size(), 1 + rng() % 60)); break;
            case 3: text.insert(at, 1, alphabet[rng() % (sizeof(alphabet) - 1)]); break;
            default: text[at] = char(rng() % 256); break;
            }
        }
        Communicate::instance().quiet = false;
        Mesh m;
        bool loaded = m.loadOBJText(text);
        if (!test::Violations(m).empty()) {
            // Keep the failing file for inspection, in a folder of its own.
            QTemporaryDir kept;
            kept.setAutoRemove(false);
            std::ofstream(kept.filePath("fuzzfail.obj").toStdString()) << text;
        }
        ASSERT_EQ(test::Violations(m), "") << "run " << run;
        ASSERT_EQ(loaded, !m.faces.empty()) << "run " << run;
        AABB box;
        for (auto& part : Mesh::loadSeparateOBJText(text, box))
            ASSERT_EQ(test::Violations(*part), "") << "separate, run " << run;
    }
}

} // namespace
} // namespace vel
