#include "Deformers/Symmetry.h"

#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel {
namespace {

using test::IsRotation;
using test::Near;
using V = Vector3<double>;
using M3 = Matrix3<double>;
using M34 = Matrix34<double>;

SymmetryCopy Brush(V position, V normal)
{
    SymmetryCopy b;
    b.position = position;
    b.normal = normal;
    b.frame = M34(M3::Frame_yZ(V(0, 1, 0), normal), position);
    return b;
}

TEST(Symmetry, MirrorReflectsPointNormalAndSign)
{
    // The symmetry plane x = 1 (the frame's origin at (1, 0, 0)).
    M34 frame = M34::Translation(V(1, 0, 0));
    SymmetryCopy brush = Brush(V(3, 2, 1), V(1, 1, 0).normalize());
    auto copies = symmetry(brush, frame, true, false, false, false, false, false, 1);
    ASSERT_EQ(copies.size(), 2u);
    EXPECT_EQ(copies[0].mirror, 1);
    EXPECT_EQ(copies[1].mirror, -1);
    EXPECT_TRUE(Near(copies[1].position, V(-1, 2, 1)));
    EXPECT_TRUE(Near(copies[1].normal, V(-1, 1, 0).normalize()));
    EXPECT_TRUE(IsRotation(copies[1].frame.linear()));
    EXPECT_TRUE(Near(copies[1].frame.row(2), copies[1].normal));
    EXPECT_TRUE(Near(copies[1].frame.translation(), copies[1].position));
}

TEST(Symmetry, RotationCountGivesTurnedCopies)
{
    SymmetryCopy brush = Brush(V(2, 0, 5), V(1, 0, 0));
    auto copies = symmetry(brush, M34(), false, false, false, false, false, true, 4);
    ASSERT_EQ(copies.size(), 4u);
    V const normals[4] = {V(1, 0, 0), V(0, 1, 0), V(-1, 0, 0), V(0, -1, 0)}; // quarter turns about z
    for (int k = 0; k < 4; ++k) {
        SymmetryCopy const& c = copies[std::size_t(k)];
        EXPECT_TRUE(Near(c.position, normals[k] * 2.0 + V(0, 0, 5), 1e-12)) << k;
        EXPECT_TRUE(Near(c.normal, normals[k], 1e-12)) << k;
        EXPECT_EQ(c.mirror, 1);
        EXPECT_TRUE(IsRotation(c.frame.linear()));
    }
}

TEST(Symmetry, CountsMultiply)
{
    SymmetryCopy brush = Brush(V(1, 2, 3), V(0, 0, 1));
    struct Row {
        bool mx, my, mz, rx, ry, rz;
        int count;
        std::size_t copies;
        int mirrored;
    } const rows[] = {
        {false, false, false, false, false, false, 6, 1, 0}, {true, true, false, false, false, false, 1, 4, 2},
        {true, true, true, false, false, false, 3, 8, 4},     {true, false, false, false, true, false, 3, 6, 3},
        {true, false, false, true, false, true, 2, 8, 4},     {false, false, false, false, true, false, 1, 1, 0},
    };
    for (Row const& row : rows) {
        auto copies = symmetry(brush, M34(), row.mx, row.my, row.mz, row.rx, row.ry, row.rz, row.count);
        EXPECT_EQ(copies.size(), row.copies);
        int mirrored = 0;
        for (SymmetryCopy const& c : copies) {
            mirrored += c.mirror < 0;
            // Every copy stays on the sphere of the original about the frame's origin.
            EXPECT_NEAR(c.position.length(), brush.position.length(), 1e-12);
        }
        EXPECT_EQ(mirrored, row.mirrored);
    }
}

} // namespace
} // namespace vel
