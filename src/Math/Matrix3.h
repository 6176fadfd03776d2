// Matrix3<T>: nine T, row major, in the row-vector convention.
//
// A vector transforms as v' = v M: x' = x m0 + y m3 + z m6, and so on. Hence `A *= B`
// applies A, then B, and a frame's rows are its axes expressed in the outer space.
//
// Index
// - storage, access, products
// - frames (Frame_X, Frame_Z, Frame_xZ, Frame_Xz, Frame_yZ)
// - rotations (Rotation, RotationAroundUnitAxis, ConstrainedAngle, ConstrainedRotation)
// - free functions (inv, snap)
#pragma once

#include "Math/Vector3.h"

#include <cmath>

namespace vel {

template <class T>
struct Matrix3 {
    T m[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    // ---- storage, access, products -------------------------------------------------------

    constexpr Matrix3() = default;
    constexpr Matrix3(T m0, T m1, T m2, T m3, T m4, T m5, T m6, T m7, T m8)
        : m{m0, m1, m2, m3, m4, m5, m6, m7, m8}
    {
    }
    // The matrix whose rows are the three vectors.
    Matrix3(Vector3<T> const& r0, Vector3<T> const& r1, Vector3<T> const& r2)
        : m{r0.x, r0.y, r0.z, r1.x, r1.y, r1.z, r2.x, r2.y, r2.z}
    {
    }
    template <class U>
    explicit Matrix3(Matrix3<U> const& o)
    {
        for (int i = 0; i < 9; ++i)
            m[i] = T(o.m[i]);
    }

    static Matrix3 Identity() { return Matrix3(); }
    static Matrix3 Zero() { return Matrix3(0, 0, 0, 0, 0, 0, 0, 0, 0); }
    static Matrix3 Scale(T s) { return Matrix3(s, 0, 0, 0, s, 0, 0, 0, s); }
    static Matrix3 Scale(Vector3<T> const& s) { return Matrix3(s.x, 0, 0, 0, s.y, 0, 0, 0, s.z); }

    T& operator()(int row, int column) { return m[row * 3 + column]; }
    T operator()(int row, int column) const { return m[row * 3 + column]; }
    Vector3<T> row(int i) const { return {m[i * 3], m[i * 3 + 1], m[i * 3 + 2]}; }
    void setRow(int i, Vector3<T> const& v)
    {
        m[i * 3] = v.x;
        m[i * 3 + 1] = v.y;
        m[i * 3 + 2] = v.z;
    }

    Matrix3 operator*(Matrix3 const& b) const
    {
        Matrix3 r = Zero();
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                for (int k = 0; k < 3; ++k)
                    r.m[i * 3 + j] += m[i * 3 + k] * b.m[k * 3 + j];
        return r;
    }
    Matrix3& operator*=(Matrix3 const& b) { return *this = *this * b; }
    Matrix3 operator*(T s) const
    {
        Matrix3 r = *this;
        for (T& v : r.m)
            v *= s;
        return r;
    }
    bool operator==(Matrix3 const& b) const
    {
        for (int i = 0; i < 9; ++i)
            if (m[i] != b.m[i])
                return false;
        return true;
    }

    Matrix3 transposed() const { return Matrix3(m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]); }
    T determinant() const
    {
        return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
               m[2] * (m[3] * m[7] - m[4] * m[6]);
    }
    // Whether inv gives a true inverse: a zero or non-finite determinant has none.
    bool invertible() const
    {
        T d = determinant();
        return d != 0 && std::isfinite(d);
    }

    // ---- frames ---------------------------------------------------------------------------
    // Each returns a right-handed orthonormal frame, never NaN: a zero direction falls back
    // to the identity axes, and parallel directions to the frame of the kept one alone.
    // `normalized` says the caller's vector is already of unit length.

    static Matrix3 Frame_X(Vector3<T> const& v, bool normalized = false)
    {
        Vector3<T> x = normalized ? v : v.normalize();
        if (x.length2() == 0)
            return Identity();
        Vector3<T> y = AnyPerpendicular(x);
        return Matrix3(x, y, x.cross(y));
    }

    static Matrix3 Frame_Z(Vector3<T> const& v, bool normalized = false)
    {
        Vector3<T> z = normalized ? v : v.normalize();
        if (z.length2() == 0)
            return Identity();
        Vector3<T> x = AnyPerpendicular(z);
        return Matrix3(x, z.cross(x), z);
    }

