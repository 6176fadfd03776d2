// Mesh file fields through a byte buffer: round trips of every data type, the older versions'
// layout, malformed records (truncated, huge counts, broken rings) and a random-mutation run.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Communicate.h"
#include "MeshFixtures.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"

#include <gtest/gtest.h>

#include <random>

namespace vel {
namespace {

using test::LogCapture;

std::string Write(Mesh const& m)
{
    OFile out;
    m.DataWrite(out);
    return out.bytes();
}

// Reads the fields after the 8-byte block header.
bool Read(Mesh& m, std::string const& bytes, int version = Mesh::FILE_VERSION_CURRENT, std::size_t skip = 8)
{
    std::string body = bytes.size() >= skip ? bytes.substr(skip) : std::string();
    IFile in(QByteArray(body.data(), int(body.size())));
    return m.DataRead(in, version);
}

// A gear of every data type, an open mesh with holes, and an empty one.
TEST(MeshData, RoundTripsLoseNoSharpFlagOrCornerData)
{
    for (int type = 0; type <= 4; ++type) {
        SCOPED_TRACE(type);
        auto m = type == 3 ? test::OpenWithHoles() : type == 4 ? std::make_unique<Mesh>() : Mesh::Gear(4, 0.2f, 0.3f, 0.5f, 0.1f, 5);
        m->setDataType(type % 3);
        for (std::size_t i = 0; i < m->edges.size(); ++i) {
            if (m->hasPbr())
                m->materials[i].setColor(0, int(i % 8000));
            if (m->hasUVs())
                m->uvs[i] = uint32_t(i * 2654435761u);
        }
        std::string bytes = Write(*m);
        ASSERT_EQ(int(bytes.size()), m->DataSize());
        uint32_t id = 0, size = 0;
        std::memcpy(&id, bytes.data(), 4);
        std::memcpy(&size, bytes.data() + 4, 4);
        EXPECT_EQ(id, 0xe0000001u);
        EXPECT_EQ(int(size), m->DataSize());
        EXPECT_EQ(m->DataSize(), 33 + 13 * int(m->verts.size()) + (m->hasPbr() ? 25 : m->hasUVs() ? 13 : 9) * int(m->edges.size()));
        Mesh back;
        ASSERT_TRUE(Read(back, bytes));
        ASSERT_MESH_VALID(back);
        EXPECT_EQ(test::RecordDifference(*m, back), "");
        EXPECT_EQ(back.center, m->center);
        EXPECT_EQ(back.scale, m->scale);
    }
}

// The 20-byte material of the older layouts: colour (1, 0, 0.5, 1), no light, metal 0,
// rough -32768.
void WriteOldMaterial(OFile& out)
{
    out.writeValue(wvec4{65535, 0, 32768, 65535});
    out.writeValue(wvec4{0, 0, 0, 0});
    out.writeValue(short(0));
    out.writeValue(short(-32768));
}

// The layout before the data type byte: vertex flags bit 32 is sharp and anchor, half-edge
// flags bit 4 is sharp, an old material follows each half-edge, and a skipped list ends it.
std::string OldRecord(Mesh const& m)
{
    OFile out;
    out.writeValue(m.center);
    out.writeValue(m.scale);
    out.writeValue(int(m.verts.size()));
    for (std::size_t v = 0; v < m.verts.size(); ++v) {
        out.writeValue(m.verts[v].position);
        out.writeValue(uint8_t(m.verts[v].is(MeshVert::ANCHOR) ? 32 : 0));
    }
    out.writeValue(int(m.edges.size()));
    for (std::size_t i = 0; i < m.edges.size(); ++i) {
        out.writeValue(m.edges[i].v[1]);
        out.writeValue(m.edges[i].e[0]);
        out.writeValue(uint8_t(m.edges[i].is(MeshEdge::SHARP) ? 4 : 0));
        WriteOldMaterial(out);
    }
    out.writeValue(int(2));
    for (int k = 0; k < 10; ++k)
        out.writeValue(uint8_t(k));
    return out.bytes();
}

TEST(MeshData, OlderVersionsReadTheirLayout)
{
    auto box = Mesh::Box(1);
    // 20180402 goes through DataReadOld, whose records have the same fields.
    for (int version : {20190212, 20180402}) {
        Mesh back;
        ASSERT_TRUE(Read(back, OldRecord(*box), version, 0)) << version;
        ASSERT_MESH_VALID(back);
        EXPECT_TRUE(back.hasPbr());
        EXPECT_EQ(test::SharpEdgeCount(back), 12);
        EXPECT_EQ(back.faces.size(), 6u);
        EXPECT_EQ(back.materials[0], Pbr(wvec4{65535, 0, 32768, 65535}, wvec4{0, 0, 0, 0}, -32768, 0));
        for (std::size_t v = 0; v < back.verts.size(); ++v)
            EXPECT_TRUE(back.verts[v].is(MeshVert::ANCHOR));
    }

    // With the data type byte but before 20211202, corner materials are 20 bytes.
    auto m = test::ClosedOctahedron();
    m->setDataType(1);
    std::string current = Write(*m);
    std::string old = current.substr(8, 12 + 4 + 1 + 4 + 13 * m->verts.size() + 4);
    for (std::size_t i = 0; i < m->edges.size(); ++i) {
        // v[1], e[0] and flags of the current record, then the 20-byte material.
        std::size_t from = 8 + 12 + 4 + 1 + 4 + 13 * m->verts.size() + 4 + 25 * i;
        OFile material;
        WriteOldMaterial(material);
        old += current.substr(from, 9) + material.bytes();
    }
    Mesh back;
    ASSERT_TRUE(Read(back, old, 20211111, 0));
    ASSERT_MESH_VALID(back);
    EXPECT_EQ(back.faces.size(), m->faces.size());
    EXPECT_EQ(back.materials[5], Pbr(wvec4{65535, 0, 32768, 65535}, wvec4{0, 0, 0, 0}, -32768, 0));
}

TEST(MeshData, EveryTruncationIsRefusedWithAMessage)
{
    auto m = test::ClosedOctahedron();
    m->setDataType(1);
    std::string bytes = Write(*m);
    for (std::size_t cut = 8; cut < bytes.size(); ++cut) {
        LogCapture log;
        Mesh back;
        EXPECT_FALSE(Read(back, bytes.substr(0, cut))) << "cut at " << cut;
        EXPECT_TRUE(back.empty());
        ASSERT_EQ(log.entries.size(), 1u);
        EXPECT_TRUE(log.entries[0].first.startsWith("Cannot read mesh: "));
        EXPECT_EQ(log.entries[0].second, 2);
    }
}

// Patches one 4-byte value of a written record.
std::string Patched(std::string bytes, std::size_t offset, int value)
{
    std::memcpy(&bytes[offset], &value, 4);
    return bytes;
}

TEST(MeshData, CorruptCountsIndicesAndRingsAreRefused)
{
    auto m = test::ClosedCube();
    std::string bytes = Write(*m);
    std::size_t vertexCount = 8 + 17, edgeCount = vertexCount + 4 + 13 * 8, firstEdge = edgeCount + 4;
    struct Case {
        char const* what;
        std::string bytes;
        char const* message;
    };
    std::string badType = bytes;
    badType[8 + 16] = 7;
    std::string nan = bytes;
    float qnan = std::nanf("");
    std::memcpy(&nan[vertexCount + 4], &qnan, 4);
    // A whole record after an 8-byte header, with the given (vertex, predecessor) half-edges.
    auto record = [](std::vector<std::pair<int, int>> const& edges, int verts) {
        OFile out;
        out.writeValue(uint64_t(0));
        out.writeValue(Vector3<float>());
        out.writeValue(1.0f);
        out.writeValue(uint8_t(0));
        out.writeValue(verts);
        for (int v = 0; v < verts; ++v) {
            out.writeValue(Vector3<float>(float(v), float(v * v), 0));
            out.writeValue(uint8_t(1));
        }
        out.writeValue(int(edges.size()));
        for (auto const& e : edges) {
            out.writeValue(e.first);
            out.writeValue(e.second);
            out.writeValue(uint8_t(1));
        }
        return out.bytes();
    };
    std::string twoOfSame = Patched(bytes, firstEdge + 4, 1);
    twoOfSame = Patched(twoOfSame, firstEdge + 9 + 4, 1); // edges 0 and 1 both follow 1
    std::vector<Case> cases = {
        {"data type", badType, "unknown data type 7."},
        {"huge vertex count", Patched(bytes, vertexCount, 0x7fffffff), "the vertex count does not fit the record."},
        {"negative vertex count", Patched(bytes, vertexCount, -3), "the vertex count does not fit the record."},
        {"huge edge count", Patched(bytes, edgeCount, 1 << 26), "the half-edge count does not fit the record."},
        {"vertex out of range", Patched(bytes, firstEdge, 8), "half-edge 0 points outside the mesh."},
        {"predecessor out of range", Patched(bytes, firstEdge + 4, -1), "half-edge 0 points outside the mesh."},
        {"not a permutation", twoOfSame, "half-edge 1 follows two others."},
        {"position not a number", nan, "a vertex position is not a number."},
        {"a ring of two sides", record({{0, 1}, {1, 0}}, 2), "a face has 2 sides."},
        {"a ring passing a vertex twice", record({{0, 3}, {1, 0}, {0, 1}, {2, 2}}, 3), "a face passes vertex 0 twice."},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        LogCapture log;
        Mesh back;
        EXPECT_FALSE(Read(back, c.bytes));
        EXPECT_TRUE(back.empty());
        EXPECT_EQ(log.all().toStdString(), std::string("Cannot read mesh: ") + c.message + "\n");
    }
}

// Found by the fuzz run below: a record with sharpness on one half of a pair only left the
// vertex flags derived before the pair was made whole.
TEST(MeshDataFuzz, RegressionSharpOnOneHalfOnly)
{
    auto box = Mesh::Box(1);
    std::string bytes = Write(*box);
    std::size_t firstEdge = 8 + 17 + 4 + 13 * 8 + 4;
    for (std::size_t e = 0; e < box->edges.size(); ++e)
        if (box->edges[e].half > int(e))
            bytes[firstEdge + 9 * e + 8] = char(MeshEdge::ACTIVE); // drop SHARP on the first half of each pair
    Mesh back;
    ASSERT_TRUE(Read(back, bytes));
    EXPECT_MESH_VALID(back);
    EXPECT_EQ(test::SharpEdgeCount(back), 12);
}

// Random mutations of valid records: each read ends in a valid mesh or an empty one.
TEST(MeshDataFuzz, MutatedRecordsNeverBreakTheMesh)
{
    std::vector<std::string> seeds = {Write(*test::NonManifoldVertex()), Write(*Mesh::Cylinder(5))};
    auto withPbr = Mesh::Octahedron();
    withPbr->setDataType(1);
    seeds.push_back(Write(*withPbr));
    std::mt19937 rng(99);
    for (int run = 0; run < 3000; ++run) {
        std::string bytes = seeds[std::size_t(run) % seeds.size()];
        int edits = 1 + int(rng() % 6);
        for (int k = 0; k < edits; ++k) {
            std::size_t at = 8 + rng() % (bytes.size() - 8);
            switch (rng() % 4) {
            case 0: bytes[at] = char(rng()); break;
            case 1: bytes[at] = char(bytes[at] ^ (1 << (rng() % 8))); break;
            case 2: { // a small index nudged up or down
                std::size_t word = at & ~std::size_t(3);
                if (word + 4 <= bytes.size()) {
                    uint32_t v;
                    std::memcpy(&v, &bytes[word], 4);
                    v += uint32_t(rng() % 5) - 2u; // wraps like the int it may be
                    std::memcpy(&bytes[word], &v, 4);
                }
                break;
            }
            default: bytes.resize(at); break;
            }
            if (bytes.size() <= 8)
                break;
        }
        Communicate::instance().quiet = false;
        Mesh back;
        bool ok = Read(back, bytes);
        ASSERT_EQ(test::Violations(back), "") << "run " << run;
        if (!ok) {
            ASSERT_TRUE(back.verts.size() == 0 && back.edges.size() == 0) << "run " << run;
        }
    }
}

} // namespace
} // namespace vel
