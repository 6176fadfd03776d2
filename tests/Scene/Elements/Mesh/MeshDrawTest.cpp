// Meshes drawn through the draw list into a G-buffer and read back: what the id, normal and
// material targets hold under known pixels, the vertex layouts, and the depth pass.
//
// The camera is the identity: world x and y are the picture's, from -1 to 1, so a pixel's
// content is known from the geometry alone.
#include "OpenGL/GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/RenderFlags.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/ToolList.h"

#include <cstring>
#include <memory>

namespace vel::test {
namespace {

constexpr int N = 32;

// Two quads facing the viewer in the lower half, left (face 0) and right (face 1): two
// components, two patches. With materials, the left corners are red and the right green.
Shared<Element> TwoQuads(bool materials)
{
    auto* m = new Mesh;
    for (float x0 : {-0.9f, 0.1f}) {
        int v = int(m->verts.size());
        for (Vector3<float> p : {Vector3<float>(x0, -0.9f, 0), Vector3<float>(x0 + 0.8f, -0.9f, 0),
                                 Vector3<float>(x0 + 0.8f, -0.1f, 0), Vector3<float>(x0, -0.1f, 0)})
            m->vertAdd(p);
        m->faceFromIndices({v, v + 1, v + 2, v + 3});
    }
    m->initialize(0);
    if (materials) {
        m->setDataType(1);
        for (std::size_t e = 0; e < m->edges.size(); ++e) {
            Pbr red;
            red.setColor(m->edges[e].face == 0 ? 1 : 0, 0);
            red.setColor(2, 0);
            m->materials[e] = red;
        }
    }
    return Shared<Element>(m);
}

// What the first three targets hold at one pixel.
struct Texel {
    int i[4] = {0, 0, 0, 0};   // object id, item, element id, spare
    int cpf[4] = {0, 0, 0, 0}; // component, patch, face
    float f[4] = {0, 0, 0, 0}; // view normal, flag bits in w
    int flags() const
    {
        int bits;
        std::memcpy(&bits, &f[3], sizeof bits);
        return bits;
    }
};

class MeshDrawTest : public GLResourceTest {
protected:
    std::unique_ptr<FBO> target;
    ToolList list;

    void SetUp() override
    {
        GLResourceTest::SetUp();
        History::instance().clear();
        Shader::ProjectionModelViewMatrix = Matrix4<double>();
        Shader::NormalMatrix = Matrix3<double>();
        Shader::PMVSign = 1;
        gl_Depth_Test.set(true);
    }
    void TearDown() override
    {
        list.reset();
        target.reset();
        Rendering& r = Rendering::instance();
        r.style = Rendering::STYLE_PBR;
        r.fast = false;
        r.showBoundingBoxes = false;
        glBindVertexArray(0);
        History::instance().clear();
        GLResourceTest::TearDown();
    }

    // The G-buffer of a kind: six targets with materials (kind 0), three without (kind 6).
    void gbuffer(int targets)
    {
        target = std::make_unique<FBO>(dsDepth, N, N);
        struct Format {
            int internal, format, type;
        };
        Format const formats[] = {{GL_RGBA32I, GL_RGBA_INTEGER, GL_INT}, {GL_RGB32I, GL_RGB_INTEGER, GL_INT},
                                  {GL_RGBA32F, GL_RGBA, GL_FLOAT},       {GL_RG16F, GL_RG, GL_HALF_FLOAT},
                                  {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT},  {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT}};
        for (int i = 0; i < targets; ++i)
            target->addColor(formats[i].internal, formats[i].format, formats[i].type, GL_CLAMP_TO_EDGE, GL_NEAREST);
        ASSERT_TRUE(target->enable());
        GLenum buffers[6];
        for (int i = 0; i < targets; ++i)
            buffers[i] = GLenum(GL_COLOR_ATTACHMENT0 + i);
        glDrawBuffers(targets, buffers);
        glViewport(0, 0, N, N);
        int const zero[4] = {0, 0, 0, 0};
        float const none[4] = {0, 0, 0, 0};
        // The normal target starts at a mark that a masked draw must leave in xyz.
        float const mark[4] = {9, 9, 9, 0};
        for (int i = 0; i < targets; ++i) {
            if (i < 2)
                glClearBufferiv(GL_COLOR, i, zero);
            else
                glClearBufferfv(GL_COLOR, i, i == 2 ? mark : none);
        }
        glClear(GL_DEPTH_BUFFER_BIT);
    }

