// Mesh::validate: checks every invariant written at the top of Mesh.h and lists what breaks.
// Reads indices defensively and caps every walk, so corrupt data can neither crash nor hang
// it. The list stops growing at 1000 entries.
#include "Scene/Elements/Mesh/Mesh.h"

namespace vel {

namespace {

constexpr std::size_t MAX_VIOLATIONS = 1000;

struct Report {
    std::vector<MeshViolation> list;
    void add(char kind, std::size_t index, char const* rule)
    {
        if (list.size() < MAX_VIOLATIONS)
            list.push_back({kind, int(index), rule});
    }
    void mesh(char const* rule) { add('m', std::size_t(-1), rule); }
};

} // namespace

std::vector<MeshViolation> Mesh::validate() const
{
    Report r;
    std::size_t nv = verts.size(), ne = edges.size(), nf = faces.size();
    auto inV = [nv](int i) { return i >= 0 && std::size_t(i) < nv; };
    auto inE = [ne](int i) { return i >= 0 && std::size_t(i) < ne; };
    auto inF = [nf](int i) { return i >= 0 && std::size_t(i) < nf; };

    if (hasInactive)
        r.mesh("has-inactive flag set after an operation");
    if (materials.size() != (dataType == 1 ? ne : 0))
        r.mesh("material count matches data type");
    if (uvs.size() != (dataType == 2 ? ne : 0))
        r.mesh("UV count matches data type");

    // Half-edges: ends, ring links, face, twin, sharp pairs.
    std::vector<int> arriving(nv, 0);
    std::vector<char> borderIn(nv, 0), sharpTouch(nv, 0);
    for (std::size_t i = 0; i < ne; ++i) {
        MeshEdge const& e = edges[i];
        if (!e.is(MeshEdge::ACTIVE))
            r.add('e', i, "inactive record");
        if (!inV(e.v[0]) || !inV(e.v[1])) {
            r.add('e', i, "vertex index in range");
            continue;
        }
        if (e.v[0] == e.v[1])
            r.add('e', i, "v[0] != v[1]");
        ++arriving[std::size_t(e.v[1])];
        if (e.half < 0)
            borderIn[std::size_t(e.v[1])] = 1;
        if (e.half < 0 || e.is(MeshEdge::SHARP))
            sharpTouch[std::size_t(e.v[0])] = sharpTouch[std::size_t(e.v[1])] = 1;
        if (!inE(e.e[0]) || !inE(e.e[1])) {
            r.add('e', i, "ring index in range");
            continue;
        }
        if (edges[std::size_t(e.e[1])].e[0] != int(i))
            r.add('e', i, "next's previous is itself");
        if (edges[std::size_t(e.e[0])].e[1] != int(i))
            r.add('e', i, "previous's next is itself");
        if (edges[std::size_t(e.e[0])].v[1] != e.v[0])
            r.add('e', i, "previous ends where this starts");
        if (!inF(e.face))
            r.add('e', i, "face index in range");
        if (e.half >= 0) {
            if (!inE(e.half)) {
                r.add('e', i, "twin index in range");
                continue;
            }
            MeshEdge const& h = edges[std::size_t(e.half)];
            if (h.half != int(i))
                r.add('e', i, "twin of twin");
            if (h.v[0] != e.v[1] || h.v[1] != e.v[0])
                r.add('e', i, "twin runs the other way");
            if (h.face == e.face)
                r.add('e', i, "twin lies in another face");
            if (h.is(MeshEdge::SHARP) != e.is(MeshEdge::SHARP))
                r.add('e', i, "sharp on both halves or neither");
        }
    }

    // Faces: closed rings of at least three, each half-edge naming the face; counts.
    std::size_t ringTotal = 0;
    long long triangleSum = 0;
    for (std::size_t f = 0; f < nf; ++f) {
        MeshFace const& face = faces[f];
        if (!face.is(MeshFace::ACTIVE))
            r.add('f', f, "inactive record");
        if (!inE(face.edge)) {
            r.add('f', f, "edge index in range");
            continue;
        }
        std::size_t n = 0;
        int c = face.edge;
        bool broken = false;
        do {
            if (edges[std::size_t(c)].face != int(f))
                broken = true;
            c = edges[std::size_t(c)].e[1];
            ++n;
        } while (inE(c) && c != face.edge && n <= ne);
        if (c != face.edge)
            r.add('f', f, "ring closes");
        else if (n < 3)
            r.add('f', f, "ring has at least 3 sides");
        if (broken)
            r.add('f', f, "face of a ring");
        ringTotal += n;
        triangleSum += (long long)n - 2;
        if (face.component < 0 || face.component >= components)
            r.add('f', f, "component in range");
        if (face.patch < 0 || face.patch >= patches)
            r.add('f', f, "patch in range");
    }
    if (ringTotal != ne)
        r.mesh("every half-edge lies on exactly one face ring");
    if (triangleSum != triangles)
        r.mesh("triangle count");
    for (std::size_t i = 0; i < ne; ++i) {
        MeshEdge const& e = edges[i];
        if (!inE(e.half) || !inF(e.face) || !inF(edges[std::size_t(e.half)].face))
            continue;
        MeshFace const& a = faces[std::size_t(e.face)];
        MeshFace const& b = faces[std::size_t(edges[std::size_t(e.half)].face)];
        if (a.component != b.component)
            r.add('e', i, "component equal across an edge");
        if (!e.is(MeshEdge::SHARP) && a.patch != b.patch)
            r.add('e', i, "patch equal across a smooth edge");
    }

    // Vertices: the edge arrives, one fan reaches every arriving half-edge, flags agree.
    for (std::size_t v = 0; v < nv; ++v) {
        MeshVert const& vert = verts[v];
        if (!vert.is(MeshVert::ACTIVE))
            r.add('v', v, "inactive record");
        if (!inE(vert.edge)) {
            r.add('v', v, "vertex edge set");
            continue;
        }
        if (edges[std::size_t(vert.edge)].v[1] != int(v)) {
            r.add('v', v, "vertex edge arrives at the vertex");
            continue;
        }
        int fan = 0, c = vert.edge;
        bool stray = false;
        while (fan <= int(ne)) {
            ++fan;
            MeshEdge const& e = edges[std::size_t(c)];
            if (!inE(e.e[1]))
                break;
            int next = edges[std::size_t(e.e[1])].half;
            if (!inE(next) || next == vert.edge)
                break;
            if (edges[std::size_t(next)].v[1] != int(v)) {
                stray = true;
                break;
            }
            c = next;
        }
        if (stray)
            r.add('v', v, "fan walk stays at the vertex");
        else if (fan != arriving[v])
            r.add('v', v, "one fan holds every arriving half-edge");
        if (vert.is(MeshVert::BORDER) != bool(borderIn[v]))
            r.add('v', v, "border flag exactly on border vertices");
        if (borderIn[v] && edges[std::size_t(vert.edge)].half >= 0)
            r.add('v', v, "border vertex edge is the border half-edge");
        if (vert.is(MeshVert::SHARP) != bool(sharpTouch[v]))
            r.add('v', v, "sharp flag exactly on vertices with a sharp or border edge");
        if (vert.is(MeshVert::ANCHOR) && !vert.is(MeshVert::SHARP))
            r.add('v', v, "anchor implies sharp");
    }
    return r.list;
}

} // namespace vel
