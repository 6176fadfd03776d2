// Shader compilation on the GL thread: the whole built-in catalogue, as the first frames
// after start-up compile it; a user shader that includes every shipped header; and the
// uniform writes of a steady frame, which go through the cache without asking GL.
//
// Runs on the surfaceless EGL context of the tests (Mesa's llvmpipe by default). Mesa's
// shader cache is switched off so that every iteration really compiles.
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {

bool Context(benchmark::State& state)
{
    setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
    setenv("MESA_GLSL_CACHE_DISABLE", "true", 1);
    std::string error;
    if (!vel::test::MakeGLContextCurrent(&error)) {
        state.SkipWithError(("no GL context: " + error).c_str());
        return false;
    }
    vel::InitResources();
    return true;
}

// Fresh programs from `sources`, each described anew so that nothing is shared or cached.
void CompileAll(benchmark::State& state, std::vector<vel::Shader*> const& sources)
{
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::unique_ptr<vel::Shader>> fresh;
        for (vel::Shader* s : sources)
            fresh.emplace_back(new vel::Shader(s->text, s->vertexDefines, s->fragmentDefines, s->name));
        state.ResumeTiming();
        for (auto const& s : fresh)
            if (!s->compile(false))
                state.SkipWithError(("does not compile: " + s->name).c_str());
        glFinish();
        state.PauseTiming();
        fresh.clear();
        state.ResumeTiming();
    }
    state.counters["programs"] = double(sources.size());
}

void BM_CompileBuiltInCatalogue(benchmark::State& state)
{
    if (!Context(state))
        return;
    CompileAll(state, vel::ShaderManager::instance().catalogue);
}
BENCHMARK(BM_CompileBuiltInCatalogue)->Unit(benchmark::kMillisecond);

void BM_CompileShaderIncludingEveryHeader(benchmark::State& state)
{
    if (!Context(state))
        return;
    std::string includes;
    for (std::string const& path : vel::ShaderIncludeManager::IncludeFiles())
        includes += "#include \"" + path + "\"\n";
    vel::Shader all("##VERTEX\n" + includes +
                    "void main() { gl_Position = vec4(fSphere(vec3(float(gl_VertexID)), 1.0)); }\n"
                    "##FRAGMENT\n" + includes +
                    "out vec4 c;\nvoid main() { c = vec4(linearToSRGB(vec3(hash11(gl_FragCoord.x))), 1.0); }\n");
    CompileAll(state, {&all});
}
BENCHMARK(BM_CompileShaderIncludingEveryHeader)->Unit(benchmark::kMillisecond);

void BM_SteadyFrameUniformWrites(benchmark::State& state)
{
    if (!Context(state))
        return;
    vel::Shader* copy = vel::ShaderManager::instance().ShaderCopy;
    if (!copy->enable()) {
        state.SkipWithError("Copy does not compile");
        return;
    }
    vel::Shader::setUniform("Image", 0);
    vel::Shader::setUniform("Unused", 1.0f);
    copy->disable(); // the locations are learned
    for (auto _ : state) {
        vel::Shader::setUniform("Image", 0);
        vel::Shader::setUniform("Unused", 1.0f);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_SteadyFrameUniformWrites);

} // namespace
