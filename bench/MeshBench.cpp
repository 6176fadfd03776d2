// Mesh kernels at the sizes artists work with: importing a 1M-triangle OBJ (against
// OpenMesh reading the same file into its half-edge mesh), building connectivity, subdividing
// and smoothing; normals (all of them, or those of the vertices a stroke touched); and what a
// small mesh and its clone cost. The OBJ files are generated here, into the temp folder, once
// per run.
#include "Scene/Elements/Mesh/Mesh.h"

#include <benchmark/benchmark.h>

#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <QDir>

#include <algorithm>
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

void WriteOBJ(Mesh const& m, std::string const& path)
{
    std::ofstream out(path);
    unsigned objects = 0, vertices = 0, faces = 0;
    m.appendOBJ(out, objects, vertices, faces, Matrix34<double>(), false);
}

std::string const& MillionTriangleOBJ()
{
    static std::string path = [] {
        std::string p = QDir::tempPath().toStdString() + "/vel_bench_1M.obj";
        WriteOBJ(*Torus(1000, 500, true), p);
        return p;
    }();
    return path;
}

// An organic closed surface as a scanner writes it: an icosphere subdivided eight times
// (1.3M triangles), pushed in and out by waves and a little noise, with the vertices in
// scan-line order (slices across z, by angle within a slice) and the faces in the order of
// their first vertex there, not in the order the subdivision made them.
std::string const& ScanOBJ()
{
    static std::string path = [] {
        std::string p = QDir::tempPath().toStdString() + "/vel_bench_scan.obj";
        auto sphere = Mesh::Sphere(Mesh::Icosahedron(), 8, 0, 2.0f, true);
        std::size_t nv = sphere->verts.size();
        std::vector<Vector3<float>> position(nv);
        uint32_t noise = 12345;
        for (std::size_t v = 0; v < nv; ++v) {
            Vector3<double> q(sphere->verts[v].position);
            noise = noise * 1664525u + 1013904223u;
            double r = 1 + 0.15 * std::sin(3 * q.x) * std::sin(4 * q.y + 1) * std::sin(5 * q.z + 2) +
                       0.04 * std::sin(17 * q.x + 11 * q.y) + 0.002 * (double(noise >> 8) / double(1 << 24) - 0.5);
            position[v] = Vector3<float>(q * r);
        }
        std::vector<int> order(nv), rank(nv);
        for (std::size_t v = 0; v < nv; ++v)
            order[v] = int(v);
        auto scanKey = [&](int v) {
            Vector3<float> const& q = position[std::size_t(v)];
            return std::make_pair(int(std::floor(q.z * 400)), std::atan2(q.y, q.x));
        };
        std::sort(order.begin(), order.end(), [&](int a, int b) { return scanKey(a) < scanKey(b); });
        Mesh scan;
        for (std::size_t i = 0; i < nv; ++i) {
            rank[std::size_t(order[i])] = int(i);
            scan.vertAdd(position[std::size_t(order[i])]);
        }
        std::vector<std::vector<int>> faces;
        for (std::size_t f = 0; f < sphere->faces.size(); ++f) {
            faces.push_back(sphere->faceVerts(int(f)));
            for (int& v : faces.back())
                v = rank[std::size_t(v)];
        }
        std::stable_sort(faces.begin(), faces.end(), [](std::vector<int> const& a, std::vector<int> const& b) {
            return *std::min_element(a.begin(), a.end()) < *std::min_element(b.begin(), b.end());
        });
        for (auto const& f : faces)
            scan.faceFromIndices(f);
        WriteOBJ(scan, p);
        return p;
    }();
    return path;
}

std::size_t RecordBytes(Mesh const& m)
{
    return m.verts.size() * sizeof(MeshVert) + m.edges.size() * sizeof(MeshEdge) + m.faces.size() * sizeof(MeshFace);
}

void ImportWithMesh(benchmark::State& state, std::string const& path)
{
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

void ReadWithOpenMesh(benchmark::State& state, std::string const& path)
{
    std::size_t faces = 0;
    for (auto _ : state) {
        OpenMesh::TriMesh_ArrayKernelT<> m;
        OpenMesh::IO::read_mesh(m, path);
        faces = m.n_faces();
        benchmark::DoNotOptimize(faces);
    }
    state.counters["triangles"] = double(faces);
}

void BM_MeshImportOBJ1M(benchmark::State& state)
{
    ImportWithMesh(state, MillionTriangleOBJ());
}
BENCHMARK(BM_MeshImportOBJ1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_OpenMeshReadOBJ1M(benchmark::State& state)
{
    ReadWithOpenMesh(state, MillionTriangleOBJ());
}
BENCHMARK(BM_OpenMeshReadOBJ1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MeshImportScanOBJ(benchmark::State& state)
{
    ImportWithMesh(state, ScanOBJ());
}
BENCHMARK(BM_MeshImportScanOBJ)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_OpenMeshReadScanOBJ(benchmark::State& state)
{
    ReadWithOpenMesh(state, ScanOBJ());
}
BENCHMARK(BM_OpenMeshReadScanOBJ)->Unit(benchmark::kMillisecond)->Iterations(3);

std::size_t HeldBytes(Mesh const& m)
{
    return m.verts.capacityBytes() + m.edges.capacityBytes() + m.faces.capacityBytes() + m.materials.capacityBytes() +
           m.uvs.capacityBytes();
}

// What a 4-vertex mesh and a clone of it hold in records (the Element base not counted).
void BM_MeshSmallMemory(benchmark::State& state)
{
    std::size_t mesh = 0, clone = 0;
    for (auto _ : state) {
        auto quad = Mesh::Quad();
        std::unique_ptr<Mesh> copy(quad->clone());
        mesh = HeldBytes(*quad);
        clone = HeldBytes(*copy);
        benchmark::DoNotOptimize(copy->verts.size());
    }
    state.counters["mesh_bytes"] = double(mesh);
    state.counters["clone_bytes"] = double(clone);
}
BENCHMARK(BM_MeshSmallMemory);

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
