// Curve: frames, bones, free ends, subdivision, smoothing and uniform resampling.
//
// Index
// - frames and bones
// - free ends
// - subdivision
// - smoothing
// - Uniform
// - GPU positions
#include "Scene/Elements/Curve/Curve.h"

#include "Core/Assert.h"
#include "Memory/ScratchpadMemory.h"

#include <algorithm>
#include <cmath>

namespace vel {

namespace {

// A unit vector perpendicular to t, from the world axis least along it.
Vector3<double> Perpendicular(Vector3<double> const& t)
{
    return Matrix3<double>::Frame_Z(t).row(0);
}

// n with its part along the unit t removed, normalised; any perpendicular when n is along t.
Vector3<double> Project(Vector3<double> const& n, Vector3<double> const& t)
{
    Vector3<double> p = n - t * n.dot(t);
    return p.length2() > 1e-12 ? p.normalize() : Perpendicular(t);
}

} // namespace

// ---- frames and bones ----------------------------------------------------------------------

void Curve::calculateFrames(bool force)
{
    if (!force && !framesDirty && edgeFrames.size() == edges.size())
        return;
    edgeFrames.assign(edges.size(), CurveEdgeFrame());
    clearVisited();
    for (size_t s = 0; s < edges.size(); ++s) {
        if (!edges[s].is(CurveEdge::ACTIVE) || edges[s].is(CurveEdge::VISITED))
            continue;
        Vector3<double> tangent(0, 0, 1), normal;
        bool first = true;
        // The transport runs in double: the stored halves are a copy, never read back here,
        // so their rounding cannot add up along a long chain into a spin.
        for (int e = edgeStart(int(s)); e >= 0 && !edges[size_t(e)].is(CurveEdge::VISITED); e = edges[size_t(e)].e[1]) {
            CurveEdge& edge = edges[size_t(e)];
            edge.flags |= CurveEdge::VISITED;
            Vector3<double> d = Vector3<double>(position(edge.v[1]) - position(edge.v[0]));
            // A zero-length segment keeps the previous tangent.
            if (d.length2() > 1e-24)
                tangent = d.normalize();
            normal = first ? Perpendicular(tangent) : Project(normal, tangent);
            first = false;
            edgeFrames[size_t(e)].tangent = hvec3(Vector3<float>(tangent));
            edgeFrames[size_t(e)].normal = hvec3(Vector3<float>(normal));
        }
    }
    clearVisited();
    framesDirty = false;
}

Matrix34<double> Curve::vertFrame(int v, bool withRadius) const
{
    Vector3<double> p(position(v));
    int in = -1, out = -1;
    edgePair(v, in, out);
    in = in < int(edgeFrames.size()) ? in : -1;
    out = out < int(edgeFrames.size()) ? out : -1;
    if (in < 0 && out < 0)
        return Matrix34<double>::Translation(p);
    Vector3<double> t, n;
    for (int e : {in, out}) {
        if (e < 0)
            continue;
        t += Vector3<double>(Vector3<float>(edgeFrames[size_t(e)].tangent));
        n += Vector3<double>(Vector3<float>(edgeFrames[size_t(e)].normal));
    }
    // Two edges meeting head on (a chain drawn back over itself) cancel: take the outgoing one.
    if (t.length2() < 1e-12)
        t = Vector3<double>(Vector3<float>(edgeFrames[size_t(out >= 0 ? out : in)].tangent));
    t = t.length2() > 0 ? t.normalize() : Vector3<double>(0, 0, 1);
    n = Project(n, t);
    Vector3<double> b = t.cross(n);
    double angle = hasFrames ? double(float(vertFrames[size_t(v)].angle)) : 0.0;
    if (angle != 0) {
        double c = std::cos(angle), s = std::sin(angle);
        Vector3<double> n2 = n * c + b * s;
        b = b * c - n * s;
        n = n2;
    }
    double r = withRadius ? double(radius(v)) : 1.0;
    if (!std::isfinite(r))
        r = 1.0;
    return Matrix34<double>(Matrix3<double>(n * r, b * r, t * r), p);
}

bool Curve::buildVertsFrames()
{
    if (activeVerts() == 0 || activeEdges() == 0) {
        bones.clear();
        return false;
    }
    calculateFrames(false);
    if (!bonesDirty && bones.size() == verts.size())
        return true;
    bones.resize(verts.size());
    for (size_t v = 0; v < verts.size(); ++v) {
        Matrix34<double> F = vertFrame(int(v), true);
        CurveBone& bone = bones[v];
        for (int i = 0; i < 12; ++i) {
            // What the card reads must be finite whatever the positions were.
            bone[size_t(i)] = std::isfinite(F.m[i]) ? float(F.m[i]) : (i < 9 && i % 4 == 0 ? 1.0f : 0.0f);
        }
    }
    bonesDirty = false;
    bonesTextureDirty = true;
    return true;
}

bool Curve::buildGPUVertsFrames()
{
    return buildVertsFrames() && uploadBones(bones);
}

// ---- free ends -----------------------------------------------------------------------------

void Curve::updateBords()
{
    bords.clear();
    if (edges.empty())
        return;
    calculateFrames(false);
    for (size_t i = 0; i < edges.size(); ++i) {
        CurveEdge const& e = edges[i];
        if (!e.is(CurveEdge::ACTIVE) || e.e[0] >= 0)
            continue;
        int last = int(i);
        for (size_t steps = 0; steps < edges.size() && edges[size_t(last)].e[1] >= 0; ++steps)
            last = edges[size_t(last)].e[1];
        bords.push_back({e.v[0] + 1, vertFrame(e.v[0], false)});
        int end = edges[size_t(last)].v[1];
        bords.push_back({-(end + 1), vertFrame(end, false)});
    }
}

// ---- subdivision ---------------------------------------------------------------------------

void Curve::subdivide(bool smooth)
{
    if (dataType == 0)
        subdivideGeometry(smooth);
    else if (dataType == 1)
        subdivideGeometryMaterial(smooth);
    else
        return;
    update();
}

void Curve::edgeSplitFrame(int edge, int vertex)
{
    if (!hasFrames)
        return;
    CurveEdge const& e = edges[size_t(edge)];
    CurveFrame const& a = vertFrames[size_t(e.v[0])];
    CurveFrame const& b = vertFrames[size_t(e.v[1])];
    CurveFrame& m = vertFrames[size_t(vertex)];
    m.radius = hfloat((float(a.radius) + float(b.radius)) * 0.5f);
    m.angle = hfloat((float(a.angle) + float(b.angle)) * 0.5f);
}

void Curve::edgeSplit(CurveEdge& edge, int index, int vertex, bool frames)
{
    VEL_ASSERT_MSG(&edges[size_t(index)] == &edge, "edgeSplit is given the edge at its index");
    int v0 = edge.v[0], v1 = edge.v[1];
    if (vertex < 0)
        vertex = vertAdd((position(v0) + position(v1)) * 0.5f, false);
    if (frames)
        edgeSplitFrame(index, vertex);
    int next = edge.e[1];
    bool endSharp = edge.is(CurveEdge::END_SHARP) || next < 0;
    // edgeAdd may move the edge array: from here on by index only.
    int added = edgeAdd(vertex, v1, index, next, false, endSharp);
    CurveEdge& old = edges[size_t(index)];
    edges[size_t(added)].component = old.component;
    edges[size_t(added)].patch = old.patch;
    old.v[1] = vertex;
    old.e[1] = added;
    old.flags &= ~CurveEdge::END_SHARP;
    if (next >= 0)
        edges[size_t(next)].e[0] = added;
    if (verts[size_t(v1)].edge == unsigned(index))
        verts[size_t(v1)].edge = unsigned(added);
    verts[size_t(vertex)].edge = unsigned(index);
}

void Curve::subdivideGeometry(bool smooth)
{
    size_t n = edges.size();
    for (size_t i = 0; i < n; ++i)
        if (edges[i].is(CurveEdge::ACTIVE))
            edgeSplit(edges[i], int(i), -1, hasFrames);
    if (!smooth)
        return;
    std::vector<Vector3<float>> moved(verts.size());
    for (size_t v = 0; v < verts.size(); ++v)
        moved[v] = (verts[v].position + vertSmoothPosition(int(v))) * 0.5f;
    for (size_t v = 0; v < verts.size(); ++v)
        verts[v].position = moved[v];
}

void Curve::subdivideGeometryMaterial(bool smooth)
{
    size_t n = edges.size();
    subdivideGeometry(smooth);
    // A new edge is the far half of edge i: it takes the far end's material on both ends,
    // and the near half keeps the near end's.
    materials.resize(2 * edges.size());
    for (size_t i = 0; i < n; ++i) {
        int added = edges[i].e[1];
        if (!edges[i].is(CurveEdge::ACTIVE) || added < int(n))
            continue;
        materials[2 * size_t(added)] = materials[2 * size_t(added) + 1] = materials[2 * i + 1];
        materials[2 * i + 1] = materials[2 * i];
    }
}

// ---- smoothing -----------------------------------------------------------------------------

Vector3<float> Curve::vertSmoothPosition(int v) const
{
    Vector3<float> p = position(v);
    if (verts[size_t(v)].is(CurveVert::SHARP))
        return p;
    std::vector<int> around = findNeighbours(v);
    // An open end stays: with one neighbour the mean would pull the stroke short.
    if (around.size() < 2)
        return p;
    Vector3<float> sum;
    for (int w : around)
        sum += position(w);
    return sum / float(around.size());
}

Vector3<float> Curve::vertTangentialSmoothPosition(int v) const
{
    // Slides the vertex along the chord of its neighbours only: spacing evens out, the
    // shape stays.
    Vector3<float> p = position(v);
    std::vector<int> around = findNeighbours(v);
    if (around.size() < 2 || verts[size_t(v)].is(CurveVert::SHARP))
        return p;
    Vector3<float> chord = (position(around[1]) - position(around[0])).normalize();
    Vector3<float> move = vertSmoothPosition(v) - p;
    return p + chord * move.dot(chord);
}

float Curve::vertSmoothRadius(int v) const
{
    std::vector<int> around = findNeighbours(v);
    if (around.empty())
        return radius(v);
    float sum = 0;
    for (int w : around)
        sum += radius(w);
    return sum / float(around.size());
}

float Curve::vertSmoothAngle(int v) const
{
    std::vector<int> around = findNeighbours(v);
    if (around.empty() || !hasFrames)
        return hasFrames ? float(vertFrames[size_t(v)].angle) : 0.0f;
    float sum = 0;
    for (int w : around)
        sum += float(vertFrames[size_t(w)].angle);
    return sum / float(around.size());
}

void Curve::smoothDraw(int iterations)
{
    size_t n = verts.size();
    if (iterations <= 0 || n == 0)
        return;
    ScratchPadGeometry::Lease pad;
    // Neighbour pairs once (-1 where a vertex has fewer than two), then two position buffers.
    int* pairs = pad.at<int>(0, 2 * n);
    size_t offset = 2 * n * sizeof(int);
    offset = (offset + 15) & ~size_t(15);
    Vector3<float>* next = pad.at<Vector3<float>>(offset, n);
    offset += n * sizeof(Vector3<float>);
    float* radii = pad.at<float>(offset, n);
    for (size_t v = 0; v < n; ++v) {
        std::vector<int> around = verts[v].is(CurveVert::ACTIVE) ? findNeighbours(int(v)) : std::vector<int>();
        bool two = around.size() == 2;
        pairs[2 * v] = two ? around[0] : -1;
        pairs[2 * v + 1] = two ? around[1] : -1;
    }
    for (int it = 0; it < iterations; ++it) {
        for (size_t v = 0; v < n; ++v) {
            int a = pairs[2 * v], b = pairs[2 * v + 1];
            if (a < 0) {
                next[v] = verts[v].position;
                radii[v] = radius(int(v));
                continue;
            }
            next[v] = (verts[v].position * 2.0f + verts[size_t(a)].position + verts[size_t(b)].position) * 0.25f;
            radii[v] = (2.0f * radius(int(v)) + radius(a) + radius(b)) * 0.25f;
        }
        for (size_t v = 0; v < n; ++v) {
            verts[v].position = next[v];
            if (hasFrames)
                vertFrames[v].radius = hfloat(radii[v]);
        }
    }
    update();
}

// ---- Uniform -------------------------------------------------------------------------------

std::vector<Vector3<float>> Curve::Uniform(float& spacing, std::deque<float>& params, bool includeEnd, bool byRadius,
                                           double maxLength, std::vector<float>* radii,
                                           std::vector<std::pair<int, bool>>* chains) const
{
    std::vector<Vector3<float>> out;
    params.clear();
    if (radii)
        radii->clear();
    if (chains)
        chains->clear();
    double total = Length();
    if (activeEdges() == 0 || !(total > 0) || !std::isfinite(total))
        return out;
    if (!(spacing > 0) || !std::isfinite(spacing))
        spacing = float(total / std::max(1, activeEdges()));
    // However small the spacing asked for, the samples stay a bounded number.
    constexpr double MAX_SAMPLES = 1 << 22;
    if (total / double(spacing) > MAX_SAMPLES)
        spacing = float(total / MAX_SAMPLES);
    bool weighted = byRadius && hasFrames;
    double walked = 0;
    auto addSample = [&](Vector3<float> const& p, float param, float r) {
        out.push_back(p);
        params.push_back(param);
        if (radii)
            radii->push_back(r);
    };
    std::vector<char> visited(edges.size(), 0);
    for (size_t s = 0; s < edges.size(); ++s) {
        if (!edges[s].is(CurveEdge::ACTIVE) || visited[s])
            continue;
        int first = edgeStart(int(s));
        bool closed = isClosedChain(first);
        size_t chainStart = out.size();
        Vector3<float> last = position(edges[size_t(first)].v[0]);
        addSample(last, float(first), radius(edges[size_t(first)].v[0]));
        float lastRadius = radius(edges[size_t(first)].v[0]);
        for (int e = first; e >= 0 && !visited[size_t(e)]; e = edges[size_t(e)].e[1]) {
            visited[size_t(e)] = 1;
            Vector3<float> A, B;
            float r0, r1;
            segmentPointsRadii(e, A, B, r0, r1);
            Vector3<double> d(B - A);
            double a = d.length2();
            double t0 = 0;
            while (a > 0) {
                double step = weighted ? double(spacing) * std::max(double(lastRadius), 1e-6) : double(spacing);
                Vector3<double> f(A - last);
                double b = 2 * f.dot(d), c = f.length2() - step * step;
                double disc = b * b - 4 * a * c;
                if (disc < 0)
                    break;
                double root = std::sqrt(disc);
                double t = (-b - root) / (2 * a);
                if (t <= t0 + 1e-9)
                    t = (-b + root) / (2 * a);
                if (t <= t0 + 1e-9 || t > 1)
                    break;
                Vector3<float> p = A + Vector3<float>(d * t);
                walked += double((p - last).length());
                if (maxLength > 0 && walked > maxLength)
                    break;
                lastRadius = float(r0 + (r1 - r0) * t);
                addSample(p, float(e + t), lastRadius);
                last = p;
                t0 = t;
            }
        }
        if (!closed && includeEnd) {
            int end = edges[size_t(first)].v[0];
            for (int e = first, steps = 0; e >= 0 && steps <= int(edges.size()); e = edges[size_t(e)].e[1], ++steps)
                end = edges[size_t(e)].v[1];
            if ((position(end) - last).length() > spacing * 1e-3f)
                addSample(position(end), float(edges.size()), radius(end));
        }
        if (chains)
            chains->push_back({int(out.size() - chainStart), closed});
    }
    return out;
}

// ---- GPU positions -------------------------------------------------------------------------

void Curve::fillGPUPositions(std::vector<float>& out)
{
    out.clear();
    lineCount = 0;
    for (CurveEdge const& e : edges) {
        if (!e.is(CurveEdge::ACTIVE))
            continue;
        for (int end = 0; end < 2; ++end) {
            Vector3<float> p = position(e.v[end]);
            out.insert(out.end(), {p.x, p.y, p.z});
        }
        lineCount += 2;
    }
    handleCount = 0;
    for (CurveVert const& v : verts) {
        if (!v.is(CurveVert::ACTIVE))
            continue;
        out.insert(out.end(), {v.position.x, v.position.y, v.position.z});
        ++handleCount;
    }
}

} // namespace vel
