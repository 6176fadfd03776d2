// Curve: records, construction, connectivity, queries and factories.
//
// Index
// - construction and copying
// - Element protocol
// - building
// - connectivity, orientation, components
// - queries
// - factories
#include "Scene/Elements/Curve/Curve.h"

#include "Core/Assert.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vel {

// ---- construction and copying --------------------------------------------------------------

Curve::Curve(std::vector<Vector3<float>> const& points, bool closed, bool sharp, TResizeStyle style)
{
    construct(points, closed, sharp);
    initialize(style);
}

Curve::Curve(Curve const& other)
    : CurveVBO(other)
{
    copyVertsEdges(const_cast<Curve*>(&other), true);
    dataType = other.dataType;
    materials = other.materials;
    uvs = other.uvs;
    sculpting = false;
}

Curve& Curve::operator=(Curve const& other)
{
    if (this == &other)
        return *this;
    CurveVBO::operator=(other);
    copyVertsEdges(const_cast<Curve*>(&other), true);
    dataType = other.dataType;
    materials = other.materials;
    uvs = other.uvs;
    return *this;
}

Curve::~Curve() = default;

void Curve::swap(Curve& other)
{
    verts.swap(other.verts);
    edges.swap(other.edges);
    vertFrames.swap(other.vertFrames);
    edgeFrames.swap(other.edgeFrames);
    materials.swap(other.materials);
    uvs.swap(other.uvs);
    bords.swap(other.bords);
    std::swap(hasFrames, other.hasFrames);
    std::swap(dataType, other.dataType);
    std::swap(center, other.center);
    std::swap(scale, other.scale);
    update();
    other.update();
}

void Curve::clear()
{
    verts.clear();
    edges.clear();
    vertFrames.clear();
    edgeFrames.clear();
    materials.clear();
    uvs.clear();
    bords.clear();
    bones.clear();
    update();
}

void Curve::copyVertsEdges(Curve* other, bool frames)
{
    VEL_ASSERT(other);
    verts = other->verts;
    edges = other->edges;
    if (frames) {
        hasFrames = other->hasFrames;
        vertFrames = other->vertFrames;
    } else {
        vertFrames.assign(hasFrames ? verts.size() : 0, CurveFrame());
    }
    edgeFrames.clear();
    bords = other->bords;
    center = other->center;
    scale = other->scale;
    update();
}

// ---- Element protocol ----------------------------------------------------------------------

bool Curve::empty() const
{
    return activeVerts() == 0;
}

void Curve::calculateAABB(Matrix34<double> const& M)
{
    aabb = AABB();
    for (CurveVert const& v : verts)
        if (v.is(CurveVert::ACTIVE))
            aabb.add(Vector3<double>(v.position) * M);
}

Element* Curve::clone()
{
    return new Curve(*this);
}

std::deque<Vector3<double>> Curve::Points(Matrix34<double> const& M) const
{
    std::deque<Vector3<double>> out;
    for (CurveVert const& v : verts)
        if (v.is(CurveVert::ACTIVE))
            out.push_back(Vector3<double>(v.position) * M);
    return out;
}

void Curve::initialize(TResizeStyle style)
{
    buildConnectivity();
    correctOrientation();
    calculateSize(style);
    setComponentsPatches();
    update();
}

void Curve::update()
{
    framesDirty = true;
    bonesDirty = true;
    set_vbos_dirty(true);
    Element::update();
    updateBords();
}

void Curve::calculateSize(TResizeStyle style)
{
    if (style != 1 && style != 2)
        return;
    AABB box;
    Vector3<double> sum;
    int n = 0;
    for (CurveVert const& v : verts)
        if (v.is(CurveVert::ACTIVE)) {
            box.add(Vector3<double>(v.position));
            sum += Vector3<double>(v.position);
            ++n;
        }
    if (n == 0)
        return;
    if (style == 1) {
        Vector3<double> c = sum / double(n);
        double r = 0;
        for (CurveVert const& v : verts)
            if (v.is(CurveVert::ACTIVE))
                r = std::max(r, (Vector3<double>(v.position) - c).length());
        center = Vector3<float>(c);
        scale = r > 0 ? float(2 * r) : 1.0f;
    } else {
        Vector3<double> size = box.size();
        double side = std::max({size.x, size.y, size.z});
        center = Vector3<float>(box.center());
        scale = side > 0 ? float(side) : 1.0f;
    }
}

