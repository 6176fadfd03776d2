// The viewport's frame at 1280x800 on the tests' surfaceless context: a scene of about a
// million triangles (three tools sharing one sphere of 327,680) through the whole pipeline
// of GLView::render, in the shaded style (4) and the PBR style (7). glFinish is inside the
// timing: a frame is done when its picture is.
#include "SphereScene.h"

#include "OpenGL/GLView.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <glad/gl.h>

namespace {

using namespace vel;

void BM_Frame1MTriangles(benchmark::State& state)
{
    int const style = int(state.range(0));
    bench::WithSphereScene(state, 7, style, [&](GLView& view, Mesh const& sphere) {
        for (auto _ : state) {
            view.render();
            glFinish();
        }
        state.counters["triangles"] = double(sphere.triangles) * 3;
        state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    });
    // The renderer's own name: the same program is timed on llvmpipe and on real GPUs.
    std::string renderer = reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    state.SetLabel(std::string(style == 4 ? "shaded, " : "pbr, ") + renderer + ", 1280x800");
}
BENCHMARK(BM_Frame1MTriangles)->Arg(4)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
