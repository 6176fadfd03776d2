// ScratchPad<Size, Index>: process-wide fixed byte arenas, so that strokes and rebuilds
// allocate nothing in their inner loops.
//
// A pad has no allocator: a routine takes the base pointer and lays out its temporary arrays
// at offsets of its own. Pads are therefore for routines that never call each other on the
// same pad. Each pad belongs to one use:
//   ScratchPad<268435456, 0> 256 MiB  GPU data of meshes, curves and clay, normals,
//                                     subdivision, hull points, SDF voxelisation
//   ScratchPad<134217728, 1> 128 MiB  sculpting and painting buffers
//   ScratchPad< 67108864, 2>  64 MiB  brush functions
//   ScratchPad< 67108864, 3>  64 MiB  curve work and section buffers
// The bytes are reserved on first use but left uninitialised, so untouched pages cost nothing.
// Main thread only (or a loading worker that holds the whole scene).
#pragma once

#include "Core/Assert.h"
#include "Memory/Singleton.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vel {

// Allocator whose value construction leaves bytes uninitialised.
template <class T>
struct UninitialisedAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = UninitialisedAllocator<U>;
    };
    UninitialisedAllocator() = default;
    template <class U>
    UninitialisedAllocator(UninitialisedAllocator<U> const&) noexcept
    {
    }
    template <class U>
    void construct(U* p) noexcept
    {
        ::new (static_cast<void*>(p)) U;
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args)
    {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
};

template <std::size_t Size, int Index>
class ScratchPad : public Singleton<ScratchPad<Size, Index>> {
public:
    static constexpr std::size_t SIZE = Size;

    ScratchPad()
        : memory(Size)
    {
    }

    // Base of the pad; asserts the pad really holds its bytes.
    unsigned char* data()
    {
        VEL_ASSERT(memory.size() == Size);
        return memory.data();
    }

    // A typed view at `offset` for `count` elements; asserts it fits in the pad.
    template <class T>
    T* at(std::size_t offset, std::size_t count)
    {
        VEL_ASSERT_MSG(offset + count * sizeof(T) <= Size, "scratch pad overflow");
        return reinterpret_cast<T*>(data() + offset);
    }

    std::size_t size() const { return memory.size(); }

private:
    std::vector<unsigned char, UninitialisedAllocator<unsigned char>> memory;
};

using ScratchPadGeometry = ScratchPad<268435456, 0>;
using ScratchPadSculpt = ScratchPad<134217728, 1>;
using ScratchPadBrush = ScratchPad<67108864, 2>;
using ScratchPadCurve = ScratchPad<67108864, 3>;

} // namespace vel
