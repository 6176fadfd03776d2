// Mesh edits: scans that hold mid-edit, one-sided edge splits, edge collapse, vertex splits
// and rips, relaxing, merging onto existing vertices, partial normal updates, and the slots
// the sculpt and buffer levels call.
//
// Every edit checks all its preconditions before it changes a record, so a refusal leaves
// the mesh exactly as it was (Mesh.h lists what each one refuses).
//
// Index
// - walks and scans
// - edge split and collapse
// - vertex split and rip
// - relaxing and sculpt smoothing
// - merging
// - partial normals
// - buffer slots
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Assert.h"
#include "Memory/ScratchpadMemory.h"
#include "Scene/Elements/Mesh/MeshScratch.h"

#include <algorithm>

namespace vel {

// ---- walks and scans --------------------------------------------------------------------------

std::vector<int> Mesh::faceVerts1Edges(int f) const
{
    std::vector<int> result;
    for (int e : edgeLoop(faces[std::size_t(f)].edge)) {
        result.push_back(edges[std::size_t(e)].v[0]);
        result.push_back(e);
    }
    return result;
}

std::vector<int> Mesh::vertEdgesActive(int v) const
{
    std::vector<int> result;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge const& e = edges[i];
        if (e.is(MeshEdge::ACTIVE) && (e.v[0] == v || e.v[1] == v))
            result.push_back(int(i));
    }
    return result;
}

std::vector<int> Mesh::vertStartEdges(int v) const
{
    std::vector<int> result;
    for (std::size_t i = 0; i < edges.size(); ++i)
        if (edges[i].is(MeshEdge::ACTIVE) && edges[i].v[0] == v)
            result.push_back(int(i));
    return result;
}

// ---- edge split and collapse ------------------------------------------------------------------

// e: a -> b becomes a -> m, followed in the ring by the new m -> b, which takes e's corner
// (it now arrives where e did); e's corner at m gets `material`.
int Mesh::splitHalfEdge(int e, int m, Pbr const& material)
{
    MeshEdge const old = edges[std::size_t(e)];
    int y = edgeAdd(m, old.v[1], e, old.e[1], -1, old.face, old.is(MeshEdge::SHARP));
    edges[std::size_t(old.e[1])].e[0] = y;
    MeshEdge& r = edges[std::size_t(e)];
    r.e[1] = y;
    r.v[1] = m;
    MeshEdge& n = edges[std::size_t(y)];
    n.normal = old.normal;
    if (hasPbr()) {
        materials[std::size_t(y)] = materials[std::size_t(e)];
        materials[std::size_t(e)] = material;
    }
    if (hasUVs())
        uvs[std::size_t(y)] = uvs[std::size_t(e)];
    if (verts[std::size_t(old.v[1])].edge == e)
        verts[std::size_t(old.v[1])].edge = y;
    if (verts[std::size_t(m)].edge < 0)
        verts[std::size_t(m)].edge = e;
    ++triangles;
    return y;
}

int Mesh::edgeSplit(int e, int start, int vertex)
{
    if (e < 0 || std::size_t(e) >= edges.size())
        return -1;
    MeshEdge const r = edges[std::size_t(e)];
    if (r.v[0] != start)
        return -1;
    if (vertex >= 0 && (std::size_t(vertex) >= verts.size() || vertex == r.v[0] || vertex == r.v[1]))
        return -1;
    Pbr material = hasPbr() ? Pbr::avg(materials[std::size_t(r.e[0])], materials[std::size_t(e)]) : Pbr();
    int m = vertex >= 0 ? vertex
                        : vertAdd((verts[std::size_t(r.v[0])].position + verts[std::size_t(r.v[1])].position) * 0.5f);
    splitHalfEdge(e, m, material);
    edges[std::size_t(e)].half = -1;
    if (r.half < 0)
        vertUpdate(m);
    updateGeometry();
    return m;
}

