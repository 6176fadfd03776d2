// Arrays and snakes: the frame's listing of a 10,000-instance array (no GL: the walk, the
// frames from the curve and the list's growth), and the rebuild of the bones of a
// 10,000-vertex axis on the processor.
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/ToolList.h"
#include "Scene/Tools/Array/Array.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

namespace {

using namespace vel;

Curve* Spiral(int points)
{
    std::vector<Vector3<float>> p;
    for (int i = 0; i < points; ++i) {
        double a = 0.01 * i;
        p.push_back({float(std::cos(a)), float(std::sin(a)), float(0.001 * i)});
    }
    return new Curve(p, false, false, 0);
}

void BM_ListArray10000Instances(benchmark::State& state)
{
    History::Pause pause;
    Tool parent;
    auto* array = new Array(Shared<Element>(Spiral(10001)), int(state.range(0)));
    parent.addChild(array);
    array->setItem(new Tool(Shared<Element>(Spiral(3))));
    ToolList list;
    list.append(&parent, false); // the list's vectors grow once, outside the timing
    for (auto _ : state) {
        list.clear();
        list.append(&parent, false);
        benchmark::DoNotOptimize(list.matrices.data());
    }
    state.counters["entries"] = double(list.count());
    state.SetLabel(state.range(0) == 1 ? "chain (alternating)" : "array");
}
BENCHMARK(BM_ListArray10000Instances)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_SnakeBonesRebuild10000Vertices(benchmark::State& state)
{
    std::unique_ptr<Curve> axis(Spiral(10000));
    for (auto _ : state) {
        axis->verts[5000].position.z += 1e-4f; // any change of the axis marks its frames
        axis->update();
        benchmark::DoNotOptimize(axis->buildVertsFrames());
    }
    state.counters["bones"] = double(axis->bones.size());
}
BENCHMARK(BM_SnakeBonesRebuild10000Vertices)->Unit(benchmark::kMillisecond);

} // namespace
