// Mesh operations: subdivision, smoothing, welding and local edits.
//
// Whole-mesh rewrites (subdivide, weld) build the new faces into a fresh mesh with
// faceFromIndices and let buildConnectivity pair them; local edits (triangulate, edgeSplit,
// edgeFlip, faceFlip) patch the records in place and keep every invariant of Mesh.h.
// A local edit checks all its preconditions first: a refusal returns false or -1 and leaves
// the mesh as it was.
//
// Index
// - subdivision
// - smoothing
// - welding
// - triangulation
// - local edits: edgeSplit, edgeFlip, faceFlip, flipNormals
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Assert.h"
#include "Scene/Elements/Mesh/MeshScratch.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace vel {

namespace {

// Mean of several materials, channel by channel, in the signed reading of rough and metal.
struct PbrSum {
    fPbr sum;
    int n = 0;
    void add(Pbr const& p)
    {
        fPbr f(p, true);
        for (int i = 0; i < 4; ++i) {
            sum.color[i] += f.color[i];
            sum.light[i] += f.light[i];
        }
        sum.rough += f.rough;
        sum.metal += f.metal;
        ++n;
    }
    Pbr mean() const
    {
        fPbr m = sum;
        float k = n > 0 ? 1.0f / float(n) : 1.0f;
        for (int i = 0; i < 4; ++i) {
            m.color[i] *= k;
            m.light[i] *= k;
        }
        m.rough *= k;
        m.metal *= k;
        return Pbr(m, true);
    }
};

// Mean of packed UVs (u in the low 16 bits, v in the high ones), each half rounded.
uint32_t UVMean(uint32_t const* values, std::size_t n)
{
    uint64_t u = 0, v = 0;
    for (std::size_t i = 0; i < n; ++i) {
        u += values[i] & 0xFFFFu;
        v += values[i] >> 16;
    }
    return n == 0 ? 0u : uint32_t((u + n / 2) / n) | uint32_t((v + n / 2) / n) << 16;
}

// faceFromIndices that also gives the new corners their UVs when the mesh has them.
int FaceWithUVs(Mesh& m, std::vector<int> const& idx, std::vector<bool> const& sharp, std::vector<Pbr> const& mats,
                std::vector<uint32_t> const& uv)
{
    std::size_t first = m.edges.size();
    int f = m.faceFromIndices(idx, sharp, mats);
    if (f >= 0 && m.hasUVs())
        for (std::size_t i = 0; i < idx.size() && i < uv.size(); ++i)
            m.uvs[first + i] = uv[i];
    return f;
}

// Copies every per-corner value (normal, material, UV) of corner `from` to corner `to`.
void copyCorner(Mesh& m, int to, int from)
{
    m.edges[std::size_t(to)].normal = m.edges[std::size_t(from)].normal;
    if (m.dataType == 1)
        m.materials[std::size_t(to)] = m.materials[std::size_t(from)];
    if (m.dataType == 2)
        m.uvs[std::size_t(to)] = m.uvs[std::size_t(from)];
}

} // namespace

// ---- subdivision ------------------------------------------------------------------------------

void Mesh::subdivide(bool smooth)
{
    subdivideQuadsTris(smooth);
    update();
}

void Mesh::subdivideQuadsTris(bool smooth)
{
    if (hasPbr())
        subdivideQuadsTrisGeometryMaterial(smooth);
    else
        subdivideQuadsTrisGeometry(smooth);
}

void Mesh::subdivideQuadsTrisGeometry(bool smooth)
{
    subdivideFaces(smooth, false);
}

void Mesh::subdivideQuadsTrisGeometryMaterial(bool smooth)
{
    subdivideFaces(smooth, hasPbr());
}

