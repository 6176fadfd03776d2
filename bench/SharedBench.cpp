#include "Memory/Shared.h"

#include <benchmark/benchmark.h>

namespace {

struct Payload {
    virtual ~Payload() = default;
    int value = 1;
};

// Copies of a handle are on every hot path that hands elements around: keep them cheap.
void BM_SharedCopy(benchmark::State& state)
{
    vel::Shared<Payload> handle(new Payload);
    for (auto _ : state) {
        vel::Shared<Payload> copy(handle);
        benchmark::DoNotOptimize(copy.object);
    }
}
BENCHMARK(BM_SharedCopy);

} // namespace
