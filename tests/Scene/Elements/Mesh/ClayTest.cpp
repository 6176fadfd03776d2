// Clay on the GPU, read back: each sculpt step against a CPU evaluation of its formula, the
// padding and falloff edges, smoothing's rules, normals against the mesh's own, strokes with
// undo and redo, painting, the file record, and the draw into the G-buffer.
#include "OpenGL/GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Command.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/ToolList.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>

namespace vel::test {
namespace {

using Vec = Vector3<float>;

// A 5 x 5 grid over [-0.5, 0.5]^2 with a bump in z, so that normals and z formulas matter:
// 25 vertices in a 6 x 5 table, the last 5 texels padding. Vertex 12 is the centre (0, 0, h).
std::unique_ptr<Clay> Grid()
{
    std::vector<float> heights(25);
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 5; ++i)
            heights[std::size_t(j * 5 + i)] = 0.0625f * float((i * 3 + j * 5) % 4);
    heights[12] = 0.0f;
    auto mesh = Mesh::Heightmap(heights, 5, 5);
    return std::make_unique<Clay>(mesh.get());
}

std::vector<Vec> Read(Clay& clay, int role)
{
    std::vector<Vec> texels(std::size_t(clay.sizeV().x * clay.sizeV().y));
    clay.get_positions(role, texels.data());
    return texels;
}

bool SameBits(std::vector<Vec> const& a, std::vector<Vec> const& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Vec)) == 0;
}

// The falloff of the passes: 1 up to `falloff`, 0 from 1 on.
float S(float r, float falloff)
{
    if (r >= 1.0f)
        return 0.0f;
    if (falloff >= 1.0f)
        return 1.0f;
    float t = std::min(std::max((r - 1.0f) / (falloff - 1.0f), 0.0f), 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// p in the frame's axes (its rows), as the passes read a frame.
Vec Local(Matrix3<float> const& frame, Vec const& p)
{
    return Vec(p.dot(frame.row(0)), p.dot(frame.row(1)), p.dot(frame.row(2)));
}

class ClayTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        History::instance().clear();
    }
    void TearDown() override
    {
        History::instance().clear();
        glBindVertexArray(0);
        GLResourceTest::TearDown();
    }
};

TEST_F(ClayTest, EveryClayProgramLinks)
{
    ShaderManager const& m = ShaderManager::instance();
    for (Shader* s : m.catalogue) {
        if (s->name.find("Clay") == std::string::npos)
            continue;
        std::unordered_map<int, std::string> errors;
        EXPECT_TRUE(s->compile(errors)) << s->name << " [" << s->fragmentDefines << "]\n"
                                        << errors[0] << errors[1] << errors[2];
    }
}

// ---- steps against their formulas ------------------------------------------------------

struct Step {
    char const* name;
    std::function<void(Clay&)> run;
    std::function<Vec(Vec const&)> expected; // the displacement of a vertex at p
};

Vec const C(0.0f, 0.0f, 0.0f);    // the centre: vertex 12
Vec const C2(0.25f, -0.25f, 0.1f); // a second, symmetric sculptor
float const R = 0.6f;