    static Matrix3 Frame_Y(Vector3<T> const& v, bool normalized = false)
    {
        Vector3<T> y = normalized ? v : v.normalize();
        if (y.length2() == 0)
            return Identity();
        Vector3<T> x = AnyPerpendicular(y);
        return Matrix3(x, y, x.cross(y));
    }

    // z along b exactly; x as close to a as the orthogonality allows.
    static Matrix3 Frame_xZ(Vector3<T> const& a, Vector3<T> const& b, bool aNormalized = false,
                            bool bNormalized = false)
    {
        Vector3<T> z = bNormalized ? b : b.normalize();
        if (z.length2() == 0)
            return Frame_X(a, aNormalized);
        Vector3<T> x = OrthogonalPart(a, z);
        if (x.length2() == 0)
            return Frame_Z(z, true);
        return Matrix3(x, z.cross(x), z);
    }

    // x along a exactly; z as close to b as the orthogonality allows.
    static Matrix3 Frame_Xz(Vector3<T> const& a, Vector3<T> const& b, bool aNormalized = false,
                            bool bNormalized = false)
    {
        Vector3<T> x = aNormalized ? a : a.normalize();
        if (x.length2() == 0)
            return Frame_Z(b, bNormalized);
        Vector3<T> z = OrthogonalPart(b, x);
        if (z.length2() == 0)
            return Frame_X(x, true);
        return Matrix3(x, z.cross(x), z);
    }

    // z along b exactly; y as close to a as the orthogonality allows.
    static Matrix3 Frame_yZ(Vector3<T> const& a, Vector3<T> const& b, bool aNormalized = false,
                            bool bNormalized = false)
    {
        Vector3<T> z = bNormalized ? b : b.normalize();
        if (z.length2() == 0)
            return Frame_Y(a, aNormalized);
        Vector3<T> y = OrthogonalPart(a, z);
        if (y.length2() == 0)
            return Frame_Z(z, true);
        return Matrix3(y.cross(z), y, z);
    }

    // ---- rotations ------------------------------------------------------------------------

    // Rotation by ax about x, then ay about y, then az about z (radians).
    static Matrix3 Rotation(double ax, double ay, double az)
    {
        return RotationAroundUnitAxis(Vector3<T>(1, 0, 0), T(std::sin(ax)), T(std::cos(ax))) *
               RotationAroundUnitAxis(Vector3<T>(0, 1, 0), T(std::sin(ay)), T(std::cos(ay))) *
               RotationAroundUnitAxis(Vector3<T>(0, 0, 1), T(std::sin(az)), T(std::cos(az)));
    }

    // The shortest rotation that takes the direction `from` to the direction `to`.
    static Matrix3 Rotation(Vector3<T> const& from, Vector3<T> const& to) { return Rotation(from, to, 1.0); }

    // The same rotation, by `fraction` of its angle.
    static Matrix3 Rotation(Vector3<T> const& from, Vector3<T> const& to, double fraction)
    {
        Vector3<T> a = from.normalize(), b = to.normalize();
        if (a.length2() == 0 || b.length2() == 0)
            return Identity();
        Vector3<T> axis = a.cross(b);
        double s = axis.length();
        double c = a.dot(b);
        double angle = std::atan2(s, c) * fraction;
        // Opposite or equal directions: any axis perpendicular to `from` is shortest.
        axis = s > 1e-12 ? axis / T(s) : AnyPerpendicular(a);
        return RotationAroundUnitAxis(axis, T(std::sin(angle)), T(std::cos(angle)));
    }

    // Rodrigues' formula from sine and cosine, in the row convention:
    // m[i][j] = a_i a_j (1 - c) + c [i == j] + s eps_ijk a_k, so m[0][1] = x y (1 - c) + z s.
    static Matrix3 RotationAroundUnitAxis(Vector3<T> const& a, T s, T c)
    {
        T t = 1 - c;
        return Matrix3(a.x * a.x * t + c, a.x * a.y * t + a.z * s, a.x * a.z * t - a.y * s, //
                       a.y * a.x * t - a.z * s, a.y * a.y * t + c, a.y * a.z * t + a.x * s, //
                       a.z * a.x * t + a.y * s, a.z * a.y * t - a.x * s, a.z * a.z * t + c);
    }

