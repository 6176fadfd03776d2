// The sculpt side of the viewport without GL: a cursor snapshot as a stroke sample in the
// element's own coordinates, the brush settings and their keys, and the symmetry keys.
#include "OpenGL/SculptGesture.h"

#include "Deformers/BrushProperties.h"
#include "Deformers/Sculptor.h"

#include <gtest/gtest.h>

#include <QtCore/qnamespace.h>

#include <algorithm>
#include <cmath>

namespace vel {
namespace {

using Vec = Vector3<float>;

TEST(SculptGesture, ASampleIsInTheElementsOwnCoordinates)
{
    // Own coordinates scaled by 2, turned a quarter about z, moved by (1, 2, 3).
    Matrix3<double> const turn(0, 1, 0, -1, 0, 0, 0, 0, 1);
    ABrush b;
    b.elementMatrix = Matrix34<double>(turn * 2.0, {1, 2, 3});
    b.world = Vector3<double>(0.5, 0.5, 0.25) * b.elementMatrix;
    b.normal = Vector3<double>(0, 0, 1);
    b.size = 0.8f;
    b.screen = {12.7f, 40.2f};
    b.pressure = 0.3f;
    SBrush const s = b.ToSBrush();
    EXPECT_NEAR((s.position - Vec(0.5f, 0.5f, 0.25f)).length(), 0.0f, 1e-6f);
    EXPECT_NEAR((s.normal - Vec(0, 0, 1)).length(), 0.0f, 1e-6f);
    EXPECT_FLOAT_EQ(s.radius, 0.2f); // half the size, halved again by the scale
    EXPECT_EQ(s.x, 12);
    EXPECT_EQ(s.y, 40);
    EXPECT_FLOAT_EQ(s.pressure, 0.3f);
}

TEST(SculptGesture, CopiesFollowTheSymmetrySettingsAboutTheElement)
{
    SculptGesture g;
    g.frame = Matrix34<double>::Translation({2, 0, 0}); // the element stands at x = 2
    ABrush b;
    b.world = {2.3, 0.2, 1};
    b.normal = {0.6, 0, 0.8};
    EXPECT_EQ(g.copies(b).size(), 1u);
    g.symmetry.mirror[0] = true;
    std::vector<ABrush> const c = g.copies(b);
    ASSERT_EQ(c.size(), 2u);
    EXPECT_NEAR((c[1].world - Vector3<double>(1.7, 0.2, 1)).length(), 0.0, 1e-12);
    EXPECT_NEAR((c[1].normal - Vector3<double>(-0.6, 0, 0.8)).length(), 0.0, 1e-12);
    EXPECT_EQ(c[1].mirror, -1);
    g.symmetry.rotate[2] = true;
    EXPECT_EQ(g.copies(b).size(), 8u);
}

class SculptSettings : public testing::Test {
protected:
    void SetUp() override
    {
        for (auto& [action, b] : GetBrushes())
            saved[action] = *b.object;
        savedSize = BrushSize;
        Sculptor::gSculptAction = 25; // Add, which shares its brush with Sub
    }
    void TearDown() override
    {
        for (auto& [action, b] : saved)
            *GetBrushes()[action].object = b;
        BrushSize = savedSize;
        Sculptor::gSculptAction = 81;
    }
    BrushProperties& brush() { return *GetBrushes()[25].object; }
    std::unordered_map<int, BrushProperties> saved;
    float savedSize = 0;
};

TEST_F(SculptSettings, SettersClampToTheirRanges)
{
    struct Row {
        void (*set)(float);
        float* (*read)(BrushProperties&);
        float low, high;
    };
    Row const rows[] = {
        {SculptGesture::SetFalloff, [](BrushProperties& b) { return &b.falloff; }, 0, 1},
        {SculptGesture::SetStrength, [](BrushProperties& b) { return &b.strength; }, 0, 1},
        {SculptGesture::SetElevation, [](BrushProperties& b) { return &b.elevation; }, -1, 1},
        {SculptGesture::SetSize, [](BrushProperties&) { return &BrushSize; }, 1, 2000},
    };
    for (Row const& r : rows) {
        for (float v : {-5000.0f, 0.5f, 5000.0f}) {
            r.set(v);
            EXPECT_FLOAT_EQ(*r.read(brush()), std::clamp(v, r.low, r.high));
        }
    }
    // Opposite brushes share their settings.
    SculptGesture::SetStrength(0.25f);
    EXPECT_FLOAT_EQ(GetBrushes()[26].object->strength, 0.25f);
}

TEST_F(SculptSettings, BracketKeysScaleTheSizeOrDuringAStampTheStrength)
{
    SculptGesture g;
    BrushSize = 50;
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(g.keyPressed(Qt::Key_BracketRight, false, false, true));
    EXPECT_NEAR(BrushSize, 50 * std::pow(1.1f, 10.0f), 1e-3f);
    for (int i = 0; i < 10; ++i)
        g.keyPressed(Qt::Key_BracketLeft, false, false, true);
    EXPECT_NEAR(BrushSize, 50, 1e-3f);
    float const elevation = brush().elevation;
    g.keyPressed(Qt::Key_BracketRight, true, false, true);
    EXPECT_NEAR(brush().elevation, elevation + 0.05f, 1e-6f);
    EXPECT_FLOAT_EQ(BrushSize, 50);

    // A stamp drag: the size stays, the strength of the stamp's brush grows.
    Sculptor::gSculptAction = 21;
    SculptGesture::SetStrength(0.2f);
    g.sculptors.push_back(new Sculptor(21, 3, 0, 1, false, Vec(0, 0, 1)));
    g.mulSize(1.5f);
    EXPECT_FLOAT_EQ(BrushSize, 50);
    EXPECT_FLOAT_EQ(GetBrushes()[21].object->strength, 0.3f);
    EXPECT_TRUE(g.brushChanged);
}

TEST_F(SculptSettings, SymmetryKeysToggleTheirAxisOnlyBetweenStrokes)
{
    SculptGesture g;
    EXPECT_TRUE(g.keyPressed(Qt::Key_X, false, false, true));
    EXPECT_TRUE(g.keyPressed(Qt::Key_Z, false, true, true));
    EXPECT_FALSE(g.keyPressed(Qt::Key_Z, true, false, true)) << "Ctrl+Z is undo";
    EXPECT_FALSE(g.keyPressed(Qt::Key_Y, false, false, false)) << "a stroke keeps its copies";
    bool const mirror[3] = {true, false, false}, rotate[3] = {false, false, true};
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(g.symmetry.mirror[a], mirror[a]) << a;
        EXPECT_EQ(g.symmetry.rotate[a], rotate[a]) << a;
    }
    g.keyPressed(Qt::Key_X, false, false, true);
    EXPECT_FALSE(g.symmetry.mirror[0]);
}

} // namespace
} // namespace vel