TEST_F(ClayTest, EachStepMovesEveryVertexByItsFormula)
{
    Vec const n = Vec(0.2f, 0.1f, 1.0f).normalize();
    Vec const axis = Vec(0.3f, 0.4f, 0.8f).normalize();
    Matrix3<float> const frame = Matrix3<float>::Frame_xZ(Vec(1, 0.2f, 0), Vec(0, 0, 1));
    float const a = 0.7f;
    Matrix3<float> const rot(std::cos(a), std::sin(a), 0, -std::sin(a), std::cos(a), 0, 0, 0, 1);
    std::vector<Step> const steps = {
        {"deform, two sculptors",
         [](Clay& c) { c.deform({C, C2}, {Vec(0.1f, 0, 0.2f), Vec(0, 0.05f, 0)}, R, 0.3f); },
         [](Vec const& p) {
             return Vec(0.1f, 0, 0.2f) * S((p - C).length() / R, 0.3f) + Vec(0, 0.05f, 0) * S((p - C2).length() / R, 0.3f);
         }},
        {"add", [&](Clay& c) { c.addsub({C}, {n}, R, 0.2f, 0.5f, 0.3f, true); },
         [&](Vec const& p) {
             Vec q = (p - C) * (1 / R);
             return n * (S(q.length(), 0.2f) * R * 0.5f * std::max(0.3f - q.dot(n), 0.0f));
         }},
        {"sub", [&](Clay& c) { c.addsub({C}, {n}, R, 0.2f, 0.5f, 0.3f, false); },
         [&](Vec const& p) {
             Vec q = (p - C) * (1 / R);
             return -n * (S(q.length(), 0.2f) * R * 0.5f * std::max(0.3f + q.dot(n), 0.0f));
         }},
        {"pinch", [](Clay& c) { c.pinch({C}, 0.4f, R); },
         [](Vec const& p) {
             Vec q = (p - C) * (1 / R);
             float r = 1 - std::min(q.length2(), 1.0f);
             return (p - C) * (-r * r * 0.4f);
         }},
        {"twist", [&](Clay& c) { c.twist({C}, {axis}, std::cos(0.5f), std::sin(0.5f), R); },
         [&](Vec const& p) {
             Vec d = p - C;
             float r = (d * (1 / R)).length2();
             if (r >= 1)
                 return Vec();
             Vec x = d - axis * d.dot(axis);
             return (x * (std::cos(0.5f) - 1) + axis.cross(x) * std::sin(0.5f)) * ((1 - r) * (1 - r));
         }},
        {"volume", [&](Clay& c) { c.deformVolume({C}, {frame}, 0.3f, R); },
         [&](Vec const& p) {
             Vec x = p - C;
             float i2 = 1 / (R * R), t2 = x.length2() * i2;
             if (t2 >= 1)
                 return Vec();
             float t = std::sqrt(t2), A = 1 - t2 * t * (4 - 3 * t), B = 12 * (t - t2) * i2;
             Vec tr = x.cross(frame.row(0)) * x.dot(frame.row(1)) - x.cross(frame.row(1)) * x.dot(frame.row(0));
             return (frame.row(2) * A + tr * B) * (0.3f * A);
         }},
        {"crease", [&](Clay& c) { c.crease({C}, {Vec(1, 0.2f, 0)}, {Vec(0, 0, 1)}, R, 0.2f, 0.5f, true); },
         [&](Vec const& p) {
             Vec q = (p - C) * (1 / R);
             Vec f = Local(frame, q);
             float across = std::pow(1 - std::fabs(f.y), 8.0f);
             return Vec(0, 0, 1) * (R * 0.5f * S(q.length(), 0.2f) * S(std::fabs(f.x), 0.0f) * across);
         }},
        {"add along a stroke", [&](Clay& c) { c.addsubdir({C}, {Vec(1, 0.2f, 0)}, {Vec(0, 0, 1)}, R, 0.2f, 0.5f, 0.4f, true); },
         [&](Vec const& p) {
             Vec q = Local(frame, p - C) * (1 / R);
             bool inside = std::fabs(q.x) <= 1 && std::fabs(q.y) <= 1;
             float d = std::max((inside ? 0.4f : 0.0f) - q.z, 0.0f);
             d *= S(std::fabs(q.x), 0.2f) * S(std::fabs(q.y), 0.7f) * (std::fabs(q.z) <= 0.4f ? 1.0f : 0.0f);
             return Vec(0, 0, 1) * (d * R * 0.5f);
         }},
        {"rotate", [&](Clay& c) { c.sculptrotate({C2}, {rot}); }, [&](Vec const& p) { return (p - C2) * rot - (p - C2); }},
        {"scale", [](Clay& c) { c.sculptscale({C2}, {1.5f}); }, [](Vec const& p) { return (p - C2) * 0.5f; }},
        {"scale along", [&](Clay& c) { c.sculptscaledir({C}, {axis}, {2.0f}); },
         [&](Vec const& p) { return axis * (p - C).dot(axis); }},
        {"skew", [](Clay& c) { c.sculptskew({C}, {Vec(0, 0, 1)}, {Vec(0.5f, 0, 0)}); },
         [](Vec const& p) { return Vec(0, 0, 0.5f * p.x); }},
        {"bend", [](Clay& c) { c.sculptbend({C}, {Vec(1, 0, 0)}, {Vec(0, 0, 1)}, 0.8f); },
         [](Vec const& p) {
             float x = p.x, r = p.z + 0.8f, an = x / 0.8f;
             return Vec(r * std::sin(an) - x, 0, r * std::cos(an) - r);
         }},
        {"taper", [](Clay& c) { c.sculpttaper({C}, {Vec(1, 0, 0)}, {Vec(0, 0.5f, 0)}); },
         [](Vec const& p) { return Vec(0, 0.5f, 0) * (p.x * 0.5f * p.y); }},
        {"swirl about z", [](Clay& c) { c.sculptswirl({C}, {2.0f}, 2); },
         [](Vec const& p) {
             float an = 2.0f * p.z, co = std::cos(an) - 1, si = std::sin(an);
             return Vec(co * p.x - si * p.y, si * p.x + co * p.y, 0);
         }},
        {"swirl about x", [](Clay& c) { c.sculptswirl({C}, {2.0f}, 0); },
         [](Vec const& p) {
             float an = 2.0f * p.x, co = std::cos(an) - 1, si = std::sin(an);
             return Vec(0, co * p.y - si * p.z, si * p.y + co * p.z);
         }},
        {"move, two sculptors", [](Clay& c) { c.sculptmove({Vec(0.1f, 0, 0), Vec(0, 0, -0.2f)}); },
         [](Vec const&) { return Vec(0.1f, 0, -0.2f); }},
    };
    for (Step const& step : steps) {
        SCOPED_TRACE(step.name);
        auto clay = Grid();
        ASSERT_TRUE(clay->buildGPUData());
        std::vector<Vec> before = Read(*clay, clay->positionRoles.current);
        step.run(*clay);
        clay->apply_deformations();
        std::vector<Vec> after = Read(*clay, clay->positionRoles.current);
        for (std::size_t v = 0; v < clay->verts.size(); ++v)
            EXPECT_LT((after[v] - before[v] - step.expected(before[v])).length(), 3e-5f) << "vertex " << v;
        for (std::size_t t = clay->verts.size(); t < after.size(); ++t)
            EXPECT_TRUE(after[t] == Vec()) << "padding texel " << t;
    }
}

