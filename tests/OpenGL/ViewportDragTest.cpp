// The viewport's mouse handling over whole frames: a drag whose last move and release reach
// the same frame ends where the pointer was let go, for a move and for an orbit.
#include "GLResourceTest.h"

#include "OpenGL/GLView.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/ViewportActions.h"
#include "OpenGL/ViewportInput.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/ViewportDriver.h"

namespace vel::test {
namespace {

constexpr int W = 160;
constexpr int H = 120;

class ViewportDragTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        Rendering::instance().openResources();
        Scene::instance().init(false);
        box = new Tool(Shared<Element>(Mesh::Box().release()));
        box->addToParent(Scene::instance().root);
        view.reset(new GLView(W, H));
        view->viewAll();
        view->enterEvent();
        gSetAssembleAction(ACTION_MOVE, false);
        mouse = Mouse();
        Point(W / 2, H / 2, false);
        Frame();
    }
    void TearDown() override
    {
        view.reset();
        Scene::instance().init(false);
        History::instance().clear();
        mouse = Mouse();
        Rendering::instance().closeResources();
        GLResourceTest::TearDown();
    }
    static void Point(float x, float y, bool left) { PointMouse(x, y, left); }
    void Frame() { MainLoopFrame(*view); }
    // Press at (x, y), two frames held, one move of `dx` pixels, then the last move of `dx`
    // and the release in one frame.
    void Drag(float x, float y, float dx)
    {
        Point(x, y, false);
        Frame();
        Point(x, y, true);
        Frame();
        Point(x + dx, y, true);
        Frame();
        Point(x + 2 * dx, y, false);
        Frame();
        Point(x + 2 * dx, y, false);
        Frame();
    }
    std::unique_ptr<GLView> view;
    Tool* box = nullptr;
};

TEST_F(ViewportDragTest, AMoveEndsWhereThePointerWasLetGo)
{
    std::size_t const steps = History::instance().commands.size();
    Drag(W / 2, H / 2, 10);
    double const unit = view->input->pressUnit;
    ASSERT_GT(unit, 0.0);
    Matrix34<double> M;
    box->worldTransform(M, true);
    EXPECT_NEAR(M.translation().length(), 20 * unit, 0.02 * 20 * unit);
    EXPECT_EQ(History::instance().commands.size(), steps + 1);
}

TEST_F(ViewportDragTest, AnOrbitTurnsByTheWholeTravel)
{
    std::size_t const steps = History::instance().commands.size();
    Vector3<double> const before = view->camera.eye() - view->camera.position;
    Drag(4, 4, 20);
    Vector3<double> const after = view->camera.eye() - view->camera.position;
    double const turned = std::acos(std::clamp(before.normalize().dot(after.normalize()), -1.0, 1.0));
    EXPECT_NEAR(turned, 40 * ViewportInput::ROTATE_PER_PIXEL, 1e-6);
    EXPECT_EQ(History::instance().commands.size(), steps);
}

} // namespace
} // namespace vel::test
