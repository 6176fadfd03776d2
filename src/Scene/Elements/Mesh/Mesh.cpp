// Mesh: records, building, walks and queries, lifecycle, extraction and merging.
//
// Index
// - element protocol and data type
// - building
// - walks and queries
// - lifecycle
// - extraction and merging
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Assert.h"

#include <algorithm>
#include <cmath>

namespace vel {

// ---- element protocol and data type -----------------------------------------------------------

void Mesh::calculateAABB(Matrix34<double> const& M)
{
    aabb = AABB();
    for (std::size_t i = 0; i < verts.size(); ++i)
        if (verts[i].is(MeshVert::ACTIVE))
            aabb.add(Vector3<double>(verts[i].position) * M);
}

std::deque<Vector3<double>> Mesh::Points(Matrix34<double> const& M) const
{
    std::deque<Vector3<double>> points;
    for (std::size_t i = 0; i < verts.size(); ++i)
        if (verts[i].is(MeshVert::ACTIVE))
            points.push_back(Vector3<double>(verts[i].position) * M);
    return points;
}

void Mesh::setDataType(int type)
{
    MeshVBO::setDataType(type);
    materials.resize(type == 1 ? edges.size() : 0);
    uvs.resize(type == 2 ? edges.size() : 0);
}

void Mesh::swap(Mesh& o)
{
    std::swap(center, o.center);
    std::swap(scale, o.scale);
    std::swap(aabb, o.aabb);
    std::swap(invalid, o.invalid);
    verts.swap(o.verts);
    edges.swap(o.edges);
    faces.swap(o.faces);
    materials.swap(o.materials);
    uvs.swap(o.uvs);
    std::swap(dataType, o.dataType);
    std::swap(triangles, o.triangles);
    std::swap(components, o.components);
    std::swap(patches, o.patches);
    std::swap(geometryChanged, o.geometryChanged);
    std::swap(hasInactive, o.hasInactive);
    std::swap(repairs, o.repairs);
    set_vbos_dirty(true);
    o.set_vbos_dirty(true);
    update();
    o.update();
}

// ---- building ---------------------------------------------------------------------------------

int Mesh::vertAdd(Vector3<float> const& position)
{
    return vertAdd(position, -1, false, false);
}

int Mesh::vertAdd(Vector3<float> const& position, int edge)
{
    return vertAdd(position, edge, false, false);
}

int Mesh::vertAdd(Vector3<float> const& position, int edge, bool sharp, bool anchor)
{
    VEL_ASSERT_MSG(verts.size() < std::size_t(INDEX_MAX), "vertex index beyond the 27-bit range");
    unsigned flags = MeshVert::ACTIVE | (sharp ? MeshVert::SHARP : 0) | (anchor ? MeshVert::ANCHOR : 0);
    verts.push_back(MeshVert(position, edge, flags));
    return int(verts.size()) - 1;
}

int Mesh::edgeAdd(int v0, int v1, int e0, int e1, int half, int face)
{
    return edgeAdd(v0, v1, e0, e1, half, face, false);
}

int Mesh::edgeAdd(int v0, int v1, int e0, int e1, int half, int face, bool sharp)
{
    VEL_ASSERT_MSG(edges.size() < std::size_t(INDEX_MAX), "half-edge index beyond the 27-bit range");
    MeshEdge e;
    e.v[0] = v0;
    e.v[1] = v1;
    e.e[0] = e0;
    e.e[1] = e1;
    e.half = half;
    e.face = face;
    e.flags = MeshEdge::ACTIVE | (sharp ? MeshEdge::SHARP : 0);
    edges.push_back(e);
    if (dataType == 1)
        materials.push_back(Pbr());
    if (dataType == 2)
        uvs.push_back(0);
    return int(edges.size()) - 1;
}

int Mesh::edgeAddMaterial(int v0, int v1, int e0, int e1, int half, int face, Pbr const& material)
{
    return edgeAddMaterial(v0, v1, e0, e1, half, face, false, material);
}

int Mesh::edgeAddMaterial(int v0, int v1, int e0, int e1, int half, int face, bool sharp, Pbr const& material)
{
    int e = edgeAdd(v0, v1, e0, e1, half, face, sharp);
    if (dataType == 1)
        materials[e] = material;
    return e;
}

int Mesh::faceAdd(int edge, int component, int patch)
{
    VEL_ASSERT_MSG(faces.size() < std::size_t(INDEX_MAX), "face index beyond the 27-bit range");
    faces.push_back(MeshFace(edge, component, patch));
    return int(faces.size()) - 1;
}

int Mesh::faceFromIndices(std::vector<int> const& indices)
{
    return faceFromCorners(indices, nullptr, nullptr, nullptr);
}

int Mesh::faceFromIndices(std::vector<int> const& indices, std::vector<bool> const& sharp)
{
    return faceFromCorners(indices, &sharp, nullptr, nullptr);
}

int Mesh::faceFromIndices(std::vector<int> const& indices, std::vector<bool> const& sharp,
                          std::vector<Pbr> const& mats)
{
    return faceFromCorners(indices, &sharp, &mats, nullptr);
}

int Mesh::faceFromIndicesEdges(std::vector<int> const& indices, std::unordered_map<long, int> const& existing)
{
    return faceFromCorners(indices, nullptr, nullptr, &existing);
}

static bool hasRepeatedIndex(std::vector<int> const& indices)
{
    std::size_t n = indices.size();
    if (n <= 16) {
        for (std::size_t i = 1; i < n; ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (indices[i] == indices[j])
                    return true;
        return false;
    }
    std::vector<int> sorted(indices);
    std::sort(sorted.begin(), sorted.end());
    return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

int Mesh::faceFromCorners(std::vector<int> const& indices, std::vector<bool> const* sharp,
                          std::vector<Pbr> const* mats, std::unordered_map<long, int> const* existing)
{
    int n = int(indices.size());
    if (n < 3 || edges.size() + std::size_t(n) > std::size_t(INDEX_MAX))
        return -1;
    for (int v : indices)
        if (v < 0 || std::size_t(v) >= verts.size())
            return -1;
    if (hasRepeatedIndex(indices))
        return -1;

    int f = int(faces.size());
    int first = int(edges.size());
    // Corner i is the half-edge from index i-1 to index i. New half-edges take consecutive
    // indices; with `existing`, a known free half-edge of the same key is reused instead.
    std::vector<int> ids;
    if (existing) {
        ids.resize(std::size_t(n));
        int next = first;
        for (int i = 0; i < n; ++i) {
            long key = long(indices[std::size_t((i + n - 1) % n)]) << 32 | long(indices[std::size_t(i)]);
            auto it = existing->find(key);
            bool reuse = it != existing->end() && it->second >= 0 && std::size_t(it->second) < edges.size() &&
                         edges[std::size_t(it->second)].face < 0;
            ids[std::size_t(i)] = reuse ? it->second : next++;
        }
    }
    auto id = [&](int i) { return existing ? ids[std::size_t(i)] : first + i; };
    for (int i = 0; i < n; ++i) {
        int e = id(i);
        int prev = i == 0 ? n - 1 : i - 1, next = i + 1 == n ? 0 : i + 1;
        auto fill = [&](MeshEdge& r) {
            r.v[0] = indices[std::size_t(prev)];
            r.v[1] = indices[std::size_t(i)];
            r.e[0] = id(prev);
            r.e[1] = id(next);
            r.face = f;
            r.flags = MeshEdge::ACTIVE | (sharp && std::size_t(i) < sharp->size() && (*sharp)[std::size_t(i)] ? MeshEdge::SHARP : 0);
        };
        if (std::size_t(e) < edges.size()) {
            fill(edges[std::size_t(e)]);
        } else {
            // A new record is filled before it is appended: imports add millions of them.
            MeshEdge r;
            fill(r);
            edges.push_back(r);
            if (dataType == 1)
                materials.push_back(Pbr());
            if (dataType == 2)
                uvs.push_back(0);
        }
        if (mats && dataType == 1 && std::size_t(i) < mats->size())
            materials[std::size_t(e)] = (*mats)[std::size_t(i)];
    }
    faceAdd(id(0), -1, -1);
    triangles += n - 2;
    return f;
}

// ---- walks and queries ------------------------------------------------------------------------

std::vector<int> Mesh::edgeLoop(int e) const
{
    std::vector<int> loop;
    int c = e;
    std::size_t cap = edges.size();
    do {
        loop.push_back(c);
        c = edges[std::size_t(c)].e[1];
    } while (c != e && c >= 0 && loop.size() <= cap);
    return loop;
}

std::vector<int> Mesh::faceVerts(int f) const
{
    std::vector<int> result;
    for (int e : edgeLoop(faces[std::size_t(f)].edge))
        result.push_back(edges[std::size_t(e)].v[1]);
    return result;
}

std::vector<int> Mesh::faceVertsEdges(int f) const
{
    std::vector<int> result;
    for (int e : edgeLoop(faces[std::size_t(f)].edge)) {
        result.push_back(edges[std::size_t(e)].v[1]);
        result.push_back(e);
    }
    return result;
}

int Mesh::faceCount(int f) const
{
    int n = 0;
    int s = faces[std::size_t(f)].edge, c = s;
    do {
        ++n;
        c = edges[std::size_t(c)].e[1];
    } while (c != s && std::size_t(n) <= edges.size());
    return n;
}

Vector3<float> Mesh::faceCenter(int f) const
{
    Vector3<float> sum;
    int n = 0;
    int s = faces[std::size_t(f)].edge, c = s;
    do {
        sum += verts[std::size_t(edges[std::size_t(c)].v[1])].position;
        ++n;
        c = edges[std::size_t(c)].e[1];
    } while (c != s && std::size_t(n) <= edges.size());
    return sum / float(n);
}

static std::vector<int> neighbourFaces(Mesh const& m, int f, bool stopAtSharp)
{
    std::vector<int> result;
    for (int e : m.edgeLoop(m.faces[std::size_t(f)].edge)) {
        MeshEdge const& r = m.edges[std::size_t(e)];
        if (r.half < 0 || (stopAtSharp && r.is(MeshEdge::SHARP)))
            continue;
        int g = m.edges[std::size_t(r.half)].face;
        if (g != f)
            result.push_back(g);
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

std::vector<int> Mesh::faceFaces(int f) const
{
    return neighbourFaces(*this, f, false);
}

std::vector<int> Mesh::faceFacesPatch(int f) const
{
    return neighbourFaces(*this, f, true);
}

std::vector<int> Mesh::vertInEdges(int v) const
{
    std::vector<int> result;
    int s = verts[std::size_t(v)].edge;
    if (s < 0)
        return result;
    int c = s;
    do {
        result.push_back(c);
        c = edges[std::size_t(edges[std::size_t(c)].e[1])].half;
    } while (c >= 0 && c != s && result.size() <= edges.size());
    return result;
}

std::vector<int> Mesh::vertOutEdges(int v) const
{
    std::vector<int> result = vertInEdges(v);
    for (int& e : result)
        e = edges[std::size_t(e)].e[1];
    return result;
}

std::vector<int> Mesh::vertEdges(int v) const
{
    std::vector<int> result = vertInEdges(v);
    std::size_t n = result.size();
    for (std::size_t i = 0; i < n; ++i)
        result.push_back(edges[std::size_t(result[i])].e[1]);
    return result;
}

std::vector<int> Mesh::vertEdgesSet(int v) const
{
    std::vector<int> result = vertEdges(v);
    std::sort(result.begin(), result.end());
    return result;
}

std::vector<int> Mesh::vertVerts(int v) const
{
    std::vector<int> result;
    std::vector<int> in = vertInEdges(v);
    for (int e : in)
        result.push_back(edges[std::size_t(e)].v[0]);
    if (!in.empty()) {
        MeshEdge const& out = edges[std::size_t(edges[std::size_t(in.back())].e[1])];
        if (out.half < 0)
            result.push_back(out.v[1]);
    }
    return result;
}

int Mesh::edgeStart(int e) const
{
    int v = edges[std::size_t(e)].v[1];
    if (!verts[std::size_t(v)].is(MeshVert::SHARP))
        return verts[std::size_t(v)].edge;
    // Backward over the fan (the inverse of c -> half of c's next) to the half-edge that
    // begins the group: a sharp one, or the border where the fan starts.
    int c = e;
    for (std::size_t steps = 0; steps <= edges.size(); ++steps) {
        MeshEdge const& r = edges[std::size_t(c)];
        if (r.half < 0 || r.is(MeshEdge::SHARP))
            return c;
        c = edges[std::size_t(r.half)].e[0];
        if (c == e)
            break;
    }
    return e;
}

int Mesh::findEdge(int from, int to) const
{
    if (from < 0 || std::size_t(from) >= verts.size())
        return -1;
    for (int e : vertOutEdges(from))
        if (edges[std::size_t(e)].v[1] == to)
            return e;
    return -1;
}

int Mesh::findFace(int from, int to) const
{
    int e = findEdge(from, to);
    return e < 0 ? -1 : edges[std::size_t(e)].face;
}

int Mesh::vertexOfRecord(MeshVert const& v) const
{
    return v.edge >= 0 && std::size_t(v.edge) < edges.size() ? edges[std::size_t(v.edge)].v[1] : -1;
}

// ---- lifecycle --------------------------------------------------------------------------------

void Mesh::initialize(TResizeStyle style)
{
    if (verts.size() < 3)
        return;
    invalid = !buildConnectivity();
    if (!invalid) {
        calculateSize(style);
        setComponentsPatches();
    }
    update();
    set_vbos_dirty(true);
    geometryChanged = true;
}

// Rebuilds v[0] and e[1] from e[0], which is all a file keeps of the rings.
static void linkRings(Mesh& m)
{
    for (std::size_t i = 0; i < m.edges.size(); ++i) {
        MeshEdge& e = m.edges[i];
        MeshEdge& p = m.edges[std::size_t(e.e[0])];
        e.v[0] = p.v[1];
        p.e[1] = int(i);
    }
}

static void finishData(Mesh& m)
{
    m.buildConnectivity();
    m.setComponentsPatches();
    m.update();
    m.set_vbos_dirty(true);
    m.geometryChanged = true;
}

void Mesh::initializeData()
{
    linkRings(*this);
    triangles = 0;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        int s = faces[f].edge, c = s, n = 0;
        do {
            edges[std::size_t(c)].face = int(f);
            c = edges[std::size_t(c)].e[1];
            ++n;
        } while (c != s && std::size_t(n) <= edges.size());
        triangles += n - 2;
    }
    finishData(*this);
}

void Mesh::initializeDataLoad()
{
    linkRings(*this);
    faces.clear();
    triangles = 0;
    for (std::size_t i = 0; i < edges.size(); ++i)
        edges[i].face = -1;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].face >= 0)
            continue;
        int f = faceAdd(int(i), -1, -1);
        int c = int(i), n = 0;
        do {
            edges[std::size_t(c)].face = f;
            c = edges[std::size_t(c)].e[1];
            ++n;
        } while (c != int(i) && std::size_t(n) <= edges.size());
        triangles += n - 2;
    }
    finishData(*this);
}

void Mesh::initializeVerts()
{
    for (std::size_t v = 0; v < verts.size(); ++v) {
        if (!verts[v].is(MeshVert::ACTIVE))
            continue;
        vertUpdate(int(v));
        vertUpdateAnchor(int(v));
    }
}

void Mesh::initializeReconstructSharp(TResizeStyle style)
{
    invalid = !buildConnectivity(true);
    calculateSize(style);
    setComponentsPatches();
    update();
    set_vbos_dirty(true);
    geometryChanged = true;
}

void Mesh::clear()
{
    verts.clear();
    edges.clear();
    faces.clear();
    materials.clear();
    uvs.clear();
    triangles = components = patches = 0;
    hasInactive = false;
    repairs = 0;
    geometryChanged = true;
    set_vbos_dirty(true);
}

void Mesh::calculateSize(TResizeStyle style)
{
    if (style == 1) {
        Vector3<double> sum;
        int n = 0;
        for (std::size_t i = 0; i < verts.size(); ++i)
            if (verts[i].is(MeshVert::ACTIVE)) {
                sum += Vector3<double>(verts[i].position);
                ++n;
            }
        if (n == 0)
            return;
        Vector3<double> c = sum / double(n);
        double r = 0;
        for (std::size_t i = 0; i < verts.size(); ++i)
            if (verts[i].is(MeshVert::ACTIVE))
                r = std::max(r, (Vector3<double>(verts[i].position) - c).length());
        center = Vector3<float>(c);
        scale = r > 0 ? float(2 * r) : 1.0f;
    } else if (style == 2) {
        AABB box;
        for (std::size_t i = 0; i < verts.size(); ++i)
            if (verts[i].is(MeshVert::ACTIVE))
                box.add(Vector3<double>(verts[i].position));
        if (box.empty())
            return;
        Vector3<double> size = box.size();
        double side = std::max(size.x, std::max(size.y, size.z));
        center = Vector3<float>(box.center());
        scale = side > 0 ? float(side) : 1.0f;
    }
}

void Mesh::calculateNormalsCenters()
{
    if (!geometryChanged)
        return;
    calculateNormals();
    geometryChanged = false;
}

void Mesh::updateGeometry()
{
    geometryChanged = true;
    set_vbo_dirty(VBO_POSITIONS);
    update();
}

// ---- extraction and merging -------------------------------------------------------------------

std::unique_ptr<Mesh> Mesh::extractFaces(bool byComponent, int number, bool withMaterial) const
{
    auto out = std::make_unique<Mesh>();
    out->setDataType(withMaterial ? dataType : 0);
    std::vector<int> remap(verts.size(), -1);
    std::vector<int> indices;
    std::vector<bool> sharp;
    std::vector<Pbr> mats;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        MeshFace const& face = faces[f];
        if (!face.is(MeshFace::ACTIVE) || (byComponent ? face.component : face.patch) != number)
            continue;
        indices.clear();
        sharp.clear();
        mats.clear();
        std::vector<int> ve = faceVertsEdges(int(f));
        for (std::size_t i = 0; i < ve.size(); i += 2) {
            int v = ve[i];
            MeshEdge const& e = edges[std::size_t(ve[i + 1])];
            if (remap[std::size_t(v)] < 0) {
                MeshVert const& src = verts[std::size_t(v)];
                remap[std::size_t(v)] = out->vertAdd(src.position, -1, src.is(MeshVert::SHARP), src.is(MeshVert::ANCHOR));
            }
            indices.push_back(remap[std::size_t(v)]);
            sharp.push_back(e.is(MeshEdge::SHARP) || e.half < 0);
            if (out->dataType == 1)
                mats.push_back(materials[std::size_t(ve[i + 1])]);
        }
        int g = out->faceFromIndices(indices, sharp, mats);
        if (g >= 0 && out->dataType == 2) {
            int s = out->faces[std::size_t(g)].edge, c = s, i = 0;
            do {
                out->uvs[std::size_t(c)] = uvs[std::size_t(ve[std::size_t(2 * i + 1)])];
                c = out->edges[std::size_t(c)].e[1];
                ++i;
            } while (c != s);
        }
    }
    out->initialize(1);
    return out;
}