TEST_F(ClayTest, VerticesOnTheRadiusMoveByExactlyZero)
{
    // Radius 0.25 about vertex 12 puts its four grid neighbours (7, 11, 13, 17, all at
    // height 0 or not) at r = 1 or beyond; those in the plane sit exactly on it.
    auto clay = Grid();
    for (std::size_t v : {7u, 11u, 13u, 17u})
        clay->verts[v].position.z = 0.0f;
    ASSERT_TRUE(clay->buildGPUData());
    std::vector<Vec> before = Read(*clay, 0);
    std::vector<std::function<void()>> const steps = {
        [&] { clay->deform({C}, {Vec(1, 1, 1)}, 0.25f, 0.0f); },
        [&] { clay->addsub({C}, {Vec(0, 0, 1)}, 0.25f, 0.0f, 1.0f, 1.0f, true); },
        [&] { clay->crease({C}, {Vec(1, 0, 0)}, {Vec(0, 0, 1)}, 0.25f, 0.0f, 1.0f, true); },
        [&] { clay->pinch({C}, 1.0f, 0.25f); },
        [&] { clay->twist({C}, {Vec(0, 0, 1)}, 0.0f, 1.0f, 0.25f); },
        [&] { clay->deformVolume({C}, {Matrix3<float>()}, 1.0f, 0.25f); },
        [&] { clay->smooth({C}, 1.0f, 0.25f); },
    };
    for (auto const& step : steps) {
        step();
        clay->apply_deformations();
    }
    std::vector<Vec> after = Read(*clay, 0);
    for (std::size_t v : {7u, 11u, 13u, 17u})
        EXPECT_EQ(std::memcmp(&before[v], &after[v], sizeof(Vec)), 0) << "vertex " << v;
    EXPECT_NE(std::memcmp(&before[12], &after[12], sizeof(Vec)), 0) << "the centre moves";
}

// ---- smoothing, selection and normals ------------------------------------------------------

