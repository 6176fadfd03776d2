// Comparisons of vectors and matrices with a tolerance, shared by the tests.
#pragma once

#include "Math/Matrix34.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {

template <class T>
::testing::AssertionResult Near(Vector3<T> const& a, Vector3<T> const& b, double tolerance = 1e-9)
{
    double d = std::sqrt(double((a - b).length2()));
    if (d <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << a.x << ", " << a.y << ", " << a.z << ") vs (" << b.x << ", " << b.y
                                         << ", " << b.z << "): distance " << d;
}

template <class T>
::testing::AssertionResult Near(Matrix3<T> const& a, Matrix3<T> const& b, double tolerance = 1e-9)
{
    for (int i = 0; i < 9; ++i)
        if (!(std::abs(double(a.m[i] - b.m[i])) <= tolerance))
            return ::testing::AssertionFailure() << "element " << i << ": " << a.m[i] << " vs " << b.m[i];
    return ::testing::AssertionSuccess();
}

template <class T>
::testing::AssertionResult Near(Matrix34<T> const& a, Matrix34<T> const& b, double tolerance = 1e-9)
{
    for (int i = 0; i < 12; ++i)
        if (!(std::abs(double(a.m[i] - b.m[i])) <= tolerance))
            return ::testing::AssertionFailure() << "element " << i << ": " << a.m[i] << " vs " << b.m[i];
    return ::testing::AssertionSuccess();
}

// A right-handed orthonormal frame with finite entries.
template <class T>
::testing::AssertionResult IsRotation(Matrix3<T> const& m, double tolerance = 1e-9)
{
    for (T v : m.m)
        if (!std::isfinite(double(v)))
            return ::testing::AssertionFailure() << "non-finite entry";
    if (!Near(m * m.transposed(), Matrix3<T>(), tolerance))
        return ::testing::AssertionFailure() << "rows are not orthonormal";
    if (std::abs(double(m.determinant()) - 1.0) > tolerance)
        return ::testing::AssertionFailure() << "determinant " << m.determinant();
    return ::testing::AssertionSuccess();
}

} // namespace vel::test
