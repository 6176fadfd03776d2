// A driver that runs a fuzz target once on each file named, or in each folder named, so
// that seeds and regression inputs are replayed by any compiler, without libFuzzer.
// The memory limits are libFuzzer's, spelt the same: "-rss_limit_mb=N" fails the run when
// the process's peak resident size goes beyond N MiB, "-malloc_limit_mb=N" ends it at a
// single allocation of more than N MiB (decoders allocate whole pictures at once, often
// without touching most of their pages), so that an input that makes a reader allocate far
// more than it holds fails here too.
#include <sys/resource.h>

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);

extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* block, size_t size);

namespace {

long gRssLimitMb = 0;           // 0: no limit
size_t gMallocLimitBytes = 0;   // 0: no limit

void CheckAllocation(size_t size)
{
    if (gMallocLimitBytes == 0 || size <= gMallocLimitBytes)
        return;
    std::fprintf(stderr, "an allocation of %zu bytes exceeds the limit of %zu MiB\n", size, gMallocLimitBytes >> 20);
    std::abort();
}

} // namespace

// The allocator's entries, checked and passed on to the C library's own.
extern "C" void* malloc(size_t size)
{
    CheckAllocation(size);
    return __libc_malloc(size);
}

extern "C" void* calloc(size_t count, size_t size)
{
    if (size != 0 && count > size_t(-1) / size)
        return nullptr;
    CheckAllocation(count * size);
    return __libc_calloc(count, size);
}

extern "C" void* realloc(void* block, size_t size)
{
    CheckAllocation(size);
    return __libc_realloc(block, size);
}

namespace {

long PeakRssMb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

int Replay(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    QByteArray bytes = file.readAll();
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const*>(bytes.constData()), size_t(bytes.size()));
    if (gRssLimitMb > 0 && PeakRssMb() > gRssLimitMb) {
        std::fprintf(stderr, "%s: peak memory %ld MiB exceeds the limit of %ld MiB\n", qPrintable(path), PeakRssMb(),
                     gRssLimitMb);
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<QString> inputs;
    char const* rss = "-rss_limit_mb=";
    char const* allocation = "-malloc_limit_mb=";
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], rss, std::strlen(rss)) == 0)
            gRssLimitMb = std::atol(argv[i] + std::strlen(rss));
        else if (std::strncmp(argv[i], allocation, std::strlen(allocation)) == 0)
            gMallocLimitBytes = size_t(std::atol(argv[i] + std::strlen(allocation))) << 20;
        else
            inputs.push_back(QString::fromLocal8Bit(argv[i]));
    }
    int failures = 0, count = 0;
    for (QString const& input : inputs) {
        if (!QFileInfo(input).isDir()) {
            failures += Replay(input);
            ++count;
            continue;
        }
        QDirIterator files(input, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            failures += Replay(files.next());
            ++count;
        }
    }
    std::printf("%d inputs replayed\n", count);
    return failures == 0 && count > 0 ? 0 : 1;
}
