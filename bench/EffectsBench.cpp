// The screen effects at 1280x800 on the tests' surfaceless context (llvmpipe by default, a GPU
// where the driver offers one): each effect alone on a composited PBR frame of three spheres,
// and the whole chain with every effect on. glFinish is inside the timing. The CPU column is the
// whole process's, rasteriser threads included: on a busy machine it is the steadier figure.
#include "SphereScene.h"

#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/Tool.h"

#include <glad/gl.h>

#include <functional>
#include <iterator>

namespace {

using namespace vel;

struct Effect {
    char const* name;
    void (GLView::*pass)();
};
// In the frame's order, the contours first (they run before the others).
Effect const EFFECTS[] = {
    {"contour", &GLView::contour},
    {"edge detection", &GLView::edgeDetection},
    {"SSAO", &GLView::SSAO},
    {"SSSS", &GLView::SSSS},
    {"fog", &GLView::fog},
    {"SSR", &GLView::SSR},
    {"bloom", &GLView::bloom},
    {"tonemap", &GLView::tonemap},
    {"chromatic aberration", &GLView::chromaticAberration},
    {"depth of field", &GLView::depthOfField},
};

// Every effect on, at settings that do some work; or all off again.
void SetAllEffects(Rendering& r, bool on)
{
    r.EdgeDetect = r.ScreenSpaceAmbientOcclusion = r.ssss = r.fog = r.ScreenSpaceReflection = on;
    r.LensChromaticAberration = on;
    r.bloom = on ? 0.5f : 0.0f;
    r.tonemap = on ? 3 : 0;
    r.dofSize = on ? 2.0f : 0.0f;
}

// A view of three spheres in the PBR style with every effect on, its first frame rendered;
// `body` on it; then every effect off again.
void WithView(benchmark::State& state, std::function<void(GLView&)> const& body)
{
    SetAllEffects(Rendering::instance(), true);
    bench::WithSphereScene(state, 4, Rendering::STYLE_PBR, [&](GLView& view, Mesh const&) {
        view.renderOnly = true;
        body(view);
    });
    SetAllEffects(Rendering::instance(), false);
}

void BM_Effect(benchmark::State& state)
{
    Effect const& effect = EFFECTS[state.range(0)];
    WithView(state, [&](GLView& view) {
        (view.*effect.pass)(); // a program the first frame did not need (contours) compiles here
        glFinish();
        for (auto _ : state) {
            (view.*effect.pass)();
            glFinish();
        }
    });
    state.SetLabel(std::string(effect.name) + ", 1280x800");
}
BENCHMARK(BM_Effect)
    ->DenseRange(0, int(std::size(EFFECTS)) - 1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

// The contour pass where it runs in a frame: around the middle sphere, marked for contours,
// at the default width 1 and at the widest, 4.
void BM_ContourMarked(benchmark::State& state)
{
    Rendering& r = Rendering::instance();
    float const width = r.contours;
    r.contours = float(state.range(0));
    WithView(state, [&](GLView& view) {
        Tool* middle = Scene::instance().root->children[1];
        middle->material.flags |= 0x2000;
        view.render();
        view.contour();
        glFinish();
        for (auto _ : state) {
            view.contour();
            glFinish();
        }
        middle->material.flags &= ~0x2000;
    });
    r.contours = width;
    state.SetLabel("contour of one sphere, 1280x800");
}
BENCHMARK(BM_ContourMarked)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->UseRealTime();

// The chain of step 18 with every effect on, and the contours before it.
void BM_EffectChain(benchmark::State& state)
{
    WithView(state, [&](GLView& view) {
        for (auto _ : state) {
            for (Effect const& effect : EFFECTS)
                (view.*effect.pass)();
            glFinish();
        }
    });
    state.SetLabel("every effect, 1280x800");
}
BENCHMARK(BM_EffectChain)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace
