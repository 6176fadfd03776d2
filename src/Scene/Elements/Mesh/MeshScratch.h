// Scratch arrays of the mesh kernels: laid out at the start of the geometry pad when they fit,
// so rebuilds allocate nothing; a mesh too large for the pad falls back to `fallback`. And the
// walk of the triangle soup that the vertex buffers and clay's triangle stream share.
#pragma once

#include "Memory/ScratchpadMemory.h"
#include "Scene/Elements/Mesh/MeshFace.h"

#include <cstddef>
#include <vector>

namespace vel {

template <class T>
T* GeometryScratch(std::size_t count, std::vector<T>& fallback)
{
    if (count * sizeof(T) <= ScratchPadGeometry::SIZE)
        return ScratchPadGeometry::instance().at<T>(0, count);
    fallback.resize(count);
    return fallback.data();
}

// Calls corner(c, f) for the three corners of each triangle of each face, a fan from the
// face's first corner, in the order of the buffers.
template <class MeshT, class Corner>
void ForEachSoupCorner(MeshT const& m, Corner const& corner)
{
    for (std::size_t f = 0; f < m.faces.size(); ++f) {
        if (!m.faces[f].is(MeshFace::ACTIVE))
            continue;
        int first = m.faces[f].edge;
        int e = m.edges[std::size_t(first)].e[1];
        // The ring closes after its sides: a count bound keeps a broken ring from spinning.
        for (int next = m.edges[std::size_t(e)].e[1], steps = 0; next != first && steps <= m.INDEX_MAX;
             e = next, next = m.edges[std::size_t(e)].e[1], ++steps) {
            corner(first, int(f));
            corner(e, int(f));
            corner(next, int(f));
        }
    }
}

} // namespace vel