void Curve::setFrames(bool on)
{
    hasFrames = on;
    vertFrames.assign(on ? verts.size() : 0, CurveFrame());
    update();
}

void Curve::setDataType(int type)
{
    if (type < 0 || type > 2)
        type = 0;
    dataType = type;
    materials.assign(type == 1 ? 2 * edges.size() : 0, Pbr());
    uvs.assign(type == 2 ? edges.size() : 0, 0u);
    set_vbos_dirty(true);
}

// ---- building ------------------------------------------------------------------------------

int Curve::vertAdd(Vector3<float> const& position, bool sharp, int edge)
{
    CurveVert v;
    v.position = position;
    v.flags = CurveVert::ACTIVE | (sharp ? CurveVert::SHARP : 0u);
    v.edge = edge < 0 ? CurveVert::NO_EDGE : unsigned(edge);
    verts.push_back(v);
    if (hasFrames)
        vertFrames.push_back(CurveFrame());
    return int(verts.size()) - 1;
}

int Curve::vertAddFrame(Vector3<float> const& position, float radius, float angle, bool sharp, int edge)
{
    if (!hasFrames) {
        hasFrames = true;
        vertFrames.assign(verts.size(), CurveFrame());
    }
    int v = vertAdd(position, sharp, edge);
    vertFrames.back().radius = hfloat(radius);
    vertFrames.back().angle = hfloat(angle);
    return v;
}

int Curve::edgeAdd(CurveEdge const& edge)
{
    edges.push_back(edge);
    if (dataType == 1)
        materials.resize(2 * edges.size());
    else if (dataType == 2)
        uvs.resize(edges.size());
    int e = int(edges.size()) - 1;
    for (int end = 0; end < 2; ++end) {
        int v = edge.v[end];
        if (v >= 0 && size_t(v) < verts.size() && verts[size_t(v)].edge == CurveVert::NO_EDGE)
            verts[size_t(v)].edge = unsigned(e);
    }
    return e;
}

int Curve::edgeAdd(int v0, int v1, int e0, int e1, bool startSharp, bool endSharp)
{
    CurveEdge edge;
    edge.v[0] = v0;
    edge.v[1] = v1;
    edge.e[0] = e0;
    edge.e[1] = e1;
    edge.flags = CurveEdge::ACTIVE | (startSharp ? CurveEdge::START_SHARP : 0u) | (endSharp ? CurveEdge::END_SHARP : 0u);
    return edgeAdd(edge);
}

void Curve::edgesAdd(std::vector<int> const& indices, std::vector<bool> const& sharp)
{
    auto isSharp = [&](int v) { return v >= 0 && size_t(v) < sharp.size() && sharp[size_t(v)]; };
    for (size_t i = 0; i + 1 < indices.size(); ++i) {
        int a = indices[i], b = indices[i + 1];
        if (a < 0 || b < 0)
            continue;
        edgeAdd(a, b, -1, -1, isSharp(a), isSharp(b));
    }
}

void Curve::construct(Curve* other)
{
    VEL_ASSERT(other);
    copyVertsEdges(other, true);
    dataType = other->dataType;
    materials = other->materials;
    uvs = other->uvs;
}

void Curve::construct(std::vector<Vector3<float>> const& points, bool closed, bool sharp)
{
    construct(points, {}, closed, sharp);
}

void Curve::construct(std::vector<Vector3<float>> const& points, std::vector<float> const& radii, bool closed,
                      bool sharp)
{
    verts.clear();
    edges.clear();
    vertFrames.clear();
    materials.clear();
    uvs.clear();
    hasFrames = !radii.empty();
    for (size_t i = 0; i < points.size(); ++i) {
        if (hasFrames)
            vertAddFrame(points[i], radii[std::min(i, radii.size() - 1)], 0.0f, sharp);
        else
            vertAdd(points[i], sharp);
    }
    int n = int(points.size());
    for (int i = 0; i + 1 < n; ++i)
        edgeAdd(i, i + 1, -1, -1, sharp, sharp);
    if (closed && n > 2)
        edgeAdd(n - 1, 0, -1, -1, sharp, sharp);
    buildConnectivity();
    setComponentsPatches();
    update();
}