TEST_F(ClayTest, SmoothingFollowsTheMeshRulesForAnchorsAndSharpVertices)
{
    // The test mesh has sharp lines, an anchor and a smooth roof; a cube has only anchors.
    for (auto make : {&Mesh::Test, +[] { return Mesh::Sphere(Mesh::Icosahedron(), 2); }}) {
        auto mesh = make();
        Clay clay(mesh.get());
        ASSERT_TRUE(clay.buildGPUData());
        Vec const center = clay.verts[0].position;
        float const radius = 4.0f;
        clay.smooth({center}, 0.5f, radius);
        clay.apply_deformations();
        std::vector<Vec> after = Read(clay, 0);
        int kept = 0;
        for (std::size_t v = 0; v < clay.verts.size(); ++v) {
            Vec p = clay.verts[v].position, target = clay.PointSculptSmooth(int(v));
            float w = 0.5f * std::pow(1 - ((p - center) * (1 / radius)).length2(), 2.0f);
            if (target == p) {
                EXPECT_TRUE(after[v] == p) << "vertex " << v << " stays";
                ++kept;
            }
            EXPECT_LT((after[v] - p - (target - p) * w).length(), 1e-5f) << "vertex " << v;
        }
        // The anchors and sharp corners of the test mesh stay.
        EXPECT_TRUE(make != &Mesh::Test || kept > 0);
    }
}

TEST_F(ClayTest, SelectionWeights)
{
    auto clay = Grid();
    ASSERT_TRUE(clay->buildGPUData());
    auto weights = [&] {
        std::vector<float> w(30);
        clay->vertsWeight->getUnstructuredData(w.data());
        return w;
    };
    clay->paintselect({C, C2}, R, 0.3f, 0.8f);
    std::vector<float> w = weights();
    for (std::size_t v = 0; v < 25; ++v) {
        Vec p = clay->verts[v].position;
        EXPECT_NEAR(w[v], 0.8f * (S((p - C).length() / R, 0.3f) + S((p - C2).length() / R, 0.3f)), 1e-5f);
    }
    clay->gradientselect({C}, {Vec(0.5f, 0, 0)}, 0.6f);
    w = weights();
    for (std::size_t v = 0; v < 25; ++v) {
        float t = std::min(std::max(clay->verts[v].position.x / 0.5f, 0.0f), 1.0f);
        EXPECT_NEAR(w[v], 0.6f * (1 - t), 1e-6f);
    }
    clay->fillselect({C}, 0.25f);
    w = weights();
    EXPECT_EQ(w[0], 0.25f);
    EXPECT_EQ(w[24], 0.25f);
}

TEST_F(ClayTest, GpuNormalsEqualTheMeshNormals)
{
    for (auto make : {+[] { return Mesh::Sphere(Mesh::Icosahedron(), 2); }, +[] { return Mesh::Box(1); },
                      &Mesh::Test}) {
        auto mesh = make();
        mesh->calculateNormals();
        Clay clay(mesh.get());
        ASSERT_TRUE(clay.buildGPUData());
        std::vector<float> normals(std::size_t(4 * clay.sizeE().x * clay.sizeE().y));
        clay.edgesNormal->getUnstructuredData(normals.data());
        for (std::size_t e = 0; e < clay.edges.size(); ++e) {
            Vec cpu = UnpackNormal(mesh->edges[e].normal);
            Vec gpu(normals[4 * e], normals[4 * e + 1], normals[4 * e + 2]);
            EXPECT_NEAR((cpu - gpu).length(), 0.0f, 0.01f) << "corner " << e;
        }
    }
}

// ---- strokes, undo, conversion -------------------------------------------------------------

// A stroke of `samples` (> 1) samples of action `action`, the last one ending it; sample i moves the
// grid's centre region by 0.05 in x from the previous sample, as a deform step does.
void Stroke(Clay& clay, int action, int samples)
{
    auto step = [&](int index, unsigned char) {
        float dx = clay.absoluteDeform ? 0.05f * float(index) : index > 0 ? 0.05f : 0.0f;
        clay.deform({C}, {Vec(dx, 0, 0)}, R, 0.3f);
    };
    for (int n = 1; n <= samples; ++n)
        clay.sculpt(action, n, n == 1 ? ClayStrokeState::Begin : n < samples ? ClayStrokeState::Progress : ClayStrokeState::End,
                    step);
}

