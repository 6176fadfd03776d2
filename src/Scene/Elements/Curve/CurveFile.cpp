// Curve file fields: DataSize, DataWrite, DataRead.
//
// Only what cannot be rebuilt is stored: positions, vertex flags and radii, and per edge its
// two vertices, flags and end data. Links, components and frames are rebuilt by initialize.
// The reader checks every count against the bytes left and every index before it builds
// anything, so a damaged record ends in a log line and an empty curve.
#include "Scene/Elements/Curve/Curve.h"

#include "Core/Communicate.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"

#include <cmath>

namespace vel {

namespace {

constexpr int VERSION_READ_OLD = 20180604; // up to here: no data type or frames byte, float radii

int edgeRecordSize(int dataType)
{
    return 9 + (dataType == 1 ? 32 : 0) + (dataType == 2 ? 4 : 0);
}

bool fail(Curve& c, QString const& why)
{
    c.clear();
    c.hasFrames = false;
    c.invalid = true;
    LogInfo("Cannot read curve: " + why, 2);
    return false;
}

} // namespace

int Curve::DataSize() const
{
    return 34 + (13 + (hasFrames ? 2 : 0)) * int(verts.size()) + edgeRecordSize(dataType) * int(edges.size());
}

void Curve::DataWrite(OFile& out, std::unordered_map<Element*, int>&)
{
    out.writeValue(BlockId());
    out.writeValue(unsigned(DataSize()));
    out.writeValue(center);
    out.writeValue(scale);
    out.writeValue(static_cast<unsigned char>(dataType));
    out.writeValue(static_cast<unsigned char>(hasFrames ? 1 : 0));
    out.writeValue(int(verts.size()));
    for (size_t i = 0; i < verts.size(); ++i) {
        out.writeValue(verts[i].position);
        out.writeValue(static_cast<unsigned char>(verts[i].flags & 31u));
        if (hasFrames)
            out.writeValue(vertFrames[i].radius.bits);
    }
    out.writeValue(int(edges.size()));
    for (size_t i = 0; i < edges.size(); ++i) {
        out.writeValue(edges[i].v[0]);
        out.writeValue(edges[i].v[1]);
        out.writeValue(static_cast<unsigned char>(edges[i].flags & 15u)); // the visited mark is transient
        if (dataType == 1) {
            out.writeValue(materials[2 * i]);
            out.writeValue(materials[2 * i + 1]);
        } else if (dataType == 2) {
            out.writeValue(uvs[i]);
        }
    }
}

void Curve::DataRead(IFile& in)
{
    DataRead(in, FILE_VERSION);
}

void Curve::vertDataReadOld(IFile& in, int count, bool& ok)
{
    for (int i = 0; i < count && ok; ++i) {
        Vector3<float> p;
        unsigned char flags = 0;
        float r = 1;
        ok = in.readValue(p) && in.readValue(flags) && in.readValue(r);
        verts[size_t(i)].position = p;
        verts[size_t(i)].flags = flags & 31u;
        vertFrames[size_t(i)].radius = hfloat(std::isfinite(r) ? r : 1.0f);
    }
}

void Curve::edgeDataReadOld(IFile& in, int count, bool& ok)
{
    for (int i = 0; i < count && ok; ++i) {
        unsigned char flags = 0;
        ok = in.readValue(edges[size_t(i)].v[0]) && in.readValue(edges[size_t(i)].v[1]) && in.readValue(flags);
        edges[size_t(i)].flags = flags & 15u;
    }
}

bool Curve::DataRead(IFile& in, int version)
{
    clear();
    bool old = version <= VERSION_READ_OLD;
    unsigned char type = 0, frames = 1;
    if (!in.readValue(center) || !in.readValue(scale))
        return fail(*this, "the header is cut short.");
    if (!old && (!in.readValue(type) || !in.readValue(frames)))
        return fail(*this, "the header is cut short.");
    if (type > 2)
        return fail(*this, QString("unknown data type %1.").arg(type));
    hasFrames = frames != 0;
    dataType = type;
    int vertexBytes = old ? 17 : 13 + (hasFrames ? 2 : 0);
    int count = 0;
    if (!in.readValue(count) || count < 0 || count > in.left() / vertexBytes)
        return fail(*this, "the vertex count is larger than the record.");
    verts.assign(size_t(count), CurveVert());
    vertFrames.assign(hasFrames ? size_t(count) : 0, CurveFrame());
    bool ok = true;
    if (old) {
        vertDataReadOld(in, count, ok);
    } else {
        for (int i = 0; i < count && ok; ++i) {
            unsigned char flags = 0;
            ok = in.readValue(verts[size_t(i)].position) && in.readValue(flags) &&
                 (!hasFrames || in.readValue(vertFrames[size_t(i)].radius.bits));
            verts[size_t(i)].flags = flags & 31u;
        }
    }
    if (!ok)
        return fail(*this, "a vertex is cut short.");
    for (CurveVert const& v : verts)
        if (!std::isfinite(v.position.x) || !std::isfinite(v.position.y) || !std::isfinite(v.position.z))
            return fail(*this, "a vertex position is not a number.");
    int edgeBytes = old ? 9 : edgeRecordSize(dataType);
    int edgeCount = 0;
    if (!in.readValue(edgeCount) || edgeCount < 0 || edgeCount > in.left() / edgeBytes)
        return fail(*this, "the edge count is larger than the record.");
    edges.assign(size_t(edgeCount), CurveEdge());
    materials.assign(dataType == 1 ? 2 * size_t(edgeCount) : 0, Pbr());
    uvs.assign(dataType == 2 ? size_t(edgeCount) : 0, 0u);
    if (old) {
        edgeDataReadOld(in, edgeCount, ok);
    } else {
        for (int i = 0; i < edgeCount && ok; ++i) {
            unsigned char flags = 0;
            CurveEdge& e = edges[size_t(i)];
            ok = in.readValue(e.v[0]) && in.readValue(e.v[1]) && in.readValue(flags);
            e.flags = flags & 15u;
            if (ok && dataType == 1)
                ok = in.readValue(materials[2 * size_t(i)]) && in.readValue(materials[2 * size_t(i) + 1]);
            else if (ok && dataType == 2)
                ok = in.readValue(uvs[size_t(i)]);
        }
    }
    if (!ok)
        return fail(*this, "an edge is cut short.");
    for (CurveEdge const& e : edges)
        if (e.v[0] < 0 || e.v[1] < 0 || e.v[0] >= count || e.v[1] >= count)
            return fail(*this, "an edge names a vertex that does not exist.");
    if (!std::isfinite(scale) || scale == 0)
        scale = 1.0f;
    // Links, components and frames come from the records; the size mapping stays as read.
    initialize(0);
    return true;
}

} // namespace vel
