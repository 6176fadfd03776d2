#include "OpenGL/Texture2D.h"

#include "Core/Assert.h"
#include "Memory/ScratchpadMemory.h"
#include "OpenGL/ImageLimits.h"
#include "OpenGL/LogMsg.h"

#include <QFileInfo>
#include <QImageReader>

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vel {

std::vector<std::vector<Vector4<float>>> Texture2D::Rand;
Shared<Texture2D> Texture2D::Random;

Texture2D::Texture2D(int width, int height, int internalFormat, int format, int type, int wrap, int filter)
{
    dimensions = {width, height};
    describe(internalFormat, format, type, wrap, filter);
}

Texture2D::Texture2D(std::string const& path, bool mirror, int wrap, int filter)
    : Texture2D(path, 0, 0, mirror, wrap, filter)
{
}

Texture2D::Texture2D(std::string const& path, int width, int height, bool mirror, int wrap, int filter)
    : maxWidth(width)
    , maxHeight(height)
{
    describe(GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_LINEAR);
    load(path, mirror, wrap, filter);
}

// ---- upload

bool Texture2D::upload(void const* pixels, bool withMipmaps)
{
    unsigned previous = beginUpload(withMipmaps ? GL_LINEAR_MIPMAP_LINEAR : filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, withMipmaps ? mipMapLevels() - 1 : 0);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width(), height(), 0, GLenum(format), GLenum(type), pixels);
    if (withMipmaps)
        glGenerateMipmap(GL_TEXTURE_2D);
    endUpload(previous);
    return finishCompile("Texture2D::compile");
}

bool Texture2D::compile()
{
    if (Compiled)
        return true;
    // Storage of a target without pixels is allocated and left undefined.
    if (!upload(data.empty() ? nullptr : data.data(), mipmaps))
        return false;
    dropData();
    return true;
}

bool Texture2D::compile(void* pixels)
{
    return upload(pixels, false);
}

// ---- loading

bool Texture2D::load(std::string const& path)
{
    return load(path, true, wrap, filter);
}

bool Texture2D::load(std::string const& path, bool mirror, int wrap, int filter)
{
    QString file = QString::fromStdString(path);
    // Scaled and generated images take the general road through a QImage of their own.
    if (maxWidth > 0 || maxHeight > 0 || !QFileInfo(file).isFile())
        return load(ReadCheckedImage(file, MAX_TEXTURE_SIZE), path, mirror, wrap, filter);
    clear();
    name = path;
    QImageReader reader(file);
    // By content, not by name: a named kind's reader decodes just to say whether it can read.
    reader.setDecideFormatFromContent(true);
    std::string problem = ImageHeaderProblem(reader, MAX_TEXTURE_SIZE);
    QImage image;
    if (problem.empty()) {
        // Decoders that fill the image they are given when its size and format are theirs
        // (PNG, JPEG, BMP) write straight into the CPU pixels: the picture is held once.
        QImage::Format decoded = reader.imageFormat();
        QSize size = reader.size();
        if (decoded == QImage::Format_RGB32 || decoded == QImage::Format_ARGB32) {
            data.assign(size_t(size.width()) * size_t(size.height()) * 4, 0);
            image = QImage(data.data(), size.width(), size.height(), size.width() * 4, decoded);
        }
        if (!reader.read(&image))
            problem = "the image cannot be decoded (" + reader.errorString().toStdString() + ").";
    }
    if (!problem.empty() || image.constBits() != data.data()) {
        std::vector<unsigned char>().swap(data); // the memory goes, not only the pixels
        if (!problem.empty())
            LogImageProblem(path, problem);
        // A null image fails the load; an image the decoder made for itself is taken over.
        return load(problem.empty() ? std::move(image) : QImage(), path, mirror, wrap, filter);
    }
    int w = image.width(), h = image.height();
    image = QImage();
    // 0xAARRGGBB words become R, G, B, A bytes, rows swapped for the mirror, all in place.
    auto* words = reinterpret_cast<QRgb*>(data.data());
    auto toBytes = [](QRgb p, unsigned char* out) {
        out[0] = static_cast<unsigned char>(qRed(p));
        out[1] = static_cast<unsigned char>(qGreen(p));
        out[2] = static_cast<unsigned char>(qBlue(p));
        out[3] = static_cast<unsigned char>(qAlpha(p));
    };
    for (int y = 0; y < (mirror ? (h + 1) / 2 : h); ++y) {
        QRgb* top = words + size_t(y) * size_t(w);
        QRgb* bottom = words + size_t(mirror ? h - 1 - y : y) * size_t(w);
        for (int x = 0; x < w; ++x) {
            QRgb a = top[x], b = bottom[x];
            toBytes(b, reinterpret_cast<unsigned char*>(top + x));
            if (bottom != top)
                toBytes(a, reinterpret_cast<unsigned char*>(bottom + x));
        }
    }
    loadFailed = false;
    dimensions = {w, h};
    describe(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, wrap, filter);
    return true;
}

