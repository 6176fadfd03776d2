// Shared<T>: reference-counted handle with a separate plain int counter.
//
// Invariants:
// - `count` is null when the handle does not own `object` (null object, or built weak);
//   such a handle never deletes anything.
// - Otherwise *count is the number of handles sharing `object`; the last one to let go
//   deletes the object through its virtual destructor, then the counter.
// Not thread safe: the counter is a plain int, owned by the main thread.
#pragma once

#include <utility>

namespace vel {

template <class T>
class Shared {
public:
    T* object = nullptr;
    int* count = nullptr; // null: not owning

    Shared() = default;

    explicit Shared(T* object, bool weak = false)
        : object(object)
    {
        if (object && !weak)
            count = new int(1);
    }

    Shared(Shared const& other)
        : object(other.object)
        , count(other.count)
    {
        if (count)
            ++*count;
    }

    // Allows Shared<Derived> -> Shared<Base>, sharing the same counter.
    template <class U>
    Shared(Shared<U> const& other)
        : object(other.object)
        , count(other.count)
    {
        if (count)
            ++*count;
    }

    Shared(Shared&& other) noexcept
        : object(other.object)
        , count(other.count)
    {
        other.object = nullptr;
        other.count = nullptr;
    }

    virtual ~Shared() { release(); }

    Shared& operator=(Shared const& other)
    {
        if (this == &other)
            return *this;
        // Take the new reference first: releasing could destroy the last owner of `other`.
        int* newCount = other.count;
        T* newObject = other.object;
        if (newCount)
            ++*newCount;
        release();
        object = newObject;
        count = newCount;
        return *this;
    }

    Shared& operator=(Shared&& other) noexcept
    {
        if (this != &other) {
            release();
            object = std::exchange(other.object, nullptr);
            count = std::exchange(other.count, nullptr);
        }
        return *this;
    }

    void release()
    {
        if (count && --*count == 0) {
            delete object;
            delete count;
        }
        object = nullptr;
        count = nullptr;
    }

    int useCount() const { return count ? *count : 0; }

    T* get() const { return object; }
    T* operator->() const { return object; }
    T& operator*() const { return *object; }
    explicit operator bool() const { return object != nullptr; }
    bool operator==(Shared const& other) const { return object == other.object; }
    bool operator!=(Shared const& other) const { return object != other.object; }
};

} // namespace vel