void Mesh::subdivideFaces(bool smooth, bool material)
{
    if (faces.empty() || invalid)
        return;
    std::size_t nv = verts.size(), ne = edges.size(), nf = faces.size();
    bool uv = hasUVs();
    Mesh out;
    out.setDataType(material ? 1 : (uv ? 2 : 0));
    out.center = center;
    out.scale = scale;
    for (std::size_t v = 0; v < nv; ++v) {
        MeshVert const& s = verts[v];
        out.vertAdd(s.position, -1, s.is(MeshVert::SHARP), s.is(MeshVert::ANCHOR));
    }
    // 1. A centre vertex for every face that is not a triangle.
    std::vector<int> centre(nf, -1);
    std::vector<Vector3<float>> centres(nf);
    for (std::size_t f = 0; f < nf; ++f) {
        centres[f] = faceCenter(int(f));
        if (faceCount(int(f)) != 3)
            centre[f] = out.vertAdd(centres[f]);
    }
    // 2. One vertex per edge pair: the midpoint on sharp and border edges, else the mean of
    // both ends and both face centres.
    std::vector<int> mid(ne, -1);
    for (std::size_t i = 0; i < ne; ++i) {
        MeshEdge const& e = edges[i];
        if (e.half >= 0 && std::size_t(e.half) < i) {
            mid[i] = mid[std::size_t(e.half)];
            continue;
        }
        Vector3<float> a = verts[std::size_t(e.v[0])].position, b = verts[std::size_t(e.v[1])].position;
        bool sharp = e.half < 0 || e.is(MeshEdge::SHARP);
        Vector3<float> p = sharp ? (a + b) * 0.5f
                                 : (a + b + centres[std::size_t(e.face)] + centres[std::size_t(edges[std::size_t(e.half)].face)]) * 0.25f;
        mid[i] = out.vertAdd(p, -1, sharp, false);
    }
    // 3. Rebuild each face: n quads around its centre, or four triangles. New corners take
    // the mean of the corner values (materials, UVs) around them.
    std::vector<int> ring, idx(4);
    std::vector<bool> sharp(4);
    std::vector<Pbr> mats(4);
    std::vector<uint32_t> cornerUV(4), ringUV;
    for (std::size_t f = 0; f < nf; ++f) {
        ring = edgeLoop(faces[f].edge);
        std::size_t n = ring.size();
        auto corner = [&](std::size_t i) { return ring[i % n]; };
        auto sharpOf = [&](std::size_t i) { return edges[std::size_t(corner(i))].is(MeshEdge::SHARP); };
        auto matOf = [&](std::size_t i) { return material ? materials[std::size_t(corner(i))] : Pbr(); };
        auto midMat = [&](std::size_t i) { return Pbr::avg(matOf(i + n - 1), matOf(i)); };
        auto uvOf = [&](std::size_t i) { return uv ? uvs[std::size_t(corner(i))] : 0u; };
        auto midUV = [&](std::size_t i) {
            uint32_t ends[2] = {uvOf(i + n - 1), uvOf(i)};
            return UVMean(ends, 2);
        };
        if (n != 3) {
            PbrSum faceMat;
            for (std::size_t i = 0; material && i < n; ++i)
                faceMat.add(matOf(i));
            ringUV.resize(n);
            for (std::size_t i = 0; i < n; ++i)
                ringUV[i] = uvOf(i);
            uint32_t faceUV = UVMean(ringUV.data(), n);
            for (std::size_t i = 0; i < n; ++i) {
                idx = {mid[std::size_t(corner(i))], edges[std::size_t(corner(i))].v[1], mid[std::size_t(corner(i + 1))],
                       centre[f]};
                sharp = {false, sharpOf(i), sharpOf(i + 1), false};
                if (material)
                    mats = {midMat(i), matOf(i), midMat(i + 1), faceMat.mean()};
                cornerUV = {midUV(i), uvOf(i), midUV(i + 1), faceUV};
                FaceWithUVs(out, idx, sharp, mats, cornerUV);
            }
        } else {
            idx.resize(3);
            sharp.resize(3);
            mats.resize(3);
            cornerUV.resize(3);
            for (std::size_t i = 0; i < 3; ++i) {
                idx = {mid[std::size_t(corner(i))], edges[std::size_t(corner(i))].v[1], mid[std::size_t(corner(i + 1))]};
                sharp = {false, sharpOf(i), sharpOf(i + 1)};
                if (material)
                    mats = {midMat(i), matOf(i), midMat(i + 1)};
                cornerUV = {midUV(i), uvOf(i), midUV(i + 1)};
                FaceWithUVs(out, idx, sharp, mats, cornerUV);
            }
            idx = {mid[std::size_t(corner(1))], mid[std::size_t(corner(2))], mid[std::size_t(corner(0))]};
            sharp = {false, false, false};
            if (material)
                mats = {midMat(1), midMat(2), midMat(0)};
            cornerUV = {midUV(1), midUV(2), midUV(0)};
            FaceWithUVs(out, idx, sharp, mats, cornerUV);
            idx.resize(4);
            sharp.resize(4);
            mats.resize(4);
            cornerUV.resize(4);
        }
    }
    swap(out);
    initialize(0);
    // 4. Old vertices move halfway to the smoothed position, anchors stay.
    if (smooth) {
        std::vector<Vector3<float>> target(nv);
        for (std::size_t v = 0; v < nv; ++v)
            target[v] = verts[v].is(MeshVert::ANCHOR) ? verts[v].position
                                                      : (verts[v].position + vertSmoothPosition(int(v))) * 0.5f;
        for (std::size_t v = 0; v < nv; ++v)
            verts[v].position = target[v];
    }
    updateGeometry();
}

