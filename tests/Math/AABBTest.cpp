#include "Math/AABB.h"
#include "Math/AABB2.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

using V = Vector3<double>;

TEST(AABBTest, EmptyBoxUsesTheLargestFloat)
{
    AABB box;
    EXPECT_TRUE(box.empty());
    EXPECT_EQ(box.min.x, 3.4028234663852886e38);
    EXPECT_EQ(box.max.z, -3.4028234663852886e38);
    // Transforming and inflating an empty box keeps it empty rather than inventing space.
    EXPECT_TRUE(box.transform(Matrix34<double>::Translation(V(1, 2, 3))).empty());
    EXPECT_TRUE(box.inflate(5).empty());
}

TEST(AABBTest, TransformTakesAllEightCorners)
{
    AABB box;
    box.add(V(-1, -1, -1));
    box.add(V(1, 1, 1));
    // A 45 degree turn about z widens the box to sqrt(2) in x and y.
    Matrix3<double> R = Matrix3<double>::RotationAroundUnitAxis(V(0, 0, 1), std::sqrt(0.5), std::sqrt(0.5));
    AABB turned = box.transform(Matrix34<double>(R, V(10, 0, 0)));
    EXPECT_TRUE(test::Near(turned.min, V(10 - std::sqrt(2.0), -std::sqrt(2.0), -1), 1e-12));
    EXPECT_TRUE(test::Near(turned.max, V(10 + std::sqrt(2.0), std::sqrt(2.0), 1), 1e-12));
    AABB grown = box;
    grown.inflate(0.5);
    EXPECT_EQ(grown.min, V(-1.5, -1.5, -1.5));
    EXPECT_TRUE(grown.contains(V(1.4, 0, -1.4)));
}

TEST(AABBTest, PointsBoxFromDeque)
{
    std::deque<Vector3<float>> points = {{1, 5, -2}, {-3, 0, 4}, {2, 2, 2}};
    AABB box = CalculatePointsAABB(points);
    EXPECT_EQ(box.min, V(-3, 0, -2));
    EXPECT_EQ(box.max, V(2, 5, 4));
    EXPECT_TRUE(CalculatePointsAABB(std::deque<Vector3<double>>()).empty());
}

TEST(AABB2Test, AddsAndInflates)
{
    AABB2 box;
    EXPECT_TRUE(box.empty());
    box.add({1, 2});
    box.add({-1, 0});
    box.inflate(1);
    EXPECT_EQ(box.min, Vector2<double>(-2, -1));
    EXPECT_EQ(box.max, Vector2<double>(2, 3));
}

} // namespace
} // namespace vel
