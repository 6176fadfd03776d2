// ImageLimits: what an image file's header may promise before any pixel is decoded.
//
// A header is a claim made by the file: a few dozen bytes can declare a picture of
// gigabytes, which a decoder then allocates and fills with zeros. Every image reader asks
// here first, and refuses a size that is larger than a texture may be, or larger than the
// file could encode in its format at that format's best compression.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <string>

class QImageReader;

namespace vel {

// The largest width or height of a 2D texture, and of a 3D one in any direction: the
// sizes every GL 3.3 implementation that runs the system offers, known without a context
// (files are read on worker threads).
constexpr int MAX_TEXTURE_SIZE = 16384;
constexpr int MAX_TEXTURE_3D_SIZE = 2048;
constexpr int MAX_TEXTURE_LAYERS = 2048; // layers of a 2D array

// The most pixels that `fileBytes` bytes of `format` (a lower-case reader name: "png",
// "gif", "hdr" ...) can decode to, from the best compression the format allows.
long long MaxDecodedPixels(QByteArray const& format, long long fileBytes);

// The bytes of the smallest Radiance HDR pixel data (after the header) of that size; "hdr"
// files are measured by this rather than by MaxDecodedPixels.
long long MinimumHdrBytes(int width, int height);

// Whether the run-length scanlines of a Radiance file hold together: every run has a length
// and the bytes it needs. stb's reader loops for ever on a run of length 0, which is what it
// reads past the end of a truncated file.
bool HdrRunsAreSound(unsigned char const* bytes, long long size, int width, int height);

// Empty when `frames` pictures of width x height may come from `fileBytes` bytes of
// `format` and each side fits `maxSize`; otherwise why not, as a message ends.
std::string ImageSizeProblem(QByteArray const& format, int width, int height, long long frames,
                             long long fileBytes, int maxSize);

// The header of the image `reader` is at, checked by ImageSizeProblem for one frame.
std::string ImageHeaderProblem(QImageReader& reader, int maxSize);

// The image of a file or resource, decoded only after its header has passed; a generated
// image where the path names one (see GeneratedImages). A null image when there is no such
// file, or when it is refused or cannot be decoded, which is logged as an error.
QImage ReadCheckedImage(QString const& path, int maxSize);

// Logs a refused image file to the user: "<path>: <problem>" as an error.
void LogImageProblem(std::string const& path, std::string const& problem);

} // namespace vel
