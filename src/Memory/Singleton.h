// Singleton<T>: T derives from Singleton<T> and is reached through T::instance().
//
// The instance is a function-local static: built on first use, destroyed at exit in the
// reverse order of construction. Not a registry, not lazily replaceable: one T per process.
#pragma once

namespace vel {

template <class T>
class Singleton {
public:
    virtual ~Singleton() = default;

    static T& instance()
    {
        static T object;
        return object;
    }

protected:
    Singleton() = default;
    Singleton(Singleton const&) = delete;
    Singleton& operator=(Singleton const&) = delete;
};

} // namespace vel
