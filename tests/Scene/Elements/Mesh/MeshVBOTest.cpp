// MeshVBO without a context: the state keys that decide when a vertex array is made, the
// program of each kind, and the buffers' ownership and dirty marks.
#include "Scene/Elements/Mesh/Mesh.h"

#include "OpenGL/Rendering.h"
#include "OpenGL/ShaderManager.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

class MeshVBOTest : public ::testing::Test {
protected:
    void TearDown() override { Rendering::instance().fast = false; }

    // A quad with or without vertex materials, under the fast setting given.
    static std::unique_ptr<Mesh> quad(bool pbr, bool fast)
    {
        auto mesh = Mesh::Quad();
        mesh->setDataType(pbr ? 1 : 0);
        Rendering::instance().fast = fast;
        return mesh;
    }
    static TRenderState state(int kind)
    {
        TRenderState s;
        s.kind = kind;
        return s;
    }
};

TEST_F(MeshVBOTest, StateKeyChangesExactlyWithTheLayout)
{
    struct Case {
        int kind;
        bool pbr, fast, snake;
        int key;
    };
    Case const cases[] = {
        {0, false, false, false, 1},     {1, true, false, false, 0x101},  {0, true, true, false, 0x301},
        {0, false, false, true, 0x401},  {3, true, true, false, 0x102},   {4, false, false, false, 2},
        {6, false, true, false, 0x203},  {6, true, false, false, 3},      {7, true, false, true, 0x504},
        {rtDEPTHPEEL, true, true, false, 5}, {rtDEPTH, true, true, false, 6}, {10, true, true, true, 0x407},
        {2, true, true, false, 0},       {5, false, false, true, 0x400},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(quad(c.pbr, c.fast)->render_state(state(c.kind), c.snake), c.key)
            << "kind " << c.kind << " pbr " << c.pbr << " fast " << c.fast << " snake " << c.snake;
    }
    // A kind without a layout gets no vertex array, and asks GL nothing to say so.
    auto mesh = Mesh::Quad();
    EXPECT_EQ(mesh->bind_vao(state(2), false), ~0u);
    EXPECT_TRUE(mesh->vaos.empty());
}

TEST_F(MeshVBOTest, EachKindDrawsWithItsProgram)
{
    ShaderManager const& m = ShaderManager::instance();
    struct Case {
        int kind;
        bool pbr, fast;
        Shader* shader;
        Shader* snake;
    };
    Case const cases[] = {
        {0, false, false, m.ShaderMeshRenderPbr, m.ShaderMeshSnakeRenderPbr},
        {1, true, false, m.ShaderMeshRenderMeshPbr, m.ShaderMeshSnakeRenderMeshPbr},
        {6, false, false, m.ShaderMeshRender, m.ShaderMeshSnakeRender},
        {6, true, true, m.ShaderMeshRenderFast, m.ShaderMeshSnakeRenderFast},
        {3, false, false, m.ShaderMeshRenderPaint, m.ShaderMeshRenderPaint},
        {7, true, false, m.ShaderMeshColor, m.ShaderMeshColor},
        {rtDEPTHPEEL, false, false, m.ShaderMeshDepthPeel, m.ShaderMeshDepthPeel},
        {rtDEPTH, false, true, m.ShaderMeshDepth, m.ShaderMeshDepth},
        {10, false, false, nullptr, nullptr},
    };
    for (Case const& c : cases) {
        auto mesh = quad(c.pbr, c.fast);
        EXPECT_EQ(mesh->renderShader(state(c.kind)), c.shader) << "kind " << c.kind;
        EXPECT_EQ(mesh->renderSnakeShader(state(c.kind)), c.snake) << "kind " << c.kind;
        if (c.kind != 10)
            EXPECT_NE(c.shader, nullptr) << "kind " << c.kind << ": a program file is missing";
    }
    EXPECT_DEATH(Mesh::Quad()->renderShader(state(5)), "no mesh shader");
}

TEST_F(MeshVBOTest, CopiesOwnTheirBuffersAndEditsMarkWhatTheyChange)
{
    auto mesh = Mesh::Box();
    ASSERT_EQ(int(mesh->vbos.size()), mesh->vbos_count());
    std::unique_ptr<Mesh> copy(mesh->clone());
    for (int i = 0; i < mesh->vbos_count(); ++i)
        EXPECT_NE(copy->vbos[size_t(i)].get(), mesh->vbos[size_t(i)].get()) << "buffer " << i << " shared";
    EXPECT_TRUE(copy->vaos.empty());

    mesh->set_vbos_dirty(false);
    EXPECT_FALSE(mesh->vbos_dirty());
    mesh->calculateNormals();
    EXPECT_TRUE(mesh->vbo_normals()->dirty);
    EXPECT_FALSE(mesh->vbo_positions()->dirty || mesh->vbo_ids()->dirty || mesh->vbo_pbrs()->dirty);

    mesh->set_vbos_dirty(false);
    mesh->updateGeometry();
    EXPECT_TRUE(mesh->vbo_positions()->dirty);

    mesh->set_vbos_dirty(false);
    *mesh = *copy;
    EXPECT_TRUE(mesh->vbos_dirty()) << "an assigned mesh must fill its buffers anew";
}

} // namespace
} // namespace vel::test