void Curve::append(Curve* other)
{
    VEL_ASSERT(other && other != this);
    int vBase = int(verts.size()), eBase = int(edges.size());
    if (other->hasFrames && !hasFrames)
        setFrames(true);
    for (size_t i = 0; i < other->verts.size(); ++i) {
        CurveVert v = other->verts[i];
        if (v.edge != CurveVert::NO_EDGE)
            v.edge = unsigned(int(v.edge) + eBase);
        verts.push_back(v);
        if (hasFrames)
            vertFrames.push_back(other->hasFrames ? other->vertFrames[i] : CurveFrame());
    }
    for (CurveEdge e : other->edges) {
        for (int k = 0; k < 2; ++k) {
            e.v[k] += vBase;
            if (e.e[k] >= 0)
                e.e[k] += eBase;
        }
        edges.push_back(e);
    }
    if (dataType == 1)
        materials.resize(2 * edges.size());
    else if (dataType == 2)
        uvs.resize(edges.size());
    setComponentsPatches();
    update();
}

void Curve::close()
{
    buildConnectivity();
    // Each open chain's start and end, found before any edge is added.
    std::vector<std::pair<int, int>> ends;
    for (size_t i = 0; i < edges.size(); ++i) {
        CurveEdge const& e = edges[i];
        if (!e.is(CurveEdge::ACTIVE) || e.e[0] >= 0)
            continue;
        int last = int(i), steps = 0;
        while (edges[size_t(last)].e[1] >= 0 && steps++ < int(edges.size()))
            last = edges[size_t(last)].e[1];
        if (edges[size_t(last)].v[1] != e.v[0])
            ends.push_back({int(i), last});
    }
    for (auto const& [first, last] : ends) {
        int added = edgeAdd(edges[size_t(last)].v[1], edges[size_t(first)].v[0], last, first, false, false);
        edges[size_t(last)].e[1] = added;
        edges[size_t(first)].e[0] = added;
    }
    setComponentsPatches();
    update();
}

// ---- connectivity, orientation, components -------------------------------------------------

bool Curve::buildConnectivity()
{
    // Up to two active edges per vertex; a third stays unlinked at that vertex.
    std::vector<std::array<int, 2>> incident(verts.size(), {-1, -1});
    bool ok = true;
    for (size_t i = 0; i < edges.size(); ++i) {
        CurveEdge& e = edges[i];
        if (!e.is(CurveEdge::ACTIVE))
            continue;
        if (e.v[0] < 0 || e.v[1] < 0 || size_t(e.v[0]) >= verts.size() || size_t(e.v[1]) >= verts.size() ||
            e.v[0] == e.v[1]) {
            e.flags &= ~CurveEdge::ACTIVE;
            ok = false;
            continue;
        }
        for (int end = 0; end < 2; ++end) {
            std::array<int, 2>& slot = incident[size_t(e.v[end])];
            if (slot[0] < 0)
                slot[0] = int(i);
            else if (slot[1] < 0)
                slot[1] = int(i);
            else
                ok = false;
        }
    }
    for (size_t v = 0; v < verts.size(); ++v)
        verts[v].edge = incident[v][0] >= 0 ? unsigned(incident[v][0]) : CurveVert::NO_EDGE;
    for (size_t i = 0; i < edges.size(); ++i) {
        CurveEdge& e = edges[i];
        if (!e.is(CurveEdge::ACTIVE))
            continue;
        for (int end = 0; end < 2; ++end) {
            std::array<int, 2> const& slot = incident[size_t(e.v[end])];
            e.e[end] = slot[0] == int(i) ? slot[1] : slot[1] == int(i) ? slot[0] : -1;
        }
    }
    return ok;
}

void Curve::clearVisited()
{
    for (CurveEdge& e : edges)
        e.flags &= ~CurveEdge::VISITED;
}

