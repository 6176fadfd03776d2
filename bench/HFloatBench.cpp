#include "Math/HFloat.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr size_t COUNT = size_t(1) << 24; // 16M values

std::vector<float> const& Floats()
{
    static std::vector<float> values = [] {
        std::vector<float> v(COUNT);
        std::mt19937 rng(1);
        std::uniform_real_distribution<float> d(-70000.0f, 70000.0f);
        for (float& x : v)
            x = d(rng) * (rng() % 4 == 0 ? 1e-6f : 1.0f); // a quarter tiny, to reach subnormals
        return v;
    }();
    return values;
}

void BM_HFloatCompress16M(benchmark::State& state)
{
    std::vector<float> const& in = Floats();
    std::vector<unsigned short> out(COUNT);
    for (auto _ : state) {
        for (size_t i = 0; i < COUNT; ++i)
            out[i] = vel::HFloat::compress(in[i]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(COUNT));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(COUNT * sizeof(float)));
}
BENCHMARK(BM_HFloatCompress16M)->Unit(benchmark::kMillisecond);

void BM_HFloatDecompress16M(benchmark::State& state)
{
    std::vector<unsigned short> in(COUNT);
    for (size_t i = 0; i < COUNT; ++i)
        in[i] = static_cast<unsigned short>(i * 2654435761u >> 16);
    std::vector<float> out(COUNT);
    for (auto _ : state) {
        for (size_t i = 0; i < COUNT; ++i)
            out[i] = vel::HFloat::decompress(in[i]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(COUNT));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(COUNT * sizeof(unsigned short)));
}
BENCHMARK(BM_HFloatDecompress16M)->Unit(benchmark::kMillisecond);

} // namespace