// Checked in place, carried out by rebuilding the faces over the joined vertices (as weld
// does): simple and exact, linear in the mesh, and it keeps sharp flags and materials but
// not per-corner UVs.
bool Mesh::edgeCollapse(int e, int start, int keep)
{
    if (e < 0 || std::size_t(e) >= edges.size())
        return false;
    MeshEdge const r = edges[std::size_t(e)];
    if (r.v[0] != start || (keep != r.v[0] && keep != r.v[1]))
        return false;
    int a = keep, b = keep == r.v[0] ? r.v[1] : r.v[0];
    if (r.half >= 0 && verts[std::size_t(a)].is(MeshVert::BORDER) && verts[std::size_t(b)].is(MeshVert::BORDER))
        return false; // would pinch the surface into a non-manifold vertex
    // The faces on the edge; a triangle among them vanishes, leaving its tip.
    std::vector<int> sides = {e};
    if (r.half >= 0)
        sides.push_back(r.half);
    std::vector<int> tips;
    for (int s : sides) {
        if (faceCount(edges[std::size_t(s)].face) != 3)
            continue;
        MeshEdge const& next = edges[std::size_t(edges[std::size_t(s)].e[1])];
        MeshEdge const& prev = edges[std::size_t(edges[std::size_t(s)].e[0])];
        if (next.half < 0 && prev.half < 0)
            return false; // the tip would keep no face
        int tip = next.v[1];
        int valence = int(vertVerts(tip).size());
        if (valence <= (verts[std::size_t(tip)].is(MeshVert::BORDER) ? 2 : 3))
            return false; // the tip would be left with two edges
        tips.push_back(tip);
    }
    // Link condition: the ends share no neighbour but the tips.
    std::vector<int> na = vertVerts(a), nb = vertVerts(b);
    std::sort(na.begin(), na.end());
    std::sort(nb.begin(), nb.end());
    std::vector<int> common;
    std::set_intersection(na.begin(), na.end(), nb.begin(), nb.end(), std::back_inserter(common));
    for (int c : common)
        if (std::find(tips.begin(), tips.end(), c) == tips.end())
            return false;
    // No other face may hold both ends: it would fold onto itself.
    for (int c : vertInEdges(a)) {
        int f = edges[std::size_t(c)].face;
        if (f == r.face || (r.half >= 0 && f == edges[std::size_t(r.half)].face))
            continue;
        std::vector<int> fv = faceVerts(f);
        if (std::find(fv.begin(), fv.end(), b) != fv.end())
            return false;
    }
    std::vector<int> representative(verts.size());
    for (std::size_t v = 0; v < verts.size(); ++v)
        representative[v] = int(v);
    representative[std::size_t(b)] = a;
    rebuildOverVertices(representative);
    return true;
}

// ---- vertex split and rip ---------------------------------------------------------------------

std::vector<int> Mesh::fanRange(int v, int from, int to, bool& wholeFan) const
{
    wholeFan = false;
    std::vector<int> range;
    if (v < 0 || std::size_t(v) >= verts.size())
        return range;
    std::vector<int> fan = vertInEdges(v);
    auto i = std::find(fan.begin(), fan.end(), from), j = std::find(fan.begin(), fan.end(), to);
    if (i == fan.end() || j == fan.end())
        return range;
    bool open = verts[std::size_t(v)].is(MeshVert::BORDER);
    if (open && j < i)
        return range;
    for (auto k = i;; ) {
        range.push_back(*k);
        if (k == j)
            break;
        if (++k == fan.end())
            k = fan.begin();
    }
    wholeFan = range.size() == fan.size();
    return range;
}

int Mesh::vertSplit(int v, int from, int to)
{
    bool whole = false;
    std::vector<int> range = fanRange(v, from, to, whole);
    // On a closed fan v must keep a corner of its own, or it would be left with two edges.
    if (range.size() < 2 || (whole && !verts[std::size_t(v)].is(MeshVert::BORDER)))
        return -1;
    int a = range.front(), b = range.back();
    int aOut = edges[std::size_t(a)].e[1], bOut = edges[std::size_t(b)].e[1];
    int fa = edges[std::size_t(a)].face, fb = edges[std::size_t(b)].face;
    int w = vertAdd(verts[std::size_t(v)].position);
    // The corners strictly inside the range move wholly; a keeps its arrival and b its
    // departure at v.
    edges[std::size_t(aOut)].v[0] = w;
    for (std::size_t k = 1; k + 1 < range.size(); ++k) {
        int c = range[k];
        edges[std::size_t(c)].v[1] = w;
        edges[std::size_t(edges[std::size_t(c)].e[1])].v[0] = w;
    }
    edges[std::size_t(b)].v[1] = w;
    int x = edgeAdd(v, w, a, aOut, -1, fa);
    int y = edgeAdd(w, v, b, bOut, -1, fb);
    edges[std::size_t(a)].e[1] = x;
    edges[std::size_t(aOut)].e[0] = x;
    edges[std::size_t(b)].e[1] = y;
    edges[std::size_t(bOut)].e[0] = y;
    edges[std::size_t(x)].half = y;
    edges[std::size_t(y)].half = x;
    // x arrives at w in a's face, y at v in b's face: each takes that face's old corner.
    std::pair<int, int> const corners[2] = {{x, a}, {y, b}};
    for (auto const& [dst, src] : corners) {
        edges[std::size_t(dst)].normal = edges[std::size_t(src)].normal;
        if (hasPbr())
            materials[std::size_t(dst)] = materials[std::size_t(src)];
        if (hasUVs())
            uvs[std::size_t(dst)] = uvs[std::size_t(src)];
    }
    triangles += 2;
    verts[std::size_t(w)].edge = b;
    if (std::find(range.begin() + 1, range.end(), verts[std::size_t(v)].edge) != range.end())
        verts[std::size_t(v)].edge = a;
    for (int u : {v, w}) {
        vertUpdate(u);
        vertUpdateAnchor(u);
    }
    updateGeometry();
    return w;
}

