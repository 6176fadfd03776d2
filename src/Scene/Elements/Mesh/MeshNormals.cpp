// Mesh: corner normals and sharpness.
//
// A corner normal is shared by a smooth fan: the corners of a vertex between two sharp edges
// (or borders) get the normalised sum of their faces' normals, so the two sides of a sharp
// edge differ and everything else is smooth.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Memory/ScratchpadMemory.h"
#include "Scene/Elements/Mesh/MeshGeometry.h"
#include "Scene/Elements/Mesh/MeshScratch.h"

#include <cmath>

namespace vel {

Vector3<double> Mesh::calculatePreciseFaceNormal(int f) const
{
    int s = faces[std::size_t(f)].edge;
    MeshEdge const& e0 = edges[std::size_t(s)];
    MeshEdge const& e1 = edges[std::size_t(e0.e[1])];
    if (edges[std::size_t(e1.e[1])].e[1] == s) { // a triangle: no copy needed
        Vector3<double> a(verts[std::size_t(e0.v[1])].position);
        Vector3<double> b(verts[std::size_t(e1.v[1])].position);
        Vector3<double> c(verts[std::size_t(e0.v[0])].position);
        return (b - a).cross(c - a);
    }
    std::size_t capacity = ScratchPadBrush::SIZE / sizeof(Vector3<double>);
    Vector3<double>* points = ScratchPadBrush::instance().at<Vector3<double>>(0, capacity);
    int n = 0, c = s;
    do {
        points[n++] = Vector3<double>(verts[std::size_t(edges[std::size_t(c)].v[1])].position);
        c = edges[std::size_t(c)].e[1];
    } while (c != s && std::size_t(n) < capacity);
    return NormalFromPolygon(points, n);
}

void Mesh::calculateNormals()
{
    std::size_t nf = faces.size();
    std::vector<Vector3<float>> fallback;
    Vector3<float>* normals = GeometryScratch(nf, fallback);
    for (std::size_t f = 0; f < nf; ++f)
        normals[f] = Vector3<float>(calculatePreciseFaceNormal(int(f)).normalize());
    for (std::size_t v = 0; v < verts.size(); ++v)
        if (verts[v].is(MeshVert::ACTIVE))
            vertNormals(int(v), normals);
    set_vbo_dirty(VBO_NORMALS);
}

void Mesh::vertNormals(int v, Vector3<float> const* faceNormals)
{
    int s = verts[std::size_t(v)].edge;
    if (s < 0)
        return;
    std::size_t capacity = ScratchPadSculpt::SIZE / sizeof(int);
    int* corners = ScratchPadSculpt::instance().at<int>(0, capacity);
    Vector3<float> sum;
    std::size_t count = 0;
    int lastFace = -1;
    auto close = [&]() {
        if (sum.length2() > 1e-20f)
            sum = sum.normalize();
        uint32_t packed = PackNormal(sum);
        for (std::size_t i = 0; i < count; ++i)
            edges[std::size_t(corners[i])].normal = packed;
        sum = Vector3<float>();
        count = 0;
        lastFace = -1;
    };
    int c = s;
    std::size_t steps = 0;
    while (steps++ <= edges.size() && count < capacity) {
        MeshEdge const& e = edges[std::size_t(c)];
        if (e.face != lastFace) {
            sum += faceNormals[e.face];
            lastFace = e.face;
        }
        corners[count++] = c;
        MeshEdge const& out = edges[std::size_t(e.e[1])];
        if (out.half < 0 || out.is(MeshEdge::SHARP))
            close();
        if (out.half < 0 || out.half == s)
            break;
        c = out.half;
    }
    if (count > 0)
        close();
}

void Mesh::setVertNormals(int v, Vector3<float> const& normal)
{
    uint32_t packed = PackNormal(normal);
    for (int e : vertInEdges(v))
        edges[std::size_t(e)].normal = packed;
}

void Mesh::makeSharp(float angleDegrees)
{
    if (angleDegrees == 0.0f) {
        for (std::size_t v = 0; v < verts.size(); ++v)
            verts[v].set(MeshVert::SHARP);
        for (std::size_t e = 0; e < edges.size(); ++e)
            edges[e].set(MeshEdge::SHARP);
    } else {
        double limit = std::cos(double(angleDegrees) * 0.017453292519943295);
        std::vector<Vector3<double>> normals(faces.size());
        for (std::size_t f = 0; f < faces.size(); ++f)
            normals[f] = calculatePreciseFaceNormal(int(f)).normalize();
        for (std::size_t v = 0; v < verts.size(); ++v)
            verts[v].clear(MeshVert::SHARP | MeshVert::ANCHOR);
        for (std::size_t i = 0; i < edges.size(); ++i) {
            MeshEdge& e = edges[i];
            e.clear(MeshEdge::SHARP);
            bool sharp = e.half < 0 ||
                         normals[std::size_t(e.face)].dot(normals[std::size_t(edges[std::size_t(e.half)].face)]) < limit;
            if (!sharp)
                continue;
            e.set(MeshEdge::SHARP);
            verts[std::size_t(e.v[0])].set(MeshVert::SHARP);
            verts[std::size_t(e.v[1])].set(MeshVert::SHARP);
        }
    }
    initializeVerts();
    setComponentsPatches();
    geometryChanged = true;
}

void Mesh::makeSmooth()
{
    for (std::size_t v = 0; v < verts.size(); ++v)
        if (!verts[v].is(MeshVert::BORDER))
            verts[v].clear(MeshVert::SHARP | MeshVert::ANCHOR);
    for (std::size_t e = 0; e < edges.size(); ++e)
        edges[e].clear(MeshEdge::SHARP);
    setComponentsPatches();
    geometryChanged = true;
}

void Mesh::buildSharpness()
{
    for (std::size_t i = 0; i < edges.size(); ++i) {
        MeshEdge& e = edges[i];
        if (e.half < 0 || std::size_t(e.half) < i)
            continue;
        MeshEdge& h = edges[std::size_t(e.half)];
        // Corner at e.v[1] on this side is e, on the other side h.e[0]; at e.v[0], e.e[0] and h.
        bool differ = e.normal != edges[std::size_t(h.e[0])].normal || edges[std::size_t(e.e[0])].normal != h.normal;
        if (differ) {
            e.set(MeshEdge::SHARP);
            h.set(MeshEdge::SHARP);
        }
    }
}

} // namespace vel

namespace vel {

int Mesh::cornerGroups(std::vector<int>& groupOfCorner) const
{
    groupOfCorner.assign(edges.size(), -1);
    int groups = 0;
    for (std::size_t v = 0; v < verts.size(); ++v) {
        int s = verts[v].edge;
        if (s < 0)
            continue;
        int c = s;
        bool open = false;
        std::size_t steps = 0;
        while (steps++ <= edges.size()) {
            if (!open) {
                ++groups;
                open = true;
            }
            groupOfCorner[std::size_t(c)] = groups - 1;
            MeshEdge const& out = edges[std::size_t(edges[std::size_t(c)].e[1])];
            if (out.half < 0 || out.is(MeshEdge::SHARP))
                open = false;
            if (out.half < 0 || out.half == s)
                break;
            c = out.half;
        }
    }
    return groups;
}

} // namespace vel
