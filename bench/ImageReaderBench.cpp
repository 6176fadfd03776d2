// Peak memory of each image reader on a large picture, against the bytes of the pixels it
// keeps: every load runs in a child process of its own, whose peak resident size less its
// size before the load is the reader's cost. Goal: at most 1.5 times the decoded pixels.
#include "OpenGL/Texture.h"
#include "OpenGL/TextureManager.h"
#include "TestImages.h"

#include <benchmark/benchmark.h>

#include <QImage>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <random>

namespace {

constexpr int W = 8192, H = 4096; // a panorama of the usual proportions

long ResidentKiB()
{
    long pages = 0, resident = 0;
    if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(f);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::string const& Folder()
{
    static QTemporaryDir dir;
    static std::string path = dir.path().toStdString();
    return path;
}

// Noise, so that compressed kinds stay large and decoders do their full work.
std::string MakeFile(std::string const& kind)
{
    std::string path = Folder() + "/large." + kind;
    std::mt19937 rng(7);
    if (kind == "hdr") {
        std::vector<float> rgb(size_t(W) * H * 3);
        for (float& v : rgb)
            v = float(rng() % 4096) / 256.0f;
        vel::test::WriteHdr(path, W, H, rgb);
    } else if (kind == "gif") {
        vel::test::WriteAnimatedGif(path, 1024, 1024, 24, 10);
    } else {
        QImage image(W, H, QImage::Format_RGB32);
        for (int y = 0; y < H; ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < W; ++x)
                row[x] = rng();
        }
        image.save(QString::fromStdString(path), kind.c_str());
    }
    return path;
}

// Loads `path` in a child; answers its peak growth in KiB and the bytes of the pixels kept.
std::pair<long, long> MeasureInChild(std::string const& path)
{
    int fds[2];
    if (pipe(fds) != 0)
        return {0, 0};
    pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        long before = ResidentKiB();
        vel::Shared<vel::Texture> t = vel::TextureManager::instance().AddFile(path);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        long result[2] = {usage.ru_maxrss - before, t ? long(t->data.size()) : 0L};
        if (write(fds[1], result, sizeof(result)) != sizeof(result))
            _exit(1);
        _exit(0);
    }
    close(fds[1]);
    long result[2] = {0, 0};
    if (read(fds[0], result, sizeof(result)) != sizeof(result))
        result[0] = result[1] = 0;
    close(fds[0]);
    waitpid(child, nullptr, 0);
    return {result[0], result[1]};
}

void BM_ImageReaderPeakMemory(benchmark::State& state, std::string const& kind)
{
    std::string path = MakeFile(kind);
    std::pair<long, long> measured;
    for (auto _ : state)
        measured = MeasureInChild(path);
    double decodedMiB = double(measured.second) / (1 << 20);
    state.counters["decoded_MiB"] = decodedMiB;
    state.counters["peak_MiB"] = double(measured.first) / 1024;
    state.counters["peak_per_decoded"] = decodedMiB > 0 ? double(measured.first) / 1024 / decodedMiB : 0;
}
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, png, std::string("png"))->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, jpg, std::string("jpg"))->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, bmp, std::string("bmp"))->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, ppm, std::string("ppm"))->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, gif, std::string("gif"))->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImageReaderPeakMemory, hdr, std::string("hdr"))->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
