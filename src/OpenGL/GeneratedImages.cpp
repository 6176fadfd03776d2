#include "OpenGL/GeneratedImages.h"

#include <QColor>

namespace vel {

char const* const MISSING_TEXTURE_PATH = ":/scenes/Textures/MissingTexture.png";

QImage MissingTextureImage()
{
    int const size = 64, cell = 8;
    QImage image(size, size, QImage::Format_RGBA8888);
    QColor const magenta(255, 0, 255), dark(24, 24, 24);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.setPixelColor(x, y, ((x / cell + y / cell) & 1) ? dark : magenta);
    return image;
}

QImage GeneratedImage(QString const& path)
{
    if (path == QLatin1String(MISSING_TEXTURE_PATH))
        return MissingTextureImage();
    return QImage();
}

QImage ReadImage(QString const& path)
{
    QImage image(path);
    if (image.isNull())
        image = GeneratedImage(path);
    return image;
}

} // namespace vel
