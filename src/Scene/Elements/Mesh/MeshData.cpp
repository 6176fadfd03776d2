// Mesh file fields: DataSize, DataWrite, DataRead.
//
// Only what cannot be rebuilt is stored: positions and vertex flags, and per half-edge its end
// vertex v[1], its ring predecessor e[0], its flags and its corner data. v[0], e[1], twins,
// faces, components, patches and normals are rebuilt by initializeDataLoad. The reader checks
// every count against the bytes left and every index before it builds anything, so a corrupt
// record ends in a log line and an empty mesh.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Math/PackedVectors.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"

#include <cmath>
#include <algorithm>
#include <cstring>
#include <vector>

namespace vel {

namespace {

constexpr int VERSION_DATA_TYPE = 20200406; // the data type byte exists from here on
constexpr int VERSION_PBR16 = 20211202;     // materials are 16-byte Pbr from here on
constexpr int VERSION_READ_OLD = 20180605;  // before: DataReadOld

int edgeRecordSize(int dataType)
{
    return 9 + (dataType == 1 ? 16 : 0) + (dataType == 2 ? 4 : 0);
}

bool fail(Mesh& m, QString const& why)
{
    m.clear();
    m.invalid = true;
    LogInfo("Cannot read mesh: " + why, 2);
    return false;
}

} // namespace

int Mesh::DataSize() const
{
    return 33 + 13 * int(verts.size()) + edgeRecordSize(dataType) * int(edges.size());
}

namespace {

// Fields go through a local buffer: one stream call per 64 KiB, not one per field, which
// cost more than the copying itself.
class Packer {
public:
    // At most 64 KiB, and no more than the record needs: scenes hold many small meshes.
    Packer(OFile& out, std::size_t bytes)
        : out(out)
        , buffer(std::min<std::size_t>(bytes, 1 << 16))
    {
    }
    ~Packer() { flush(); }
    template <class T>
    void put(T const& value)
    {
        if (used + sizeof(T) > buffer.size())
            flush();
        std::memcpy(buffer.data() + used, &value, sizeof(T));
        used += sizeof(T);
    }
    void flush()
    {
        out.write(buffer.data(), std::streamsize(used));
        used = 0;
    }

private:
    OFile& out;
    std::vector<char> buffer;
    std::size_t used = 0;
};

} // namespace

void Mesh::DataWrite(OFile& out, unsigned blockId) const
{
    VEL_ASSERT_MSG(!hasInactive, "a mesh is compacted before it is written");
    Packer p(out, std::size_t(DataSize()));
    p.put(blockId);
    p.put(unsigned(DataSize()));
    p.put(center);
    p.put(scale);
    p.put(uint8_t(dataType));
    p.put(int(verts.size()));
    for (std::size_t v = 0; v < verts.size(); ++v) {
        p.put(verts[v].position);
        p.put(uint8_t(verts[v].flags & 31u));
    }
    p.put(int(edges.size()));
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge const& e = edges[i];
        p.put(e.v[1]);
        p.put(e.e[0]);
        p.put(uint8_t(e.flags & 31u));
        if (dataType == 1)
            p.put(materials[i]);
        if (dataType == 2)
            p.put(uvs[i]);
    }
}

void Mesh::DataWrite(OFile& out, std::unordered_map<Element*, int>&)
{
    DataWrite(out);
}

void Mesh::DataRead(IFile& in)
{
    DataRead(in, FILE_VERSION_CURRENT);
}

bool Mesh::DataRead(IFile& in, int version)
{
    if (version < VERSION_READ_OLD)
        return DataReadOld(in, version);
    return readRecord(in, version);
}

// Records before 20180605 have the layout of those up to 20200406 (no data type byte,
// 1-byte vertex flags, corner materials of 20 bytes, a trailing list to skip): the fields of
// that generation are all the format tells of them.
bool Mesh::DataReadOld(IFile& in, int version)
{
    return readRecord(in, version < VERSION_DATA_TYPE ? version : VERSION_DATA_TYPE - 1);
}

