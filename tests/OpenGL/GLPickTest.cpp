// Picking by reading back the G-buffer: the ids, depth and normal under a pixel of a real
// frame, the same through the pixel buffers as straight, a miss on the background and on a
// hint, the scene hit under the pointer, and the selection tint from the id's selected bit.
#include "FrameTestSupport.h"
#include "GLResourceTest.h"

#include "OpenGL/GLLayer.h"
#include "OpenGL/GLPick.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/ViewportInput.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/ViewportDriver.h"

#include <cstring>

namespace vel::test {
namespace {

constexpr int W = 64;
constexpr int H = 48;

TEST(GLPickDecode, StencilFirstThenTheObjectWord)
{
    struct Row {
        unsigned char stencil;
        int id;
        bool hit;
        float depth;
    };
    for (Row r : {Row{0, 7, false, 1.0f}, Row{1, 0, false, 0.25f}, Row{1, 7, true, 0.25f}}) {
        unsigned char bytes[GLPick::BYTES] = {};
        float const depth = 0.25f;
        int const ids[4] = {r.id, 2, 3, 4};
        bytes[0] = r.stencil;
        std::memcpy(bytes + 4, &depth, 4);
        std::memcpy(bytes + 8, ids, sizeof ids);
        TPickResult const p = GLPick::Decode(bytes);
        EXPECT_EQ(p.hit, r.hit) << int(r.stencil) << " " << r.id;
        EXPECT_EQ(p.depth, r.depth);
        EXPECT_EQ(p.entry(), r.hit ? r.id - 1 : -1);
    }
}

class GLPickTest : public GLResourceTest {
protected:
    Tool* box = nullptr;
    std::unique_ptr<GLView> view;
    int style = 0;

    void SetUp() override
    {
        GLResourceTest::SetUp();
        style = Rendering::instance().style;
        Rendering::instance().style = 4;
        Scene::instance().init(false);
        view.reset(new GLView(W, H));
        box = new Tool(Shared<Element>(Mesh::Box().release()));
        box->addToParent(Scene::instance().root);
        view->viewAll();
        view->enterEvent();
        mouse = Mouse();
    }
    void TearDown() override
    {
        view.reset();
        Scene::instance().init(false);
        Rendering::instance().style = style;
        mouse = Mouse();
        GLResourceTest::TearDown();
    }
    std::vector<float> Frame()
    {
        MainLoopFrame(*view);
        return Pixels(view->current());
    }
};

TEST_F(GLPickTest, TheMiddleIsTheBoxAndTheCornerIsNothingStraightOrUnderThePointer)
{
    Frame();
    GLLayer* layer = view->Layers.get();
    TPickResult const middle = layer->pick(W / 2, H / 2);
    ASSERT_TRUE(middle.hit);
    EXPECT_EQ(middle.entry(), 0);
    EXPECT_EQ(middle.spare, box->id);
    EXPECT_GT(middle.depth, 0.0f);
    EXPECT_LT(middle.depth, 1.0f);
    EXPECT_GT(middle.viewNormal.z, 0.0f) << "a face seen from the front";
    TPickResult const corner = layer->pick(0, 0);
    EXPECT_FALSE(corner.hit);
    EXPECT_EQ(corner.depth, 1.0f);

    // The same through the pixel buffers; coordinates past the edge clamp to it.
    GLPick pick;
    pick.request(layer, W / 2, H / 2);
    TPickResult const waited = pick.wait();
    EXPECT_EQ(waited.objectId, middle.objectId);
    EXPECT_EQ(waited.depth, middle.depth);
    TPickResult latest;
    EXPECT_TRUE(pick.latest(latest));
    EXPECT_EQ(latest.objectId, middle.objectId);
    pick.request(layer, -5, H + 10);
    EXPECT_FALSE(pick.wait().hit);
    pick.release();

    // The pointer finds the tool and the point on its surface.
    ViewportInput& in = *view->input;
    mouse.x = W / 2 + 0.5f;
    mouse.y = H / 2 + 0.5f;
    ABrush const b = in.selection(ABrush::OBJECT, true);
    ASSERT_TRUE(b.hit());
    EXPECT_EQ(b.tool, box);
    // The world point lies on the box's front face: the box is the unit cube about the origin
    // (or so), and the point is between the eye and the centre.
    double const toCentre = (view->camera.eye() - view->camera.position).length();
    double const toPoint = (view->camera.eye() - b.world).length();
    EXPECT_LT(toPoint, toCentre);
    EXPECT_GT(b.normal.dot(view->camera.eye() - b.world), 0.0);
    mouse.x = 0.5f;
    mouse.y = 0.5f;
    EXPECT_FALSE(in.selection(ABrush::OBJECT, true).hit());
    // A tool that leaves the scene leaves no pointer in the snapshots.
    in.current = b;
    view->hovered = box;
    box->remove();
    EXPECT_EQ(in.current.tool, nullptr);
    EXPECT_EQ(view->hovered, nullptr);
    History::instance().clear();
}

TEST_F(GLPickTest, ASelectedToolIsTintedByItsIdAlone)
{
    mouse.x = mouse.y = -100; // no hover
    std::vector<float> const plain = Frame();
    box->select(false, false);
    std::vector<float> const selected = Frame();
    TPickResult const p = view->Layers->pick(W / 2, H / 2);
    EXPECT_NE(p.objectId & int(0x80000000u), 0);
    Vector4<float> const a = At(plain, W, W / 2, H / 2), b = At(selected, W, W / 2, H / 2);
    EXPECT_GT(std::abs(a.x - b.x) + std::abs(a.y - b.y) + std::abs(a.z - b.z), 0.1f);
    Vector4<float> const c0 = At(plain, W, 0, 0), c1 = At(selected, W, 0, 0);
    EXPECT_EQ(c0.x, c1.x) << "the background is no part of the selection";
}

} // namespace
} // namespace vel::test
