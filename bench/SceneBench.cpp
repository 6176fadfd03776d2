// The scene's per-frame listing: a 100k-tool tree over 1k shared elements turned into the
// flat list and the draw lists by shader, and the fit of the same scene.
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <memory>
#include <random>
#include <vector>

namespace {

using vel::Element;
using vel::History;
using vel::Matrix34;
using vel::Shader;
using vel::Shared;
using vel::Tool;
using vel::TRenderState;
using vel::Vector3;

class BenchElement : public Element {
public:
    Shader* shader;
    explicit BenchElement(Shader* shader)
        : shader(shader)
    {
    }
    int Type() const override { return 1; }
    unsigned BlockId() const override { return 0xe0000001u; }
    Shader* renderShader(TRenderState const&) const override { return shader; }
};

// n tools over `shared` elements drawn with four shaders, built as a user builds: each
// tool joins the last one made or an ancestor of it; every tenth is a group, every eighth
// an object, every twentieth see-through.
struct BenchScene {
    std::deque<Shader> shaders;
    vel::Scene scene;

    BenchScene(int n, int shared)
    {
        History::Pause pause;
        for (int i = 0; i < 4; ++i)
            shaders.emplace_back("shader " + std::to_string(i));
        std::vector<Shared<Element>> elements;
        for (int i = 0; i < shared; ++i)
            elements.emplace_back(new BenchElement(&shaders[size_t(i) % shaders.size()]));
        std::mt19937 rng(7);
        Tool* current = scene.root;
        for (int i = 0; i < n; ++i) {
            Shared<Element> e = i % 10 == 0 ? Shared<Element>() : elements[rng() % elements.size()];
            auto M = Matrix34<double>::Translation(Vector3<double>(rng() % 100, rng() % 100, rng() % 100) * 0.01);
            Tool* t = new Tool(e, M);
            current->addChild(t);
            t->setObject(i % 8 == 0);
            if (i % 20 == 0)
                t->material.pbr.setColor(3, 4000);
            unsigned r = rng() % 4;
            if (r == 0)
                current = t;
            else if (r == 1 && current != scene.root)
                current = current->Parent;
        }
    }
};

void BM_SceneToListSort(benchmark::State& state)
{
    History::instance().clear();
    vel::Rendering::instance().style = int(state.range(1));
    BenchScene bench(int(state.range(0)), 1000);
    for (auto _ : state) {
        bench.scene.toList(true, false);
        benchmark::DoNotOptimize(bench.scene.list.sorted.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    vel::Rendering::instance().style = vel::Rendering::STYLE_PBR;
}
BENCHMARK(BM_SceneToListSort)
    ->ArgsProduct({{10000, 100000}, {vel::Rendering::STYLE_PBR, 4}})
    ->ArgNames({"tools", "style"})
    ->Unit(benchmark::kMillisecond);

void BM_SceneFit(benchmark::State& state)
{
    History::instance().clear();
    BenchScene bench(int(state.range(0)), 1000);
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.scene.fit(1.0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SceneFit)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace

