// The scene stream: the input is a script of reads, skips and seeks whose lengths come from
// the input itself, played on a stream over the rest of it. Every call must answer within
// the stream's bounds.
#include "Scene/IFile.h"

#include <QByteArray>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

template <class T>
T Take(uint8_t const*& data, size_t& size)
{
    T value{};
    size_t n = size < sizeof(T) ? size : sizeof(T);
    std::memcpy(&value, data, n);
    data += n;
    size -= n;
    return value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    // The script: up to 16 steps of 9 bytes (an operation and a 64-bit operand).
    size_t steps = size > 0 ? data[0] % 17 : 0;
    uint8_t const* script = data + (size > 0 ? 1 : 0);
    size_t scriptSize = size > 0 ? size - 1 : 0;
    size_t scriptBytes = steps * 9 < scriptSize ? steps * 9 : scriptSize;
    vel::IFile in(QByteArray(reinterpret_cast<char const*>(script + scriptBytes), int(scriptSize - scriptBytes)));
    size_t left = scriptBytes;
    while (left > 0) {
        uint8_t op = Take<uint8_t>(script, left);
        long long operand = Take<long long>(script, left);
        long long before = in.pos();
        switch (op % 5) {
        case 0: {
            char buffer[64];
            int asked = int(operand % 65);
            int got = in.readRawData(buffer, asked < 0 ? -asked : asked);
            if (got > 64)
                std::abort();
            break;
        }
        case 1: {
            std::string text;
            if (in.readString(text, int(operand & 0x7FFFFFFF)) && (long long)text.size() > in.size())
                std::abort();
            break;
        }
        case 2:
            if (in.skipRawData(operand) && in.pos() != before + operand)
                std::abort();
            break;
        case 3:
            if (in.seek(operand) && in.pos() != operand)
                std::abort();
            break;
        default: {
            double value = 0;
            in.readValue(value);
            break;
        }
        }
        if (in.pos() < 0 || in.pos() > in.size())
            std::abort();
    }
    return 0;
}
