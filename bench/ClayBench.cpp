// Clay on a 1M-vertex grid: one sculpt step (clear, one draw per symmetric sculptor, apply) at
// 1, 2 and 8 sculptors, against one plain full-screen pass over a table of the same size that
// reads and writes 32 bytes a texel; building the tables, and the undo difference. Runs on
// the surfaceless EGL context of the tests (llvmpipe by default, a GPU where the driver has one).
#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using Vec = vel::Vector3<float>;

int const SIDE = 1000; // vertices a side: 1M vertices

// The context, a bound vertex array and the grid as clay (made once: the grid costs seconds).
struct Bench {
    unsigned vertexArray = 0;

    bool open(benchmark::State& state)
    {
        std::string error;
        if (!vel::test::MakeGLContextCurrent(&error)) {
            state.SkipWithError(("no GL context: " + error).c_str());
            return false;
        }
        vel::InitResources();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        return true;
    }
    ~Bench() { glDeleteVertexArrays(1, &vertexArray); }

    static vel::Clay& Grid()
    {
        static std::unique_ptr<vel::Clay> clay = [] {
            auto mesh = vel::Mesh::Heightmap(std::vector<float>(std::size_t(SIDE) * SIDE, 0.0f), SIDE, SIDE);
            return std::make_unique<vel::Clay>(mesh.get());
        }();
        return *clay;
    }

    // The grid with its tables built; null (the run skipped) when either fails.
    vel::Clay* openGrid(benchmark::State& state)
    {
        if (!open(state))
            return nullptr;
        if (!Grid().buildGPUData()) {
            state.SkipWithError("the tables do not build");
            return nullptr;
        }
        return &Grid();
    }
};

void BM_ClaySculptStep(benchmark::State& state)
{
    Bench bench;
    vel::Clay* grid = bench.openGrid(state);
    if (!grid)
        return;
    vel::Clay& clay = *grid;
    std::vector<Vec> centers, displacements;
    for (int i = 0; i < state.range(0); ++i) {
        centers.emplace_back(-0.4f + 0.1f * float(i), 0.1f, 0.0f);
        displacements.emplace_back(0.0f, 0.0f, 0.001f);
    }
    for (auto _ : state) {
        clay.deform(centers, displacements, 0.2f, 0.5f);
        clay.apply_deformations();
        glFinish();
    }
    state.counters["vertices"] = double(clay.verts.size());
    state.counters["GPU bytes/vertex"] = double(clay.gpuTableBytes()) / double(clay.verts.size());
}
BENCHMARK(BM_ClaySculptStep)->Arg(1)->Arg(2)->Arg(8)->Unit(benchmark::kMillisecond);

// The yardstick: one full-screen pass over the vertex table's size reading two RGBA32F
// pictures and writing two (32 bytes a texel each way).
void BM_PlainPass32Bytes(benchmark::State& state)
{
    Bench bench;
    if (!bench.open(state))
        return;
    vel::Vector2<int> size = vel::Texture2D::LinearSize_2DEven(SIDE * SIDE);
    vel::FBO fbo(vel::dsNone, size.x, size.y);
    for (int i = 0; i < 4; ++i)
        fbo.addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    vel::Shared<vel::Shader> shader = vel::ShaderManager::instance().FromText(R"(
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D A;
uniform sampler2D B;
layout(location = 0) out vec4 oA;
layout(location = 1) out vec4 oB;
void main()
{
    ivec2 t = ivec2(gl_FragCoord.xy);
    oA = texelFetch(A, t, 0) + texelFetch(B, t, 0);
    oB = texelFetch(B, t, 0) * 0.5;
}
)");
    if (!fbo.enable()) {
        state.SkipWithError("the targets do not build");
        return;
    }
    GLenum const buffers[2] = {GL_COLOR_ATTACHMENT2, GL_COLOR_ATTACHMENT3};
    glDrawBuffers(2, buffers);
    glViewport(0, 0, size.x, size.y);
    for (auto _ : state) {
        vel::GLMachine m{shader.get(), fbo.color(0), fbo.color(1)};
        if (!m.enable()) {
            state.SkipWithError("the pass does not compile");
            return;
        }
        vel::Shader::setUniform("A", fbo.color(0)->unit);
        vel::Shader::setUniform("B", fbo.color(1)->unit);
        vel::GLFill();
        m.disable();
        glFinish();
    }
    vel::FBO::disable(vel::fbBoth);
}
BENCHMARK(BM_PlainPass32Bytes)->Unit(benchmark::kMillisecond);

void BM_ClayBuildGPUData(benchmark::State& state)
{
    Bench bench;
    if (!bench.open(state))
        return;
    vel::Clay& clay = Bench::Grid();
    for (auto _ : state) {
        clay.deleteGPUData();
        if (!clay.buildGPUData())
            state.SkipWithError("the tables do not build");
        glFinish();
    }
}
BENCHMARK(BM_ClayBuildGPUData)->Unit(benchmark::kMillisecond);

// The undo difference of a stroke that moved a disc of the grid (two read-backs and the compare).
void BM_ClayDiffPositions(benchmark::State& state)
{
    Bench bench;
    vel::Clay* grid = bench.openGrid(state);
    if (!grid)
        return;
    vel::Clay& clay = *grid;
    clay.copy_positions(clay.positionRoles.current, clay.positionRoles.backup);
    clay.deform({Vec(0.0f, 0.0f, 0.0f)}, {Vec(0.0f, 0.0f, 0.01f)}, 0.2f, 0.5f);
    clay.apply_deformations();
    std::size_t changed = 0;
    for (auto _ : state)
        changed = clay.diff_positions().size();
    state.counters["changed"] = double(changed);
}
BENCHMARK(BM_ClayDiffPositions)->Unit(benchmark::kMillisecond);

} // namespace