// ---- smoothing --------------------------------------------------------------------------------

Vector3<float> Mesh::vertSmoothPosition(MeshVert const& v) const
{
    int index = vertexOfRecord(v);
    return index < 0 ? v.position : vertSmoothPosition(index);
}

// A smooth vertex goes to the mean of its ring. A sharp one follows its sharp lines: with
// exactly two sharp or border neighbours the mean of those two (so lines stay curves),
// otherwise it stays (corners stay).
Vector3<float> Mesh::vertSmoothPosition(int v) const
{
    MeshVert const& vert = verts[std::size_t(v)];
    int s = vert.edge;
    if (s < 0)
        return vert.position;
    bool sharp = vert.is(MeshVert::SHARP);
    Vector3<float> sum;
    int n = 0;
    int c = s;
    std::size_t steps = 0;
    while (steps++ <= edges.size()) {
        MeshEdge const& e = edges[std::size_t(c)];
        if (!sharp || e.half < 0 || e.is(MeshEdge::SHARP)) {
            sum += verts[std::size_t(e.v[0])].position;
            ++n;
        }
        MeshEdge const& out = edges[std::size_t(e.e[1])];
        if (out.half < 0) {
            sum += verts[std::size_t(out.v[1])].position;
            ++n;
            break;
        }
        if (out.half == s)
            break;
        c = out.half;
    }
    if (sharp)
        return n == 2 ? sum * 0.5f : vert.position;
    return n > 0 ? sum / float(n) : vert.position;
}

void Mesh::smoothAll(float amount)
{
    std::size_t nv = verts.size();
    std::vector<Vector3<float>> fallback;
    Vector3<float>* target = GeometryScratch(nv, fallback);
    for (std::size_t v = 0; v < nv; ++v)
        target[v] = vertSmoothPosition(int(v));
    for (std::size_t v = 0; v < nv; ++v) {
        Vector3<float>& p = verts[v].position;
        p += (target[v] - p) * amount;
    }
    updateGeometry();
}

void Mesh::spherize()
{
    float radius = 0.5f * scale;
    for (std::size_t v = 0; v < verts.size(); ++v) {
        Vector3<float> d = verts[v].position - center;
        if (d.length2() > 0)
            verts[v].position = center + d.normalize() * radius;
    }
    updateGeometry();
}

// ---- welding ----------------------------------------------------------------------------------

