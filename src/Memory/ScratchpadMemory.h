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

    // One user's hold on the pad for its lifetime. A second hold, or a plain data()/at() of
    // the same pad while one is held, asserts: two users would overwrite each other's arrays.
    class Lease {
    public:
        Lease()
            : pad(ScratchPad::instance())
        {
            pad.acquire();
        }
        ~Lease() { pad.release(); }
        Lease(Lease const&) = delete;
        Lease& operator=(Lease const&) = delete;

        unsigned char* data() { return pad.base(); }
        template <class T>
        T* at(std::size_t offset, std::size_t count)
        {
            return pad.template view<T>(offset, count);
        }

    private:
        ScratchPad& pad;
    };

    ScratchPad()
        : memory(Size)
    {
    }

    // Takes and gives back the pad by hand, where a Lease's scope does not fit.
    void acquire()
    {
        VEL_ASSERT_MSG(!held, "a scratch pad has one user at a time");
        held = true;
    }
    void release()
    {
        VEL_ASSERT_MSG(held, "a scratch pad released without being acquired");
        held = false;
    }
    bool busy() const { return held; }

    // Base of the pad, for a user without a Lease; asserts that nobody holds one.
    unsigned char* data()
    {
        VEL_ASSERT_MSG(!held, "a scratch pad has one user at a time");
        return base();
    }

    // A typed view at `offset` for `count` elements, for a user without a Lease; asserts it
    // fits in the pad and that nobody holds the pad.
    template <class T>
    T* at(std::size_t offset, std::size_t count)
    {
        VEL_ASSERT_MSG(!held, "a scratch pad has one user at a time");
        return view<T>(offset, count);
    }

    std::size_t size() const { return memory.size(); }

private:
    unsigned char* base()
    {
        VEL_ASSERT(memory.size() == Size);
        return memory.data();
    }

    template <class T>
    T* view(std::size_t offset, std::size_t count)
    {
        VEL_ASSERT_MSG(offset <= Size && count <= (Size - offset) / sizeof(T), "scratch pad overflow");
        return reinterpret_cast<T*>(base() + offset);
    }

    std::vector<unsigned char, UninitialisedAllocator<unsigned char>> memory;
    bool held = false; // a Lease or an acquire() is outstanding
};

using ScratchPadGeometry = ScratchPad<268435456, 0>;
using ScratchPadSculpt = ScratchPad<134217728, 1>;
using ScratchPadBrush = ScratchPad<67108864, 2>;
using ScratchPadCurve = ScratchPad<67108864, 3>;

} // namespace vel
