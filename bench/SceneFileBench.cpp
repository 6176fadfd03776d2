// Scene files: saving and loading a scene of one 1M-triangle mesh, and one of 100k tools,
// beside fwrite and fread of the same number of bytes (what the disk allows). The ratio of
// the two is the figure to watch: the format is raw copies, so it should stay within a
// small factor of the plain calls.
#include "Math/Matrix34.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <benchmark/benchmark.h>

#include <QDir>

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vel;

std::string const& Folder()
{
    static std::string folder = QDir::tempPath().toStdString() + "/vel_scene_bench_" + std::to_string(getpid());
    static bool made = QDir().mkpath(QString::fromStdString(folder));
    (void)made;
    return folder;
}

// The two scenes, built once: an icosphere of 1.3M triangles under one tool; 100k tools in
// groups of ten, each group's tools on one box.
Scene& MeshScene()
{
    static Scene* scene = [] {
        History::Pause pause;
        auto* s = new Scene;
        Shared<Element> mesh(Mesh::Sphere(Mesh::Icosahedron(), 8).release());
        Tool* t = new Tool(mesh);
        t->Parent = s->root;
        s->root->children.push_back(t);
        return s;
    }();
    return *scene;
}

Scene& ToolScene()
{
    static Scene* scene = [] {
        History::Pause pause;
        auto* s = new Scene;
        for (int g = 0; g < 10000; ++g) {
            Shared<Element> box(Mesh::Box().release());
            Tool* group = new Tool;
            group->Parent = s->root;
            s->root->children.push_back(group);
            for (int k = 0; k < 9; ++k) {
                Tool* t = new Tool(box, Matrix34<double>::Translation({double(k), double(g), 0}));
                t->Parent = group;
                group->children.push_back(t);
            }
        }
        return s;
    }();
    return *scene;
}

Scene& Pick(int which)
{
    return which == 0 ? MeshScene() : ToolScene();
}

std::string PathOf(int which)
{
    return Folder() + (which == 0 ? "/mesh.vsc" : "/tools.vsc");
}

long long FileSize(std::string const& path)
{
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return 0;
    std::fseek(f, 0, SEEK_END);
    long long size = std::ftell(f);
    std::fclose(f);
    return size;
}

void BM_SceneSave(benchmark::State& state)
{
    int which = int(state.range(0));
    Scene& scene = Pick(which);
    for (auto _ : state)
        benchmark::DoNotOptimize(scene.saveN(PathOf(which)));
    state.SetBytesProcessed(state.iterations() * FileSize(PathOf(which)));
}

void BM_SceneLoad(benchmark::State& state)
{
    int which = int(state.range(0));
    Pick(which).saveN(PathOf(which));
    History::Pause pause;
    for (auto _ : state) {
        Scene loaded;
        benchmark::DoNotOptimize(loaded.load(PathOf(which)));
        state.PauseTiming(); // the teardown of the loaded scene is not part of a load
        loaded.init(false);
        gDeleteLoadBuffers();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * FileSize(PathOf(which)));
}

// The same number of bytes in one call each way.
void BM_Fwrite(benchmark::State& state)
{
    int which = int(state.range(0));
    Pick(which).saveN(PathOf(which));
    std::vector<char> bytes(std::size_t(FileSize(PathOf(which))), 1);
    std::string path = Folder() + "/plain.bin";
    for (auto _ : state) {
        FILE* f = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
    state.SetBytesProcessed(state.iterations() * (long long)bytes.size());
}

void BM_Fread(benchmark::State& state)
{
    int which = int(state.range(0));
    Pick(which).saveN(PathOf(which));
    std::vector<char> bytes(std::size_t(FileSize(PathOf(which))));
    for (auto _ : state) {
        FILE* f = std::fopen(PathOf(which).c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(bytes.data(), 1, bytes.size(), f));
        std::fclose(f);
    }
    state.SetBytesProcessed(state.iterations() * (long long)bytes.size());
}

// Argument 0: the mesh scene; 1: the scene of 100k tools.
BENCHMARK(BM_SceneSave)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fwrite)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneLoad)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fread)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
