// Mesh: connectivity building and repair, vertex flags, components and patches, compaction.
//
// Index
// - buildConnectivity: pairing, orientation, vertex edges, non-manifold vertices, report
// - vertUpdate, vertUpdateAnchor
// - setComponentsPatches
// - removeInactive
#include "Scene/Elements/Mesh/Mesh.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Elements/Mesh/MeshScratch.h"

#include <algorithm>

namespace vel {


// ---- buildConnectivity ------------------------------------------------------------------------

bool Mesh::buildConnectivity()
{
    return buildConnectivity(false);
}

bool Mesh::buildConnectivity(bool sharpFromNormals)
{
    bool orientation = false, nonManifold = false;
    repairs = 0;
    pairEdges(orientation, nonManifold);
    if (orientation) {
        fixOrientation();
        repairs |= REPAIRED_ORIENTATION;
    }
    if (nonManifold)
        repairs |= REPAIRED_NON_MANIFOLD_EDGES;

    // Vertex edges: the last active half-edge arriving at a vertex wins. A vertex that no
    // half-edge reaches is dropped; one that is reached is active whatever its flags said.
    for (std::size_t v = 0; v < verts.size(); ++v)
        verts[v].edge = -1;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge const& e = edges[i];
        if (!e.is(MeshEdge::ACTIVE))
            continue;
        VEL_ASSERT_MSG(e.v[1] >= 0 && std::size_t(e.v[1]) < verts.size(), "half-edge ends outside the vertices");
        MeshVert& v = verts[std::size_t(e.v[1])];
        v.edge = int(i);
        v.set(MeshVert::ACTIVE);
    }
    bool compaction = false;
    for (std::size_t v = 0; v < verts.size(); ++v) {
        if (verts[v].is(MeshVert::ACTIVE) && verts[v].edge < 0)
            verts[v].clear(MeshVert::ACTIVE);
        if (!verts[v].is(MeshVert::ACTIVE))
            compaction = true;
    }

    // Sharpness belongs to the pair; vertex flags are derived from it, so this comes first.
    if (sharpFromNormals)
        buildSharpness();
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge& e = edges[i];
        if (e.half < 0 || std::size_t(e.half) > i)
            continue;
        MeshEdge& h = edges[std::size_t(e.half)];
        if (e.is(MeshEdge::SHARP) || h.is(MeshEdge::SHARP)) {
            e.set(MeshEdge::SHARP);
            h.set(MeshEdge::SHARP);
        }
    }

    initializeVerts();

    if (compaction)
        hasInactive = true;
    removeInactive(compaction || nonManifold);

    if (splitNonManifoldVertices())
        repairs |= REPAIRED_NON_MANIFOLD_VERTICES;
    reportRepairs();
    return true;
}

