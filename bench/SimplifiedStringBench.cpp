// Simplifying shader text, as the shader cache does for every request: a heavily commented
// source (line comments, block comments holding "//", blank runs) of about 116 KB and
// 1.16 MB. The cost must grow with the size of the text, not with its square.
#include "OpenGL/SimplifiedString.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

// `lines` lines of commented GLSL, about 48 bytes a line.
std::string CommentedSource(long lines)
{
    std::string text = "##VERTEX\n";
    for (long i = 0; i < lines; ++i) {
        switch (i % 4) {
        case 0: text += "uniform   float u" + std::to_string(i) + ";   // a trailing comment\n"; break;
        case 1: text += "/* see http://example.org */ float v" + std::to_string(i) + ";\n"; break;
        case 2: text += "\t\tv = u * 2.0;  /* a block\n"; break;
        default: text += "   that ends here */ w = v;\n"; break;
        }
    }
    return text;
}

void BM_SimplifiedString(benchmark::State& state)
{
    std::string const source = CommentedSource(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(vel::SimplifiedString(source));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(source.size()));
    state.counters["bytes"] = double(source.size());
}
BENCHMARK(BM_SimplifiedString)->Arg(3200)->Arg(32000)->Unit(benchmark::kMillisecond);

} // namespace