// Undo and redo of a stroke swap bit for bit; the CPU records and the file record keep it.
TEST_F(ClayTest, UndoRedoAndFileRecordOfAStrokeAreBitExact)
{
    // 29 deforms step by step; 1 (move) deforms from the stroke's start.
    for (int action : {29, 1}) {
        SCOPED_TRACE(action);
        History::instance().clear();
        auto clay = Grid();
        ASSERT_TRUE(clay->buildGPUData());
        std::vector<Vec> first = Read(*clay, 0);
        Stroke(*clay, action, 5);
        ASSERT_EQ(History::instance().commands.size(), 1u);
        EXPECT_EQ(History::instance().commands[0]->name(), "Sculpt Clay");
        std::vector<Vec> stroked = Read(*clay, clay->positionRoles.current);
        EXPECT_FALSE(SameBits(first, stroked));
        // Sample 4 moved the centre by 0.2 from the start in both modes.
        EXPECT_NEAR(stroked[12].x, first[12].x + 0.2f, 1e-5f);
        History::instance().undo();
        EXPECT_TRUE(SameBits(first, Read(*clay, clay->positionRoles.current)));
        History::instance().redo();
        EXPECT_TRUE(SameBits(stroked, Read(*clay, clay->positionRoles.current)));
        History::instance().undo();
        EXPECT_TRUE(SameBits(first, Read(*clay, clay->positionRoles.current)));
        History::instance().redo();
        // The CPU records follow on demand, and the topology is untouched.
        clay->ClayToMesh();
        EXPECT_TRUE(clay->validate().empty());
        for (std::size_t v = 0; v < clay->verts.size(); ++v)
            EXPECT_TRUE(clay->verts[v].position == stroked[v]) << "vertex " << v;
        std::unique_ptr<Mesh> mesh(clay->ToMesh());
        EXPECT_TRUE(mesh->validate().empty());
        EXPECT_TRUE(mesh->verts[12].position == stroked[12]);

        clay->prepareSave();
        OFile out;
        std::unordered_map<Element*, int> ids;
        clay->DataWrite(out, ids);
        std::string bytes = out.bytes();
        IFile in(QByteArray(bytes.data(), int(bytes.size())));
        FILE_VERSION = FILE_VERSION_CURRENT;
        std::unique_ptr<Element> read(DataReadElement(in));
        auto* loaded = dynamic_cast<Clay*>(read.get());
        ASSERT_NE(loaded, nullptr);
        ASSERT_TRUE(loaded->buildGPUData());
        EXPECT_TRUE(SameBits(stroked, Read(*loaded, loaded->positionRoles.current)));
    }
}

TEST_F(ClayTest, PaintRaisesTheTypeAndUndoesInOneStep)
{
    auto clay = Grid();
    ASSERT_TRUE(clay->buildGPUData());
    ClayBrushMaterial red;
    red.colorAlpha = Vector4<float>(8191, 0, 0, 8191);
    auto step = [&](int, unsigned char) { clay->paintselect({C}, R, 0.3f, 1.0f); };
    for (ClayStrokeState state : {ClayStrokeState::Begin, ClayStrokeState::Progress, ClayStrokeState::End})
        clay->sculpt(41, int(state) + 1, state, step, red);
    ASSERT_EQ(History::instance().commands.size(), 1u);
    EXPECT_EQ(History::instance().commands[0]->name(), "Paint Clay");
    EXPECT_TRUE(clay->hasPbr());
    // The corners at the centre are red, those far away keep the default.
    ASSERT_EQ(clay->materials.size(), clay->edges.size());
    for (std::size_t e = 0; e < clay->edges.size(); ++e) {
        int v = clay->edges[e].v[1];
        if (v == 12) {
            EXPECT_EQ(clay->materials[e].color(1), 0) << "corner " << e;
        }
        if (v == 0) {
            EXPECT_TRUE(clay->materials[e] == Pbr()) << "corner " << e;
        }
    }
    History::instance().undo();
    EXPECT_FALSE(clay->hasPbr());
    std::vector<Pbr> words(std::size_t(clay->sizeE().x * clay->sizeE().y));
    clay->get_materials(clay->materialRoles.current, words.data());
    for (std::size_t e = 0; e < clay->edges.size(); ++e)
        EXPECT_TRUE(words[e] == Pbr()) << "corner " << e;
}

// ---- drawing -------------------------------------------------------------------------------