bool Texture2D::load(QImage image, std::string const& path, bool mirror, int wrap, int filter)
{
    clear();
    name = path;
    if (image.isNull()) {
        loadFailed = true;
        logmsg("ERROR Texture2D::load " + path);
        return false;
    }
    loadFailed = false;
    if (maxWidth > 0 && maxHeight > 0 && (image.width() > maxWidth || image.height() > maxHeight))
        image = image.scaled(maxWidth, maxHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    // In place where Qt can (an image of one owner, a format of the same depth): a large
    // picture is not held twice over.
    if (mirror)
        image = std::move(image).mirrored(false, true);
    image = std::move(image).convertToFormat(QImage::Format_RGBA8888);
    dimensions = {image.width(), image.height()};
    data.resize(size_t(image.width()) * size_t(image.height()) * 4);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(data.data() + size_t(y) * size_t(image.width()) * 4, image.constScanLine(y),
                    size_t(image.width()) * 4);
    describe(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, wrap, filter);
    return true;
}

// ---- size and mipmaps

void Texture2D::resize(int width, int height)
{
    if (dimensions.size() == 2 && dimensions[0] == width && dimensions[1] == height)
        return;
    dimensions = {width, height};
    Compiled = false;
}

int Texture2D::mipMapLevels() const
{
    int size = std::max(std::max(width(), height()), 1);
    return int(std::floor(std::log2(double(size)))) + 1;
}

void Texture2D::generateMipMaps(int levels)
{
    bool wasBound = bound;
    VEL_ASSERT(enable());
    // The texture may have been bound earlier on another unit than the active one.
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    // Set every time: a compile since the last call (after a resize) put the level range and
    // the filter back to a texture without mipmaps.
    maxMipLevel = levels < 0 ? mipMapLevels() - 1 : levels;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, maxMipLevel);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glGenerateMipmap(GL_TEXTURE_2D);
    if (!wasBound)
        disable();
}

// ---- saving

namespace {

// Level 0 of the bound texture `t` read into the geometry scratch pad as `count` values per texel.
unsigned char* ReadLevel0(Texture2D& t, GLenum format, GLenum type, size_t bytes)
{
    unsigned char* memory = ScratchPadGeometry::instance().at<unsigned char>(0, bytes);
    glActiveTexture(GLenum(GL_TEXTURE0 + t.unit));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, format, type, memory);
    return memory;
}

} // namespace

bool Texture2D::save(std::string const& path, int quality)
{
    bool wasBound = bound;
    if (!enable())
        return false;
    int w = width(), h = height();
    unsigned char const* rgba = ReadLevel0(*this, GL_RGBA, GL_UNSIGNED_BYTE, size_t(w) * size_t(h) * 4);
    QImage image(w, h, QImage::Format_RGB888);
    for (int y = 0; y < h; ++y) {
        unsigned char* row = image.scanLine(h - 1 - y);
        for (int x = 0; x < w; ++x)
            std::memcpy(row + x * 3, rgba + (size_t(y) * size_t(w) + size_t(x)) * 4, 3);
    }
    if (!wasBound)
        disable();
    return image.save(QString::fromStdString(path), nullptr, quality);
}

bool Texture2D::savef(std::string const& path)
{
    bool wasBound = bound;
    if (!enable())
        return false;
    int w = width(), h = height();
    bool depthTexture = format == GL_DEPTH_COMPONENT || format == GL_DEPTH_STENCIL;
    float const* values = reinterpret_cast<float const*>(
        ReadLevel0(*this, depthTexture ? GL_DEPTH_COMPONENT : GL_RED, GL_FLOAT, size_t(w) * size_t(h) * 4));
    QImage image(w, h, QImage::Format_RGB888);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            image.setPixel(x, h - 1 - y, values[size_t(y) * size_t(w) + size_t(x)] < 1.0f ? 0xFFFFFFFFu : 0xFF000000u);
    if (!wasBound)
        disable();
    return image.save(QString::fromStdString(path));
}

// ---- data textures

Shared<Texture2D> Texture2D::random(int width, int height)
{
    Shared<Texture2D> t(new Texture2D(width, height, GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_REPEAT, GL_LINEAR));
    auto draw = [] { return float(2.0 * (double(std::rand() % 8009) / 8009.0) - 1.0); };
    Rand.assign(size_t(height), std::vector<Vector4<float>>(size_t(width)));
    t->data.reserve(size_t(width) * size_t(height) * 16);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            // The x component comes from the last of the four draws.
            float w = draw(), z = draw(), yy = draw(), xx = draw();
            Vector4<float> v(xx, yy, z, w);
            Rand[size_t(y)][size_t(x)] = v;
            unsigned char const* bytes = reinterpret_cast<unsigned char const*>(&v.x);
            t->data.insert(t->data.end(), bytes, bytes + 16);
        }
    Random = t;
    return t;
}

Vector2<int> Texture2D::LinearSize_2DEven(int n)
{
    int w = std::max(int(std::floor(std::sqrt(double(std::max(n, 0))))), 1);
    w += w & 1;
    return {w, (n + w - 1) / w};
}

} // namespace vel