    // Lists the tools, sorts them with `style` and draws the pass of that style (or the one of
    // `kind`); answers the number of draws.
    int draw(std::vector<Tool*> const& tools, int style, int kind = -1)
    {
        Rendering::instance().style = style;
        list.reset();
        for (Tool* t : tools) {
            list.append(t, false);
            t->prepareRender(t->element.get());
        }
        list.sort(true, true, true);
        if (kind < 0)
            kind = Rendering::hasMaterials(style) ? 0 : style == rtDEPTH ? rtDEPTH : 6;
        int counter = 0;
        list.render(Rendering::instance().renderState(kind), false, counter);
        return counter;
    }

    static Texel read(int x, int y)
    {
        Texel t;
        glReadBuffer(GL_COLOR_ATTACHMENT0);
        glReadPixels(x, y, 1, 1, GL_RGBA_INTEGER, GL_INT, t.i);
        glReadBuffer(GL_COLOR_ATTACHMENT1);
        glReadPixels(x, y, 1, 1, GL_RGBA_INTEGER, GL_INT, t.cpf);
        glReadBuffer(GL_COLOR_ATTACHMENT2);
        glReadPixels(x, y, 1, 1, GL_RGBA, GL_FLOAT, t.f);
        return t;
    }
};

TEST_F(MeshDrawTest, EveryMeshProgramLinks)
{
    // The validator sees one stage at a time; the stages of a program must also agree.
    ShaderManager const& m = ShaderManager::instance();
    for (Shader* shader :
         {m.ShaderMeshRenderPbr, m.ShaderMeshRenderMeshPbr, m.ShaderMeshRenderTex, m.ShaderMeshRender,
          m.ShaderMeshRenderFast, m.ShaderMeshSnakeRenderPbr, m.ShaderMeshSnakeRenderMeshPbr, m.ShaderMeshSnakeRenderTex,
          m.ShaderMeshSnakeRender, m.ShaderMeshSnakeRenderFast, m.ShaderMeshColor, m.ShaderMeshRenderPaint,
          m.ShaderMeshDepthPeel, m.ShaderMeshDepth, m.ShaderMeshDepthPeelComponent}) {
        ASSERT_NE(shader, nullptr);
        EXPECT_TRUE(shader->compile(false)) << shader->name << " [" << shader->vertexDefines << " / "
                                            << shader->fragmentDefines << "]";
    }
}

TEST_F(MeshDrawTest, IdsNormalsFlagsAndMaterialsUnderKnownPixels)
{
    // Tool a as it is; tool b, selected, mirrored in x and moved to the upper half: its face
    // 0 shows on the right. A mirror that did not flip the culled side would show nothing.
    Shared<Element> quads = TwoQuads(true);
    Tool a(quads);
    Matrix34<double> mirror(Matrix3<double>(-1, 0, 0, 0, 1, 0, 0, 0, 1), Vector3<double>(0, 1, 0));
    Tool b(quads, mirror);
    b.flags |= Tool::FLAG_SELECTED;
    struct Pixel {
        int x, y;
        Tool* tool; // null: nothing drawn there
        int face;
        int id;
    };
    Pixel const pixels[] = {{8, 8, &a, 0, 1}, {24, 8, &a, 1, 1}, {24, 24, &b, 0, int(0x80000002u)},
                            {8, 24, &b, 1, int(0x80000002u)}, {16, 16, nullptr, 0, 0}, {16, 4, nullptr, 0, 0}};
    struct Pass {
        int style;
        int targets;
    };
    for (Pass pass : {Pass{Rendering::STYLE_PBR, 6}, Pass{4, 3}}) {
        SCOPED_TRACE(pass.style);
        gbuffer(pass.targets);
        EXPECT_EQ(draw({&a, &b}, pass.style), 2);
        ASSERT_TRUE(target->enableRead());
        for (Pixel const& p : pixels) {
            SCOPED_TRACE(::testing::Message() << "pixel " << p.x << "," << p.y);
            Texel t = read(p.x, p.y);
            if (!p.tool) {
                EXPECT_EQ(t.flags(), 0) << "an empty pixel reads 0 flags";
                EXPECT_EQ(t.i[0], 0);
                continue;
            }
            EXPECT_EQ(t.i[0], p.id);
            EXPECT_EQ(t.i[1], 0);
            EXPECT_EQ(t.i[2], quads->id);
            EXPECT_EQ(t.i[3], p.tool->id);
            EXPECT_EQ(t.cpf[0], p.face) << "component";
            EXPECT_EQ(t.cpf[1], p.face) << "patch";
            EXPECT_EQ(t.cpf[2], p.face) << "face";
            EXPECT_EQ(t.flags(), FLAG_NON_EMPTY | FLAG_LIT) << "front faces, lit by the default material";
            EXPECT_NEAR(t.f[2], 1.0f, 0.01f) << "the normal faces the viewer";
            EXPECT_NEAR(t.f[0], 0.0f, 0.01f);
            if (pass.targets == 6) {
                float colour[4];
                glReadBuffer(GL_COLOR_ATTACHMENT4);
                glReadPixels(p.x, p.y, 1, 1, GL_RGBA, GL_FLOAT, colour);
                EXPECT_NEAR(colour[0], p.face == 0 ? 1.0f : 0.0f, 0.01f) << "red";
                EXPECT_NEAR(colour[1], p.face == 1 ? 1.0f : 0.0f, 0.01f) << "green";
                EXPECT_NEAR(colour[2], 0.0f, 0.01f);
                EXPECT_NEAR(colour[3], 1.0f, 0.01f);
            }
        }
    }
}

TEST_F(MeshDrawTest, TheTransparentPassDrawsTheTransparentListOnly)
{
    Shared<Element> quads = TwoQuads(false);
    Tool a(quads);
    Tool c(quads, Matrix34<double>(Matrix3<double>(), Vector3<double>(0, 1, 0)));
    c.flags |= Tool::FLAG_TRANSPARENT;
    for (int kind : {0, 1}) {
        SCOPED_TRACE(kind);
        gbuffer(6);
        EXPECT_EQ(draw({&a, &c}, Rendering::STYLE_PBR, kind), 1);
        ASSERT_TRUE(target->enableRead());
        EXPECT_EQ(read(8, 8).i[0], kind == 0 ? 1 : 0) << "the opaque tool";
        EXPECT_EQ(read(8, 24).i[0], kind == 1 ? 2 : 0) << "the transparent tool";
    }
}

TEST_F(MeshDrawTest, LayoutsBindTheirAttributesAndFastModeMakesASecondVertexArray)
{
    struct Case {
        int kind;
        bool pbr, fast;
        unsigned enabled; // bit i: location i enabled
        unsigned integer; // bit i: location i an integer attribute
    };
    Case const cases[] = {
        {0, false, false, 0x7, 0x2}, {0, true, false, 0xf, 0x6}, {0, true, true, 0x7, 0x6},
        {6, false, true, 0x3, 0x2},  {7, true, false, 0x3, 0x2}, {7, false, false, 0x1, 0x0},
        {rtDEPTH, true, false, 0x1, 0x0}, {10, false, false, 0x3, 0x2},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message() << "kind " << c.kind << " pbr " << c.pbr << " fast " << c.fast);
        Shared<Element> e = TwoQuads(c.pbr);
        auto* mesh = static_cast<Mesh*>(e.get());
        mesh->prepareRender();
        Rendering::instance().fast = c.fast;
        TRenderState state;
        state.kind = c.kind;
        ASSERT_TRUE(mesh->enableGPUData(state, false));
        for (int location = 0; location < 4; ++location) {
            int on = 0, integer = 0;
            glGetVertexAttribiv(GLuint(location), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &on);
            EXPECT_EQ(on != 0, ((c.enabled >> location) & 1) != 0) << "location " << location;
            if (on) {
                glGetVertexAttribiv(GLuint(location), GL_VERTEX_ATTRIB_ARRAY_INTEGER, &integer);
                EXPECT_EQ(integer != 0, ((c.integer >> location) & 1) != 0) << "location " << location;
            }
        }
    }