// Rebuilds the faces over vertex representatives: a face loses corners whose edge collapsed
// and is dropped when fewer than three distinct corners remain.
int Mesh::rebuildOverVertices(std::vector<int> const& representative)
{
    Mesh out;
    out.setDataType(dataType);
    out.center = center;
    out.scale = scale;
    std::vector<int> remap(verts.size(), -1);
    for (std::size_t v = 0; v < verts.size(); ++v)
        if (representative[v] == int(v)) {
            MeshVert const& s = verts[v];
            remap[v] = out.vertAdd(s.position, -1, false, s.is(MeshVert::ANCHOR));
        }
    std::vector<int> idx;
    std::vector<bool> sharp;
    std::vector<Pbr> mats;
    std::vector<uint32_t> uv;
    std::vector<char> used(out.verts.size(), 0);
    for (std::size_t f = 0; f < faces.size(); ++f) {
        idx.clear();
        sharp.clear();
        mats.clear();
        uv.clear();
        for (int e : edgeLoop(faces[f].edge)) {
            MeshEdge const& r = edges[std::size_t(e)];
            int a = remap[std::size_t(representative[std::size_t(r.v[0])])];
            int b = remap[std::size_t(representative[std::size_t(r.v[1])])];
            if (a == b)
                continue;
            idx.push_back(b);
            sharp.push_back(r.is(MeshEdge::SHARP));
            if (dataType == 1)
                mats.push_back(materials[std::size_t(e)]);
            if (dataType == 2)
                uv.push_back(uvs[std::size_t(e)]);
        }
        if (FaceWithUVs(out, idx, sharp, mats, uv) >= 0) // refuses rings that collapsed
            for (int v : idx)
                used[std::size_t(v)] = 1;
    }
    int kept = int(std::count(used.begin(), used.end(), 1));
    swap(out);
    initialize(0);
    return int(verts.size()) - kept; // vertices that buildConnectivity split off again
}

int Mesh::weld(float distance)
{
    std::size_t nv = verts.size();
    if (nv == 0 || faces.empty())
        return 0;
    AABB box;
    for (std::size_t v = 0; v < nv; ++v)
        box.add(Vector3<double>(verts[v].position));
    Vector3<double> size = box.size();
    double half = 0.5 * std::max(size.x, std::max(size.y, size.z));
    double cell = std::max(half * std::ldexp(1.0, -16), double(distance));
    if (!(cell > 0))
        cell = 1e-30;
    Vector3<double> mid = box.center();
    auto coord = [&](double value, double c) { return int64_t(std::floor((value - c) / cell)) + 0x100000; };
    auto key = [](int64_t x, int64_t y, int64_t z) {
        return uint64_t(x & 0x1FFFFF) << 42 | uint64_t(y & 0x1FFFFF) << 21 | uint64_t(z & 0x1FFFFF);
    };
    std::unordered_map<uint64_t, int> head;
    head.reserve(nv);
    std::vector<int> next(nv, -1), representative(nv);
    double reach2 = cell * cell;
    int merged = 0;
    for (std::size_t v = 0; v < nv; ++v) {
        Vector3<double> p(verts[v].position);
        int64_t x = coord(p.x, mid.x), y = coord(p.y, mid.y), z = coord(p.z, mid.z);
        int found = -1;
        for (int dz = -1; dz <= 1 && found < 0; ++dz)
            for (int dy = -1; dy <= 1 && found < 0; ++dy)
                for (int dx = -1; dx <= 1 && found < 0; ++dx) {
                    auto it = head.find(key(x + dx, y + dy, z + dz));
                    for (int u = it == head.end() ? -1 : it->second; u >= 0 && found < 0; u = next[std::size_t(u)])
                        if ((Vector3<double>(verts[std::size_t(u)].position) - p).length2() <= reach2)
                            found = u;
                }
        if (found >= 0) {
            representative[v] = found;
            ++merged;
            continue;
        }
        representative[v] = int(v);
        auto [it, fresh] = head.emplace(key(x, y, z), int(v));
        if (!fresh) {
            next[v] = it->second;
            it->second = int(v);
        }
    }
    // Where a merge joins sheets that only touch there, the rebuild splits the vertex again:
    // only what stays joined counts.
    if (merged > 0)
        merged -= rebuildOverVertices(representative);
    return merged;
}

// ---- triangulation ----------------------------------------------------------------------------

void Mesh::triangulate(bool fan)
{
    (void)fan; // every face is fanned from its first corner
    std::size_t nf = faces.size();
    for (std::size_t f = 0; f < nf; ++f)
        faceTriangulateFan(int(f), true);
    set_vbos_dirty(true);
}

