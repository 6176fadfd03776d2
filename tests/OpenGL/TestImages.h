// Image files the texture tests read, written by the tests themselves: no binary fixtures.
#pragma once

#include <QImage>

#include <string>
#include <vector>

namespace vel::test {

// An animated GIF of `frames` frames of width x height; frame f is filled with palette colour
// Palette(f + 1) except its top-left pixel, which is white. `delayCentiseconds` per frame.
bool WriteAnimatedGif(std::string const& path, int width, int height, int frames, int delayCentiseconds);
// The RGB colour of palette index i of WriteAnimatedGif: 1 red, 2 green, 3 blue, 4 white.
QRgb GifPalette(int i);

// A Radiance HDR file of RGB floats, rows top first.
bool WriteHdr(std::string const& path, int width, int height, std::vector<float> const& rgb);

// Bytes that no image decoder accepts, under any name.
bool WriteGarbage(std::string const& path);

} // namespace vel::test
