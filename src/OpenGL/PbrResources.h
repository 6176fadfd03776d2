// The images that image-based light starts from, made by code: the split-sum table, the
// default environment panorama and the default matcap. vel_generate_resources writes them
// into resources/ ("PBR/ibl_brdf_lut.png", "PBR/Newport_Loft_Ref.hdr",
// "Materials/MatCaps/RedClay.png"); the tests check that the files there are what these make.
#pragma once

#include "Math/Vector2.h"

#include <QImage>

#include <string>
#include <vector>

namespace vel {

// The split-sum factors of the specular integral for a view at cos theta `NoV` and a GGX
// `roughness` (alpha = roughness^2): the integral of the BRDF times NoL over the hemisphere
// with F0 = 1 is scale + bias, and with F0 in general F0 scale + bias. Importance sampling of
// the GGX normal distribution by a Hammersley sequence of `samples` points, with the Smith
// geometry term of Schlick's form, k = alpha / 2.
Vector2<double> SplitSumBrdf(double NoV, double roughness, int samples);

// The table as an image of size x size: NoV = (x + 0.5) / size left to right, roughness
// = (y + 0.5) / size from the bottom row up (the top row after the vertical flip of loading),
// scale in red, bias in green, blue 0, opaque.
QImage BrdfLutImage(int size = 128, int samples = 1024);

// A studio-like HDR panorama, equirectangular, width x height RGB floats, rows top first: a
// wooden floor, warm walls, a ceiling with a soft box, and windows with a sky and the sun far
// above 1. Its mapping is TextureCube's: the middle column looks along -Z, the top row is up.
std::vector<float> StudioPanorama(int width = 512, int height = 256);

// A clay-red sphere lit by a key, a fill and a rim light, seen from the front, as a matcap of
// size x size (sRGB); beyond the disc the rim's shade goes on, so that filtering finds no seam.
QImage RedClayMatCap(int size = 256);

// Writes the three files under `folder` (the resources folder), making subfolders; false with
// a log message when one can't be written.
bool WritePbrResources(std::string const& folder);

} // namespace vel
