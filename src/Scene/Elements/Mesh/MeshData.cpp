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

#include <cmath>

namespace vel {

namespace {

constexpr int VERSION_DATA_TYPE = 20200406; // the data type byte exists from here on
constexpr int VERSION_PBR16 = 20211202;     // materials are 16-byte Pbr from here on
constexpr int VERSION_OLDEST = 20180605;    // older layouts are not read

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

void Mesh::DataWrite(OFile& out, unsigned blockId) const
{
    VEL_ASSERT_MSG(!hasInactive, "a mesh is compacted before it is written");
    out.writeValue(blockId);
    out.writeValue(unsigned(DataSize()));
    out.writeValue(center);
    out.writeValue(scale);
    out.writeValue(uint8_t(dataType));
    out.writeValue(int(verts.size()));
    for (std::size_t v = 0; v < verts.size(); ++v) {
        out.writeValue(verts[v].position);
        out.writeValue(uint8_t(verts[v].flags & 31u));
    }
    out.writeValue(int(edges.size()));
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge const& e = edges[i];
        out.writeValue(e.v[1]);
        out.writeValue(e.e[0]);
        out.writeValue(uint8_t(e.flags & 31u));
        if (dataType == 1)
            out.writeValue(materials[i]);
        if (dataType == 2)
            out.writeValue(uvs[i]);
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
    clear();
    invalid = false;
    if (version < VERSION_OLDEST)
        return fail(*this, QString("mesh records of version %1 are not supported.").arg(version));
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

    int oldMaterialSize = version < VERSION_PBR16 ? 20 : 16;
    int recordSize = old ? 9 + oldMaterialSize : edgeRecordSize(dataType);
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
        if (old && oldMaterialSize == 20) {
            wvec4 color, light;
            short metal = 0, rough = 0;
            ok = in.readValue(color) && in.readValue(light) && in.readValue(metal) && in.readValue(rough);
            material = Pbr(color, light, rough, metal);
        } else if (old || dataType == 1) {
            ok = in.readValue(material);
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