bool Mesh::readRecord(IFile& in, int version)
{
    clear();
    invalid = false;
    bool old = version < VERSION_DATA_TYPE;
    uint8_t type = 1;
    if (!in.readValue(center) || !in.readValue(scale) || (!old && !in.readValue(type)))
        return fail(*this, "the record is truncated.");
    if (type > 2)
        return fail(*this, QString("unknown data type %1.").arg(type));
    setDataType(type);

    auto left = [&in]() { return in.size() - in.pos(); };
    int nv = 0;
    if (!in.readValue(nv) || nv < 0 || nv > INDEX_MAX || (long long)nv * 13 > left())
        return fail(*this, "the vertex count does not fit the record.");
    for (int v = 0; v < nv; ++v) {
        Vector3<float> p;
        uint8_t flags = 0;
        if (!in.readValue(p) || !in.readValue(flags))
            return fail(*this, "the record is truncated.");
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            return fail(*this, "a vertex position is not a number.");
        unsigned stored = old ? ((flags & 32) ? MeshVert::SHARP | MeshVert::ANCHOR : 0u) : (flags & 31u);
        verts.push_back(MeshVert(p, -1, stored | MeshVert::ACTIVE));
    }

    int materialSize = version < VERSION_PBR16 ? 20 : 16;
    int recordSize = old ? 9 + materialSize : edgeRecordSize(dataType) + (dataType == 1 ? materialSize - 16 : 0);
    int ne = 0;
    if (!in.readValue(ne) || ne < 0 || ne > INDEX_MAX || (long long)ne * recordSize > left())
        return fail(*this, "the half-edge count does not fit the record.");
    for (int i = 0; i < ne; ++i) {
        MeshEdge e;
        uint8_t flags = 0;
        if (!in.readValue(e.v[1]) || !in.readValue(e.e[0]) || !in.readValue(flags))
            return fail(*this, "the record is truncated.");
        if (e.v[1] < 0 || e.v[1] >= nv || e.e[0] < 0 || e.e[0] >= ne)
            return fail(*this, QString("half-edge %1 points outside the mesh.").arg(i));
        e.flags = (old ? ((flags & 4) ? MeshEdge::SHARP : 0u) : (flags & MeshEdge::SHARP)) | MeshEdge::ACTIVE;
        edges.push_back(e);
        Pbr material;
        uint32_t uv = 0;
        bool ok = true;
        if (old || dataType == 1) {
            ok = ReadFilePbr(in, version, material);
        } else if (dataType == 2) {
            ok = in.readValue(uv);
        }
        if (!ok)
            return fail(*this, "the record is truncated.");
        if (dataType == 1)
            materials.push_back(material);
        if (dataType == 2)
            uvs.push_back(uv);
    }
    if (old) {
        int count = 0;
        if (!in.readValue(count) || count < 0 || (long long)count * 5 > left() || !in.skipRawData((long long)count * 5))
            return fail(*this, "the record is truncated.");
    }

    // The rings: e[0] must be a permutation whose cycles are faces of three or more distinct
    // vertices; anything else cannot be a face.
    std::vector<int> next(std::size_t(ne), -1);
    for (int i = 0; i < ne; ++i) {
        int p = edges[std::size_t(i)].e[0];
        if (next[std::size_t(p)] >= 0)
            return fail(*this, QString("half-edge %1 follows two others.").arg(p));
        next[std::size_t(p)] = i;
    }
    std::vector<char> seen(std::size_t(ne), 0);
    std::vector<int> stamp(std::size_t(nv), -1);
    for (int s = 0; s < ne; ++s) {
        if (seen[std::size_t(s)])
            continue;
        int n = 0;
        for (int c = s; !seen[std::size_t(c)]; c = next[std::size_t(c)]) {
            seen[std::size_t(c)] = 1;
            int v = edges[std::size_t(c)].v[1];
            if (stamp[std::size_t(v)] == s)
                return fail(*this, QString("a face passes vertex %1 twice.").arg(v));
            stamp[std::size_t(v)] = s;
            ++n;
        }
        if (n < 3)
            return fail(*this, QString("a face has %1 sides.").arg(n));
    }
    initializeDataLoad();
    return true;
}

} // namespace vel