std::unique_ptr<Mesh> Mesh::GetComponentGeometry(int component) const
{
    return extractFaces(true, component, false);
}

std::unique_ptr<Mesh> Mesh::GetPatchGeometry(int patch) const
{
    return extractFaces(false, patch, false);
}

std::unique_ptr<Mesh> Mesh::GetComponentGeometryMaterial(int component) const
{
    return extractFaces(true, component, true);
}

std::unique_ptr<Mesh> Mesh::GetPatchGeometryMaterial(int patch) const
{
    return extractFaces(false, patch, true);
}

void Mesh::append(Mesh const* other, Matrix34<double> const& M)
{
    VEL_ASSERT(other && other != this);
    int vo = int(verts.size()), eo = int(edges.size()), fo = int(faces.size());
    VEL_ASSERT_MSG(std::size_t(eo) + other->edges.size() <= std::size_t(INDEX_MAX), "appended mesh too large");
    auto shift = [](int i, int o) { return i < 0 ? i : i + o; };
    for (std::size_t i = 0; i < other->verts.size(); ++i) {
        MeshVert v = other->verts[i];
        v.position = Vector3<float>(Vector3<double>(v.position) * M);
        v.edge = shift(v.edge, eo);
        verts.push_back(v);
    }
    for (std::size_t i = 0; i < other->edges.size(); ++i) {
        MeshEdge e = other->edges[i];
        e.v[0] = shift(e.v[0], vo);
        e.v[1] = shift(e.v[1], vo);
        e.e[0] = shift(e.e[0], eo);
        e.e[1] = shift(e.e[1], eo);
        e.half = shift(e.half, eo);
        e.face = shift(e.face, fo);
        edges.push_back(e);
        if (dataType == 1)
            materials.push_back(other->dataType == 1 ? other->materials[i] : Pbr());
        if (dataType == 2)
            uvs.push_back(other->dataType == 2 ? other->uvs[i] : 0u);
    }
    for (std::size_t i = 0; i < other->faces.size(); ++i) {
        MeshFace f = other->faces[i];
        f.edge = shift(f.edge, eo);
        f.component = -1;
        f.patch = -1;
        faces.push_back(f);
    }
    triangles += other->triangles;
    hasInactive = hasInactive || other->hasInactive;
    // A mirroring matrix turns the appended faces inside out: reverse their rings.
    if (M.determinant() < 0)
        for (std::size_t f = std::size_t(fo); f < faces.size(); ++f)
            faceFlip(int(f));
    initialize(0);
}

} // namespace vel
