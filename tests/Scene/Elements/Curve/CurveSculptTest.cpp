#include "Scene/Elements/Curve/Curve.h"

#include "Deformers/BrushProperties.h"
#include "Scene/SceneHistory.h"
#include "Support/SculptStrokeDriver.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace vel {
namespace {

using test::DriveStroke;
using test::SculptSample;
using V = Vector3<float>;

std::vector<V> Positions(Curve const& c)
{
    std::vector<V> out;
    for (CurveVert const& v : c.verts)
        out.push_back(v.position);
    return out;
}

bool SameBits(std::vector<V> const& a, std::vector<V> const& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(V)) == 0;
}

TEST(CurveSculpt, DeformAndPaintUndoAndRedoExactly)
{
    History::instance().clear();
    std::unique_ptr<Curve> ring(Curve::NGon(32, false));
    std::vector<V> start = Positions(*ring);
    V const at = start[0];
    float const radius = (start[3] - start[0]).length();
    std::vector<SBrush> drag = {SculptSample(at, V(0, 0, 1), radius), SculptSample(at, V(0, 0, 1), radius),
                                SculptSample(at + V(0, 0, 0.1f), V(0, 0, 1), radius),
                                SculptSample(at + V(0, 0, 0.2f), V(0, 0, 1), radius)};
    DriveStroke(*ring, 29, drag);
    std::vector<V> done = Positions(*ring);
    EXPECT_NE(done, start);
    History::instance().undo();
    EXPECT_TRUE(SameBits(Positions(*ring), start));
    History::instance().redo();
    EXPECT_TRUE(SameBits(Positions(*ring), done));

    ASSERT_EQ(ring->dataType, 0);
    DriveStroke(*ring, 47, drag); // erase everything: a visible change only from a colour
    EXPECT_EQ(ring->dataType, 0) << "a paint that changes nothing leaves the type alone";
    BrushMaterial = Pbr();
    BrushMaterial.setColor(1, 10);
    DriveStroke(*ring, 41, drag);
    ASSERT_EQ(ring->dataType, 1);
    ASSERT_EQ(ring->materials.size(), 2 * ring->edges.size());
    std::vector<Pbr> painted = ring->materials;
    History::instance().undo();
    EXPECT_EQ(ring->dataType, 0);
    EXPECT_TRUE(ring->materials.empty());
    History::instance().redo();
    EXPECT_EQ(ring->materials, painted);
    BrushMaterial = Pbr();
    History::instance().clear();
}

} // namespace
} // namespace vel
