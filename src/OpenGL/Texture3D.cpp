#include "OpenGL/Texture3D.h"

#include "OpenGL/ImageLimits.h"
#include "OpenGL/LogMsg.h"

#include <QFile>
#include <QImage>
#include <QImageReader>


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
    // By content, not by name: a named kind's reader decodes just to say whether it can read.
    reader.setDecideFormatFromContent(true);
    std::string problem = ImageHeaderProblem(reader, MAX_TEXTURE_3D_SIZE);
    // Frames go straight into the pixels, so that the animation is held once, not twice.
    int frames = 0;
    QSize size;
    QImage frame;
    while (problem.empty() && reader.read(&frame)) {
        if (frames == 0)
            size = frame.size();
        // Every frame decodes to the full size however few bytes it takes: the frames
        // together must fit what the file can encode, and the depth limit.
        problem = ImageSizeProblem(reader.format(), size.width(), size.height(), frames + 1LL,
                                   reader.device()->size(), MAX_TEXTURE_3D_SIZE);
        if (problem.empty() && frames >= MAX_TEXTURE_3D_SIZE)
            problem = "more than " + std::to_string(MAX_TEXTURE_3D_SIZE) + " frames.";
        if (!problem.empty())
            break;
        if (frames == 0) {
            int delay = reader.nextImageDelay();
            frameDelay = delay > 0 ? float(delay) * 0.001f : 0.001f;
            int expected = reader.imageCount(); // 0 where the reader cannot tell
            if (expected > 0 && expected <= MAX_TEXTURE_3D_SIZE)
                data.reserve(size_t(size.width()) * size_t(size.height()) * 4 * size_t(expected));
        } else if (frame.size() != size) {
            frame = frame.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        }
        frame = std::move(frame).convertToFormat(QImage::Format_RGBA8888);
        size_t row = size_t(size.width()) * 4;
        for (int y = 0; y < size.height(); ++y) {
            auto const* line = frame.constScanLine(mirror ? size.height() - 1 - y : y);
            data.insert(data.end(), line, line + row);
        }
        ++frames;
        if (!reader.canRead())
            break;
    }
    if (!problem.empty())
        LogImageProblem(path, problem);
    if (frames == 0 || !problem.empty()) {
        data.clear();
        data.shrink_to_fit();
        loadFailed = true;
        logmsg("ERROR Texture3D::load " + path);
        return false;
    }
    loadFailed = false;
    describe(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, wrap, filter);
    resize(size.width(), size.height(), frames);
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
