// Matrix4<T>: sixteen T, row major, row-vector convention (projections: [x y z 1] M).
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector4.h"

namespace vel {

template <class T>
struct Matrix4 {
    T m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    constexpr Matrix4() = default;
    template <class U>
    explicit Matrix4(Matrix4<U> const& o)
    {
        for (int i = 0; i < 16; ++i)
            m[i] = T(o.m[i]);
    }
    // The affine transform with (0, 0, 0, 1) as its last column.
    explicit Matrix4(Matrix34<T> const& a)
    {
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 3; ++c)
                m[r * 4 + c] = a.m[r * 3 + c];
            m[r * 4 + 3] = r == 3 ? 1 : 0;
        }
    }

    T& operator()(int row, int column) { return m[row * 4 + column]; }
    T operator()(int row, int column) const { return m[row * 4 + column]; }

    Matrix4 operator*(Matrix4 const& b) const
    {
        Matrix4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                T s = 0;
                for (int k = 0; k < 4; ++k)
                    s += m[i * 4 + k] * b.m[k * 4 + j];
                r.m[i * 4 + j] = s;
            }
        return r;
    }
    Matrix4& operator*=(Matrix4 const& b) { return *this = *this * b; }

    // The 3x3 minor left when `row` and `column` are struck out.
    Matrix3<T> submatrix(int row, int column) const
    {
        Matrix3<T> r = Matrix3<T>::Zero();
        int k = 0;
        for (int i = 0; i < 4; ++i) {
            if (i == row)
                continue;
            for (int j = 0; j < 4; ++j) {
                if (j == column)
                    continue;
                r.m[k++] = m[i * 4 + j];
            }
        }
        return r;
    }

    T determinant() const
    {
        T d = 0;
        for (int j = 0; j < 4; ++j)
            d += (j % 2 ? -1 : 1) * m[j] * submatrix(0, j).determinant();
        return d;
    }
};

template <class T>
Vector4<T> operator*(Vector4<T> const& v, Matrix4<T> const& a)
{
    Vector4<T> r;
    for (int j = 0; j < 4; ++j)
        r[j] = v.x * a.m[j] + v.y * a.m[4 + j] + v.z * a.m[8 + j] + v.w * a.m[12 + j];
    return r;
}

// The inverse by cofactors; a singular matrix inverts to the identity.
template <class T>
Matrix4<T> inv(Matrix4<T> const& a)
{
    T d = a.determinant();
    if (d == 0 || !std::isfinite(d))
        return Matrix4<T>();
    Matrix4<T> r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            T cofactor = ((i + j) % 2 ? -1 : 1) * a.submatrix(i, j).determinant();
            r.m[j * 4 + i] = cofactor / d; // adjugate is the transposed cofactor matrix
        }
    return r;
}

} // namespace vel