void Curve::correctOrientation()
{
    // Makes every chain run one way: at a shared vertex, e[1] of an edge ends where the next
    // edge's e[0] begins. A neighbour linked the other way round is turned over.
    auto turn = [this](int i, int missingStart, int missingEnd) {
        CurveEdge& e = edges[size_t(i)];
        std::swap(e.v[0], e.v[1]);
        std::swap(e.e[0], e.e[1]);
        bool startSharp = e.is(CurveEdge::END_SHARP) || missingStart;
        bool endSharp = e.is(CurveEdge::START_SHARP) || missingEnd;
        e.flags &= ~(CurveEdge::START_SHARP | CurveEdge::END_SHARP);
        e.flags |= (startSharp ? CurveEdge::START_SHARP : 0u) | (endSharp ? CurveEdge::END_SHARP : 0u);
        if (dataType == 1)
            std::swap(materials[2 * size_t(i)], materials[2 * size_t(i) + 1]);
    };
    clearVisited();
    for (size_t s = 0; s < edges.size(); ++s) {
        if (!edges[s].is(CurveEdge::ACTIVE) || edges[s].is(CurveEdge::VISITED))
            continue;
        edges[s].flags |= CurveEdge::VISITED;
        for (int dir = 1; dir >= 0; --dir) {
            // dir 1 walks forward through e[1], dir 0 backward through e[0].
            int current = int(s);
            for (size_t steps = 0; steps < edges.size(); ++steps) {
                int next = edges[size_t(current)].e[dir];
                if (next < 0 || edges[size_t(next)].is(CurveEdge::VISITED))
                    break;
                CurveEdge& n = edges[size_t(next)];
                int shared = edges[size_t(current)].v[dir];
                // Forward, the next edge must start at the shared vertex; backward, end there.
                if (n.v[1 - dir] != shared)
                    turn(next, n.e[1] < 0, n.e[0] < 0);
                n.flags |= CurveEdge::VISITED;
                current = next;
            }
        }
    }
    clearVisited();
}

void Curve::setComponentsPatches()
{
    clearVisited();
    int component = 0;
    unsigned patch = 0;
    for (size_t s = 0; s < edges.size(); ++s) {
        if (!edges[s].is(CurveEdge::ACTIVE) || edges[s].is(CurveEdge::VISITED))
            continue;
        int first = edgeStart(int(s));
        int e = first;
        for (size_t steps = 0; steps <= edges.size() && e >= 0; ++steps) {
            CurveEdge& edge = edges[size_t(e)];
            if (edge.is(CurveEdge::VISITED))
                break;
            if (e != first && (edge.is(CurveEdge::START_SHARP) || verts[size_t(edge.v[0])].is(CurveVert::SHARP)))
                ++patch;
            edge.flags |= CurveEdge::VISITED;
            edge.component = component;
            edge.patch = patch & CurveVert::NO_EDGE;
            e = edge.e[1];
        }
        ++component;
        ++patch;
    }
    clearVisited();
}

void Curve::newPatch(int vertex)
{
    if (vertex >= 0 && size_t(vertex) < verts.size())
        verts[size_t(vertex)].flags |= CurveVert::SHARP;
    setComponentsPatches();
}

void Curve::setSharp(bool on)
{
    for (CurveVert& v : verts)
        v.flags = on ? (v.flags | CurveVert::SHARP) : (v.flags & ~CurveVert::SHARP);
    unsigned both = CurveEdge::START_SHARP | CurveEdge::END_SHARP;
    for (CurveEdge& e : edges)
        e.flags = on ? (e.flags | both) : (e.flags & ~both);
    setComponentsPatches();
    update();
}

