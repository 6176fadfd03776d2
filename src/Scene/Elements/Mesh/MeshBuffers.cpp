// Mesh: the triangle soup of the vertex buffers, expanded from the records.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Scene/Elements/Mesh/MeshScratch.h"

#include <cstdint>
#include <vector>

namespace vel {

namespace {

// The corners of the soup, counted by the walk itself: the scratch array is sized by what
// the records hold, whatever a counter says.
std::size_t SoupCorners(Mesh const& m)
{
    std::size_t count = 0;
    ForEachSoupCorner(m, [&](int, int) { ++count; });
    return count;
}

// Fills `count` values of T through `fill` into scratch memory and uploads them.
template <class T, class Fill>
void Upload(Mesh const& m, VertexBuffer* vbo, std::size_t count, Fill const& fill)
{
    std::vector<T> fallback;
    T* data = GeometryScratch<T>(count, fallback);
    T* out = data;
    ForEachSoupCorner(m, [&](int c, int f) { fill(out, c, f); });
    vbo->write(data, int((out - data) * long(sizeof(T))));
}

struct Int3 {
    int32_t c, p, f;
};

} // namespace

bool Mesh::buildGPUData()
{
    // Moved or rebuilt geometry has stale corner normals: they follow before the upload.
    calculateNormalsCenters();
    std::size_t const points = vbos_dirty() ? SoupCorners(*this) : 0;
    if (vbo_positions()->dirty)
        Upload<Vector3<float>>(*this, vbo_positions(), points, [&](Vector3<float>*& out, int c, int) {
            *out++ = verts[std::size_t(edges[std::size_t(c)].v[1])].position;
        });
    if (vbo_ids()->dirty)
        Upload<Int3>(*this, vbo_ids(), points, [&](Int3*& out, int, int f) {
            MeshFace const& face = faces[std::size_t(f)];
            *out++ = Int3{face.component, face.patch, f};
        });
    // The corner normal is already packed as GL_INT_2_10_10_10_REV wants it (w bits zero).
    if (vbo_normals()->dirty)
        Upload<uint32_t>(*this, vbo_normals(), points, [&](uint32_t*& out, int c, int) {
            *out++ = edges[std::size_t(c)].normal;
        });
    if (vbo_pbrs()->dirty) {
        if (hasPbr())
            Upload<Pbr>(*this, vbo_pbrs(), points, [&](Pbr*& out, int c, int) { *out++ = materials[std::size_t(c)]; });
        else if (vbo_pbrs()->size > 0)
            vbo_pbrs()->write(nullptr, 0); // gives back what a former material layout held
        else
            vbo_pbrs()->dirty = false;
    }
    return true;
}

} // namespace vel
