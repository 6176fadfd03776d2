// The scene of the viewport benchmarks: three tools sharing one sphere, side by side, in a
// GLView of 1280x800 on the tests' surfaceless context, with Rendering's resources open.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>

namespace vel {
class GLView;
class Mesh;

namespace bench {

// Makes the scene with a sphere of `subdivisions` steps and the view in composite `style`,
// renders a first frame (programs compiled, targets made, buffers uploaded), runs `body`, and
// releases everything. Without a context the benchmark is skipped and `body` does not run.
void WithSphereScene(benchmark::State& state, int subdivisions, int style,
                     std::function<void(GLView& view, Mesh const& sphere)> const& body);

} // namespace bench
} // namespace vel
