// Scratch arrays of the mesh kernels: laid out at the start of the geometry pad when they fit,
// so rebuilds allocate nothing; a mesh too large for the pad falls back to `fallback`.
#pragma once

#include "Memory/ScratchpadMemory.h"

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

} // namespace vel
