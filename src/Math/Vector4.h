// Vector4<T>: four components, T is float or double (colours, homogeneous points).
#pragma once

#include "Math/Vector3.h"

namespace vel {

template <class T>
struct Vector4 {
    T x = 0;
    T y = 0;
    T z = 0;
    T w = 0;

    constexpr Vector4() = default;
    constexpr Vector4(T x, T y, T z, T w)
        : x(x)
        , y(y)
        , z(z)
        , w(w)
    {
    }
    constexpr Vector4(Vector3<T> const& v, T w)
        : x(v.x)
        , y(v.y)
        , z(v.z)
        , w(w)
    {
    }
    template <class U>
    constexpr explicit Vector4(Vector4<U> const& v)
        : x(T(v.x))
        , y(T(v.y))
        , z(T(v.z))
        , w(T(v.w))
    {
    }

    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }
    Vector3<T> xyz() const { return {x, y, z}; }

    Vector4 operator+(Vector4 const& v) const { return {x + v.x, y + v.y, z + v.z, w + v.w}; }
    Vector4 operator-(Vector4 const& v) const { return {x - v.x, y - v.y, z - v.z, w - v.w}; }
    Vector4 operator*(T s) const { return {x * s, y * s, z * s, w * s}; }
    Vector4 operator/(T s) const { return {x / s, y / s, z / s, w / s}; }
    bool operator==(Vector4 const& v) const { return x == v.x && y == v.y && z == v.z && w == v.w; }
    bool operator!=(Vector4 const& v) const { return !(*this == v); }

    T dot(Vector4 const& v) const { return x * v.x + y * v.y + z * v.z + w * v.w; }
    T length() const { return std::sqrt(dot(*this)); }
    Vector4 normalize() const
    {
        T l = length();
        return l > 0 ? *this / l : Vector4();
    }
};

} // namespace vel