// The ring r0 .. r(n-1), ri from p(i) to p(i+1), becomes triangles (p0, pk, pk+1): the face
// keeps the first, the others are new faces in the same component and patch. New half-edges
// take the corner data of the corner they arrive at.
bool Mesh::faceTriangulateFan(int f, bool keepNormals)
{
    std::vector<int> r = edgeLoop(faces[std::size_t(f)].edge);
    int n = int(r.size());
    if (n <= 3)
        return false;
    MeshFace const face = faces[std::size_t(f)];
    int prevB = -1; // b(k-1): p(k) -> p0 of the previous triangle
    for (int k = 1; k <= n - 2; ++k) {
        int tf = k == 1 ? f : faceAdd(r[std::size_t(k)], face.component, face.patch);
        int a = r[0];
        if (k > 1) {
            a = edgeAdd(edges[std::size_t(r[0])].v[0], edges[std::size_t(r[std::size_t(k)])].v[0], -1, -1, prevB, tf);
            edges[std::size_t(prevB)].half = a;
            if (keepNormals)
                copyCorner(*this, a, r[std::size_t(k - 1)]);
        }
        int b = r[std::size_t(n - 1)];
        if (k < n - 2) {
            b = edgeAdd(edges[std::size_t(r[std::size_t(k)])].v[1], edges[std::size_t(r[0])].v[0], -1, -1, -1, tf);
            if (keepNormals)
                copyCorner(*this, b, r[std::size_t(n - 1)]);
        }
        int mid = r[std::size_t(k)];
        MeshEdge& ea = edges[std::size_t(a)];
        MeshEdge& em = edges[std::size_t(mid)];
        MeshEdge& eb = edges[std::size_t(b)];
        ea.e[0] = b;
        ea.e[1] = mid;
        em.e[0] = a;
        em.e[1] = b;
        eb.e[0] = mid;
        eb.e[1] = a;
        ea.face = em.face = eb.face = tf;
        prevB = b;
    }
    faces[std::size_t(f)].edge = r[1];
    return true;
}

// ---- local edits ------------------------------------------------------------------------------

int Mesh::edgeSplit(int e, int vertex)
{
    if (e < 0 || std::size_t(e) >= edges.size())
        return -1;
    Pbr material;
    if (hasPbr()) {
        MeshEdge const& r = edges[std::size_t(e)];
        material = Pbr::avg(materials[std::size_t(r.e[0])], materials[std::size_t(e)]);
    }
    return edgeSplitMaterial(e, vertex, material);
}

// e: a -> b becomes a -> m -> b, and its twin b -> a becomes b -> m -> a; the new halves
// pair crosswise and inherit sharpness. `vertex` must be new (no edge yet), or -1.
int Mesh::edgeSplitMaterial(int e, int vertex, Pbr const& material)
{
    if (e < 0 || std::size_t(e) >= edges.size())
        return -1;
    if (vertex >= 0 && (std::size_t(vertex) >= verts.size() || verts[std::size_t(vertex)].edge >= 0))
        return -1;
    MeshEdge const r = edges[std::size_t(e)];
    int h = r.half;
    Vector3<float> midpoint = (verts[std::size_t(r.v[0])].position + verts[std::size_t(r.v[1])].position) * 0.5f;
    int m = vertex >= 0 ? vertex : vertAdd(midpoint);
    int e2 = splitHalfEdge(e, m, material);
    if (h >= 0) {
        int h2 = splitHalfEdge(h, m, material);
        edges[std::size_t(e)].half = h2;
        edges[std::size_t(h2)].half = e;
        edges[std::size_t(h)].half = e2;
        edges[std::size_t(e2)].half = h;
    }
    verts[std::size_t(m)].edge = e;
    vertUpdate(m);
    updateGeometry();
    return m;
}