TEST_F(ClayTest, DrawsIdsAndNormalsLikeAMesh)
{
    // The grid fills the middle of a 16 x 16 target seen straight on: the same picture from
    // the clay and from its mesh, in the passes with and without materials.
    auto mesh = Grid();
    Shared<Element> asMesh(new Mesh(*mesh));
    Shared<Element> asClay(new Clay(mesh.get()));
    Shader::ProjectionModelViewMatrix = Matrix4<double>();
    Shader::NormalMatrix = Matrix3<double>();
    Shader::PMVSign = 1;
    gl_Depth_Test.set(true);
    ShaderManager const& m = ShaderManager::instance();
    for (Shader* s : {m.ShaderClayRenderPbr, m.ShaderClayRenderMeshPbr, m.ShaderClayRenderTex, m.ShaderClayRender,
                      m.ShaderClayRenderFast, m.ShaderClayRenderDepth})
        EXPECT_TRUE(s->compile(false)) << s->vertexDefines << " / " << s->fragmentDefines;
    int const formats[6][3] = {{GL_RGBA32I, GL_RGBA_INTEGER, GL_INT}, {GL_RGB32I, GL_RGB_INTEGER, GL_INT},
                               {GL_RGBA32F, GL_RGBA, GL_FLOAT},       {GL_RG16F, GL_RG, GL_HALF_FLOAT},
                               {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT},  {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT}};
    GLenum const buffers[6] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2,
                               GL_COLOR_ATTACHMENT3, GL_COLOR_ATTACHMENT4, GL_COLOR_ATTACHMENT5};
    auto read = [](int attachment, GLenum format, GLenum type, void* to) {
        glReadBuffer(GLenum(GL_COLOR_ATTACHMENT0 + attachment));
        glReadPixels(0, 0, 16, 16, format, type, to);
    };
    for (int style : {Rendering::STYLE_PBR, 4}) {
        SCOPED_TRACE(style);
        int targets = Rendering::hasMaterials(style) ? 6 : 3;
        std::vector<int> pictures[2];   // ids (element and tool ids cleared), then component, patch, face
        std::vector<float> normals[2];
        for (int k = 0; k < 2; ++k) {
            Shared<Element> const& e = k == 0 ? asMesh : asClay;
            FBO target(dsDepth, 16, 16);
            for (int i = 0; i < targets; ++i)
                target.addColor(formats[i][0], formats[i][1], formats[i][2], GL_CLAMP_TO_EDGE, GL_NEAREST);
            ASSERT_TRUE(target.enable());
            glDrawBuffers(targets, buffers);
            glViewport(0, 0, 16, 16);
            int const zero[4] = {0, 0, 0, 0};
            glClearBufferiv(GL_COLOR, 0, zero);
            glClearBufferiv(GL_COLOR, 1, zero);
            glClear(GL_DEPTH_BUFFER_BIT);
            Tool tool(e);
            Rendering::instance().style = style;
            ToolList list;
            list.append(&tool, false);
            tool.prepareRender(e.get());
            list.sort(true, true, true);
            int counter = 0;
            list.render(Rendering::instance().renderState(targets == 6 ? 0 : 6), false, counter);
            EXPECT_EQ(counter, 1);
            std::vector<int>& picture = pictures[k];
            picture.resize(16 * 16 * 8);
            std::vector<int> ids(16 * 16 * 4);
            normals[k].resize(16 * 16 * 4);
            read(0, GL_RGBA_INTEGER, GL_INT, picture.data());
            read(1, GL_RGBA_INTEGER, GL_INT, ids.data());
            read(2, GL_RGBA, GL_FLOAT, normals[k].data());
            // Element and tool ids are each draw's own; the rest must agree.
            EXPECT_EQ(picture[(16 * 8 + 8) * 4 + 2], e->id);
            EXPECT_EQ(picture[(16 * 8 + 8) * 4 + 3], tool.id);
            for (std::size_t i = 0; i < 16 * 16; ++i) {
                picture[i * 4 + 2] = picture[i * 4 + 3] = ids[i * 4 + 3] = 0;
                std::copy_n(&ids[i * 4], 4, &picture[16 * 16 * 4 + i * 4]);
            }
            FBO::disable(fbBoth);
        }
        EXPECT_EQ(pictures[0], pictures[1]);
        // The mesh's normals are packed in 10 bits, the clay's are half floats.
        for (std::size_t i = 0; i < normals[0].size(); ++i)
            EXPECT_NEAR(normals[0][i], normals[1][i], 0.01f) << "channel " << i;
        EXPECT_NE(pictures[1][16 * 8 * 4 + 8 * 4], 0) << "the centre pixel shows the object";
    }
    Rendering::instance().style = Rendering::STYLE_PBR;
}

} // namespace
} // namespace vel::test
