#include "OpenGL/TextureCube.h"

#include "Core/Assert.h"
#include "Memory/ScratchpadMemory.h"
#include "OpenGL/ImageLimits.h"
#include "OpenGL/LogMsg.h"

#include <stb_image.h>

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QString>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace vel {

TextureCube::TextureCube(int size, int internalFormat, int format, int type, int wrap, int filter)
    : faceSize(size)
{
    dimensions = {size, size};
    describe(internalFormat, format, type, wrap, filter);
}

TextureCube::TextureCube(std::string const& path, int size)
    : faceSize(size)
{
    std::string extension = path.size() >= 4 ? path.substr(path.size() - 4) : std::string();
    for (char& c : extension)
        c = char(std::toupper(static_cast<unsigned char>(c)));
    if (extension == ".HDR")
        loadhdr(path);
    else
        load(path);
}

void TextureCube::setPanorama(int width, int height)
{
    panoramaWidth = width;
    panoramaHeight = height;
    int size = faceSize > 0 ? faceSize : std::max(width / 4, 1);
    dimensions = {size, size};
}

// ---- loading

bool TextureCube::load(std::string const& path)
{
    clear();
    name = path;
    QImage image = ReadCheckedImage(QString::fromStdString(path), MAX_TEXTURE_SIZE);
    if (image.isNull()) {
        loadFailed = true;
        logmsg("ERROR TextureCube::load " + path);
        return false;
    }
    loadFailed = false;
    bool alpha = image.hasAlphaChannel();
    image = std::move(image).mirrored(false, true).convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    describe(alpha ? GL_RGBA8 : GL_RGB8, alpha ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_LINEAR);
    size_t row = size_t(image.width()) * (alpha ? 4 : 3);
    data.resize(row * size_t(image.height()));
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(data.data() + size_t(y) * row, image.constScanLine(y), row);
    setPanorama(image.width(), image.height());
    return true;
}

bool TextureCube::loadhdr(std::string const& path)
{
    clear();
    name = path;
    QFile file(QString::fromStdString(path));
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    auto const* raw = reinterpret_cast<stbi_uc const*>(bytes.constData());
    int w = 0, h = 0, channels = 0;
    std::string problem;
    float* pixels = nullptr;
    // No bytes (no such file) is the caller's to report. stb would decode any kind it knows,
    // and trusts the declared size: both are checked first.
    if (!bytes.isEmpty()) {
        if (!stbi_is_hdr_from_memory(raw, bytes.size()))
            problem = "not a Radiance HDR image.";
        else if (!stbi_info_from_memory(raw, bytes.size(), &w, &h, &channels))
            problem = "the header cannot be read.";
        else
            problem = ImageSizeProblem("hdr", w, h, 1, bytes.size(), MAX_TEXTURE_SIZE);
        if (problem.empty() && !HdrRunsAreSound(raw, bytes.size(), w, h))
            problem = "the run-length data is truncated or broken.";
    }
    if (!bytes.isEmpty() && problem.empty()) {
        // Rows stay top first: they are moved below from the last one up.
        stbi_set_flip_vertically_on_load(0);
        pixels = stbi_loadf_from_memory(raw, bytes.size(), &w, &h, &channels, 3);
        char const* why = stbi_failure_reason();
        if (!pixels)
            problem = std::string("the image cannot be decoded (") + (why ? why : "no reason given") + ").";
    }
    if (!pixels) {
        if (!problem.empty())
            LogImageProblem(path, problem);
        loadFailed = true;
        logmsg("ERROR TextureCube::loadhdr " + path);
        return false;
    }
    QByteArray().swap(bytes);
    loadFailed = false;
    format = GL_RGB;
    type = GL_FLOAT;
    if (internalFormat != GL_RGB16F && internalFormat != GL_RGB32F && internalFormat != GL_RGBA16F &&
        internalFormat != GL_RGBA32F && internalFormat != GL_R11F_G11F_B10F)
        internalFormat = GL_RGB32F;
    TakeRowsBottomFirst(pixels, w, h);
    Compiled = false;
    setPanorama(w, h);
    return true;
}

void TextureCube::TakeRowsBottomFirst(float* pixels, int w, int h)
{
    // The CPU pixels grow from the decoder's last row up while the decoder's block shrinks
    // behind them, so the panorama is never held twice over. stb allocates with malloc, so
    // realloc may shrink its block; shrinking in place is what the allocator does for blocks
    // this large, and the returned pointer is used in any case.
    size_t row = size_t(w) * 3;
    size_t rowsPerStep = std::max<size_t>(1, (size_t(1) << 20) / (row * sizeof(float)));
    data.clear();
    data.reserve(row * size_t(h) * sizeof(float));
    for (size_t left = size_t(h); left > 0;) {
        size_t step = std::min(rowsPerStep, left);
        for (size_t k = 0; k < step; ++k) {
            auto const* bytes = reinterpret_cast<unsigned char const*>(pixels + (left - 1 - k) * row);
            data.insert(data.end(), bytes, bytes + row * sizeof(float));
        }
        left -= step;
        if (left == 0)
            break;
        if (auto* smaller = static_cast<float*>(std::realloc(pixels, left * row * sizeof(float))))
            pixels = smaller;
    }
    stbi_image_free(pixels);
}

// ---- panorama to cube

void TextureCube::PanoramaPosition(Vector3<double> const& d, int width, int height, double& x, double& y)
{
    double longitude = std::atan2(d.z, -d.x);
    double latitude = std::atan2(-d.y, std::sqrt(d.x * d.x + d.z * d.z));
    x = width * (0.25 - longitude / (2 * M_PI));
    y = height * (0.5 - latitude / M_PI);
}

Vector3<double> TextureCube::FaceDirection(int face, int i, int j, int size)
{
    // Face coordinates in [-1, 1] at texel centres: step 2 / size, offset 1 / size - 1.
    double s = i * (2.0 / size) + (1.0 / size - 1.0);
    double t = j * (2.0 / size) + (1.0 / size - 1.0);
    switch (face) { // GL's cube map conventions, face by face
    case 0: return {1, -t, -s};
    case 1: return {-1, -t, s};
    case 2: return {s, 1, t};
    case 3: return {s, -1, -t};
    case 4: return {s, -t, 1};
    default: return {-s, -t, -1};
    }
}

namespace {

int Wrap(int value, int size)
{
    int r = value % size;
    return r < 0 ? r + size : r;
}

// Bilinear sample of an interleaved panorama of `channels` T values per pixel; pixel centres
// at half-integers. Columns wrap around; rows are clamped, since the row beyond a pole is the
// same pole, not the opposite one.
template <class T>
void SamplePanorama(T const* pixels, int width, int height, int channels, double x, double y, T* out)
{
    x -= 0.5;
    y -= 0.5;
    double fx0 = std::floor(x), fy0 = std::floor(y);
    double fx = x - fx0, fy = y - fy0;
    int x0 = Wrap(int(fx0), width), x1 = Wrap(int(fx0) + 1, width);
    int y0 = std::clamp(int(fy0), 0, height - 1), y1 = std::clamp(int(fy0) + 1, 0, height - 1);
    for (int c = 0; c < channels; ++c) {
        auto at = [&](int px, int py) { return double(pixels[(size_t(py) * size_t(width) + size_t(px)) * channels + c]); };
        double v = (at(x0, y0) * (1 - fx) + at(x1, y0) * fx) * (1 - fy) + (at(x0, y1) * (1 - fx) + at(x1, y1) * fx) * fy;
        if constexpr (std::is_integral<T>::value)
            out[c] = T(std::lround(v));
        else
            out[c] = T(v);
    }
}

template <class T>
void FillFace(T const* panorama, int width, int height, int channels, int face, int size, T* out)
{
    for (int j = 0; j < size; ++j)
        for (int i = 0; i < size; ++i) {
            double x, y;
            TextureCube::PanoramaPosition(TextureCube::FaceDirection(face, i, j, size), width, height, x, y);
            SamplePanorama(panorama, width, height, channels, x, y, out + (size_t(j) * size_t(size) + size_t(i)) * channels);
        }
}

} // namespace

bool TextureCube::compile()
{
    if (Compiled)
        return true;
    glGetError();
    bool first = textureId == 0;
    if (first)
        glGenTextures(1, &textureId);
    unsigned previous = bindForUpload();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);

    int size = width();
    int channels = FormatChannels(format);
    size_t faceBytes = size_t(size) * size_t(size) * size_t(pixelBytes());
    bool fromPanorama = !data.empty() && panoramaWidth > 0 && panoramaHeight > 0;
    for (int face = 0; face < 6; ++face) {
        GLenum target = GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face);
        unsigned char* staged = nullptr;
        if (fromPanorama) {
            staged = ScratchPadGeometry::instance().at<unsigned char>(0, faceBytes);
            if (type == GL_FLOAT)
                FillFace(reinterpret_cast<float const*>(data.data()), panoramaWidth, panoramaHeight, channels, face,
                         size, reinterpret_cast<float*>(staged));
            else
                FillFace(data.data(), panoramaWidth, panoramaHeight, channels, face, size, staged);
        }
        if (first || !fromPanorama)
            glTexImage2D(target, 0, internalFormat, size, size, 0, GLenum(format), GLenum(type), staged);
        else
            glTexSubImage2D(target, 0, 0, 0, size, size, GLenum(format), GLenum(type), staged);
    }
    data.clear();
    // Parameters on the first compile only: a derived cube (the environment) sets its own
    // levels and filters afterwards, and a recompile must keep them.
    if (first) {
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, filter);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, filter);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, wrap);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, wrap);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_R, wrap);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, 0);
        if (format == GL_DEPTH_COMPONENT)
            glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
    }
    endUpload(previous);
    GLenum error = glGetError();
    Compiled = error == GL_NO_ERROR;
    if (!Compiled) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "%x", unsigned(error));
        logmsg("ERROR TextureCube::compile " + name + " " + hex);
    }
    return Compiled;
}

