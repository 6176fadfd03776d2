// CPU sculpting at the size artists work with: one stroke step on a sphere of about 100k
// vertices (the goal is one frame, 16 ms), under a small brush and one that covers the whole
// mesh; and the undo of a stroke that moved every vertex (one exchange of the records).
#include "Deformers/Sculptor.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/SceneHistory.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <memory>

namespace vel {
namespace {

// 98306 vertices: a cube subdivided seven times onto the sphere of diameter 1.
std::unique_ptr<Mesh> BigSphere()
{
    return Mesh::Sphere(Mesh::Box(0), 7);
}

void BM_MeshSculptStep(benchmark::State& state)
{
    History::Pause pause; // the step alone, without undo records
    auto mesh = BigSphere();
    float const radius = float(state.range(0)) / 1000.0f;
    Sculptor add(25, 0, 0, 1, false, Vector3<float>(0, 0, 1));
    Sculptor sub(26, 0, 0, 1, false, Vector3<float>(0, 0, 1));
    for (Sculptor* s : {&add, &sub})
        for (int i = 0; i < 3; ++i) {
            SBrush b;
            b.position = Vector3<float>(0.01f * float(i), 0, 0.5f);
            b.normal = Vector3<float>(0, 0, 1);
            b.radius = radius;
            s->add(b);
        }
    std::deque<Sculptor*> raise = {&add}, lower = {&sub};
    Sculptor::gSculptAction = 25;
    bool up = true;
    for (auto _ : state) {
        // Alternate raising and lowering so the shape stays near the sphere.
        mesh->sculptStep(up ? raise : lower, 2, 1);
        up = !up;
    }
    Sculptor::gSculptAction = 81;
    state.counters["vertices"] = double(mesh->verts.size());
}
BENCHMARK(BM_MeshSculptStep)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_MeshSculptUndo(benchmark::State& state)
{
    auto mesh = BigSphere();
    std::deque<IndexPosition> records;
    for (std::size_t i = 0; i < mesh->verts.size(); ++i)
        records.push_back(IndexPosition{int(i), mesh->verts[i].position * 1.01f});
    for (auto _ : state)
        mesh->swapPositions(records);
    state.counters["vertices"] = double(records.size());
}
BENCHMARK(BM_MeshSculptUndo)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vel
