// ChunkedSequence<T>: the container of mesh records. Records live in fixed chunks of
// 2^ChunkBits elements, so a record keeps its address while the sequence grows (callers may
// hold references across vertAdd/edgeAdd), and indexing is a shift and a mask.
//
// Only the operations the mesh needs: append, resize, truncate, index, copy and swap.
// T must be trivially copyable: chunks are copied byte-wise and grown uninitialised.
#pragma once

#include "Core/Assert.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace vel {

template <class T, int ChunkBits = 14>
class ChunkedSequence {
    static_assert(std::is_trivially_copyable<T>::value, "records are plain data");

public:
    static constexpr std::size_t CHUNK = std::size_t(1) << ChunkBits;
    static constexpr std::size_t MASK = CHUNK - 1;

    ChunkedSequence() = default;
    ChunkedSequence(ChunkedSequence const& other) { *this = other; }
    ChunkedSequence(ChunkedSequence&& other) noexcept { swap(other); }
    ChunkedSequence& operator=(ChunkedSequence const& other)
    {
        if (this == &other)
            return *this;
        clear();
        reserveChunks(other.count);
        count = other.count;
        for (std::size_t c = 0; c * CHUNK < count; ++c)
            std::memcpy(static_cast<void*>(chunks[c].get()), other.chunks[c].get(), chunkBytes(c));
        return *this;
    }
    ChunkedSequence& operator=(ChunkedSequence&& other) noexcept
    {
        if (this != &other) {
            clear();
            swap(other);
        }
        return *this;
    }

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }

    T& operator[](std::size_t i) { return chunks[i >> ChunkBits][i & MASK]; }
    T const& operator[](std::size_t i) const { return chunks[i >> ChunkBits][i & MASK]; }
    T& at(std::size_t i)
    {
        VEL_ASSERT_MSG(i < count, "record index out of range");
        return (*this)[i];
    }
    T const& at(std::size_t i) const
    {
        VEL_ASSERT_MSG(i < count, "record index out of range");
        return (*this)[i];
    }
    T& back() { return (*this)[count - 1]; }

    void push_back(T const& value)
    {
        if ((count >> ChunkBits) >= chunks.size())
            chunks.emplace_back(new T[CHUNK]);
        (*this)[count++] = value;
    }

    // Grows with copies of `value`, or truncates; chunks past the end are released.
    void resize(std::size_t n, T const& value = T())
    {
        if (n < count) {
            count = n;
            chunks.resize((n + MASK) >> ChunkBits);
            return;
        }
        reserveChunks(n);
        for (std::size_t i = count; i < n; ++i)
            (*this)[i] = value;
        count = n;
    }
    void pop_back()
    {
        VEL_ASSERT(count > 0);
        resize(count - 1);
    }
    void clear()
    {
        chunks.clear();
        count = 0;
    }
    void swap(ChunkedSequence& other) noexcept
    {
        chunks.swap(other.chunks);
        std::swap(count, other.count);
    }

    // Bytes held by the chunks (allocated, not only used).
    std::size_t capacityBytes() const { return chunks.size() * CHUNK * sizeof(T); }

private:
    void reserveChunks(std::size_t n)
    {
        std::size_t need = (n + MASK) >> ChunkBits;
        while (chunks.size() < need)
            chunks.emplace_back(new T[CHUNK]);
    }
    std::size_t chunkBytes(std::size_t c) const
    {
        std::size_t first = c * CHUNK;
        std::size_t n = count - first < CHUNK ? count - first : CHUNK;
        return n * sizeof(T);
    }

    std::vector<std::unique_ptr<T[]>> chunks;
    std::size_t count = 0;
};

} // namespace vel
