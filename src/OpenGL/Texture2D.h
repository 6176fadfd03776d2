// Texture2D: images, render targets and data textures.
//
// Files are read through QImage (every Qt image format, ":/" resources, and the images the
// system generates), converted to RGBA 8888 and, by default, mirrored vertically so that row
// 0 is the bottom row as GL expects. Render targets are described by size and formats only;
// their storage is allocated, undefined, at the first compile.
#pragma once

#include "Math/Vector4.h"
#include "Memory/Shared.h"
#include "OpenGL/Texture.h"

#include <QImage>

#include <string>
#include <vector>

namespace vel {

class Texture2D : public Texture {
public:
    int maxMipLevel = 0; // the highest mip level asked for by generateMipMaps

    // The noise of random(), readable on the CPU: Rand[y][x].
    static std::vector<std::vector<Vector4<float>>> Rand;
    // The texture random() made last.
    static Shared<Texture2D> Random;

    Texture2D(int width, int height, int internalFormat, int format, int type, int wrap = GL_CLAMP_TO_EDGE,
              int filter = GL_LINEAR);
    Texture2D(std::string const& path, bool mirror = true, int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);
    // Scaled down, aspect kept, when larger than width x height.
    Texture2D(std::string const& path, int width, int height, bool mirror = true, int wrap = GL_CLAMP_TO_EDGE,
              int filter = GL_LINEAR);

    int Target() const override { return GL_TEXTURE_2D; }
    bool compile() override;
    // Uploads `pixels` (a caller's block, e.g. a scratch pad) instead of the CPU pixels, no mipmaps.
    bool compile(void* pixels);

    bool load(std::string const& path) override;
    bool load(std::string const& path, bool mirror, int wrap, int filter);
    // The same from an image in memory; `path` is kept as the name.
    bool load(QImage image, std::string const& path, bool mirror, int wrap, int filter);

    // New dimensions; the GL storage follows at the next compile.
    void resize(int width, int height);
    // Levels 1 to `levels` from level 0; a negative count asks for the whole chain.
    void generateMipMaps(int levels);
    // floor(log2(max(width, height))) + 1.
    int mipMapLevels() const;

    // Level 0 as RGB 888, top row first, through QImage::save (`quality` passed on).
    bool save(std::string const& path, int quality);
    // Debugging twin for depth: white where the value is below 1, else black.
    bool savef(std::string const& path);

    // RGBA32F noise in [-1, 1), also kept in Rand and Random.
    static Shared<Texture2D> random(int width, int height);
    // The 2D size of a data texture for n items: width floor(sqrt(n)) rounded up to even.
    static Vector2<int> LinearSize_2DEven(int n);

private:
    // glTexImage2D of `pixels` (null: undefined storage) with the texture's parameters.
    bool upload(void const* pixels, bool withMipmaps);
    int maxWidth = 0;  // size limit of the file constructor, 0 for none
    int maxHeight = 0;
};

} // namespace vel