// Pairs half-edges as a walk in index order with a map from key (v0, v1) would: the first of
// a direction is entered; the reverse key pairs; a second one of the same direction is
// reversed and paired (orientation to fix); a third face on the edge unpairs them all.
// Decisions only depend on earlier half-edges of the same undirected edge, so the walk runs
// per edge over buckets of a counting sort instead of through a hash map: same result, and
// memory is touched in order. Bucket entries carry their sort key (high end, index, and
// whether the half-edge starts at the low end), so sorting a bucket reads no record.
void Mesh::pairEdges(bool& orientation, bool& nonManifold)
{
    std::size_t nv = verts.size(), ne = edges.size();
    std::vector<uint64_t> fallback;
    uint64_t* start = GeometryScratch(nv + 1 + ne, fallback);
    uint64_t* bucket = start + nv + 1;
    std::fill(start, start + nv + 1, 0);

    hasInactive = false;
    auto low = [](MeshEdge const& e) { return std::min(e.v[0], e.v[1]); };
    auto high = [](MeshEdge const& e) { return std::max(e.v[0], e.v[1]); };
    for (std::size_t i = 0; i < ne; ++i) {
        MeshEdge& e = edges[i];
        if (!e.is(MeshEdge::ACTIVE)) {
            hasInactive = true;
            continue;
        }
        VEL_ASSERT_MSG(e.v[0] >= 0 && e.v[1] >= 0 && std::size_t(high(e)) < nv, "half-edge vertex out of range");
        e.half = -1;
        if (e.v[0] != e.v[1])
            ++start[low(e) + 1];
    }
    for (std::size_t v = 0; v < nv; ++v)
        start[v + 1] += start[v];
    for (std::size_t i = 0; i < ne; ++i) {
        MeshEdge const& e = edges[i];
        if (e.is(MeshEdge::ACTIVE) && e.v[0] != e.v[1])
            bucket[start[low(e)]++] = uint64_t(high(e)) << 32 | uint64_t(i) << 1 | (e.v[0] < e.v[1] ? 0u : 1u);
    }
    // start[v] now holds the end of bucket v; bucket v begins at start[v - 1].

    auto pair = [this](int a, int b) {
        edges[std::size_t(a)].half = b;
        edges[std::size_t(b)].half = a;
    };
    std::size_t begin = 0;
    for (std::size_t v = 0; v < nv; ++v) {
        std::size_t end = std::size_t(start[v]);
        std::sort(bucket + begin, bucket + end);
        for (std::size_t g = begin; g < end;) {
            uint64_t h = bucket[g] >> 32;
            int entry[2] = {-1, -1}; // first half-edge entered for low->high and high->low
            for (; g < end && bucket[g] >> 32 == h; ++g) {
                int x = int((bucket[g] & 0xFFFFFFFFu) >> 1);
                int k = int(bucket[g] & 1u);
                if (entry[k] < 0 && entry[1 - k] >= 0) {
                    pair(x, entry[1 - k]);
                    entry[k] = x;
                } else if (entry[k] < 0) {
                    entry[k] = x;
                } else if (entry[1 - k] < 0) {
                    // Runs the wrong way: paired as if reversed, and entered under the reverse
                    // key. Its face is turned as a whole in fixOrientation.
                    pair(x, entry[k]);
                    entry[1 - k] = x;
                    orientation = true;
                } else {
                    edges[std::size_t(x)].half = -1;
                    edges[std::size_t(entry[0])].half = -1;
                    edges[std::size_t(entry[1])].half = -1;
                    nonManifold = true;
                }
            }
        }
        begin = end;
    }
}

// Breadth-first over faces from the lowest unvisited one: a neighbour across a pair whose
// halves run the same way must turn relative to the current face. A face reached twice with
// contradicting demands (a non-orientable surface) keeps its first decision and that pair is
// broken into borders. Turned faces are reversed whole, so rings stay rings.
bool Mesh::fixOrientation()
{
    std::size_t nf = faces.size();
    std::vector<signed char> turn(nf, -1);
    std::vector<int> queue;
    bool any = false;
    for (std::size_t seed = 0; seed < nf; ++seed) {
        if (turn[seed] >= 0 || !faces[seed].is(MeshFace::ACTIVE))
            continue;
        turn[seed] = 0;
        queue.assign(1, int(seed));
        for (std::size_t q = 0; q < queue.size(); ++q) {
            int f = queue[q];
            int s = faces[std::size_t(f)].edge, c = s;
            std::size_t steps = 0;
            do {
                MeshEdge& e = edges[std::size_t(c)];
                if (e.half >= 0) {
                    MeshEdge& h = edges[std::size_t(e.half)];
                    int g = h.face;
                    auto need = static_cast<signed char>(turn[std::size_t(f)] ^ (h.v[0] == e.v[0] ? 1 : 0));
                    if (turn[std::size_t(g)] < 0) {
                        turn[std::size_t(g)] = need;
                        any = any || need;
                        queue.push_back(g);
                    } else if (turn[std::size_t(g)] != need) {
                        h.half = -1;
                        e.half = -1;
                    }
                }
                c = e.e[1];
            } while (c != s && ++steps <= edges.size());
        }
    }
    for (std::size_t f = 0; f < nf; ++f)
        if (turn[f] == 1)
            faceFlip(int(f));
    return any;
}

