// The viewport's input on the tests' surfaceless context, at 1280x800 with one box:
// - the pick read-back of one pixel after a frame: straight into memory, through the pixel
//   buffers waiting for the result, and through them taking what is already there;
// - a whole frame with the pointer off the view, over the box (pick and hover tint) and over
//   the background (pick alone);
// - the latency from a pointer move during a Move drag and during an orbit to the frame
//   that shows it: frames counted until the picture changes, and milliseconds.
#include "Core/Assert.h"
#include "OpenGL/GLLayer.h"
#include "OpenGL/GLPick.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/ViewportActions.h"
#include "OpenGL/ViewportInput.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/GLTestContext.h"
#include "Support/ViewportDriver.h"

#include <benchmark/benchmark.h>

#include <glad/gl.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace {

using namespace vel;

constexpr int W = 1280;
constexpr int H = 800;

// A context, the resources and a view of one box, for the length of a benchmark.
struct Stage {
    bool ok = false;
    unsigned vertexArray = 0;
    std::unique_ptr<GLView> view;
    Tool* box = nullptr;

    explicit Stage(benchmark::State& state)
    {
        std::string error;
        if (!test::MakeGLContextCurrent(&error)) {
            state.SkipWithError(("no GL context: " + error).c_str());
            return;
        }
        InitResources();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        Rendering::instance().openResources();
        Rendering::instance().style = 4;
        Scene::instance().init(false);
        box = new Tool(Shared<Element>(Mesh::Box().release()));
        box->addToParent(Scene::instance().root);
        view.reset(new GLView(W, H));
        view->viewAll();
        view->enterEvent();
        Point(W / 2, H / 2);
        Frame();
        ok = true;
    }
    ~Stage()
    {
        view.reset();
        Scene::instance().init(false);
        History::instance().clear();
        Rendering::instance().closeResources();
        mouse = Mouse();
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &vertexArray);
    }
    static void Point(float x, float y, bool left = false) { test::PointMouse(x, y, left); }
    void Frame() { test::MainLoopFrame(*view); }
    // One pixel of the picture, as RGBA8; rows from the bottom.
    unsigned Pixel(int x, int y)
    {
        VEL_ASSERT(view->enableRead());
        glReadBuffer(GLenum(view->current()->attachment));
        unsigned char p[4] = {};
        glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
        FBO::disable(fbRead);
        return unsigned(p[0]) | unsigned(p[1]) << 8 | unsigned(p[2]) << 16;
    }
};

void BM_PickReadBack(benchmark::State& state)
{
    Stage stage(state);
    if (!stage.ok)
        return;
    GLLayer* layer = stage.view->Layers.get();
    GLPick pick;
    int const mode = int(state.range(0));
    glFinish();
    for (auto _ : state) {
        TPickResult r;
        if (mode == 0) {
            r = layer->pick(W / 2, H / 2);
        } else {
            pick.request(layer, W / 2, H / 2);
            if (mode == 1)
                r = pick.wait();
            else
                pick.latest(r);
        }
        benchmark::DoNotOptimize(r);
    }
    pick.release();
    static char const* const labels[] = {"straight", "buffered, waiting", "buffered, newest finished"};
    state.SetLabel(labels[mode]);
}
BENCHMARK(BM_PickReadBack)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond)->UseRealTime();

// A whole frame with the pointer over the view (the pick and the hover) or off it.
void BM_FrameWithPick(benchmark::State& state)
{
    Stage stage(state);
    if (!stage.ok)
        return;
    int const where = int(state.range(0));
    if (where == 0)
        stage.view->leaveEvent();
    if (where == 2)
        Stage::Point(5, 5); // the background: a pick, nothing to tint
    for (auto _ : state) {
        stage.Frame();
        glFinish();
    }
    static char const* const labels[] = {"pointer off the view", "pointer over the box", "pointer over the background"};
    state.SetLabel(labels[where]);
}
BENCHMARK(BM_FrameWithPick)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// From a pointer move to the frame that shows it: the pointer goes back and forth by 20
// pixels while held; frames are counted until the probed pixel changes.
void BM_MouseToFrameLatency(benchmark::State& state)
{
    Stage stage(state);
    if (!stage.ok)
        return;
    bool const orbit = state.range(0) != 0;
    gSetAssembleAction(ACTION_MOVE, false);
    // A press on the box drags it; one on the background orbits.
    float const x0 = orbit ? 40.0f : W / 2, y0 = orbit ? 40.0f : H / 2;
    Stage::Point(x0, y0, true);
    stage.Frame();
    Stage::Point(x0, y0, true);
    stage.Frame();
    // The probe: for a drag, a pixel of background just right of the box, which a move of
    // 20 pixels covers; for an orbit, the middle of the box, whose shade turns with the view.
    int probeX = W / 2;
    int const probeY = H / 2;
    while (!orbit && probeX < W - 1 && stage.view->Layers->pick(probeX, probeY).hit)
        ++probeX;
    if (!orbit)
        probeX = std::min(W - 1, probeX + 5);
    double frames = 0, total = 0;
    int step = 0;
    for (auto _ : state) {
        unsigned const before = stage.Pixel(probeX, probeY);
        auto const start = std::chrono::steady_clock::now();
        float const dx = (++step % 2) ? 20.0f : -20.0f;
        Stage::Point(mouse.x + dx, mouse.y, true);
        int n = 0;
        unsigned after = before;
        while (after == before && n < 5) {
            stage.Frame();
            after = stage.Pixel(probeX, probeY);
            ++n;
            Stage::Point(mouse.x, mouse.y, true); // no further move
        }
        std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(took.count());
        frames += n;
        total += 1;
        if (after == before)
            state.SkipWithError("the picture did not change within five frames");
    }
    Stage::Point(mouse.x, mouse.y, false);
    stage.Frame();
    state.counters["frames"] = frames / std::max(total, 1.0);
    state.SetLabel(orbit ? "orbit" : "move drag");
}
BENCHMARK(BM_MouseToFrameLatency)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);

} // namespace
