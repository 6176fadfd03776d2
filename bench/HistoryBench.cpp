// The undo history at scale: many small steps pushed, then taken back.
#include "Scene/Commands/CommandTransformObjects.h"
#include "Scene/Root.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <benchmark/benchmark.h>

namespace {

using vel::History;
using vel::Tool;

// One tool in a tree of its own, moved a little per step, each move recorded.
class MovingTool {
public:
    MovingTool()
    {
        History::instance().clear();
        root->addChild(tool);
    }
    ~MovingTool()
    {
        {
            History::Pause pause;
            delete root;
        }
        History::instance().clear();
    }

    void pushMoves(int n)
    {
        auto step = vel::Matrix34<double>::Translation(vel::Vector3<double>(0.001, 0, 0));
        for (int i = 0; i < n; ++i) {
            auto* command = new vel::CommandTransformObjects({tool});
            tool->transformObject(step, false, false);
            History::instance().push(command);
        }
    }

private:
    vel::Root* root = new vel::Root;
    Tool* tool = new Tool;
};

// n moves, each a step; with argument 1 all of them are then undone. The capacity is
// raised so that every step stays undoable.
void BM_PushAndUndo(benchmark::State& state)
{
    int n = int(state.range(0));
    bool undo = state.range(1) != 0;
    History& history = History::instance();
    MovingTool moving;
    history.capacity = unsigned(n) + 1;
    for (auto _ : state) {
        moving.pushMoves(n);
        if (undo)
            history.jumpTo(-1);
        state.PauseTiming();
        history.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
    history.capacity = 1000;
}
BENCHMARK(BM_PushAndUndo)->Args({100000, 0})->Args({100000, 1})->Unit(benchmark::kMillisecond);

// The same pushes under the budget of 1000 steps: all but the last 1000 leave the front.
void BM_PushPastCapacity(benchmark::State& state)
{
    int n = int(state.range(0));
    MovingTool moving;
    for (auto _ : state) {
        moving.pushMoves(n);
        state.PauseTiming();
        History::instance().clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_PushPastCapacity)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