int Mesh::vertSeparate(int v, int from, int to)
{
    bool whole = false;
    std::vector<int> range = fanRange(v, from, to, whole);
    if (range.empty() || whole)
        return -1;
    int a = range.front(), b = range.back();
    int opened[2] = {edges[std::size_t(a)].half, edges[std::size_t(edges[std::size_t(b)].e[1])].half};
    int farEnd[2] = {edges[std::size_t(a)].v[0], edges[std::size_t(edges[std::size_t(b)].e[1])].v[1]};
    for (int k = 0; k < 2; ++k)
        if (opened[k] >= 0 && verts[std::size_t(farEnd[k])].is(MeshVert::BORDER))
            return -1;
    int w = vertAdd(verts[std::size_t(v)].position);
    for (int c : range) {
        edges[std::size_t(c)].v[1] = w;
        edges[std::size_t(edges[std::size_t(c)].e[1])].v[0] = w;
    }
    // Unpair across both ends of the range: those edges become borders.
    int ends[2] = {a, edges[std::size_t(b)].e[1]};
    for (int k = 0; k < 2; ++k)
        if (opened[k] >= 0) {
            edges[std::size_t(opened[k])].half = -1;
            edges[std::size_t(ends[k])].half = -1;
        }
    verts[std::size_t(w)].edge = a;
    // v keeps a corner next to the range (after it, or before it on an open fan); vertUpdate
    // then walks to its border.
    if (std::find(range.begin(), range.end(), verts[std::size_t(v)].edge) != range.end())
        verts[std::size_t(v)].edge = opened[1] >= 0 ? opened[1] : edges[std::size_t(opened[0])].e[0];
    for (int u : {v, w, farEnd[0], farEnd[1]}) {
        vertUpdate(u);
        vertUpdateAnchor(u);
    }
    setComponentsPatches();
    updateGeometry();
    return w;
}

// ---- relaxing and sculpt smoothing ------------------------------------------------------------

Vector3<float> Mesh::vertRelaxPosition(MeshVert const& v, Vector3<float> const& normal) const
{
    if (v.is(MeshVert::ANCHOR))
        return v.position;
    Vector3<float> d = vertSmoothPosition(v) - v.position;
    Vector3<float> n = normal.normalize();
    return v.position + d - n * n.dot(d);
}

Vector3<float> Mesh::PointSculptSmooth(int v) const
{
    MeshVert const& vert = verts[std::size_t(v)];
    if (vert.is(MeshVert::ANCHOR) || vert.edge < 0)
        return vert.position;
    bool sharp = vert.is(MeshVert::SHARP);
    Vector3<float> sum;
    int n = 0;
    for (int c : vertInEdges(v)) {
        MeshEdge const& in = edges[std::size_t(c)];
        if (!sharp || in.half < 0 || in.is(MeshEdge::SHARP)) {
            sum += verts[std::size_t(in.v[0])].position;
            ++n;
        }
        MeshEdge const& out = edges[std::size_t(in.e[1])];
        if (out.half < 0) { // the end of an open fan: its last neighbour is across a border
            sum += verts[std::size_t(out.v[1])].position;
            ++n;
        }
    }
    if (n == 0 || (sharp && n > 2))
        return vert.position;
    return sum / float(n);
}

// ---- merging ----------------------------------------------------------------------------------

