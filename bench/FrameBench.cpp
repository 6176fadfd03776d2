// The viewport's frame at 1280x800 on the tests' surfaceless context: a scene of about a
// million triangles (three tools sharing one sphere of 327,680) through the whole pipeline
// of GLView::render, in the shaded style (4) and the PBR style (7). glFinish is inside the
// timing: a frame is done when its picture is.
#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/ShaderManager.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <glad/gl.h>

#include <memory>

namespace {

using namespace vel;

void BM_Frame1MTriangles(benchmark::State& state)
{
    std::string error;
    if (!test::MakeGLContextCurrent(&error)) {
        state.SkipWithError(("no GL context: " + error).c_str());
        return;
    }
    InitResources();
    unsigned vertexArray = 0;
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    Rendering& r = Rendering::instance();
    r.openResources();
    r.style = int(state.range(0));
    Scene& scene = Scene::instance();
    scene.init(false);
    Mesh* mesh = Mesh::Sphere(Mesh::Icosahedron(), 7).release();
    Shared<Element> sphere(mesh);
    for (int i = 0; i < 3; ++i)
        (new Tool(sphere, Matrix34<double>::Translation({2.2 * (i - 1), 0.0, 0.0})))->addToParent(scene.root);
    {
        GLView view(1280, 800);
        view.viewAll();
        view.render(); // programs compiled, buffers uploaded outside the timing
        glFinish();
        for (auto _ : state) {
            view.render();
            glFinish();
        }
        state.counters["triangles"] = double(mesh->triangles) * 3;
        state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    }
    // The renderer's own name: the same program is timed on llvmpipe and on real GPUs.
    std::string renderer = reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    state.SetLabel(std::string(r.style == 4 ? "shaded, " : "pbr, ") + renderer + ", 1280x800");
    scene.init(false);
    History::instance().clear();
    sphere->deleteGPUData();
    r.closeResources();
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
}
BENCHMARK(BM_Frame1MTriangles)->Arg(4)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