void Curve::removeInactive(bool keepFrames)
{
    std::vector<int> vMap(verts.size(), -1), eMap(edges.size(), -1);
    std::vector<CurveVert> nv;
    std::vector<CurveFrame> nf;
    for (size_t i = 0; i < verts.size(); ++i)
        if (verts[i].is(CurveVert::ACTIVE)) {
            vMap[i] = int(nv.size());
            nv.push_back(verts[i]);
            if (hasFrames && keepFrames)
                nf.push_back(vertFrames[i]);
        }
    std::vector<CurveEdge> ne;
    std::vector<Pbr> nm;
    std::vector<uint32_t> nu;
    for (size_t i = 0; i < edges.size(); ++i) {
        CurveEdge const& e = edges[i];
        if (!e.is(CurveEdge::ACTIVE) || vMap[size_t(e.v[0])] < 0 || vMap[size_t(e.v[1])] < 0)
            continue;
        eMap[i] = int(ne.size());
        ne.push_back(e);
        if (dataType == 1) {
            nm.push_back(materials[2 * i]);
            nm.push_back(materials[2 * i + 1]);
        } else if (dataType == 2) {
            nu.push_back(uvs[i]);
        }
    }
    for (CurveEdge& e : ne)
        for (int k = 0; k < 2; ++k) {
            e.v[k] = vMap[size_t(e.v[k])];
            e.e[k] = e.e[k] >= 0 ? eMap[size_t(e.e[k])] : -1;
        }
    for (CurveVert& v : nv)
        v.edge = v.edge != CurveVert::NO_EDGE && eMap[v.edge] >= 0 ? unsigned(eMap[v.edge]) : CurveVert::NO_EDGE;
    verts.swap(nv);
    edges.swap(ne);
    materials.swap(nm);
    uvs.swap(nu);
    if (hasFrames)
        vertFrames = keepFrames ? nf : std::vector<CurveFrame>(verts.size());
    update();
}

// ---- queries -------------------------------------------------------------------------------

int Curve::activeVerts() const
{
    return int(std::count_if(verts.begin(), verts.end(), [](CurveVert const& v) { return v.is(CurveVert::ACTIVE); }));
}

int Curve::activeEdges() const
{
    return int(std::count_if(edges.begin(), edges.end(), [](CurveEdge const& e) { return e.is(CurveEdge::ACTIVE); }));
}

double Curve::Length() const
{
    double sum = 0;
    for (CurveEdge const& e : edges)
        if (e.is(CurveEdge::ACTIVE))
            sum += double((position(e.v[1]) - position(e.v[0])).length());
    return sum;
}

float Curve::radius(int v) const
{
    return hasFrames && size_t(v) < vertFrames.size() ? float(vertFrames[size_t(v)].radius) : 1.0f;
}

std::vector<int> Curve::vertEdges(int v) const
{
    std::vector<int> out;
    findENeighbours(v, out);
    out.erase(std::remove(out.begin(), out.end(), -1), out.end());
    return out;
}

void Curve::edgePair(int v, int& in, int& out) const
{
    in = out = -1;
    unsigned first = verts[size_t(v)].edge;
    if (first == CurveVert::NO_EDGE || first >= edges.size())
        return;
    CurveEdge const& e = edges[first];
    if (e.v[1] == v) {
        in = int(first);
        out = e.e[1];
    } else {
        in = e.e[0];
        out = int(first);
    }
}

void Curve::findENeighbours(int v, std::vector<int>& out) const
{
    out.assign(2, -1);
    edgePair(v, out[0], out[1]);
}

int Curve::nextVert(int from, int through) const
{
    std::vector<int> around;
    findENeighbours(through, around);
    for (int e : around) {
        if (e < 0)
            continue;
        int other = edges[size_t(e)].v[0] == through ? edges[size_t(e)].v[1] : edges[size_t(e)].v[0];
        if (other != from)
            return other;
    }
    return -1;
}

int Curve::findEdge(int v0, int v1) const
{
    for (int e : vertEdges(v0)) {
        CurveEdge const& edge = edges[size_t(e)];
        if ((edge.v[0] == v0 && edge.v[1] == v1) || (edge.v[0] == v1 && edge.v[1] == v0))
            return e;
    }
    return -1;
}

std::vector<int> Curve::findNeighbours(int v) const
{
    std::vector<int> out;
    for (int e : vertEdges(v)) {
        CurveEdge const& edge = edges[size_t(e)];
        out.push_back(edge.v[0] == v ? edge.v[1] : edge.v[0]);
    }
    return out;
}

int Curve::edgeStart(int e) const
{
    int first = e;
    for (size_t steps = 0; steps < edges.size(); ++steps) {
        int previous = edges[size_t(first)].e[0];
        if (previous < 0 || previous == e)
            return first;
        first = previous;
    }
    return first; // a broken cycle not through e: any of its edges will do
}

