// Texture2DArray: layers read from image files, all scaled to the size of the first one.
// The files are read at compile time, on the GL thread; describing the array only fixes its
// size from the first image.
#pragma once

#include "OpenGL/Texture.h"

#include <string>
#include <vector>

namespace vel {

class Texture2DArray : public Texture {
public:
    std::vector<std::string> paths; // one image file per layer

    Texture2DArray(int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);

    int Target() const override { return GL_TEXTURE_2D_ARRAY; }
    bool compile() override;
    // loadFiles: a list file of image paths.
    bool load(std::string const& path) override;
    // Adds one layer; the first image fixes the array's size.
    bool loadFile(std::string const& path);
    // Adds the layers named in a text file, one path a line.
    bool loadFiles(std::string const& listPath);
    void resize(int width, int height, int layers);
};

} // namespace vel
