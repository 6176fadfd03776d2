// The object tree at scale: listing a large tree each frame, cloning a linked hierarchy.
#include "Scene/Root.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

using vel::History;
using vel::Root;
using vel::Tool;

// A random tree of n tools under `parent`, built without history. Shape 0: each new tool
// joins any tool made before it (or the parent), so a walk of the tree jumps all over
// memory; the worst case for the cache. Shape 1: tools are made as a user builds, each
// joining the last one made or an ancestor of it, so that the walk mostly follows the
// order of creation.
std::vector<Tool*> buildTree(Tool* parent, int n, unsigned seed, int shape = 0)
{
    History::Pause pause;
    std::mt19937 rng(seed);
    std::vector<Tool*> tools;
    tools.reserve(size_t(n));
    Tool* current = parent;
    for (int i = 0; i < n; ++i) {
        Tool* t = new Tool;
        if (shape == 0) {
            Tool* p = tools.empty() || rng() % 8 == 0 ? parent : tools[rng() % tools.size()];
            p->addChild(t);
        } else {
            current->addChild(t);
            unsigned r = rng() % 4;
            if (r == 0)
                current = t;
            else if (r == 1 && current != parent)
                current = current->Parent;
        }
        tools.push_back(t);
    }
    return tools;
}

// The flat list of the whole tree, as files and the scene's numbering make it.
void BM_ToList(benchmark::State& state)
{
    auto* root = new Root;
    buildTree(root, int(state.range(0)), 1, int(state.range(1)));
    std::vector<Tool*> list;
    for (auto _ : state) {
        list.clear();
        root->toList(list);
        benchmark::DoNotOptimize(list.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    History::Pause pause;
    delete root;
}
BENCHMARK(BM_ToList)
    ->ArgsProduct({{10000, 100000, 1000000}, {0, 1}})
    ->ArgNames({"tools", "shape"})
    ->Unit(benchmark::kMillisecond);

// One user's clone of a group of n tools with links among them, recorded as one step
// (argument 1) or not recorded (argument 0). The clone is taken back between iterations.
void BM_CloneHierarchy(benchmark::State& state)
{
    int n = int(state.range(0));
    bool recorded = state.range(1) != 0;
    History& history = History::instance();
    history.clear();
    auto* root = new Root;
    Tool* group = buildTree(root, 1, 2)[0];
    std::vector<Tool*> tools = buildTree(group, n - 1, 3);
    {
        History::Pause pause;
        std::mt19937 rng(4);
        for (int i = 0; i < n / 4; ++i)
            tools[rng() % tools.size()]->link(tools[rng() % tools.size()]);
    }
    history.active = recorded;
    for (auto _ : state) {
        history.superBegin("Clone", false);
        Tool* copy = group->cloneTool(true);
        root->addChild(copy);
        history.superEnd();
        state.PauseTiming();
        if (recorded) {
            history.undo();
            history.pop(); // the creations were taken back: the copies go with the step
        } else {
            delete copy;
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
    history.active = true;
    {
        History::Pause pause;
        delete root;
    }
    history.clear();
}
BENCHMARK(BM_CloneHierarchy)->Args({10000, 1})->Args({10000, 0})->Unit(benchmark::kMillisecond);

} // namespace