// ---- read-back

int TextureCube::byteCount() const
{
    return 6 * Texture::byteCount();
}

void TextureCube::getUnstructuredData(void* out)
{
    bool wasBound = bound;
    VEL_ASSERT(enable());
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    size_t faceBytes = size_t(Texture::byteCount());
    for (int face = 0; face < 6; ++face)
        glGetTexImage(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), 0, GLenum(format), GLenum(type),
                      static_cast<unsigned char*>(out) + faceBytes * size_t(face));
    if (!wasBound)
        disable();
}

bool TextureCube::save(std::string const& path, int quality)
{
    bool wasBound = bound;
    if (!enable())
        return false;
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    int size = width();
    unsigned char* rgba = ScratchPadGeometry::instance().at<unsigned char>(0, size_t(size) * size_t(size) * 4);
    bool ok = true;
    for (int face = 0; face < 6; ++face) {
        glGetTexImage(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        QImage image(size, size, QImage::Format_RGB888);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                std::memcpy(image.scanLine(size - 1 - y) + x * 3, rgba + (size_t(y) * size_t(size) + size_t(x)) * 4, 3);
        ok = image.save(QString::fromStdString(path + std::to_string(face) + ".png"), nullptr, 100) && ok;
    }
    (void)quality; // faces are written at quality 100
    if (!wasBound)
        disable();
    return ok;
}

} // namespace vel