// A vertex has one fan. Every half-edge arriving at a vertex outside the fan of the vertex's
// `edge` belongs to another sheet touching there: each such fan gets a vertex of its own.
bool Mesh::splitNonManifoldVertices()
{
    std::size_t ne = edges.size();
    std::vector<char> checked(ne, 0);
    auto next = [this](int c) { return edges[std::size_t(edges[std::size_t(c)].e[1])].half; };
    auto prev = [this](int c) {
        int h = edges[std::size_t(c)].half;
        return h < 0 ? -1 : edges[std::size_t(h)].e[0];
    };
    auto markFan = [&](int s) {
        std::size_t steps = 0;
        for (int c = s; c >= 0 && steps++ <= ne;) {
            checked[std::size_t(c)] = 1;
            c = next(c);
            if (c == s)
                break;
        }
        steps = 0;
        for (int c = prev(s); c >= 0 && c != s && steps++ <= ne; c = prev(c))
            checked[std::size_t(c)] = 1;
    };
    std::size_t nv = verts.size();
    for (std::size_t v = 0; v < nv; ++v)
        if (verts[v].is(MeshVert::ACTIVE) && verts[v].edge >= 0)
            markFan(verts[v].edge);

    bool split = false;
    for (std::size_t e = 0; e < ne; ++e) {
        if (checked[e] || !edges[e].is(MeshEdge::ACTIVE))
            continue;
        // The fan's first half-edge: back to a border, or all the way round.
        int s = int(e);
        std::size_t steps = 0;
        for (int c = prev(s); c >= 0 && c != int(e) && steps++ <= ne; c = prev(c))
            s = c;
        int old = edges[e].v[1];
        int w = vertAdd(verts[std::size_t(old)].position, s);
        steps = 0;
        for (int c = s; c >= 0 && steps++ <= ne;) {
            checked[std::size_t(c)] = 1;
            edges[std::size_t(c)].v[1] = w;
            edges[std::size_t(edges[std::size_t(c)].e[1])].v[0] = w;
            c = next(c);
            if (c == s)
                break;
        }
        vertUpdate(w);
        vertUpdateAnchor(w);
        split = true;
    }
    return split;
}

void Mesh::reportRepairs()
{
    QString text;
    if (repairs & REPAIRED_NON_MANIFOLD_EDGES)
        text += "Mesh has non-manifold edges. ";
    if (repairs & REPAIRED_ORIENTATION)
        text += "Fixed orientations. ";
    if (repairs & REPAIRED_NON_MANIFOLD_VERTICES)
        text += "Fixed non-manifold vertices. ";
    if (!text.isEmpty())
        LogInfo(text, 1);
}

// ---- vertUpdate, vertUpdateAnchor -------------------------------------------------------------

void Mesh::vertUpdate(int v)
{
    MeshVert& vert = verts[std::size_t(v)];
    bool anchor = vert.is(MeshVert::ANCHOR);
    vert.clear(MeshVert::SHARP | MeshVert::ANCHOR);
    int s = vert.edge;
    if (s < 0)
        return;
    unsigned restore = anchor ? MeshVert::ANCHOR : 0;
    std::size_t steps = 0;
    int c = s;
    do {
        MeshEdge const& e = edges[std::size_t(c)];
        if (e.half < 0) {
            vert.edge = c;
            vert.set(MeshVert::SHARP | MeshVert::BORDER | restore);
            return;
        }
        if (e.is(MeshEdge::SHARP)) {
            vert.edge = c;
            vert.set(MeshVert::SHARP | restore);
        }
        c = edges[std::size_t(e.half)].e[0];
    } while (c != s && ++steps <= edges.size());
    vert.clear(MeshVert::BORDER);
}

void Mesh::vertUpdateAnchor(int v)
{
    MeshVert& vert = verts[std::size_t(v)];
    if (!vert.is(MeshVert::SHARP) || vert.is(MeshVert::ANCHOR) || vert.edge < 0)
        return;
    int s = vert.edge;
    MeshEdge const& first = edges[std::size_t(s)];
    int count = first.is(MeshEdge::SHARP) || first.half < 0 ? 1 : 0;
    std::size_t steps = 0;
    int c = s;
    while (++steps <= edges.size()) {
        MeshEdge const& out = edges[std::size_t(edges[std::size_t(c)].e[1])];
        if (out.half == s)
            return; // back at the first edge's line, which is already counted
        if (out.is(MeshEdge::SHARP) && ++count >= 3) {
            vert.set(MeshVert::SHARP | MeshVert::ANCHOR);
            return;
        }
        if (out.half < 0) {
            if (!out.is(MeshEdge::SHARP) && count == 2)
                vert.set(MeshVert::ANCHOR);
            return;
        }
        c = out.half;
    }
}

// ---- setComponentsPatches ---------------------------------------------------------------------

