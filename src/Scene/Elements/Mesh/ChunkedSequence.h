// ChunkedSequence<T>: the container of mesh records. Records live in chunks that are never
// moved or resized, so a record keeps its address while the sequence grows (callers may hold
// references across vertAdd/edgeAdd). The first chunk holds 2^FirstBits records and each next
// one twice as many, up to 2^ChunkBits; from there on all chunks have that size. So a small
// mesh (and every copy of it) costs in proportion to its size, and a large one indexes with a
// shift and a mask as before.
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

template <class T, int ChunkBits = 14, int FirstBits = 4>
class ChunkedSequence {
    static_assert(std::is_trivially_copyable<T>::value, "records are plain data");
    static_assert(FirstBits > 0 && FirstBits < ChunkBits, "chunks grow from the first size to the last");

public:
    static constexpr std::size_t CHUNK = std::size_t(1) << ChunkBits; // the largest chunk
    static constexpr std::size_t MASK = CHUNK - 1;
    static constexpr std::size_t FIRST = std::size_t(1) << FirstBits;  // the first chunk
    static constexpr std::size_t GROWING = ChunkBits - FirstBits;      // chunks below CHUNK

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
        for (std::size_t c = 0; c < chunks.size(); ++c)
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

    // Index i sits at j = i + FIRST: chunk c < GROWING covers j in [2^(FirstBits+c), twice
    // that); beyond, chunk GROWING - 1 + j / CHUNK covers a whole CHUNK.
    T& operator[](std::size_t i) { return *locate(i); }
    T const& operator[](std::size_t i) const { return *locate(i); }
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
        if (count == capacity())
            chunks.emplace_back(new T[chunkSize(chunks.size())]);
        (*this)[count++] = value;
    }

    // Grows with copies of `value`, or truncates; chunks past the end are released.
    void resize(std::size_t n, T const& value = T())
    {
        if (n < count) {
            count = n;
            chunks.resize(chunksFor(n));
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
    std::size_t capacityBytes() const { return capacity() * sizeof(T); }

private:
    static std::size_t chunkSize(std::size_t c) { return c < GROWING ? FIRST << c : CHUNK; }
    // Records held by the first c chunks.
    static std::size_t chunkStart(std::size_t c)
    {
        return c <= GROWING ? (FIRST << c) - FIRST : (c - GROWING + 1) * CHUNK - FIRST;
    }
    static std::size_t chunksFor(std::size_t n)
    {
        if (n == 0)
            return 0;
        std::size_t j = n - 1 + FIRST; // the chunk of the last record, plus one
        if (j >= CHUNK)
            return GROWING + (j >> ChunkBits);
        return std::size_t(63 - __builtin_clzll(j)) - FirstBits + 1;
    }
    std::size_t capacity() const { return chunkStart(chunks.size()); }

    T* locate(std::size_t i) const
    {
        std::size_t j = i + FIRST;
        if (j >= CHUNK)
            return chunks[GROWING - 1 + (j >> ChunkBits)].get() + (j & MASK);
        int b = 63 - __builtin_clzll(j);
        return chunks[std::size_t(b - FirstBits)].get() + (j - (std::size_t(1) << b));
    }
    void reserveChunks(std::size_t n)
    {
        std::size_t need = chunksFor(n);
        while (chunks.size() < need)
            chunks.emplace_back(new T[chunkSize(chunks.size())]);
    }
    std::size_t chunkBytes(std::size_t c) const
    {
        std::size_t first = chunkStart(c);
        std::size_t n = count - first < chunkSize(c) ? count - first : chunkSize(c);
        return n * sizeof(T);
    }

    std::vector<std::unique_ptr<T[]>> chunks;
    std::size_t count = 0;
};

} // namespace vel
