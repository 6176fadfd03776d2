// Array: the instance walk shared by listing and Explode, the file record.
//
// Index
// - construction
// - instance frames
// - listing and Explode
// - file record
#include "Scene/Tools/Array/Array.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/ToolList.h"

#include <cmath>

namespace vel {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr int V_ITEM_RECORD = 20181220;    // after: the ToolItem record, doubles
constexpr int V_ARRAY_RECORD = 20160915;   // from: the older array record with float matrix

} // namespace

// ---- construction --------------------------------------------------------------------------

Matrix34<double> Array::OddMatrix(int type, Matrix34<double> const& given)
{
    switch (type) {
    case 1:
        return Matrix34<double>(Matrix3<double>(0, -1, 0, 1, 0, 0, 0, 0, 1));
    case 2:
        return Matrix34<double>(Matrix3<double>::Scale(Vector3<double>(1, -1, 1)));
    case 3:
        return Matrix34<double>(Matrix3<double>::Scale(Vector3<double>(1, 1, -1)));
    case 4:
        return given;
    default:
        return Matrix34<double>();
    }
}

Array::Array(Shared<Element> const& axis, int type, Matrix34<double> const& odd, Matrix34<double> const& object,
             Matrix34<double> const& pivot, Material const& material)
    : ToolItemAxis(axis, object, pivot, material)
    , oddMatrix(OddMatrix(type, odd))
    , arrayType(static_cast<unsigned char>(type))
{
}

Array::Array(IFile& in, int payload)
    : ToolItemAxis(Unrecorded{})
{
    if (!DataRead(in, payload)) {
        if (!fileRefs)
            fileRefs = std::make_unique<FileRefs>();
        fileRefs->failed = true;
    }
}

Tool* Array::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    auto* copy = new Array(element, 4, oddMatrix, object, pivot, material);
    copy->arrayType = arrayType;
    copy->edgeMode = edgeMode;
    CloneInfo(asObject, copy, true);
    return copy;
}

// ---- instance frames -----------------------------------------------------------------------

void Array::instanceFrames(bool forExplode, std::vector<Matrix34<double>>& out, std::vector<int>& ends)
{
    out.clear();
    ends.clear();
    Curve* c = axis();
    if (!c || c->activeVerts() == 0)
        return;
    c->ready();
    c->calculateFrames(false);
    std::vector<CurveEdge>& edges = c->edges;
    for (size_t s = 0; s < edges.size(); ++s) {
        if (!edges[s].is(CurveEdge::ACTIVE) || edges[s].is(CurveEdge::VISITED))
            continue;
        int first = c->edgeStart(int(s));
        bool closed = c->isClosedChain(first);
        size_t start = out.size();
        auto vertexFrame = [&](int e, int end) {
            Vector3<float> p0, p1;
            float length = 0, r0, r1;
            c->segmentPointsLengthRadii(e, p0, p1, length, r0, r1);
            int v = edges[size_t(e)].v[end];
            Matrix34<double> F = c->vertFrame(v, !forExplode);
            if (forExplode)
                F.setLinear(F.linear() * double(length));
            F.setTranslation(Vector3<double>(end ? p1 : p0));
            out.push_back(F);
        };
        // A closed chain's first vertex is also its last edge's end: it gets one instance.
        if (edgeMode == 0 && !closed)
            vertexFrame(first, 0);
        int e = first;
        for (size_t steps = 0; steps < edges.size(); ++steps) {
            edges[size_t(e)].flags |= CurveEdge::VISITED;
            if (edgeMode == 0) {
                vertexFrame(e, 1);
            } else {
                Vector3<float> p0, p1;
                float length = 0, r0, r1;
                c->segmentPointsLengthRadii(e, p0, p1, length, r0, r1);
                Vector3<double> t(Vector3<float>(c->edgeFrames[size_t(e)].tangent));
                Vector3<double> n(Vector3<float>(c->edgeFrames[size_t(e)].normal));
                double l = double(length);
                out.emplace_back(Matrix3<double>(n * l, t.cross(n) * l, t * l), Vector3<double>((p0 + p1) * 0.5f));
            }
            e = edges[size_t(e)].e[1];
            if (e < 0 || e == first)
                break;
        }
        size_t count = out.size() - start;
        if ((arrayType == 1 || arrayType == 2) && closed && count % 2 == 1) {
            float step = float((arrayType == 2 ? PI : 1.5 * PI) / double(count));
            float angle = 0;
            for (size_t i = 0; i < count; ++i, angle += step) {
                Matrix34<double> R(Matrix3<double>::RotationAroundUnitAxis(Vector3<double>(0, 0, 1), std::sin(double(angle)),
                                                                          std::cos(double(angle))));
                out[start + i] = R * out[start + i];
            }
        }
        if (arrayType != 0)
            for (size_t i = 1; i < count; i += 2)
                out[start + i] = oddMatrix * out[start + i];
        ends.push_back(int(out.size()));
    }
    for (CurveEdge& edge : edges)
        edge.flags &= ~CurveEdge::VISITED;
}

// ---- listing and Explode -------------------------------------------------------------------

void Array::toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                   bool skipSelected)
{
    int self = list.count(); // Tool::toList adds this array first, its children after
    Tool::toList(list, parentWorld, parentEntry, index, skipSelected);
    Curve* c = axis();
    if (!item || !c || c->activeVerts() == 0)
        return;
    instanceFrames(false, frames, chainEnds);
    Matrix34<double> W = c->Transform(1.0f) * list.matrices[size_t(self)];
    listInstances(list, frames, W, self, index, skipSelected);
}

std::deque<Tool*> Array::Explode()
{
    Curve* c = axis();
    if (!item || !c || c->activeVerts() == 0)
        return {};
    instanceFrames(true, frames, chainEnds);
    if (frames.empty())
        return {};
    Matrix34<double> T = c->Transform(1.0f);
    std::vector<std::vector<Matrix34<double>>> batches;
    size_t begin = 0;
    for (int end : chainEnds) {
        batches.emplace_back();
        for (size_t i = begin; i < size_t(end); ++i)
            batches.back().push_back(frames[i] * T);
        begin = size_t(end);
    }
    return {explodeInto(batches)};
}

// ---- file record ---------------------------------------------------------------------------

int Array::DataSize() const
{
    return ToolItem::DataSize() + 97;
}

void Array::Data(OFile& out, std::unordered_map<Element*, int>& ids)
{
    ToolItem::Data(out, ids);
    out.writeValue(oddMatrix);
    out.writeValue(arrayType);
}

void Array::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(ARRAY_DATA);
    out.writeValue(unsigned(DataSize()));
    Data(out, ids);
}

bool Array::DataRead(IFile& in, int payload)
{
    edgeMode = 1;
    int const version = FILE_VERSION;
    if (version > V_ITEM_RECORD)
        return ToolItem::DataRead(in, payload) && in.readValue(oddMatrix) && in.readValue(arrayType);
    if (version < V_ARRAY_RECORD)
        return DataReadOld(in);
    int items = 0, more = 0, ignored = 0;
    if (!Tool::DataRead(in, payload) || !in.readValue(items) || !in.readValue(fileItem) || !in.readValue(more) ||
        !in.readValue(ignored) || !in.readValue(arrayType))
        return false;
    if (items != 1 || more != 1) {
        LogInfo(QString("An array of %1 items cannot be read: one item is all an array holds.").arg(items), 2);
        return false;
    }
    return ReadFileMatrix(in, false, version, oddMatrix);
}

bool Array::DataReadOld(IFile&)
{
    // The oldest arrays kept nothing of their own.
    return true;
}

} // namespace vel
