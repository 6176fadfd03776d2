#include "Scene/Elements/Mesh/Mesh.h"

#include "Deformers/BrushProperties.h"
#include "Scene/Elements/Mesh/MeshFixtures.h"
#include "Scene/SceneHistory.h"
#include "Support/SculptStrokeDriver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace vel {
namespace {

using test::DriveStroke;
using test::SculptSample;
using V = Vector3<float>;

class MeshSculpt : public ::testing::Test {
protected:
    void SetUp() override
    {
        History::instance().clear();
        // Strokes recompute the normals they touch as calculateNormals does: start from those.
        mesh->calculateNormals();
    }
    void TearDown() override { History::instance().clear(); }

    // A sphere of radius 0.5 about the origin, 642 vertices.
    std::unique_ptr<Mesh> mesh = Mesh::Sphere(Mesh::Icosahedron(), 3);

    std::vector<V> positions() const
    {
        std::vector<V> out;
        for (std::size_t i = 0; i < mesh->verts.size(); ++i)
            out.push_back(mesh->verts[i].position);
        return out;
    }
};

// Samples on the sphere, walking from (x0, 0, top) along x.
std::vector<SBrush> Walk(float x0, int count, float radius)
{
    std::vector<SBrush> out;
    for (int i = 0; i < count; ++i) {
        V p(x0 + 0.02f * float(i), 0.05f, 0.0f);
        p.z = std::sqrt(0.25f - p.x * p.x - p.y * p.y);
        out.push_back(SculptSample(p, p.normalize(), radius));
    }
    return out;
}

TEST_F(MeshSculpt, AddRaisesUnderTheBrushOnly)
{
    std::vector<V> before = positions();
    std::vector<SBrush> samples = Walk(0.0f, 6, 0.15f);
    DriveStroke(*mesh, 25, samples);
    int raised = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        float nearest = 1e9f;
        for (SBrush const& s : samples)
            nearest = std::min(nearest, (before[i] - s.position).length());
        V now = mesh->verts[i].position;
        if (nearest >= 0.15f + 1e-4f) {
            EXPECT_EQ(now, before[i]) << i;
        } else if (now != before[i]) {
            EXPECT_GT(now.length(), before[i].length()) << i;
            ++raised;
        }
    }
    EXPECT_GT(raised, 5);
    EXPECT_EQ(test::Violations(*mesh), "");
}

TEST_F(MeshSculpt, MirroredStrokeMovesMirroredPairs)
{
    std::vector<V> before = positions();
    DriveStroke(*mesh, 25, Walk(0.15f, 5, 0.12f), true);
    int moved = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        V mirrored(-before[i].x, before[i].y, before[i].z);
        std::size_t j = 0;
        for (std::size_t k = 1; k < before.size(); ++k)
            if ((before[k] - mirrored).length2() < (before[j] - mirrored).length2())
                j = k;
        ASSERT_LT((before[j] - mirrored).length(), 1e-5f) << "the sphere is symmetric in x";
        V di = mesh->verts[i].position - before[i];
        V dj = mesh->verts[j].position - before[j];
        EXPECT_LT((V(-di.x, di.y, di.z) - dj).length(), 1e-5f) << i << " " << j;
        moved += di.length2() > 0.0f;
    }
    EXPECT_GT(moved, 10);
}

TEST_F(MeshSculpt, UndoAndRedoAreBitExact)
{
    for (int action : {25, 26, 29, 32, 37, 30}) {
        SCOPED_TRACE(action);
        History::instance().clear();
        Mesh start(*mesh);
        DriveStroke(*mesh, action, Walk(-0.05f, 6, 0.2f));
        Mesh done(*mesh);
        ASSERT_NE(test::RecordDifference(*mesh, start), "") << "the stroke changed nothing";
        History::instance().undo();
        EXPECT_EQ(test::RecordDifference(*mesh, start), "");
        History::instance().redo();
        EXPECT_EQ(test::RecordDifference(*mesh, done), "");
        EXPECT_EQ(test::Violations(*mesh), "");
    }
}

TEST_F(MeshSculpt, PaintRaisesTheTypeAndUndoesAsOne)
{
    BrushMaterial = Pbr();
    BrushMaterial.setColor(0, 100);
    Mesh start(*mesh);
    DriveStroke(*mesh, 41, Walk(0.0f, 5, 0.2f));
    ASSERT_EQ(mesh->dataType, 1);
    Mesh done(*mesh);
    int red = 0;
    for (std::size_t c = 0; c < mesh->materials.size(); ++c)
        red += mesh->materials[c].color(0) < Pbr().color(0);
    EXPECT_GT(red, 0);
    History::instance().undo();
    EXPECT_EQ(mesh->dataType, 0);
    EXPECT_EQ(test::RecordDifference(*mesh, start), "");
    History::instance().redo();
    EXPECT_EQ(test::RecordDifference(*mesh, done), "");
    // A second stroke on the painted mesh is one "Paint Vertices" command.
    DriveStroke(*mesh, 41, Walk(-0.2f, 4, 0.2f));
    History::instance().undo();
    EXPECT_EQ(test::RecordDifference(*mesh, done), "");
    BrushMaterial = Pbr();
}

} // namespace
} // namespace vel
