#include "OpenGL/ImageLimits.h"

#include "Core/Communicate.h"
#include "OpenGL/GeneratedImages.h"

#include <QFileInfo>
#include <QIODevice>
#include <QImageReader>

#include <cstring>
#include <limits>

namespace vel {

namespace {

// Pixels per byte at the best compression of each format. Generous on purpose: a real file
// must never be refused, only headers that no encoder could have written for that length.
long long PixelsPerByte(QByteArray const& format)
{
    struct Bound {
        char const* format;
        long long pixels;
    };
    static constexpr Bound bounds[] = {
        // Deflate expands at most 1032 times, and 1-bit pixels pack 8 to a byte.
        {"png", 1032 * 8},
        // LZW: one 12-bit code stands for at most 4096 pixels.
        {"gif", 4096 * 8 / 12 + 1},
        // A progressive scan can spend a single bit on an 8 x 8 block.
        {"jpeg", 64 * 8},
        {"jpg", 64 * 8},
        // Run-length packets of 255 pixels in two bytes; escapes that skip whole rows are
        // rare in real files and are what malformed ones abuse.
        {"bmp", 128},
        {"tga", 64},
        {"pbm", 8},
        {"pgm", 8},
        {"ppm", 8},
        {"xbm", 8},
        {"xpm", 1},
    };
    for (Bound const& b : bounds)
        if (format == b.format)
            return b.pixels;
    return 1032 * 8; // unknown kinds: no better than deflate over 1-bit pixels
}

} // namespace

long long MaxDecodedPixels(QByteArray const& format, long long fileBytes)
{
    if (fileBytes <= 0)
        return 0;
    long long ratio = PixelsPerByte(format);
    if (fileBytes > std::numeric_limits<long long>::max() / ratio)
        return std::numeric_limits<long long>::max();
    return fileBytes * ratio;
}

long long MinimumHdrBytes(int width, int height)
{
    if (width <= 0 || height <= 0)
        return 0;
    // Widths outside [8, 32767] have no run-length form: four bytes a pixel.
    if (width < 8 || width > 32767)
        return 4LL * width * height;
    // A scanline: a 4-byte marker, then per channel runs of at most 127 in two bytes.
    long long runs = (width + 126) / 127;
    return (4 + 4 * 2 * runs) * (long long)height;
}

bool HdrRunsAreSound(unsigned char const* bytes, long long size, int width, int height)
{
    // The pixels start after the blank line that ends the header and the resolution line.
    long long at = 0;
    while (at + 1 < size && !(bytes[at] == '\n' && bytes[at + 1] == '\n'))
        ++at;
    at += 2;
    while (at < size && bytes[at] != '\n')
        ++at;
    ++at;
    if (width < 8 || width > 32767)
        return true; // flat pixels: a short file reads as zeros, which ends
    for (int y = 0; y < height; ++y) {
        if (at + 4 > size)
            return false;
        if (bytes[at] != 2 || bytes[at + 1] != 2 || (bytes[at + 2] & 0x80))
            return true; // not run-length encoded: read flat from here on
        at += 4;
        for (int channel = 0; channel < 4; ++channel)
            for (int x = 0; x < width;) {
                if (at >= size || bytes[at] == 0)
                    return false;
                int count = bytes[at++];
                int values = count > 128 ? 1 : count;
                count = count > 128 ? count - 128 : count;
                if (count > width - x)
                    return true; // the decoder refuses this itself
                if (at + values > size)
                    return false;
                at += values;
                x += count;
            }
    }
    return true;
}

std::string ImageSizeProblem(QByteArray const& format, int width, int height, long long frames,
                             long long fileBytes, int maxSize)
{
    if (width <= 0 || height <= 0 || frames <= 0)
        return "the image declares no pixels.";
    if (width > maxSize || height > maxSize)
        return "the declared size " + std::to_string(width) + " x " + std::to_string(height) +
               " exceeds the texture limit of " + std::to_string(maxSize) + ".";
    long long pixels = (long long)width * height * frames;
    // Radiance files have a smallest form of their own, by scanline.
    bool fits = format == "hdr" ? MinimumHdrBytes(width, height) <= fileBytes / frames
                                : pixels <= MaxDecodedPixels(format, fileBytes);
    if (!fits)
        return "a file of " + std::to_string(fileBytes) + " bytes cannot hold the declared " +
               std::to_string(width) + " x " + std::to_string(height) +
               (frames > 1 ? " x " + std::to_string(frames) : std::string()) + " pixels.";
    return {};
}

std::string ImageHeaderProblem(QImageReader& reader, int maxSize)
{
    QByteArray format = reader.format();
    if (format.isEmpty() || !reader.device())
        return "not an image of a known kind.";
    long long fileBytes = reader.device()->size();
    // A GIF reader decodes to the logical screen, whatever the frames cover, and allocates
    // it even to answer the size: the screen is checked first, from the header itself.
    QByteArray head = reader.device()->peek(10);
    if (format == "gif") {
        if (head.size() < 10)
            return "the header is truncated.";
        auto le16 = [&head](int at) { return int(uchar(head[at])) | int(uchar(head[at + 1])) << 8; };
        std::string problem = ImageSizeProblem(format, le16(6), le16(8), 1, fileBytes, maxSize);
        if (!problem.empty())
            return problem;
    }
    QSize size = reader.size();
    // A reader that cannot tell the size without decoding would decode it all: refuse.
    if (!size.isValid())
        return "the image's size cannot be read from its header.";
    return ImageSizeProblem(format, size.width(), size.height(), 1, fileBytes, maxSize);
}

QImage ReadCheckedImage(QString const& path, int maxSize)
{
    // A missing file is the caller's to report; generated images have no file.
    if (!QFileInfo(path).isFile())
        return GeneratedImage(path);
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    std::string problem = ImageHeaderProblem(reader, maxSize);
    QImage image;
    if (problem.empty() && !reader.read(&image))
        problem = "the image cannot be decoded (" + reader.errorString().toStdString() + ").";
    if (!problem.empty())
        LogImageProblem(path.toStdString(), problem);
    return image;
}

void LogImageProblem(std::string const& path, std::string const& problem)
{
    LogInfo(QString::fromStdString(path + ": " + problem), 2);
}

} // namespace vel
