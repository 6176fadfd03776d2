#include "OpenGL/Texture2DArray.h"

#include "OpenGL/ImageLimits.h"
#include "OpenGL/LogMsg.h"

#include <QFile>
#include <QImage>

#include <cstring>

namespace vel {

Texture2DArray::Texture2DArray(int wrap, int filter)
{
    describe(GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE, wrap, filter);
    dimensions = {0, 0, 0};
}

void Texture2DArray::resize(int width, int height, int layers)
{
    if (dimensions == std::vector<int>{width, height, layers})
        return;
    dimensions = {width, height, layers};
    Compiled = false;
}

bool Texture2DArray::load(std::string const& path)
{
    return loadFiles(path);
}

bool Texture2DArray::loadFile(std::string const& path)
{
    int w = width(), h = height();
    if (paths.size() >= size_t(MAX_TEXTURE_LAYERS)) {
        loadFailed = true;
        LogImageProblem(name, "more than " + std::to_string(MAX_TEXTURE_LAYERS) + " layers.");
        return false;
    }
    if (paths.empty()) {
        QImage image = ReadCheckedImage(QString::fromStdString(path), MAX_TEXTURE_SIZE);
        if (image.isNull()) {
            loadFailed = true;
            logmsg("ERROR Texture2DArray::loadFile " + path);
            return false;
        }
        w = image.width();
        h = image.height();
    }
    paths.push_back(path);
    resize(w, h, int(paths.size()));
    return true;
}

bool Texture2DArray::loadFiles(std::string const& listPath)
{
    name = listPath;
    QFile file(QString::fromStdString(listPath));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        loadFailed = true;
        logmsg("ERROR Texture2DArray::loadFiles " + listPath);
        return false;
    }
    bool ok = true;
    while (!file.atEnd()) {
        std::string line = file.readLine().toStdString();
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.pop_back();
        if (line.empty())
            continue;
        if (paths.size() >= size_t(MAX_TEXTURE_LAYERS))
            return loadFile(line); // refuses and says why; the rest of the list is not read
        ok = loadFile(line) && ok;
    }
    return ok;
}

bool Texture2DArray::compile()
{
    if (Compiled)
        return true;
    unsigned previous = beginUpload(filter);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, 0);
    int w = width(), h = height();
    glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, internalFormat, w, h, depth(), 0, GLenum(format), GLenum(type), nullptr);
    for (size_t layer = 0; layer < paths.size(); ++layer) {
        QImage image = ReadCheckedImage(QString::fromStdString(paths[layer]), MAX_TEXTURE_SIZE);
        if (image.isNull()) {
            // The layer stays undefined; the others still load.
            logmsg("ERROR Texture2DArray::compile " + paths[layer]);
            continue;
        }
        // Scale first: smooth scaling may hand back a 32-bit format.
        image = image.scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).convertToFormat(QImage::Format_RGB888);
        std::vector<unsigned char> pixels(size_t(w) * size_t(h) * 3);
        for (int y = 0; y < h; ++y)
            std::memcpy(pixels.data() + size_t(y) * size_t(w) * 3, image.constScanLine(y), size_t(w) * 3);
        glTexSubImage3D(GL_TEXTURE_2D_ARRAY, 0, 0, 0, GLint(layer), w, h, 1, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    }
    endUpload(previous);
    Compiled = glGetError() == GL_NO_ERROR;
    if (!Compiled)
        logmsg("ERROR Texture2DArray::compile");
    return Compiled;
}

} // namespace vel
