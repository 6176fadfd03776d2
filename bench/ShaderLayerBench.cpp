// User GLSL on the tests' surfaceless context (llvmpipe): the cost of one shader layer that
// only copies the picture, run over a 1280x800 frame (goal: one full-screen pass, below 1 ms),
// beside the built-in copy pass, and the compile and link of a generated object-shader
// program (Mesa defers machine code to the first draw: this is front end and link).
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLView.h"
#include "OpenGL/ObjectShader.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/ShaderLayer.h"
#include "Scene/Elements/TRenderState.h"
#include "Scene/Scene.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <glad/gl.h>

namespace {

using namespace vel;

// The GL context with the resources and a bound vertex array; false (and the benchmark
// skipped) without one.
bool Context(benchmark::State& state, unsigned& vertexArray)
{
    std::string error;
    if (!test::MakeGLContextCurrent(&error)) {
        state.SkipWithError(("no GL context: " + error).c_str());
        return false;
    }
    InitResources();
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    return true;
}

void BM_EmptyShaderLayer(benchmark::State& state)
{
    unsigned vertexArray = 0;
    if (!Context(state, vertexArray))
        return;
    Rendering& r = Rendering::instance();
    r.openResources();
    Scene::instance().init(false);
    {
        GLView view(1280, 800);
        r.addShaderLayer(ShaderLayer::RunFinal, Shared<ShaderLayer>(new ShaderLayer(
                                                    "void main() { oColor = texelFetch(iImage, ivec2(gl_FragCoord.xy), 0); }")));
        view.render(); // compiles the layer outside the timing
        ShaderLayerUniforms const uniforms = ShaderLayerUniforms::Frame(0.0, 1, view.height);
        glFinish();
        // Arg 1: the layer; arg 0: the built-in copy over the same targets, the floor of any
        // full-screen pass here.
        for (auto _ : state) {
            if (state.range(0)) {
                ShaderLayer::RenderPostCompositShaderLayers(view, uniforms, ShaderLayer::RunFinal);
            } else {
                view.beginPass();
                GLCopy(view.current());
                view.endPass();
            }
            glFinish();
        }
        r.ShaderLayers[ShaderLayer::RunFinal].clear();
    }
    r.closeResources();
    state.SetLabel(state.range(0) ? "one pass-through layer, llvmpipe 1280x800" : "built-in copy pass, llvmpipe 1280x800");
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
}
BENCHMARK(BM_EmptyShaderLayer)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ObjectShaderCompile(benchmark::State& state)
{
    unsigned vertexArray = 0;
    if (!Context(state, vertexArray))
        return;
    ObjectShader shader;
    shader.setCode("VertexMainWorldCode", "wPosition.y += 0.1 * sin(iTime + wPosition.x);\n");
    shader.setCode("FragmentMainCode", "oColorAlpha.rgb *= 0.5 + 0.5 * wNormal;\n");
    ShaderCodeKey key;
    key.kind = 0;
    key.style = Rendering::STYLE_PBR;
    for (auto _ : state) {
        if (!shader.compile(key))
            state.SkipWithError("the generated program does not compile");
        glFinish();
    }
    state.SetLabel("generated G-buffer program with materials, llvmpipe");
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
}
BENCHMARK(BM_ObjectShaderCompile)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
