// Mesh kernels at the sizes artists work with: importing a 1M-triangle OBJ (against
// OpenMesh reading the same file into its half-edge mesh), building connectivity, subdividing
// and smoothing, and normals (all of them, or those of the vertices a stroke touched). The OBJ
// file is generated here, into the temp folder, once per run.
#include "Scene/Elements/Mesh/Mesh.h"

#include <benchmark/benchmark.h>

#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <QDir>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>

namespace vel {
namespace {

// A closed torus of n x m quads (or 2 n m triangles): every vertex has the same valence.
std::unique_ptr<Mesh> Torus(int n, int m, bool triangles)
{
    auto mesh = std::make_unique<Mesh>();
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < m; ++j) {
            double a = 2 * M_PI * i / n, b = 2 * M_PI * j / m;
            double r = 1 + 0.4 * std::cos(b);
            mesh->vertAdd({float(r * std::cos(a)), float(r * std::sin(a)), float(0.4 * std::sin(b))});
        }
    auto at = [&](int i, int j) { return (i % n) * m + (j % m); };
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < m; ++j) {
            int a = at(i, j), b = at(i + 1, j), c = at(i + 1, j + 1), d = at(i, j + 1);
            if (triangles) {
                mesh->faceFromIndices({a, b, c});
                mesh->faceFromIndices({a, c, d});
            } else {
                mesh->faceFromIndices({a, b, c, d});
            }
        }
    return mesh;
}

std::string const& MillionTriangleOBJ()
{
    static std::string path = [] {
        std::string p = QDir::tempPath().toStdString() + "/vel_bench_1M.obj";
        auto torus = Torus(1000, 500, true);
        std::ofstream out(p);
        unsigned objects = 0, vertices = 0, faces = 0;
        torus->appendOBJ(out, objects, vertices, faces, Matrix34<double>(), false);
        return p;
    }();
    return path;
}

std::size_t RecordBytes(Mesh const& m)
{
    return m.verts.size() * sizeof(MeshVert) + m.edges.size() * sizeof(MeshEdge) + m.faces.size() * sizeof(MeshFace);
}

void BM_MeshImportOBJ1M(benchmark::State& state)
{
    std::string const& path = MillionTriangleOBJ();
    std::size_t bytes = 0;
    int triangles = 0;
    for (auto _ : state) {
        Mesh m;
        m.loadOBJ(path, true);
        triangles = m.triangles;
        bytes = RecordBytes(m);
        benchmark::DoNotOptimize(m.components);
    }
    state.counters["triangles"] = triangles;
    state.counters["bytes_per_triangle"] = double(bytes) / triangles;
}
BENCHMARK(BM_MeshImportOBJ1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_OpenMeshReadOBJ1M(benchmark::State& state)
{
    std::string const& path = MillionTriangleOBJ();
    std::size_t faces = 0;
    for (auto _ : state) {
        OpenMesh::TriMesh_ArrayKernelT<> m;
        OpenMesh::IO::read_mesh(m, path);
        faces = m.n_faces();
        benchmark::DoNotOptimize(faces);
    }
    state.counters["triangles"] = double(faces);
}
BENCHMARK(BM_OpenMeshReadOBJ1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MeshBuildConnectivity1M(benchmark::State& state)
{
    auto raw = Torus(1000, 500, true);
    for (auto _ : state) {
        state.PauseTiming();
        Mesh m = *raw;
        state.ResumeTiming();
        m.buildConnectivity();
        benchmark::DoNotOptimize(m.edges[0].half);
    }
}
BENCHMARK(BM_MeshBuildConnectivity1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MeshSubdivide250k(benchmark::State& state)
{
    auto base = Torus(500, 500, false);
    base->initialize(0);
    for (auto _ : state) {
        state.PauseTiming();
        Mesh m = *base;
        state.ResumeTiming();
        m.subdivide(true);
        benchmark::DoNotOptimize(m.faces.size());
    }
}
BENCHMARK(BM_MeshSubdivide250k)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MeshSmoothAll1M(benchmark::State& state)
{
    auto m = Torus(1000, 1000, false);
    m->initialize(0);
    for (auto _ : state) {
        m->smoothAll(0.5f);
        benchmark::DoNotOptimize(m->verts[0].position);
    }
    state.counters["vertices"] = double(m->verts.size());
}
BENCHMARK(BM_MeshSmoothAll1M)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_MeshNormals1M(benchmark::State& state)
{
    auto m = Torus(1000, 500, true);
    m->initialize(0);
    for (auto _ : state) {
        m->calculateNormals();
        benchmark::DoNotOptimize(m->edges[0].normal);
    }
}
BENCHMARK(BM_MeshNormals1M)->Unit(benchmark::kMillisecond)->Iterations(3);

// One sculpt step's normal update: 1,000 vertices in one patch of a 1M-triangle mesh, moved
// and their normals brought up to date (the full recompute above is the alternative).
void BM_MeshNormalsPartial1kOf1M(benchmark::State& state)
{
    auto m = Torus(1000, 500, true);
    m->initialize(0);
    m->calculateNormals();
    std::vector<int> touched;
    for (int i = 0; i < 40; ++i)
        for (int j = 0; j < 25; ++j)
            touched.push_back(i * 500 + j);
    float sign = 1;
    for (auto _ : state) {
        for (int v : touched)
            m->verts[std::size_t(v)].position.z += sign * 1e-3f;
        sign = -sign;
        m->updateNormals(touched);
        benchmark::DoNotOptimize(m->edges[0].normal);
    }
    state.counters["triangles"] = m->triangles;
    state.counters["touched"] = double(touched.size());
}
BENCHMARK(BM_MeshNormalsPartial1kOf1M)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vel