void Mesh::appendExisting(Mesh const* other, std::unordered_map<int, int> const& existing, TResizeStyle style,
                          Matrix34<double> const& M)
{
    VEL_ASSERT(other && other != this);
    std::vector<int> remap(other->verts.size(), -1);
    for (std::size_t i = 0; i < other->verts.size(); ++i) {
        auto it = existing.find(int(i));
        if (it != existing.end() && it->second >= 0 && std::size_t(it->second) < verts.size())
            remap[i] = it->second;
        else
            remap[i] = vertAdd(Vector3<float>(Vector3<double>(other->verts[i].position) * M));
    }
    bool mirror = M.determinant() < 0; // a mirroring matrix turns faces inside out
    std::vector<int> idx;
    std::vector<bool> sharp;
    std::vector<Pbr> mats;
    for (std::size_t f = 0; f < other->faces.size(); ++f) {
        idx.clear();
        sharp.clear();
        mats.clear();
        std::vector<int> ring = other->edgeLoop(other->faces[f].edge);
        if (mirror)
            std::reverse(ring.begin(), ring.end());
        for (int e : ring) {
            MeshEdge const& r = other->edges[std::size_t(e)];
            idx.push_back(remap[std::size_t(mirror ? r.v[0] : r.v[1])]);
            sharp.push_back(r.is(MeshEdge::SHARP));
            if (hasPbr())
                mats.push_back(other->hasPbr() ? other->materials[std::size_t(e)] : Pbr());
        }
        faceFromIndices(idx, sharp, mats);
    }
    initialize(style);
}

// ---- partial normals --------------------------------------------------------------------------

namespace {

// Visit marks of updateNormals, shared by all meshes (main thread only, like the scratch
// pads): a record is visited in the current pass when its mark equals the round, which moves
// on every pass, so the arrays are cleared only when it wraps.
struct VisitMarks {
    std::vector<uint32_t> verts, faces;
    uint32_t round = 0;

    uint32_t next(std::size_t vertCount, std::size_t faceCount)
    {
        if (++round == 0) {
            std::fill(verts.begin(), verts.end(), 0u);
            std::fill(faces.begin(), faces.end(), 0u);
            round = 1;
        }
        if (verts.size() < vertCount)
            verts.resize(vertCount, 0u);
        if (faces.size() < faceCount)
            faces.resize(faceCount, 0u);
        return round;
    }
};

} // namespace

// Moving a vertex changes the normals of its faces, and so the corner normals of every vertex
// of those faces. Each of those vertices sums the normals of all its faces, which are
// recomputed here the way calculateNormals computes them, so the result is bit for bit the
// same. Face normals go to the geometry pad at their own index, and visits are marked in
// arrays that are not cleared per call: nothing here scales with the mesh.
void Mesh::updateNormals(std::vector<int> const& touched)
{
    std::size_t nf = faces.size();
    if (touched.empty() || nf == 0)
        return;
    std::vector<Vector3<float>> fallback;
    Vector3<float>* normals = GeometryScratch(nf, fallback);
    auto eachFace = [this](int v, auto&& visit) {
        int s = verts[std::size_t(v)].edge, c = s;
        if (s < 0)
            return;
        std::size_t steps = 0;
        do {
            visit(int(edges[std::size_t(c)].face));
            c = edges[std::size_t(edges[std::size_t(c)].e[1])].half;
        } while (c >= 0 && c != s && ++steps <= edges.size());
    };
    static VisitMarks marks;
    std::vector<uint32_t>& vertMark = marks.verts;
    std::vector<uint32_t>& faceMark = marks.faces;
    std::vector<int> affected;
    affected.reserve(touched.size() * 2);
    uint32_t round = marks.next(verts.size(), nf);
    for (int v : touched)
        eachFace(v, [&](int f) {
            if (faceMark[std::size_t(f)] == round)
                return;
            faceMark[std::size_t(f)] = round;
            int s = faces[std::size_t(f)].edge, c = s;
            do {
                int u = edges[std::size_t(c)].v[1];
                if (vertMark[std::size_t(u)] != round) {
                    vertMark[std::size_t(u)] = round;
                    affected.push_back(u);
                }
                c = edges[std::size_t(c)].e[1];
            } while (c != s);
        });
    round = marks.next(verts.size(), nf);
    for (int v : affected)
        eachFace(v, [&](int f) {
            if (faceMark[std::size_t(f)] != round) {
                faceMark[std::size_t(f)] = round;
                normals[f] = Vector3<float>(calculatePreciseFaceNormal(f).normalize());
            }
        });
    for (int v : affected)
        vertNormals(v, normals);
    set_vbo_dirty(VBO_NORMALS);
}

// ---- buffer slots ------------------------------------------------------------------------------

int Mesh::points_count() const
{
    return 3 * triangles;
}

} // namespace vel
