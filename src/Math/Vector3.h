// Vector3<T>: three components, T is float or double. Scene positions are double,
// vertex data float.
#pragma once

#include <cmath>

namespace vel {

template <class T>
struct Vector3 {
    T x = 0;
    T y = 0;
    T z = 0;

    constexpr Vector3() = default;
    constexpr Vector3(T x, T y, T z)
        : x(x)
        , y(y)
        , z(z)
    {
    }
    template <class U>
    constexpr explicit Vector3(Vector3<U> const& v)
        : x(T(v.x))
        , y(T(v.y))
        , z(T(v.z))
    {
    }

    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }

    Vector3 operator+(Vector3 const& v) const { return {x + v.x, y + v.y, z + v.z}; }
    Vector3 operator-(Vector3 const& v) const { return {x - v.x, y - v.y, z - v.z}; }
    Vector3 operator-() const { return {-x, -y, -z}; }
    Vector3 operator*(T s) const { return {x * s, y * s, z * s}; }
    Vector3 operator/(T s) const { return {x / s, y / s, z / s}; }
    // Component-wise product.
    Vector3 operator*(Vector3 const& v) const { return {x * v.x, y * v.y, z * v.z}; }
    Vector3& operator+=(Vector3 const& v) { return *this = *this + v; }
    Vector3& operator-=(Vector3 const& v) { return *this = *this - v; }
    Vector3& operator*=(T s) { return *this = *this * s; }
    Vector3& operator/=(T s) { return *this = *this / s; }
    bool operator==(Vector3 const& v) const { return x == v.x && y == v.y && z == v.z; }
    bool operator!=(Vector3 const& v) const { return !(*this == v); }

    T dot(Vector3 const& v) const { return x * v.x + y * v.y + z * v.z; }
    Vector3 cross(Vector3 const& v) const { return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x}; }
    T length2() const { return dot(*this); }
    T length() const { return std::sqrt(length2()); }
    // The unit vector; a zero vector stays zero rather than becoming NaN.
    Vector3 normalize() const
    {
        T l = length();
        return l > 0 ? *this / l : Vector3();
    }
    // Index of the component of largest magnitude.
    int maxAxis() const
    {
        T ax = std::abs(x), ay = std::abs(y), az = std::abs(z);
        return ax >= ay ? (ax >= az ? 0 : 2) : (ay >= az ? 1 : 2);
    }
};

template <class T>
Vector3<T> operator*(T s, Vector3<T> const& v)
{
    return v * s;
}

template <class T>
T dot(Vector3<T> const& a, Vector3<T> const& b)
{
    return a.dot(b);
}

template <class T>
Vector3<T> cross(Vector3<T> const& a, Vector3<T> const& b)
{
    return a.cross(b);
}

} // namespace vel
