// Sculpt strokes on a 1M-vertex clay (a 1000 x 1000 grid seen from above), on the tests'
// surfaceless context:
// - whole frames of the viewport at 1280x800 during a Clay stroke, the pointer moving every
//   frame, with 1 sculptor and with 8 (mirrors in x, y and z);
// - one step of the stroke's entry alone at sample 10 and at sample 1000, with 1 and 8
//   sculptors: a step reads only its last samples, so the two must cost the same.
#include "Deformers/Sculptor.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/ViewportActions.h"
#include "OpenGL/ViewportInput.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/GLTestContext.h"
#include "Support/ViewportDriver.h"

#include <benchmark/benchmark.h>

#include <glad/gl.h>

#include <deque>
#include <memory>

namespace {

using namespace vel;

constexpr int W = 1280;
constexpr int H = 800;
constexpr int SIDE = 1000;

// The grid as a mesh, made once: it costs seconds.
Mesh const& GridMesh()
{
    static std::unique_ptr<Mesh> mesh =
        Mesh::Heightmap(std::vector<float>(std::size_t(SIDE) * SIDE, 0.0f), SIDE, SIDE);
    return *mesh;
}

struct Context {
    bool ok = false;
    unsigned vertexArray = 0;
    explicit Context(benchmark::State& state)
    {
        std::string error;
        if (!test::MakeGLContextCurrent(&error)) {
            state.SkipWithError(("no GL context: " + error).c_str());
            return;
        }
        InitResources();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        ok = true;
    }
    ~Context()
    {
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &vertexArray);
    }
};

void BM_SculptStrokeFrame(benchmark::State& state)
{
    Context context(state);
    if (!context.ok)
        return;
    Rendering::instance().openResources();
    Scene::instance().init(false);
    Tool* clay = new Tool(Shared<Element>(new Clay(&GridMesh())));
    clay->addToParent(Scene::instance().root);
    {
        auto view = std::make_unique<GLView>(W, H);
        view->viewAll();
        view->enterEvent();
        ActionMode = iActionMode = MODE_SCULPT;
        gSetSculptAction(27);
        SculptSymmetry& symmetry = view->input->sculpt.symmetry;
        for (bool& m : symmetry.mirror)
            m = state.range(0) == 8;
        auto frame = [&] { test::MainLoopFrame(*view); };
        test::PointMouse(W / 2 - 100, H / 2, false);
        frame();
        test::PointMouse(W / 2 - 100, H / 2, true);
        frame();
        int step = 0;
        for (auto _ : state) {
            // Back and forth over the middle, a few pixels a frame.
            float const x = float(W / 2 - 100 + (step % 50) * 4);
            ++step;
            test::PointMouse(x, float(H / 2), true);
            frame();
            glFinish();
        }
        state.counters["sculptors"] = double(view->input->sculpt.sculptors.size());
        test::PointMouse(W / 2, H / 2, false);
        frame();
        view.reset();
    }
    ActionMode = iActionMode = MODE_ASSEMBLE;
    Sculptor::gSculptAction = 81;
    Scene::instance().init(false);
    History::instance().clear();
    Rendering::instance().closeResources();
    mouse = Mouse();
}
BENCHMARK(BM_SculptStrokeFrame)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SculptStepAtSample(benchmark::State& state)
{
    Context context(state);
    if (!context.ok)
        return;
    static std::unique_ptr<Clay> clay = std::make_unique<Clay>(&GridMesh());
    if (!clay->buildGPUData()) {
        state.SkipWithError("the tables do not build");
        return;
    }
    int const sculptors = int(state.range(0));
    int const samples = int(state.range(1));
    Sculptor::gSculptAction = 27;
    std::deque<Sculptor*> list;
    for (int k = 0; k < sculptors; ++k) {
        auto* s = new Sculptor(27, 3, 0, 1, false, Vector3<float>(0, 0, 1));
        for (int i = 0; i < samples; ++i) {
            SBrush b;
            b.position = Vector3<float>(-0.4f + 0.1f * float(k) + 0.0005f * float(i % 100), 0.1f, 0.0f);
            b.normal = Vector3<float>(0, 0, 1);
            b.radius = 0.05f;
            b.x = i;
            s->add(b);
        }
        s->_begin();
        list.push_back(s);
    }
    // The first step copies the backup; the ones measured continue the stroke.
    clay->sculpt(list);
    for (Sculptor* s : list)
        s->_progress();
    for (auto _ : state) {
        clay->sculpt(list);
        glFinish();
    }
    clay->cancel_sculpt();
    for (Sculptor* s : list)
        delete s;
    Sculptor::gSculptAction = 81;
}
BENCHMARK(BM_SculptStepAtSample)
    ->Args({1, 10})
    ->Args({1, 1000})
    ->Args({8, 10})
    ->Args({8, 1000})
    ->Unit(benchmark::kMillisecond);

} // namespace
