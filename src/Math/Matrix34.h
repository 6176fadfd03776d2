// Matrix34<T>: an affine transform in the row-vector convention: twelve T, three rows of
// the linear part, then the translation row. p' = p L + t.
//
// `A *= B` applies A, then B, so a chain reads in the order of application: the local
// transform first, the parent's last. Matrix34<double> is the transform of everything in
// the scene; Matrix34<float> is what reaches vertex buffers.
#pragma once

#include "Math/Matrix3.h"

namespace vel {

template <class T>
struct Matrix34 {
    T m[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

    constexpr Matrix34() = default;
    Matrix34(Matrix3<T> const& linear, Vector3<T> const& translation = Vector3<T>())
    {
        setLinear(linear);
        setTranslation(translation);
    }
    template <class U>
    explicit Matrix34(Matrix34<U> const& o)
    {
        for (int i = 0; i < 12; ++i)
            m[i] = T(o.m[i]);
    }

    static Matrix34 Identity() { return Matrix34(); }
    static Matrix34 Translation(Vector3<T> const& t) { return Matrix34(Matrix3<T>(), t); }
    static Matrix34 Scale(T s) { return Matrix34(Matrix3<T>::Scale(s)); }

    // Reflection through the plane at `point` with the (any length) `normal`.
    static Matrix34 Mirror(Vector3<T> const& point, Vector3<T> const& normal)
    {
        Vector3<T> n = normal.normalize();
        Matrix3<T> L(1 - 2 * n.x * n.x, -2 * n.x * n.y, -2 * n.x * n.z, //
                     -2 * n.y * n.x, 1 - 2 * n.y * n.y, -2 * n.y * n.z, //
                     -2 * n.z * n.x, -2 * n.z * n.y, 1 - 2 * n.z * n.z);
        return Matrix34(L, n * (2 * point.dot(n)));
    }

    Matrix3<T> linear() const { return Matrix3<T>(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]); }
    Vector3<T> translation() const { return {m[9], m[10], m[11]}; }
    Vector3<T> row(int i) const { return {m[i * 3], m[i * 3 + 1], m[i * 3 + 2]}; }
    void setLinear(Matrix3<T> const& L)
    {
        for (int i = 0; i < 9; ++i)
            m[i] = L.m[i];
    }
    void setTranslation(Vector3<T> const& t)
    {
        m[9] = t.x;
        m[10] = t.y;
        m[11] = t.z;
    }
    T determinant() const { return linear().determinant(); }
    // The translation too must be finite: inv of a non-finite placement is no inverse.
    bool invertible() const
    {
        return linear().invertible() && std::isfinite(m[9]) && std::isfinite(m[10]) && std::isfinite(m[11]);
    }

    // Apply this, then b.
    Matrix34 operator*(Matrix34 const& b) const
    {
        Matrix3<T> L = b.linear();
        return Matrix34(linear() * L, translation() * L + b.translation());
    }
    Matrix34& operator*=(Matrix34 const& b) { return *this = *this * b; }
    bool operator==(Matrix34 const& b) const
    {
        for (int i = 0; i < 12; ++i)
            if (m[i] != b.m[i])
                return false;
        return true;
    }
    bool operator!=(Matrix34 const& b) const { return !(*this == b); }

    // A direction: the linear part alone, no translation.
    Vector3<T> transformDirection(Vector3<T> const& v) const
    {
        return {v.x * m[0] + v.y * m[3] + v.z * m[6], v.x * m[1] + v.y * m[4] + v.z * m[7],
                v.x * m[2] + v.y * m[5] + v.z * m[8]};
    }
};

// A point: p' = p L + t.
template <class T>
Vector3<T> operator*(Vector3<T> const& p, Matrix34<T> const& a)
{
    return a.transformDirection(p) + a.translation();
}

template <class T>
Vector3<T>& operator*=(Vector3<T>& p, Matrix34<T> const& a)
{
    return p = p * a;
}

template <class T>
Matrix34<T> inv(Matrix34<T> const& a)
{
    Matrix3<T> L = inv(a.linear());
    return Matrix34<T>(L, -(a.translation() * L));
}

} // namespace vel
