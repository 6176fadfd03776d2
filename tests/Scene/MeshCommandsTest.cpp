#include "Scene/Commands/CommandMeshDataType.h"
#include "Scene/Commands/CommandSaveMesh.h"
#include "Scene/Commands/CommandSubdivideMesh.h"

#include "Elements/Mesh/MeshFixtures.h"
#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace vel::test {
namespace {

class MeshCommandsTest : public SceneTest {
protected:
    Shared<Element> shape;
    Mesh* mesh = nullptr;

    void SetUp() override
    {
        SceneTest::SetUp();
        mesh = ClosedCube().release();
        shape = Shared<Element>(mesh);
    }
    void TearDown() override
    {
        shape.release();
        SceneTest::TearDown();
    }
    // Undo, redo, undo again: each state compared with its copy, the validator after each.
    void roundTrip(Mesh const& before, Mesh const& after)
    {
        for (int round = 0; round < 2; ++round) {
            history().undo();
            EXPECT_MESH_VALID(*mesh);
            EXPECT_EQ(RecordDifference(*mesh, before), "") << "after undo " << round;
            history().redo();
            EXPECT_MESH_VALID(*mesh);
            EXPECT_EQ(RecordDifference(*mesh, after), "") << "after redo " << round;
        }
    }
};

TEST_F(MeshCommandsTest, ASnapshotTakesAnyChangeBackAndForth)
{
    Mesh before(*mesh);
    auto* command = new CommandSaveMesh(shape);
    mesh->triangulate(false);
    mesh->smoothAll(0.5f);
    history().push(command);
    Mesh after(*mesh);
    ASSERT_NE(RecordDifference(before, after), "");
    roundTrip(before, after);
}

TEST_F(MeshCommandsTest, ASubdivisionIsUndoneFromTheSnapshotAndRedoneByRepeatingIt)
{
    Mesh before(*mesh);
    auto* command = new CommandSubdivideMesh(shape, true);
    mesh->subdivide(true);
    history().push(command);
    Mesh after(*mesh);
    EXPECT_EQ(mesh->faces.size(), 24u);
    roundTrip(before, after);
    EXPECT_EQ(RecordDifference(command->snapshot, before), "") << "the snapshot stays the coarse mesh";
}

TEST_F(MeshCommandsTest, ADataTypeChangeSwapsTheTypeAndItsCornerArrays)
{
    mesh->setDataType(1);
    mesh->materials[3].setColor(0, 100);
    Mesh before(*mesh);
    auto* command = new CommandMeshDataType(shape);
    mesh->setDataType(0);
    history().push(command);
    Mesh after(*mesh);
    EXPECT_TRUE(mesh->materials.empty());
    roundTrip(before, after);
}

// A group stands for what it holds: its mesh tools are exported.
TEST_F(MeshCommandsTest, TheSceneExportsEachMeshToolInTheWorldAndLeavesTheRestOut)
{
    Tool* a = add(root, shape, true, Matrix34<double>::Translation({5, 0, 0}));
    Tool* b = add(a, shape, false, Matrix34<double>::Translation({0, 2, 0}));
    Tool* group = add(root, Shared<Element>(), true);
    Tool* inner = add(add(group, Shared<Element>(), true), shape, true, Matrix34<double>::Translation({0, 0, 9}));
    Tool* other = add(root, Shared<Element>(new TestElement), true);
    mesh->center = Vector3<float>(1, 0, 0); // the element's own mapping comes first
    mesh->scale = 2;
    QTemporaryDir dir;
    std::string path = dir.filePath("export").toStdString();
    ASSERT_TRUE(scene->saveOBJ({a, b, group, other}, path, false));

    AABB box;
    auto meshes = Mesh::loadSeparateOBJ(path + ".obj", box, true);
    Tool* expected[] = {a, b, inner};
    ASSERT_EQ(meshes.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        AABB own;
        for (size_t v = 0; v < meshes[i]->verts.size(); ++v)
            own.add(Vector3<double>(meshes[i]->verts[v].position));
        Matrix34<double> world;
        expected[i]->worldTransform(world, true);
        mesh->calculateAABB(Matrix34<double>());
        Vector3<double> centre = mesh->aabb.center() * mesh->Transform(1) * world;
        EXPECT_TRUE(near(own.center(), centre, 1e-5)) << "object " << i;
        EXPECT_NEAR(own.size().x, 0.5, 1e-5); // a cube of side 1 at scale 2
    }
    EXPECT_FALSE(scene->saveOBJ({a}, dir.filePath("missing/x").toStdString(), false));
}

} // namespace
} // namespace vel::test