    // Toggling fast mode: a second array, the first one kept and found again.
    Shared<Element> e = TwoQuads(false);
    auto* mesh = static_cast<Mesh*>(e.get());
    mesh->prepareRender();
    TRenderState gbuffer;
    gbuffer.kind = 6;
    EXPECT_EQ(mesh->bind_vao(gbuffer, false), 0u);
    unsigned first = mesh->vaos.begin()->second;
    Rendering::instance().fast = true;
    EXPECT_EQ(mesh->bind_vao(gbuffer, false), 0u) << "fast mode is another layout";
    EXPECT_EQ(mesh->vaos.size(), 2u);
    Rendering::instance().fast = false;
    EXPECT_EQ(mesh->bind_vao(gbuffer, false), 1u);
    EXPECT_TRUE(glIsVertexArray(first));
    // Dirty buffers describe their arrays anew.
    mesh->updateGeometry();
    mesh->prepareRender();
    EXPECT_TRUE(mesh->vaos.empty());
    EXPECT_FALSE(mesh->vbos_dirty());
}

TEST_F(MeshDrawTest, FastModeWritesTheFlagsAndLeavesTheNormalAlone)
{
    Tool a(TwoQuads(false));
    Rendering::instance().fast = true;
    gbuffer(3);
    EXPECT_EQ(draw({&a}, 4), 1);
    ASSERT_TRUE(target->enableRead());
    Texel t = read(8, 8);
    EXPECT_EQ(t.i[0], 1);
    EXPECT_EQ(t.flags(), FLAG_NON_EMPTY | FLAG_LIT);
    EXPECT_EQ(t.f[0], 9.0f) << "xyz of the normal target are masked in fast mode";
}

TEST_F(MeshDrawTest, BoxesFollowTheListInLinesWithTheEntrysIds)
{
    // The box of the two quads runs along y = -0.9 (pixel rows 1 to 2); the gap between the
    // quads inside it stays empty.
    Tool a(TwoQuads(false));
    Rendering::instance().showBoundingBoxes = true;
    gbuffer(3);
    EXPECT_EQ(draw({&a}, 4), 1) << "the boxes are counted from the same start";
    ASSERT_TRUE(target->enableRead());
    EXPECT_TRUE(read(16, 1).i[0] == 1 || read(16, 2).i[0] == 1) << "no box edge under the quads";
    EXPECT_EQ(read(16, 4).i[0], 0);
    EXPECT_EQ(read(8, 8).i[0], 1);
}

TEST_F(MeshDrawTest, DepthPassWritesDepthOnly)
{
    Tool a(TwoQuads(false));
    target = std::make_unique<FBO>(dsDepth, N, N);
    ASSERT_TRUE(target->enable());
    glDrawBuffer(GL_NONE);
    glReadBuffer(GL_NONE);
    glViewport(0, 0, N, N);
    glClear(GL_DEPTH_BUFFER_BIT);
    EXPECT_EQ(draw({&a}, rtDEPTH), 1);
    float depth[2] = {0, 0};
    glReadPixels(8, 8, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth[0]);
    glReadPixels(16, 16, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth[1]);
    EXPECT_NEAR(depth[0], 0.5f, 1e-3f) << "the quad lies at z = 0";
    EXPECT_EQ(depth[1], 1.0f) << "nothing drawn between the quads";
}

} // namespace
} // namespace vel::test