void Mesh::setComponentsPatches()
{
    components = patches = 0;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        faces[f].component = -1;
        faces[f].patch = -1;
    }
    std::vector<int> queue;
    bool crossedSharp = false; // by the last component flood
    auto flood = [&](std::size_t seed, bool patch, int number) {
        crossedSharp = false;
        queue.assign(1, int(seed));
        if (patch)
            faces[seed].patch = number;
        else
            faces[seed].component = number;
        for (std::size_t q = 0; q < queue.size(); ++q) {
            int s = faces[std::size_t(queue[q])].edge, c = s;
            std::size_t steps = 0;
            do {
                MeshEdge const& e = edges[std::size_t(c)];
                crossedSharp = crossedSharp || (e.half >= 0 && e.is(MeshEdge::SHARP));
                if (e.half >= 0 && !(patch && e.is(MeshEdge::SHARP))) {
                    MeshFace& g = faces[std::size_t(edges[std::size_t(e.half)].face)];
                    int slot = patch ? g.patch : int(g.component);
                    if (slot < 0 && g.is(MeshFace::ACTIVE)) {
                        if (patch)
                            g.patch = number;
                        else
                            g.component = number;
                        queue.push_back(edges[std::size_t(e.half)].face);
                    }
                }
                c = e.e[1];
            } while (c != s && ++steps <= edges.size());
        }
    };
    for (std::size_t f = 0; f < faces.size(); ++f) {
        if (!faces[f].is(MeshFace::ACTIVE))
            continue;
        if (faces[f].component < 0) {
            flood(f, false, components++);
            // Without a sharp edge inside, the component is one patch: its faces are queued.
            if (!crossedSharp) {
                for (int g : queue)
                    faces[std::size_t(g)].patch = patches;
                ++patches;
            }
        }
        if (faces[f].patch < 0)
            flood(f, true, patches++);
    }
    set_vbo_dirty(VBO_IDS);
}

// ---- removeInactive ---------------------------------------------------------------------------

void Mesh::removeInactive(bool force)
{
    if (!hasInactive && !force)
        return;
    hasInactive = false;
    auto remapOf = [](auto const& seq, unsigned activeBit, std::vector<int>& remap) {
        remap.resize(seq.size());
        int next = 0;
        for (std::size_t i = 0; i < seq.size(); ++i)
            remap[i] = (seq[i].flags & activeBit) ? next++ : -1;
        return std::size_t(next);
    };
    std::vector<int> rv, re, rf;
    std::size_t nv = remapOf(verts, MeshVert::ACTIVE, rv);
    std::size_t ne = remapOf(edges, MeshEdge::ACTIVE, re);
    std::size_t nf = remapOf(faces, MeshFace::ACTIVE, rf);
    if (nv == verts.size() && ne == edges.size() && nf == faces.size())
        return;
    auto map = [](std::vector<int> const& r, int i) { return i < 0 || std::size_t(i) >= r.size() ? -1 : r[std::size_t(i)]; };
    // Order-preserving: a record only ever moves down, so one forward pass suffices.
    for (std::size_t i = 0; i < verts.size(); ++i) {
        if (rv[i] < 0)
            continue;
        MeshVert v = verts[i];
        v.edge = map(re, v.edge);
        verts[std::size_t(rv[i])] = v;
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (re[i] < 0)
            continue;
        MeshEdge e = edges[i];
        e.v[0] = map(rv, e.v[0]);
        e.v[1] = map(rv, e.v[1]);
        e.e[0] = map(re, e.e[0]);
        e.e[1] = map(re, e.e[1]);
        e.half = map(re, e.half);
        e.face = map(rf, e.face);
        std::size_t to = std::size_t(re[i]);
        edges[to] = e;
        if (dataType == 1)
            materials[to] = materials[i];
        if (dataType == 2)
            uvs[to] = uvs[i];
    }
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (rf[i] < 0)
            continue;
        MeshFace f = faces[i];
        f.edge = map(re, f.edge);
        faces[std::size_t(rf[i])] = f;
    }
    verts.resize(nv);
    edges.resize(ne);
    faces.resize(nf);
    if (dataType == 1)
        materials.resize(ne);
    if (dataType == 2)
        uvs.resize(ne);
    set_vbos_dirty(true);
}

} // namespace vel
