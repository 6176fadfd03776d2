// The filter family and the environment on the GL thread: a sum of five pictures, a blur round
// and a min-max reduction at the frame's size, and the one-time filtering of the default
// environment's levels. Runs on the surfaceless EGL context of the tests (llvmpipe by default).
#include "OpenGL/Environment.h"
#include "OpenGL/FBO.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

int const W = 1280, H = 800;

// The context, a bound vertex array and a framebuffer of `targets` float pictures of W x H
// (none for 0).
struct Frame {
    unsigned vertexArray = 0;
    std::unique_ptr<vel::FBO> fbo;

    bool open(benchmark::State& state, int targets)
    {
        std::string error;
        if (!vel::test::MakeGLContextCurrent(&error)) {
            state.SkipWithError(("no GL context: " + error).c_str());
            return false;
        }
        vel::InitResources();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glViewport(0, 0, W, H);
        if (targets == 0)
            return true;
        fbo.reset(new vel::FBO(vel::dsNone, W, H));
        for (int i = 0; i < targets; ++i)
            fbo->addColor(GL_RGBA16F, GL_RGBA, GL_FLOAT);
        return fbo->enable();
    }
    ~Frame()
    {
        fbo.reset();
        vel::FBO::disable(vel::fbBoth);
        glDeleteVertexArrays(1, &vertexArray);
    }
};

void BM_AddFive(benchmark::State& state)
{
    Frame frame;
    if (!frame.open(state, 6))
        return;
    std::vector<vel::Texture2D*> sources;
    for (int i = 1; i < 6; ++i)
        sources.push_back(frame.fbo->color(i));
    for (auto _ : state) {
        vel::GLAdd(sources, frame.fbo->color(0), false);
        glFinish();
    }
}
BENCHMARK(BM_AddFive)->Unit(benchmark::kMillisecond);

void BM_BlurRound(benchmark::State& state)
{
    Frame frame;
    if (!frame.open(state, 2))
        return;
    for (auto _ : state) {
        vel::GLBlur(frame.fbo->color(0), frame.fbo->color(1), 1, false);
        glFinish();
    }
}
BENCHMARK(BM_BlurRound)->Unit(benchmark::kMillisecond);

void BM_MinMaxWithAKeptChain(benchmark::State& state)
{
    Frame frame;
    if (!frame.open(state, 1))
        return;
    std::deque<vel::Shared<vel::FBOTexture>> owned = vel::MinMaxChain(W, H);
    std::deque<vel::FBOTexture*> chain;
    for (auto const& target : owned)
        chain.push_back(target.get());
    for (auto _ : state)
        benchmark::DoNotOptimize(vel::GLMinMax(frame.fbo->color(0), chain));
    state.counters["rounds"] = double(chain.size());
}
BENCHMARK(BM_MinMaxWithAKeptChain)->Unit(benchmark::kMillisecond);

// The default environment from its file to its filtered levels: the cost at start-up.
void BM_DefaultEnvironment(benchmark::State& state)
{
    Frame frame;
    if (!frame.open(state, 0))
        return;
    for (auto _ : state) {
        vel::Environment cube(vel::Rendering::DEFAULT_ENVIRONMENT, 256, 6);
        if (!cube.compile())
            state.SkipWithError("the default environment does not compile");
        glFinish();
    }
}
BENCHMARK(BM_DefaultEnvironment)->Unit(benchmark::kMillisecond);

} // namespace
