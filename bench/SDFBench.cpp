// SDF trees: keeping the list of a large tree honest after one edit, and the CPU
// evaluator's rate on a tree of the size a sculpted object reaches.
#include "Scene/Root.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tools/SDFTool/SDFEvaluator.h"
#include "Scene/Tools/SDFTool/SDFTool.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

using namespace vel;

// n primitives in one tree under `root`: each joins a random earlier one, Add or Sub,
// with some groups; then the tree is made sound once.
std::vector<SDFTool*> buildTree(Root* root, int n, unsigned seed)
{
    History::Pause pause;
    std::mt19937 rng(seed);
    std::vector<SDFTool*> tools;
    for (int i = 0; i < n; ++i) {
        SDFObj o;
        o.shape = uint8_t(rng() % SDF_PANEL_SHAPES);
        o.dims = {0.5f + float(rng() % 100) / 100, 0.3f, 0.8f};
        if (o.shape == SDF_TORUS)
            o.dims.z = 360;
        o.operation = i == 0 ? SDF_NOOP : uint8_t(rng() % 3 == 0 ? SDF_SUB : SDF_ADD);
        o.priority = int16_t(i);
        o.bracket = int16_t(i % 7 == 1 ? 1 : i % 7 == 3 ? -1 : 0);
        std::uniform_real_distribution<double> u(-2, 2);
        auto* t = new SDFTool(o, Matrix34<double>::Translation({u(rng), u(rng), u(rng)}));
        (tools.empty() ? static_cast<Tool*>(root) : tools[rng() % tools.size()])->addChild(t);
        tools.push_back(t);
    }
    tools[0]->fixTree();
    return tools;
}

// One edit of a priority, the repair of the tree, and the listing that refills the top's
// list: what a frame pays for the list after the edit.
void BM_SDFListAfterPriorityEdit(benchmark::State& state)
{
    auto* root = new Root;
    auto tools = buildTree(root, int(state.range(0)), 1);
    History::Pause pause;
    std::mt19937 rng(2);
    std::vector<Tool*> list;
    for (auto _ : state) {
        SDFTool* t = tools[1 + rng() % (tools.size() - 1)];
        t->setPriorityBracket(int16_t(rng() % tools.size()), t->sdf.bracket);
        tools[0]->fixTree();
        list.clear();
        root->toList(list);
        benchmark::DoNotOptimize(tools[0]->sdfs.size());
    }
    state.SetItemsProcessed(state.iterations());
    delete root;
}
BENCHMARK(BM_SDFListAfterPriorityEdit)->Arg(1000)->Unit(benchmark::kMicrosecond);

// The evaluator made from a listed tree: ordering, transforms and bounds of every entry.
void BM_SDFBuildEvaluator(benchmark::State& state)
{
    auto* root = new Root;
    auto tools = buildTree(root, int(state.range(0)), 1);
    std::vector<Tool*> list;
    root->toList(list);
    SDFEvaluator evaluator;
    for (auto _ : state) {
        evaluator.build(tools[0]->sdfs);
        benchmark::DoNotOptimize(evaluator.entries.data());
    }
    state.SetItemsProcessed(state.iterations());
    History::Pause pause;
    delete root;
}
BENCHMARK(BM_SDFBuildEvaluator)->Arg(1000)->Unit(benchmark::kMicrosecond);

// A leaf moved to another parent in the tree, as one step of the history: the removal's
// bracket hand-over, the regrouping and the repair, then the listing.
void BM_SDFListAfterReparent(benchmark::State& state)
{
    auto* root = new Root;
    auto tools = buildTree(root, int(state.range(0)), 3);
    History::Pause pause;
    std::mt19937 rng(4);
    std::vector<Tool*> list;
    for (auto _ : state) {
        SDFTool* t = tools[1 + rng() % (tools.size() - 1)];
        if (!t->children.empty())
            continue;
        SDFTool* target = tools[rng() % tools.size()];
        if (target == t)
            continue;
        g_SDF_PARENT(t, target);
        list.clear();
        root->toList(list);
        benchmark::DoNotOptimize(tools[0]->sdfs.size());
    }
    state.SetItemsProcessed(state.iterations());
    delete root;
}
BENCHMARK(BM_SDFListAfterReparent)->Arg(1000)->Unit(benchmark::kMicrosecond);

// Distances of random points in a 32-primitive tree, in points per second.
void BM_SDFEvaluate(benchmark::State& state)
{
    auto* root = new Root;
    auto tools = buildTree(root, int(state.range(0)), 5);
    std::vector<Tool*> list;
    root->toList(list);
    SDFEvaluator evaluator;
    evaluator.build(tools[0]->sdfs);
    std::mt19937 rng(6);
    std::uniform_real_distribution<float> u(-3, 3);
    std::vector<Vector3<float>> points(4096);
    for (auto& p : points)
        p = {u(rng), u(rng), u(rng)};
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(evaluator.distance(points[i++ & 4095]));
    }
    state.SetItemsProcessed(state.iterations());
    History::Pause pause;
    delete root;
}
BENCHMARK(BM_SDFEvaluate)->Arg(32);

} // namespace