    // The angle by which R turns space about `axis`, R first freed of uniform scale.
    static double ConstrainedAngle(Matrix3 const& R, Vector3<T> axis)
    {
        if (axis.length2() > T(1e-20))
            axis = axis.normalize();
        else
            return 0;
        double d = std::abs(double(R.determinant()));
        if (!(d > 0))
            return 0;
        Matrix3 unit = R * T(1.0 / std::cbrt(d));
        Vector3<T> u = AnyPerpendicular(axis);
        Vector3<T> v = u * unit;
        v = v - axis * axis.dot(v);
        return std::atan2(double(axis.dot(u.cross(v))), double(u.dot(v)));
    }

    // The rotation about `axis` alone by R's angle about it.
    static Matrix3 ConstrainedRotation(Matrix3 const& R, Vector3<T> const& axis)
    {
        if (axis.length2() <= T(1e-20))
            return R;
        double angle = ConstrainedAngle(R, axis);
        return RotationAroundUnitAxis(axis.normalize(), T(std::sin(angle)), T(std::cos(angle)));
    }

    // A unit vector perpendicular to the unit vector v, built from v's weakest axis.
    static Vector3<T> AnyPerpendicular(Vector3<T> const& v)
    {
        Vector3<T> helper = std::abs(v.x) <= std::abs(v.y) && std::abs(v.x) <= std::abs(v.z) ? Vector3<T>(1, 0, 0)
                            : std::abs(v.y) <= std::abs(v.z)                                  ? Vector3<T>(0, 1, 0)
                                                                                              : Vector3<T>(0, 0, 1);
        return OrthogonalPart(helper, v);
    }

    // The unit part of a orthogonal to the unit vector n; zero when a is (nearly) along n.
    static Vector3<T> OrthogonalPart(Vector3<T> const& a, Vector3<T> const& n)
    {
        Vector3<T> p = a - n * n.dot(a);
        T la = a.length2();
        if (la == 0 || p.length2() <= la * T(1e-20))
            return Vector3<T>();
        return p.normalize();
    }
};

template <class T>
Vector3<T> operator*(Vector3<T> const& v, Matrix3<T> const& m)
{
    return {v.x * m.m[0] + v.y * m.m[3] + v.z * m.m[6], v.x * m.m[1] + v.y * m.m[4] + v.z * m.m[7],
            v.x * m.m[2] + v.y * m.m[5] + v.z * m.m[8]};
}

template <class T>
Vector3<T>& operator*=(Vector3<T>& v, Matrix3<T> const& m)
{
    return v = v * m;
}

// ---- free functions ---------------------------------------------------------------------

// The inverse; a singular matrix inverts to the identity so that nothing downstream turns NaN.
template <class T>
Matrix3<T> inv(Matrix3<T> const& a)
{
    if (!a.invertible())
        return Matrix3<T>();
    T d = a.determinant();
    T const* m = a.m;
    Matrix3<T> r(m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
                 m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
                 m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]);
    return r * (T(1) / d);
}

// Snaps the rotation R to the nearest of the 24 axis-aligned orientations of `frame`:
// each axis of R becomes the signed frame axis it is closest to, keeping R's handedness
// and R's uniform scale.
template <class T>
Matrix3<T> snap(Matrix3<T> const& R, Matrix3<T> const& frame)
{
    double d = R.determinant();
    T scale = T(std::cbrt(std::abs(d)));
    if (scale == 0)
        return R;
    Vector3<T> axes[3] = {frame.row(0).normalize(), frame.row(1).normalize(), frame.row(2).normalize()};
    bool taken[3] = {false, false, false};
    Vector3<T> rows[2];
    for (int r = 0; r < 2; ++r) {
        Vector3<T> v = R.row(r);
        int best = -1;
        T bestDot = 0;
        for (int k = 0; k < 3; ++k) {
            T dk = v.dot(axes[k]);
            if (!taken[k] && (best < 0 || std::abs(dk) > std::abs(bestDot))) {
                best = k;
                bestDot = dk;
            }
        }
        taken[best] = true;
        rows[r] = bestDot < 0 ? -axes[best] : axes[best];
    }
    Vector3<T> third = rows[0].cross(rows[1]);
    if (d < 0)
        third = -third;
    return Matrix3<T>(rows[0], rows[1], third) * scale;
}

} // namespace vel