// Exchanges the diagonal between the two triangles of e. Refused (false, untouched) on a
// border or sharp edge, unless both faces are distinct triangles, or when the new diagonal
// already exists.
bool Mesh::edgeFlip(int e)
{
    if (e < 0 || std::size_t(e) >= edges.size())
        return false;
    MeshEdge const& r = edges[std::size_t(e)];
    int h = r.half;
    if (h < 0 || r.is(MeshEdge::SHARP) || r.face == edges[std::size_t(h)].face)
        return false;
    if (faceCount(r.face) != 3 || faceCount(edges[std::size_t(h)].face) != 3)
        return false;
    int e1 = r.e[1], e2 = edges[std::size_t(e1)].e[1];
    int h1 = edges[std::size_t(h)].e[1], h2 = edges[std::size_t(h1)].e[1];
    int a = r.v[0], b = r.v[1], c = edges[std::size_t(e1)].v[1], d = edges[std::size_t(h1)].v[1];
    if (c == d || findEdge(c, d) >= 0 || findEdge(d, c) >= 0)
        return false;
    int fa = r.face, fb = edges[std::size_t(h)].face;
    auto link = [this](int x, int y, int z, int face) {
        edges[std::size_t(x)].e[1] = y;
        edges[std::size_t(y)].e[1] = z;
        edges[std::size_t(z)].e[1] = x;
        edges[std::size_t(x)].e[0] = z;
        edges[std::size_t(y)].e[0] = x;
        edges[std::size_t(z)].e[0] = y;
        edges[std::size_t(x)].face = edges[std::size_t(y)].face = edges[std::size_t(z)].face = face;
        faces[std::size_t(face)].edge = z;
    };
    // Triangles (a, d, c) = h1, e, e2 and (d, b, c) = h2, e1, h.
    edges[std::size_t(e)].v[0] = d;
    edges[std::size_t(e)].v[1] = c;
    edges[std::size_t(h)].v[0] = c;
    edges[std::size_t(h)].v[1] = d;
    copyCorner(*this, e, e1); // e now arrives at c
    copyCorner(*this, h, h1); // h now arrives at d
    link(h1, e, e2, fa);
    link(h2, e1, h, fb);
    if (verts[std::size_t(a)].edge == h)
        verts[std::size_t(a)].edge = e2;
    if (verts[std::size_t(b)].edge == e)
        verts[std::size_t(b)].edge = h2;
    for (int v : {a, b, c, d})
        vertUpdate(v);
    updateGeometry();
    return true;
}

// Reverses a face's ring; corner data moves with its corner. The twins across the face's
// edges are left as they are, so the structure is consistent again once every face of the
// component is flipped (flipNormals); vertex edges are not touched.
void Mesh::faceFlip(int f)
{
    std::vector<int> ring = edgeLoop(faces[std::size_t(f)].edge);
    std::size_t n = ring.size();
    std::vector<uint32_t> normal(n);
    std::vector<Pbr> mats(hasPbr() ? n : 0);
    std::vector<uint32_t> uv(hasUVs() ? n : 0);
    for (std::size_t i = 0; i < n; ++i) {
        normal[i] = edges[std::size_t(ring[i])].normal;
        if (hasPbr())
            mats[i] = materials[std::size_t(ring[i])];
        if (hasUVs())
            uv[i] = uvs[std::size_t(ring[i])];
    }
    for (int e : ring) {
        MeshEdge& r = edges[std::size_t(e)];
        std::swap(r.v[0], r.v[1]);
        std::swap(r.e[0], r.e[1]);
    }
    // The corner at p(i-1) is now ring[i]; it was ring[i-1].
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t from = (i + n - 1) % n;
        edges[std::size_t(ring[i])].normal = normal[from];
        if (hasPbr())
            materials[std::size_t(ring[i])] = mats[from];
        if (hasUVs())
            uvs[std::size_t(ring[i])] = uv[from];
    }
}

void Mesh::flipNormals()
{
    for (std::size_t f = 0; f < faces.size(); ++f)
        faceFlip(int(f));
    for (std::size_t v = 0; v < verts.size(); ++v)
        if (verts[v].edge >= 0)
            verts[v].edge = edges[std::size_t(verts[v].edge)].e[0];
    initializeVerts();
    updateGeometry();
}

} // namespace vel
