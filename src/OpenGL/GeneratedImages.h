// Images the system draws itself rather than shipping as files. Each has a ":/" path under
// which the rest of the system asks for it, as if it were a resource; ReadImage answers
// those paths from the generators below.
#pragma once

#include <QImage>
#include <QString>

namespace vel {

// The image shown where a texture file is missing or was asked for without a path.
extern char const* const MISSING_TEXTURE_PATH; // ":/scenes/Textures/MissingTexture.png"

// 64 x 64, a checker of 8 x 8 squares, magenta and near-black, magenta in the top-left corner.
QImage MissingTextureImage();

// The generated image of `path`, or a null image when no generator has that path.
QImage GeneratedImage(QString const& path);

// A file or resource through QImage; a generated image where the path names one.
QImage ReadImage(QString const& path);

} // namespace vel
