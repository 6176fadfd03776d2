#include "Math/Matrix4.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <random>

namespace vel {
namespace {

using test::IsRotation;
using test::Near;
using V = Vector3<double>;
using M3 = Matrix3<double>;
using M34 = Matrix34<double>;

const double PI = 3.141592653589793;

V RandomVector(std::mt19937& rng, double range = 10)
{
    std::uniform_real_distribution<double> d(-range, range);
    return {d(rng), d(rng), d(rng)};
}

M34 RandomAffine(std::mt19937& rng)
{
    std::uniform_real_distribution<double> angle(-PI, PI), scale(0.3, 3);
    M3 L = M3::Rotation(angle(rng), angle(rng), angle(rng)) * M3::Scale(scale(rng));
    return M34(L, RandomVector(rng));
}

TEST(MatrixConvention, PointGoesThroughTheLeftFactorFirst)
{
    // Translate by t, then rotate by a quarter turn about z: T *= R.
    M34 T = M34::Translation(V(1, 0, 0));
    M34 R(M3::RotationAroundUnitAxis(V(0, 0, 1), 1.0, 0.0));
    M34 chain = T;
    chain *= R;
    // (0,0,0) -> (1,0,0) -> rotated about z by +90 degrees -> (0,1,0).
    EXPECT_TRUE(Near(V(0, 0, 0) * chain, V(0, 1, 0)));
    // The other order gives another point: rotation of the origin, then the translation.
    EXPECT_TRUE(Near(V(0, 0, 0) * (R * T), V(1, 0, 0)));
    // Rotations about different axes do not commute: a product is its factors applied to
    // the point one after the other, the left one first.
    M34 X(M3::RotationAroundUnitAxis(V(1, 0, 0), 1.0, 0.0), V(0, 0, 2));
    V p(1, 2, 3);
    EXPECT_TRUE(Near(p * (X * R), (p * X) * R));
    EXPECT_FALSE(Near(p * (R * X), (p * X) * R));
    std::mt19937 rng(7);
    for (int i = 0; i < 20; ++i) {
        M34 A = RandomAffine(rng), B = RandomAffine(rng);
        V q = RandomVector(rng);
        EXPECT_TRUE(Near(q * (A * B), (q * A) * B, 1e-9));
    }
    // The row formula: x' = x m0 + y m3 + z m6 + m9, and so on.
    M34 a;
    for (int i = 0; i < 12; ++i)
        a.m[i] = i + 1;
    EXPECT_EQ(V(2, 3, 5) * a, V(2 * 1 + 3 * 4 + 5 * 7 + 10, 2 * 2 + 3 * 5 + 5 * 8 + 11, 2 * 3 + 3 * 6 + 5 * 9 + 12));
}

// The affine inverse undoes the matrix, and the 4x4 inverse by cofactors agrees with it.
TEST(MatrixInverse, AffineAndCofactorInversesUndoTheMatrixAndAgree)
{
    std::mt19937 rng(7);
    for (int i = 0; i < 200; ++i) {
        M34 a = RandomAffine(rng);
        EXPECT_TRUE(Near(a * inv(a), M34(), 1e-9));
        V p = RandomVector(rng);
        EXPECT_TRUE(Near(p * a * inv(a), p, 1e-9));
        Matrix4<double> full(a), fromAffine(inv(a));
        Matrix4<double> product = full * inv(full);
        for (int k = 0; k < 16; ++k) {
            EXPECT_NEAR(inv(full).m[k], fromAffine.m[k], 1e-9);
            EXPECT_NEAR(product.m[k], k % 5 == 0 ? 1.0 : 0.0, 1e-9);
        }
    }
}

TEST(MatrixInverse, SingularMatricesAreNotInvertibleAndGiveFiniteResults)
{
    M3 flat = M3::Scale(V(1, 0, 1));
    EXPECT_FALSE(flat.invertible());
    EXPECT_FALSE(M34(M3(), V(0, std::nan(""), 0)).invertible()) << "a non-finite translation";
    EXPECT_TRUE(M34(M3::Scale(1e-5), V(1, 2, 3)).invertible());
    M3 r = inv(flat);
    for (double v : r.m)
        EXPECT_TRUE(std::isfinite(v));
    Matrix4<double> zero;
    for (double& v : zero.m)
        v = 0;
    for (double v : inv(zero).m)
        EXPECT_TRUE(std::isfinite(v));
}

TEST(Matrix4Test, SubmatrixStrikesRowAndColumnAndConversionsToFloatKeepValues)
{
    Matrix4<double> a;
    for (int i = 0; i < 16; ++i)
        a.m[i] = i;
    M3 s = a.submatrix(1, 2);
    EXPECT_EQ(s, M3(0, 1, 3, 8, 9, 11, 12, 13, 15));
    Matrix4<float> f(a);
    EXPECT_EQ(f.m[15], 15.0f);
    Matrix34<float> t(M34::Translation(V(1.5, -2.25, 3)));
    EXPECT_EQ(Vector3<float>(0, 0, 0) * t, Vector3<float>(1.5f, -2.25f, 3.0f));
}

TEST(MatrixMirror, ReflectsThroughThePlaneAndIsAnInvolution)
{
    M34 mirror = M34::Mirror(V(0, 0, 2), V(0, 0, 5));
    EXPECT_TRUE(Near(V(1, 2, 3) * mirror, V(1, 2, 1)));
    EXPECT_TRUE(Near(V(4, 5, 2) * mirror, V(4, 5, 2)));
    EXPECT_TRUE(Near(mirror * mirror, M34()));
    EXPECT_NEAR(mirror.determinant(), -1.0, 1e-12);
}

TEST(MatrixFrames, NamedAxisFollowsTheDirection)
{
    std::mt19937 rng(3);
    for (int i = 0; i < 100; ++i) {
        V a = RandomVector(rng), b = RandomVector(rng);
        M3 fx = M3::Frame_X(a), fz = M3::Frame_Z(a);
        M3 xZ = M3::Frame_xZ(a, b), Xz = M3::Frame_Xz(a, b), yZ = M3::Frame_yZ(a, b);
        for (M3 const& frame : {fx, fz, xZ, Xz, yZ})
            EXPECT_TRUE(IsRotation(frame));
        EXPECT_TRUE(Near(fx.row(0), a.normalize()));
        EXPECT_TRUE(Near(fz.row(2), a.normalize()));
        // The capital axis is kept exactly; the other lies in the plane of the two directions.
        EXPECT_TRUE(Near(xZ.row(2), b.normalize()));
        EXPECT_GT(xZ.row(0).dot(a), 0);
        EXPECT_TRUE(Near(Xz.row(0), a.normalize()));
        EXPECT_GT(Xz.row(2).dot(b), 0);
        EXPECT_TRUE(Near(yZ.row(2), b.normalize()));
        EXPECT_GT(yZ.row(1).dot(a), 0);
        EXPECT_NEAR(yZ.row(0).dot(a), 0, 1e-9);
    }
}

TEST(MatrixFrames, ZeroAndParallelInputGiveValidFrames)
{
    V zero(0, 0, 0), up(0, 0, 3);
    for (M3 const& frame : {M3::Frame_X(zero), M3::Frame_Z(zero), M3::Frame_xZ(zero, zero), M3::Frame_Xz(zero, zero),
                            M3::Frame_yZ(zero, zero)})
        EXPECT_TRUE(IsRotation(frame));
    // Parallel and anti-parallel pairs: the kept axis still follows its vector.
    for (V other : {up * 2.0, -up, V(0, 0, 1e-300)}) {
        EXPECT_TRUE(IsRotation(M3::Frame_xZ(other, up)));
        EXPECT_TRUE(Near(M3::Frame_xZ(other, up).row(2), V(0, 0, 1)));
        EXPECT_TRUE(IsRotation(M3::Frame_Xz(up, other)));
        EXPECT_TRUE(Near(M3::Frame_Xz(up, other).row(0), V(0, 0, 1)));
        EXPECT_TRUE(IsRotation(M3::Frame_yZ(other, up)));
    }
    // One of the two missing.
    EXPECT_TRUE(Near(M3::Frame_xZ(V(2, 0, 0), zero).row(0), V(1, 0, 0)));
    EXPECT_TRUE(Near(M3::Frame_yZ(V(0, 2, 0), zero).row(1), V(0, 1, 0)));
}

TEST(MatrixRotation, ShortestRotationTakesFromToTo)
{
    std::mt19937 rng(5);
    for (int i = 0; i < 100; ++i) {
        V a = RandomVector(rng), b = RandomVector(rng);
        M3 R = M3::Rotation(a, b);
        EXPECT_TRUE(IsRotation(R));
        EXPECT_TRUE(Near(a.normalize() * R, b.normalize()));
        // The axis is perpendicular to both, so the rotation angle is the angle between them.
        double angle = std::acos(std::clamp(a.normalize().dot(b.normalize()), -1.0, 1.0));
        EXPECT_NEAR((R.m[0] + R.m[4] + R.m[8] - 1.0) / 2.0, std::cos(angle), 1e-9);
        // Half the angle twice is the whole rotation.
        M3 half = M3::Rotation(a, b, 0.5);
        EXPECT_TRUE(Near(half * half, R));
    }
    // Equal, opposite and zero directions.
    V a(1, 2, 3);
    EXPECT_TRUE(Near(M3::Rotation(a, a * 4.0), M3()));
    M3 flip = M3::Rotation(a, -a);
    EXPECT_TRUE(IsRotation(flip));
    EXPECT_TRUE(Near(a.normalize() * flip, -a.normalize()));
    EXPECT_TRUE(IsRotation(M3::Rotation(V(), a)));
}

TEST(MatrixRotation, EulerAnglesApplyXThenYThenZ)
{
    M3 R = M3::Rotation(PI / 2, 0.0, PI / 2);
    // y -> z by the x quarter turn, then z stays under the z quarter turn.
    EXPECT_TRUE(Near(V(0, 1, 0) * R, V(0, 0, 1)));
    // x stays under x, then goes to y under z.
    EXPECT_TRUE(Near(V(1, 0, 0) * R, V(0, 1, 0)));
}

TEST(MatrixConstrained, AngleAboutAxisIgnoresScaleAndOtherAxes)
{
    V axis(0, 0, 2); // not unit: normalised first
    for (double angle : {0.3, -1.2, 2.9}) {
        M3 R = M3::RotationAroundUnitAxis(V(0, 0, 1), std::sin(angle), std::cos(angle)) * M3::Scale(3.0);
        EXPECT_NEAR(M3::ConstrainedAngle(R, axis), angle, 1e-12);
        EXPECT_TRUE(Near(M3::ConstrainedRotation(R, axis), R * (1.0 / 3.0)));
    }
    // A rotation about x has no angle about z.
    M3 aboutX = M3::RotationAroundUnitAxis(V(1, 0, 0), std::sin(0.8), std::cos(0.8));
    EXPECT_NEAR(M3::ConstrainedAngle(aboutX, V(0, 0, 1)), 0.0, 1e-12);
    // A zero axis leaves the rotation as it is.
    EXPECT_TRUE(Near(M3::ConstrainedRotation(aboutX, V()), aboutX));
}

TEST(MatrixSnap, SnapsToNearestAxesKeepingScaleAndHandedness)
{
    M3 R = M3::Rotation(0.1, -0.2, PI / 2 + 0.15) * M3::Scale(2.0);
    M3 snapped = snap(R, M3());
    EXPECT_TRUE(Near(snapped, M3::Rotation(0.0, 0.0, PI / 2) * M3::Scale(2.0), 1e-12));
    M3 mirrored = M3::Scale(V(-1, 1, 1)) * M3::Rotation(0.05, 0.0, 0.0);
    EXPECT_TRUE(Near(snap(mirrored, M3()), M3::Scale(V(-1, 1, 1)), 1e-12));
}

} // namespace
} // namespace vel
