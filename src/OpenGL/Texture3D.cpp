#include "OpenGL/Texture3D.h"

#include "OpenGL/LogMsg.h"

#include <QFile>
#include <QImage>
#include <QImageReader>

#include <cstring>

namespace vel {

Texture3D::Texture3D(int width, int height, int depth, int internalFormat, int format, int type, int wrap,
                     int filter)
{
    dimensions = {width, height, depth};
    describe(internalFormat, format, type, wrap, filter);
}

Texture3D::Texture3D(std::string const& path, bool mirror)
{
    load(path, mirror);
}

void Texture3D::resize(int width, int height, int depth)
{
    if (dimensions == std::vector<int>{width, height, depth})
        return;
    dimensions = {width, height, depth};
    Compiled = false;
}

bool Texture3D::load(std::string const& path)
{
    return load(path, true);
}

bool Texture3D::load(std::string const& path, bool mirror)
{
    clear();
    name = path;
    QString file = QString::fromStdString(path);
    // A path that can't be opened fails before any decoder is asked.
    if (!QFile(file).open(QIODevice::ReadOnly)) {
        loadFailed = true;
        logmsg("ERROR Texture3D::load " + path);
        return false;
    }
    QImageReader reader(file);
    std::vector<QImage> frames;
    QImage frame;
    while (reader.read(&frame)) {
        if (frames.empty()) {
            int delay = reader.nextImageDelay();
            frameDelay = delay > 0 ? float(delay) * 0.001f : 0.001f;
        } else if (frame.size() != frames.front().size()) {
            frame = frame.scaled(frames.front().size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        }
        frame = frame.convertToFormat(QImage::Format_RGBA8888);
        frames.push_back(mirror ? frame.mirrored(false, true) : frame);
        if (!reader.canRead())
            break;
    }
    if (frames.empty()) {
        loadFailed = true;
        logmsg("ERROR Texture3D::load " + path);
        return false;
    }
    loadFailed = false;
    int w = frames.front().width(), h = frames.front().height();
    describe(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, wrap, filter);
    resize(w, h, int(frames.size()));
    size_t row = size_t(w) * 4;
    data.resize(row * size_t(h) * frames.size());
    unsigned char* out = data.data();
    for (QImage const& f : frames)
        for (int y = 0; y < h; ++y, out += row)
            std::memcpy(out, f.constScanLine(y), row);
    return true;
}

bool Texture3D::compile()
{
    if (Compiled)
        return true;
    unsigned previous = beginUpload(filter);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_REPEAT); // animations loop
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexImage3D(GL_TEXTURE_3D, 0, internalFormat, width(), height(), depth(), 0, GLenum(format), GLenum(type),
                 data.empty() ? nullptr : data.data());
    endUpload(previous);
    if (!finishCompile("Texture3D::compile"))
        return false;
    dropData();
    return true;
}

} // namespace vel
