// Vector2<T>: two components, T is float or double.
#pragma once

#include <cmath>

namespace vel {

template <class T>
struct Vector2 {
    T x = 0;
    T y = 0;

    constexpr Vector2() = default;
    constexpr Vector2(T x, T y)
        : x(x)
        , y(y)
    {
    }
    template <class U>
    constexpr explicit Vector2(Vector2<U> const& v)
        : x(T(v.x))
        , y(T(v.y))
    {
    }

    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }

    Vector2 operator+(Vector2 const& v) const { return {x + v.x, y + v.y}; }
    Vector2 operator-(Vector2 const& v) const { return {x - v.x, y - v.y}; }
    Vector2 operator-() const { return {-x, -y}; }
    Vector2 operator*(T s) const { return {x * s, y * s}; }
    Vector2 operator/(T s) const { return {x / s, y / s}; }
    Vector2& operator+=(Vector2 const& v) { return *this = *this + v; }
    Vector2& operator-=(Vector2 const& v) { return *this = *this - v; }
    Vector2& operator*=(T s) { return *this = *this * s; }
    bool operator==(Vector2 const& v) const { return x == v.x && y == v.y; }
    bool operator!=(Vector2 const& v) const { return !(*this == v); }

    T dot(Vector2 const& v) const { return x * v.x + y * v.y; }
    T length2() const { return dot(*this); }
    T length() const { return std::sqrt(length2()); }
    // The unit vector; a zero vector stays zero rather than becoming NaN.
    Vector2 normalize() const
    {
        T l = length();
        return l > 0 ? *this / l : Vector2();
    }
};

template <class T>
Vector2<T> operator*(T s, Vector2<T> const& v)
{
    return v * s;
}

} // namespace vel