bool Curve::isClosedChain(int e) const
{
    int c = e;
    for (size_t steps = 0; steps < edges.size(); ++steps) {
        c = edges[size_t(c)].e[1];
        if (c < 0)
            return false;
        if (c == e)
            return true;
    }
    return false;
}

void Curve::segmentPoints(int e, Vector3<float>& p0, Vector3<float>& p1) const
{
    p0 = position(edges[size_t(e)].v[0]);
    p1 = position(edges[size_t(e)].v[1]);
}

void Curve::segmentRadii(int e, float& r0, float& r1) const
{
    r0 = radius(edges[size_t(e)].v[0]);
    r1 = radius(edges[size_t(e)].v[1]);
}

void Curve::segmentPointsRadii(int e, Vector3<float>& p0, Vector3<float>& p1, float& r0, float& r1) const
{
    segmentPoints(e, p0, p1);
    segmentRadii(e, r0, r1);
}

void Curve::segmentPointsLengthRadii(int e, Vector3<float>& p0, Vector3<float>& p1, float& length, float& r0,
                                     float& r1) const
{
    segmentPointsRadii(e, p0, p1, r0, r1);
    length = (p1 - p0).length();
}

// ---- factories -----------------------------------------------------------------------------

namespace {

constexpr double PI = 3.14159265358979323846;

Curve* FromPoints(std::vector<Vector3<float>> const& points, bool closed, bool sharp, TResizeStyle style = 0)
{
    return new Curve(points, closed, sharp, style);
}

} // namespace

Curve* Curve::Segment()
{
    return Segment(1, 0);
}

Curve* Curve::Segment(int n, TResizeStyle style)
{
    n = std::max(n, 1);
    std::vector<Vector3<float>> p;
    for (int i = 0; i <= n; ++i)
        p.push_back({0, 0, float(i) / float(n) - 0.5f});
    return FromPoints(p, false, false, style);
}

Curve* Curve::Quad(float width, float height)
{
    float x = width * 0.5f, y = height * 0.5f;
    return FromPoints({{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}}, true, true);
}

Curve* Curve::NGon(int n, bool sharp)
{
    n = std::max(n, 3);
    std::vector<Vector3<float>> p;
    for (int i = 0; i < n; ++i) {
        double a = 2 * PI * i / n;
        p.push_back({float(0.5 * std::cos(a)), float(0.5 * std::sin(a)), 0});
    }
    return FromPoints(p, true, sharp);
}

Curve* Curve::Helix(int n, int turns)
{
    n = std::max(n, 2);
    turns = std::max(turns, 1);
    std::vector<Vector3<float>> p;
    int count = n * turns;
    for (int i = 0; i <= count; ++i) {
        double a = 2 * PI * i / n;
        p.push_back({float(0.5 * std::cos(a)), float(0.5 * std::sin(a)), float(double(i) / count - 0.5)});
    }
    return FromPoints(p, false, false);
}

Curve* Curve::Chainlink(int n, bool sharp)
{
    // A stadium: two half circles joined by straight sides, long along z.
    n = std::max(n, 2);
    std::vector<Vector3<float>> p;
    for (int half = 0; half < 2; ++half)
        for (int i = 0; i <= n; ++i) {
            double a = PI * i / n + PI * half;
            float z = (half == 0 ? 0.25f : -0.25f) + float(0.25 * std::sin(a));
            p.push_back({float(0.25 * std::cos(a)), 0, z});
        }
    return FromPoints(p, true, sharp);
}

Curve* Curve::TrefoilKnot(int n)
{
    return Knot(n, 2, 3);
}

Curve* Curve::Knot(int n, int p, int q)
{
    n = std::max(n, 8);
    std::vector<Vector3<float>> pts;
    for (int i = 0; i < n; ++i) {
        double t = 2 * PI * i / n;
        double r = 2 + std::cos(q * t);
        pts.push_back({float(0.15 * r * std::cos(p * t)), float(0.15 * r * std::sin(p * t)), float(-0.15 * std::sin(q * t))});
    }
    return FromPoints(pts, true, false);
}

} // namespace vel
